#include "operations.h"

#include <array>
#include <bit>
#include <cmath>
#include <type_traits>

namespace norvi {

namespace {

// Rounding without library calls, which would keep the block loops from being vectorised: from 2^23 on every
// float is an integer, so adding and subtracting it rounds to the nearest one, halves to even.
Float RoundToEven(Float x) {
    constexpr Float FirstWithoutFraction = 8388608;
    const Float magnitude = std::fabs(x);
    const Float rounded = (magnitude + FirstWithoutFraction) - FirstWithoutFraction;
    return magnitude < FirstWithoutFraction ? std::copysign(rounded, x) : x;
}

Float Floor(Float x) {
    const Float rounded = RoundToEven(x);
    return rounded > x ? rounded - 1 : rounded;
}

Float Ceil(Float x) {
    const Float rounded = RoundToEven(x);
    return std::copysign(rounded < x ? rounded + 1 : rounded, x); // ceil(-0.5) is -0
}

Float Trunc(Float x) {
    return std::copysign(Floor(std::fabs(x)), x);
}

// Both choose their first operand where one is NaN, as the shading languages write these functions.
Float Min(Float x, Float y) {
    return y < x ? y : x;
}

Float Max(Float x, Float y) {
    return x < y ? y : x;
}

Float Saturate(Float x) {
    return Min(Max(x, 0), 1);
}

Float Square(Float x) {
    return x * x;
}

Float Cube(Float x) {
    return x * x * x;
}

// Small integer powers are defined as products, which are cheap, and the same numbers on a card.
Float Power(Float x, Float y) {
    if (y == 2)
        return Square(x);
    if (y == 3)
        return Cube(x);
    if (y == 4)
        return Square(Square(x));
    return std::pow(x, y);
}

Float SmoothStep(Float low, Float high, Float x) {
    const Float t = Saturate((x - low) / (high - low));
    return t * t * (3 - 2 * t);
}

// Mixes 32 bits such that each bit of the result depends on each of the argument: two multiplications between
// three xor-shifts, with constants found by search for little bias (Wellons, "Hash Function Prospector").
UInt32 MixBits(UInt32 h) {
    h = (h ^ (h >> 16)) * 0x7FEB352Du;
    h = (h ^ (h >> 15)) * 0x846CA68Bu;
    return h ^ (h >> 16);
}

// Equal numbers must give equal hashes, and NaN has many bit patterns: a zero becomes +0, NaN one pattern.
UInt32 CanonicalBits(Float x) {
    return x != x ? 0x7FC00000u : std::bit_cast<UInt32>(x + 0.0f);
}

// An integral seed stands for that integer, so that rnd(x; 3) is rnd(x; seed) where seed holds 3; the bits of
// any other seed are as good as an integer.
UInt32 SeedBits(Float seed) {
    const bool isInteger = std::fabs(seed) < 2147483648.0f && seed == RoundToEven(seed);
    const auto integer = static_cast<UInt32>(static_cast<Int32>(isInteger ? seed : 0));
    return isInteger ? integer : CanonicalBits(seed);
}

// The upper 24 bits of the hash, as many as a float in [0, 1) holds without rounding up to 1.
Float Random(Float x, UInt32 seed) {
    const UInt32 hash = MixBits(CanonicalBits(x) ^ MixBits(seed + 0x9E3779B9u));
    return static_cast<Float>(static_cast<Int32>(hash >> 8)) * 0x1p-24f;
}

template <typename Function>
constexpr UChar OperandCount = std::is_invocable_v<Function, Float>          ? 1
                               : std::is_invocable_v<Function, Float, Float> ? 2
                                                                             : 3;

template <typename Function>
Float Apply(Float x, [[maybe_unused]] Float y, [[maybe_unused]] Float z) {
    if constexpr (OperandCount<Function> == 1)
        return Function()(x);
    else if constexpr (OperandCount<Function> == 2)
        return Function()(x, y);
    else
        return Function()(x, y, z);
}

template <typename Function>
void ApplyToBlock(const Float* x, [[maybe_unused]] const Float* y, [[maybe_unused]] const Float* z,
                  Float* __restrict result, Int count) {
    for (Int i = 0; i < count; ++i) {
        if constexpr (OperandCount<Function> == 1)
            result[i] = Function()(x[i]);
        else if constexpr (OperandCount<Function> == 2)
            result[i] = Function()(x[i], y[i]);
        else
            result[i] = Function()(x[i], y[i], z[i]);
    }
}

template <typename Function>
constexpr OperationInfo Row(FormulaOperation operation, Function) {
    return {operation, OperandCount<Function>, Apply<Function>, ApplyToBlock<Function>};
}

using Op = FormulaOperation;

// And and Or have no branches: nothing is gained by skipping an operand that is already computed.
constexpr std::array<OperationInfo, FormulaOperationCount> g_operations{{
    Row(Op::Negate, [](Float x) -> Float { return -x; }),
    Row(Op::Not, [](Float x) -> Float { return x == 0; }),
    Row(Op::Add, [](Float x, Float y) -> Float { return x + y; }),
    Row(Op::Subtract, [](Float x, Float y) -> Float { return x - y; }),
    Row(Op::Multiply, [](Float x, Float y) -> Float { return x * y; }),
    Row(Op::Divide, [](Float x, Float y) -> Float { return x / y; }),
    Row(Op::Modulo, [](Float x, Float y) -> Float { return x - y * Floor(x / y); }),
    Row(Op::Power, [](Float x, Float y) -> Float { return Power(x, y); }),
    Row(Op::Less, [](Float x, Float y) -> Float { return x < y; }),
    Row(Op::LessEqual, [](Float x, Float y) -> Float { return x <= y; }),
    Row(Op::Greater, [](Float x, Float y) -> Float { return x > y; }),
    Row(Op::GreaterEqual, [](Float x, Float y) -> Float { return x >= y; }),
    Row(Op::Equal, [](Float x, Float y) -> Float { return x == y; }),
    Row(Op::NotEqual, [](Float x, Float y) -> Float { return x != y; }),
    Row(Op::And, [](Float x, Float y) -> Float { return (x != 0) & (y != 0); }),
    Row(Op::Or, [](Float x, Float y) -> Float { return (x != 0) | (y != 0); }),
    Row(Op::Select, [](Float x, Float y, Float z) -> Float { return x != 0 ? y : z; }),
    Row(Op::Sin, [](Float x) -> Float { return std::sin(x); }),
    Row(Op::Cos, [](Float x) -> Float { return std::cos(x); }),
    Row(Op::Tan, [](Float x) -> Float { return std::tan(x); }),
    Row(Op::Asin, [](Float x) -> Float { return std::asin(x); }),
    Row(Op::Acos, [](Float x) -> Float { return std::acos(x); }),
    Row(Op::Atan, [](Float x) -> Float { return std::atan(x); }),
    Row(Op::Atan2, [](Float x, Float y) -> Float { return std::atan2(x, y); }),
    Row(Op::Sinh, [](Float x) -> Float { return std::sinh(x); }),
    Row(Op::Cosh, [](Float x) -> Float { return std::cosh(x); }),
    Row(Op::Tanh, [](Float x) -> Float { return std::tanh(x); }),
    Row(Op::Exp, [](Float x) -> Float { return std::exp(x); }),
    Row(Op::Exp2, [](Float x) -> Float { return std::exp2(x); }),
    Row(Op::Log, [](Float x) -> Float { return std::log(x); }),
    Row(Op::Log2, [](Float x) -> Float { return std::log2(x); }),
    Row(Op::Log10, [](Float x) -> Float { return std::log10(x); }),
    Row(Op::Sqrt, [](Float x) -> Float { return std::sqrt(x); }),
    Row(Op::InverseSqrt, [](Float x) -> Float { return 1 / std::sqrt(x); }),
    Row(Op::Hypot, [](Float x, Float y) -> Float { return std::sqrt(x * x + y * y); }),
    Row(Op::Abs, [](Float x) -> Float { return std::fabs(x); }),
    Row(Op::Sign, [](Float x) -> Float { return static_cast<Float>((x > 0) - (x < 0)); }),
    Row(Op::Floor, [](Float x) -> Float { return Floor(x); }),
    Row(Op::Ceil, [](Float x) -> Float { return Ceil(x); }),
    Row(Op::Round, [](Float x) -> Float { return RoundToEven(x); }),
    Row(Op::Trunc, [](Float x) -> Float { return Trunc(x); }),
    Row(Op::Fract, [](Float x) -> Float { return x - Floor(x); }),
    Row(Op::Min, [](Float x, Float y) -> Float { return Min(x, y); }),
    Row(Op::Max, [](Float x, Float y) -> Float { return Max(x, y); }),
    Row(Op::Clamp, [](Float x, Float y, Float z) -> Float { return Min(Max(x, y), z); }),
    Row(Op::Saturate, [](Float x) -> Float { return Saturate(x); }),
    Row(Op::Mix, [](Float x, Float y, Float z) -> Float { return x * (1 - z) + y * z; }),
    Row(Op::Step, [](Float x, Float y) -> Float { return y < x ? 0 : 1; }),
    Row(Op::SmoothStep, [](Float x, Float y, Float z) -> Float { return SmoothStep(x, y, z); }),
    Row(Op::Radians, [](Float x) -> Float { return x * 0.0174532925f; }),
    Row(Op::Degrees, [](Float x) -> Float { return x * 57.2957795f; }),
    Row(Op::Random, [](Float x, Float y) -> Float { return Random(x, SeedBits(y)); }),
    Row(Op::RandomOfInteger, [](Float x, Float y) -> Float { return Random(x, std::bit_cast<UInt32>(y)); }),
}};

static_assert(AreInOrder(g_operations));

constexpr OperationInfo g_constantPowers[] = {
    Row(Op::Power, [](Float x) -> Float { return Square(x); }),
    Row(Op::Power, [](Float x) -> Float { return Cube(x); }),
    Row(Op::Power, [](Float x) -> Float { return Square(Square(x)); }),
};

} // namespace

const OperationInfo& GetOperationInfo(FormulaOperation operation) {
    return g_operations[static_cast<size_t>(operation)];
}

const OperationInfo* FindConstantPower(Float exponent) {
    if (exponent == 2)
        return &g_constantPowers[0];
    if (exponent == 3)
        return &g_constantPowers[1];
    if (exponent == 4)
        return &g_constantPowers[2];
    return nullptr;
}

} // namespace norvi
