// Metal. What differs from the kernel language, and how it is bridged:
//
// - Nothing is global: the entry receives all parameters. So the program is a struct whose members are the
//   parameters and functions, and the body is a function of it; the entry makes one for each invocation.
// - A float3 has the size of a float4. Where words of types stand for memory (structs, uniforms, buffers)
//   they mean the packed types. Those convert to the others by themselves, but cannot be an INOUT argument.
//   There is no packed 3x3 matrix: buffers and structs cannot have one, uniforms are converted.
// - Vectors are not made from longer ones: vec3(...) and so on are functions of the prologue.
// - Arguments of min, max, mix and so on must have one type: the prologue has its own, which also treat NaN
//   as the kernel language says.
// - round takes halves away from zero, and rint to even.
// - Textures and samplers are numbered apart from buffers, each from 0 in the order of textures.
// - Comparing two vectors gives a vector of bool: `==` needs `all` around it.
// - a*b+c must not be contracted. The pragma says so to compilers that know it; for others it is their
//   option.
#include "language_table.h"

namespace norvi {

namespace {

constexpr ShaderWord metalWords[] = {
    {"vec2(...)", "norviMake_float2(__VA_ARGS__)"},
    {"vec3(...)", "norviMake_float3(__VA_ARGS__)"},
    {"vec4(...)", "norviMake_float4(__VA_ARGS__)"},
    {"ivec2(...)", "norviMake_int2(__VA_ARGS__)"},
    {"ivec3(...)", "norviMake_int3(__VA_ARGS__)"},
    {"ivec4(...)", "norviMake_int4(__VA_ARGS__)"},
    {"uvec2(...)", "norviMake_uint2(__VA_ARGS__)"},
    {"uvec3(...)", "norviMake_uint3(__VA_ARGS__)"},
    {"uvec4(...)", "norviMake_uint4(__VA_ARGS__)"},
    {"bvec2(...)", "norviMake_bool2(__VA_ARGS__)"},
    {"bvec3(...)", "norviMake_bool3(__VA_ARGS__)"},
    {"bvec4(...)", "norviMake_bool4(__VA_ARGS__)"},
    {"groupSharedBarrier", "threadgroup_barrier(mem_flags::mem_threadgroup)"},
    {"inversesqrt(x)", "(1.0f / sqrt(x))"},
    {"round", "rint"},
    {"roundEven", "rint"},
    {"fma(a, b, c)", "((a) * (b) + (c))"},
    {"mod", "norviMod"},
    {"mix", "norviMix"},
    {"min", "norviMin"},
    {"max", "norviMax"},
    {"clamp(x, low, high)", "norviMin(norviMax(x, low), high)"},
    {"step", "norviStep"},
    {"smoothstep", "norviSmoothstep"},
    {"atan", "norviAtan"},
    {"floatBitsToInt", "norviBits<int>"},
    {"floatBitsToUint", "norviBits<uint>"},
    {"intBitsToFloat", "norviBits<float>"},
    {"uintBitsToFloat", "norviBits<float>"},
    {"bitfieldReverse", "reverse_bits"},
    {"atomicAdd(cell, value)", "NORVI_ATOMIC(add, cell, value)"},
    {"atomicAnd(cell, value)", "NORVI_ATOMIC(and, cell, value)"},
    {"atomicOr(cell, value)", "NORVI_ATOMIC(or, cell, value)"},
    {"atomicXor(cell, value)", "NORVI_ATOMIC(xor, cell, value)"},
    {"atomicMin(cell, value)", "NORVI_ATOMIC(min, cell, value)"},
    {"atomicMax(cell, value)", "NORVI_ATOMIC(max, cell, value)"},
    {"atomicExchange(cell, value)",
     "atomic_exchange_explicit(norviAtomic(&(cell), 0), value, memory_order_relaxed)"},
    {"atomicCompSwap(cell, expected, value)", "norviCompSwap(norviAtomic(&(cell), 0), expected, value)"},
    {"UNIFORM(name)", "norviUnpack(norviUniforms.norvi_##name)"},
    {"UNIFORM_BUFFER(name)", "norviBuffer_##name"},
    {"SampleTexture(name, place)", "norviSample_##name(place)"},
    {"LoadTexture(name, place)", "norviLoad_##name(place)"},
    {"StoreTexture(name, place, value)", "norviTexture_##name.write(value, norviPlace(place))"},
    {"GetTextureSize(name)", "norviSize(norviTexture_##name)"},
    {"NOISE(index, place, time)",
     "norviNoise(norviUniforms.norviNoiseModes[index], norviUniforms.norviNoiseSeeds[index], place, time)"},
};

constexpr ShaderWord storageWords[] = {
    {"vec2", "packed_float2"},        {"vec3", "packed_float3"},
    {"vec4", "packed_float4"},        {"float2", "packed_float2"},
    {"float3", "packed_float3"},      {"float4", "packed_float4"},
    {"ivec2", "packed_int2"},         {"ivec3", "packed_int3"},
    {"ivec4", "packed_int4"},         {"uvec2", "packed_uint2"},
    {"uvec3", "packed_uint3"},        {"uvec4", "packed_uint4"},
    {"int4", "packed_int4"},          {"uint4", "packed_uint4"},
    {"IntVector4d32", "packed_int4"}, {"half2", "packed_half2"},
    {"half3", "packed_half3"},        {"half4", "packed_half4"},
    {"Vector2d32", "packed_float2"},  {"Vector32", "packed_float3"},
    {"Vector4d32", "packed_float4"},  {"mat3", "norvi_mat3"},
    {"mat4", "norvi_mat4"},           {"Matrix32", "norvi_mat4"},
    {"SquareMatrix32", "norvi_mat3"}, {"SquareMatrix4d32", "norvi_mat4"},
};

} // namespace

// clang-format off
const ShaderLanguage metalLanguage = {
    .id = "METAL",
    .head =
        "#include <metal_stdlib>\n"
        "#pragma METAL fp math_mode(safe)\n"
        "#pragma METAL fp contract(off)\n"
        "using namespace metal;\n",
    .words = metalWords,
    .prologue = R"(
typedef float Float32;
typedef int Int32;
typedef uint UInt32;
typedef half HalfFloat;
typedef float2 vec2;
typedef float3 vec3;
typedef float4 vec4;
typedef int2 ivec2;
typedef int3 ivec3;
typedef int4 ivec4;
typedef uint2 uvec2;
typedef uint3 uvec3;
typedef uint4 uvec4;
typedef bool2 bvec2;
typedef bool3 bvec3;
typedef bool4 bvec4;
typedef float3x3 mat3;
typedef float4x4 mat4;
typedef float2 Vector2d32;
typedef float3 Vector32;
typedef float4 Vector4d32;
typedef int4 IntVector4d32;
typedef float3x3 SquareMatrix32;
typedef float4x4 SquareMatrix4d32;
typedef float4x4 Matrix32;

// Values from memory.
struct norvi_mat3 { packed_float3 columns[3]; };
struct norvi_mat4 { packed_float4 columns[4]; };
template <typename T> inline T norviUnpack(T value) { return value; }
#define NORVI_UNPACK(packed, plain) inline plain norviUnpack(packed value) { return plain(value); }
NORVI_UNPACK(packed_float2, float2)
NORVI_UNPACK(packed_float3, float3)
NORVI_UNPACK(packed_float4, float4)
NORVI_UNPACK(packed_int2, int2)
NORVI_UNPACK(packed_int3, int3)
NORVI_UNPACK(packed_int4, int4)
NORVI_UNPACK(packed_uint2, uint2)
NORVI_UNPACK(packed_uint3, uint3)
NORVI_UNPACK(packed_uint4, uint4)
NORVI_UNPACK(packed_half2, half2)
NORVI_UNPACK(packed_half3, half3)
NORVI_UNPACK(packed_half4, half4)
inline float3x3 norviUnpack(norvi_mat3 m) { return float3x3(float3(m.columns[0]), float3(m.columns[1]), float3(m.columns[2])); }
inline float4x4 norviUnpack(norvi_mat4 m) { return float4x4(float4(m.columns[0]), float4(m.columns[1]), float4(m.columns[2]), float4(m.columns[3])); }

// Vectors of K from numbers and vectors, also such as stand in memory.
#define NORVI_MAKE(K) \
template <typename A> inline K##2 norvi_##K##2(A a) { return K##2(K(a)); } \
template <typename A, typename B> inline K##2 norvi_##K##2(A a, B b) { return K##2(K(a), K(b)); } \
template <typename A> inline K##2 norvi_##K##2(vec<A, 2> a) { return K##2(K(a.x), K(a.y)); } \
template <typename A> inline K##2 norvi_##K##2(vec<A, 3> a) { return K##2(K(a.x), K(a.y)); } \
template <typename A> inline K##2 norvi_##K##2(vec<A, 4> a) { return K##2(K(a.x), K(a.y)); } \
template <typename A> inline K##3 norvi_##K##3(A a) { return K##3(K(a)); } \
template <typename A, typename B, typename C> inline K##3 norvi_##K##3(A a, B b, C c) { return K##3(K(a), K(b), K(c)); } \
template <typename A, typename B> inline K##3 norvi_##K##3(vec<A, 2> a, B b) { return K##3(K(a.x), K(a.y), K(b)); } \
template <typename A, typename B> inline K##3 norvi_##K##3(A a, vec<B, 2> b) { return K##3(K(a), K(b.x), K(b.y)); } \
template <typename A> inline K##3 norvi_##K##3(vec<A, 3> a) { return K##3(K(a.x), K(a.y), K(a.z)); } \
template <typename A> inline K##3 norvi_##K##3(vec<A, 4> a) { return K##3(K(a.x), K(a.y), K(a.z)); } \
template <typename A> inline K##4 norvi_##K##4(A a) { return K##4(K(a)); } \
template <typename A, typename B, typename C, typename D> inline K##4 norvi_##K##4(A a, B b, C c, D d) { return K##4(K(a), K(b), K(c), K(d)); } \
template <typename A, typename B, typename C> inline K##4 norvi_##K##4(vec<A, 2> a, B b, C c) { return K##4(K(a.x), K(a.y), K(b), K(c)); } \
template <typename A, typename B, typename C> inline K##4 norvi_##K##4(A a, vec<B, 2> b, C c) { return K##4(K(a), K(b.x), K(b.y), K(c)); } \
template <typename A, typename B, typename C> inline K##4 norvi_##K##4(A a, B b, vec<C, 2> c) { return K##4(K(a), K(b), K(c.x), K(c.y)); } \
template <typename A, typename B> inline K##4 norvi_##K##4(vec<A, 2> a, vec<B, 2> b) { return K##4(K(a.x), K(a.y), K(b.x), K(b.y)); } \
template <typename A, typename B> inline K##4 norvi_##K##4(vec<A, 3> a, B b) { return K##4(K(a.x), K(a.y), K(a.z), K(b)); } \
template <typename A, typename B> inline K##4 norvi_##K##4(A a, vec<B, 3> b) { return K##4(K(a), K(b.x), K(b.y), K(b.z)); } \
template <typename A> inline K##4 norvi_##K##4(vec<A, 4> a) { return K##4(K(a.x), K(a.y), K(a.z), K(a.w)); } \
template <typename... A> inline K##2 norviMake_##K##2(A... a) { return norvi_##K##2(norviUnpack(a)...); } \
template <typename... A> inline K##3 norviMake_##K##3(A... a) { return norvi_##K##3(norviUnpack(a)...); } \
template <typename... A> inline K##4 norviMake_##K##4(A... a) { return norvi_##K##4(norviUnpack(a)...); }
NORVI_MAKE(float)
NORVI_MAKE(int)
NORVI_MAKE(uint)
NORVI_MAKE(bool)

// X with Y as the numbers or vectors that they compute as.
#define NORVI_BOTH(name, operation) template <typename X, typename Y> inline auto name(X x, Y y) -> decltype(x + y) \
{ typedef decltype(x + y) T; T a = T(x), b = T(y); return operation; }
NORVI_BOTH(norviMin, select(a, b, b < a))
NORVI_BOTH(norviMax, select(a, b, a < b))
NORVI_BOTH(norviMod, a - b * floor(a / b))
NORVI_BOTH(norviStep, select(T(1), T(0), b < a))
template <typename X, typename Y, typename A> inline auto norviMix(X x, Y y, A a) -> decltype(x + y) { return x * (1.0f - a) + y * a; }
template <typename X> inline X norviMix(X x, X y, bool a) { return a ? y : x; }
template <typename X> inline X norviMix(X x, X y, bool2 a) { return select(x, y, a); }
template <typename X> inline X norviMix(X x, X y, bool3 a) { return select(x, y, a); }
template <typename X> inline X norviMix(X x, X y, bool4 a) { return select(x, y, a); }
template <typename L, typename X> inline X norviSmoothstep(L low, L high, X x) { X t = clamp((x - low) / (high - low), X(0.0f), X(1.0f)); return t * t * (3.0f - 2.0f * t); }
template <typename X> inline X norviAtan(X x) { return atan2(x, X(1.0f)); }
template <typename X> inline X norviAtan(X y, X x) { return atan2(y, x); }
template <typename T, typename A> inline T norviBits(A a) { return as_type<T>(a); }
template <typename T, typename A> inline vec<T, 2> norviBits(vec<A, 2> a) { return as_type<vec<T, 2>>(a); }
template <typename T, typename A> inline vec<T, 3> norviBits(vec<A, 3> a) { return as_type<vec<T, 3>>(a); }
template <typename T, typename A> inline vec<T, 4> norviBits(vec<A, 4> a) { return as_type<vec<T, 4>>(a); }
template <typename X> inline X radians(X x) { return x * 0.017453292519943296f; }
template <typename X> inline X degrees(X x) { return x * 57.295779513082321f; }
template <typename X> inline auto lessThan(X x, X y) -> decltype(x < y) { return x < y; }
template <typename X> inline auto lessThanEqual(X x, X y) -> decltype(x < y) { return x <= y; }
template <typename X> inline auto greaterThan(X x, X y) -> decltype(x < y) { return x > y; }
template <typename X> inline auto greaterThanEqual(X x, X y) -> decltype(x < y) { return x >= y; }
template <typename X> inline auto equal(X x, X y) -> decltype(x == y) { return x == y; }
template <typename X> inline auto notEqual(X x, X y) -> decltype(x == y) { return x != y; }
inline int bitCount(uint x) { return int(popcount(x)); }
inline int bitCount(int x) { return int(popcount(uint(x))); }
inline int findLSB(uint x) { return x == 0u ? -1 : int(ctz(x)); }
inline int findLSB(int x) { return findLSB(uint(x)); }
inline int findMSB(uint x) { return 31 - int(clz(x)); }
inline int findMSB(int x) { return findMSB(uint(x < 0 ? ~x : x)); }

// Matrices. The determinants of two rows each of the first two columns, and of the last two: xy xz xw, and yz yw zw.
inline float3x3 inverse(float3x3 m)
{
    float3x3 a = transpose(float3x3(cross(m[1], m[2]), cross(m[2], m[0]), cross(m[0], m[1])));
    float d = determinant(m);
    return float3x3(a[0] / d, a[1] / d, a[2] / d);
}
inline float4 norviCofactors(float4 v, float3 low, float3 high)
{
    return float4(v.y * high.z - v.z * high.y + v.w * high.x, -v.x * high.z + v.z * low.z - v.w * low.y, v.x * high.y - v.y * low.z + v.w * low.x, -v.x * high.x + v.y * low.y - v.z * low.x);
}
inline float4x4 inverse(float4x4 m)
{
    float3 s = m[0].x * m[1].yzw - m[1].x * m[0].yzw;
    float3 t = m[0].yyz * m[1].zww - m[1].yyz * m[0].zww;
    float3 c = m[2].x * m[3].yzw - m[3].x * m[2].yzw;
    float3 d = m[2].yyz * m[3].zww - m[3].yyz * m[2].zww;
    float4x4 a = transpose(float4x4(norviCofactors(m[1], c, d), -norviCofactors(m[0], c, d), norviCofactors(m[3], s, t), -norviCofactors(m[2], s, t)));
    float e = determinant(m);
    return float4x4(a[0] / e, a[1] / e, a[2] / e, a[3] / e);
}

// Plain cells of buffers and of group shared memory, and counters. The second argument only tells the overloads
// apart for compilers that do not know address spaces.
inline device atomic_uint* norviAtomic(device uint* cell, int) { return reinterpret_cast<device atomic_uint*>(cell); }
inline device atomic_int* norviAtomic(device int* cell, int) { return reinterpret_cast<device atomic_int*>(cell); }
inline device atomic_uint* norviAtomic(device atomic_uint* cell, int) { return cell; }
inline threadgroup atomic_uint* norviAtomic(threadgroup uint* cell, uint) { return reinterpret_cast<threadgroup atomic_uint*>(cell); }
inline threadgroup atomic_int* norviAtomic(threadgroup int* cell, uint) { return reinterpret_cast<threadgroup atomic_int*>(cell); }
inline threadgroup atomic_uint* norviAtomic(threadgroup atomic_uint* cell, uint) { return cell; }
#define NORVI_ATOMIC(name, cell, value) atomic_fetch_##name##_explicit(norviAtomic(&(cell), 0), value, memory_order_relaxed)
template <typename Cell, typename T> inline T norviCompSwap(Cell cell, T expected, T value)
{
    T seen = expected;
    while (!atomic_compare_exchange_weak_explicit(cell, &seen, value, memory_order_relaxed, memory_order_relaxed) && seen == expected)
    {
    }
    return seen;
}

// Places and sizes of textures.
inline uint norviPlace(int place) { return uint(place); }
inline uint2 norviPlace(int2 place) { return uint2(place); }
inline uint3 norviPlace(int3 place) { return uint3(place); }
template <typename T, metal::access A> inline int norviSize(texture1d<T, A> t) { return int(t.get_width()); }
template <typename T, metal::access A> inline int2 norviSize(texture2d<T, A> t) { return int2(int(t.get_width()), int(t.get_height())); }
template <typename T, metal::access A> inline int3 norviSize(texture3d<T, A> t) { return int3(int(t.get_width()), int(t.get_height()), int(t.get_depth())); }
#define NORVI_SAMPLE_1(texture, place) sample(norviSampler_##texture, place)
#define NORVI_SAMPLE_2(texture, place) sample(norviSampler_##texture, place, level(0.0f))
#define NORVI_SAMPLE_3(texture, place) sample(norviSampler_##texture, place, level(0.0f))
)",
    .groupSize = "#define InWorkGroupSize uint3($x$, $y$, $z$)\n",
    .programBegin = "struct NorviProgram {\n",
    .storageWords = storageWords,
    .uniformsBegin = "struct NorviUniforms {\n",
    .uniformsEnd = {
        "};\n"
        "constant NorviUniforms& norviUniforms;\n",
        ",\nconstant NorviProgram::NorviUniforms& norviUniforms [[buffer($binding$)]]", "norviUniforms, "},
    .buffer = {
        "typedef $type$ NorviElement_$name$;\n"
        "device NorviElement_$name$* norviBuffer_$name$;\n",
        ",\ndevice NorviProgram::NorviElement_$name$* norviBuffer_$name$ [[buffer($binding$)]]", "norviBuffer_$name$, "},
    .readOnlyBuffer = {
        "typedef $type$ NorviElement_$name$;\n"
        "const device NorviElement_$name$* norviBuffer_$name$;\n",
        ",\nconst device NorviProgram::NorviElement_$name$* norviBuffer_$name$ [[buffer($binding$)]]", "norviBuffer_$name$, "},
    .counter = {
        "device atomic_uint& $name$;\n",
        ",\ndevice atomic_uint& norviCounter_$name$ [[buffer($binding$)]]", "norviCounter_$name$, "},
    .texture = {
        "texture$dimensions$d<$kind$, access::sample> norviTexture_$name$;\n"
        "sampler norviSampler_$name$;\n"
        "#define norviSample_$name$(place) $class$vec4(norviTexture_$name$.NORVI_SAMPLE_$dimensions$($name$, place)$components$)\n"
        "#define norviLoad_$name$(place) $class$vec4(norviTexture_$name$.read(norviPlace(place), 0)$components$)\n",
        ",\ntexture$dimensions$d<$kind$, access::sample> norviTexture_$name$ [[texture($index$)]], sampler norviSampler_$name$ [[sampler($index$)]]",
        "norviTexture_$name$, norviSampler_$name$, "},
    .image = {
        "texture$dimensions$d<$kind$, access::read_write> norviTexture_$name$;\n"
        "#define norviLoad_$name$(place) $class$vec4(norviTexture_$name$.read(norviPlace(place))$components$)\n",
        ",\ntexture$dimensions$d<$kind$, access::read_write> norviTexture_$name$ [[texture($index$)]]",
        "norviTexture_$name$, "},
    .groupShared = {
        "typedef $type$ NorviShared_$name$[$size$];\n"
        "threadgroup NorviShared_$name$& $name$;\n",
        "", "norviShared_$name$, "},
    .groupSharedLocal = "threadgroup NorviProgram::NorviShared_$name$ norviShared_$name$;\n",
    .bodyBegin = "void Run(uint3 InGlobalInvocationID, uint3 InLocalInvocationID, uint3 InWorkGroupID)\n{\n",
    .bodyEnd =
        "}\n"
        "};\n"
        "kernel void norviMain(uint3 norviGlobal [[thread_position_in_grid]],\n"
        "uint3 norviLocal [[thread_position_in_threadgroup]],\n"
        "uint3 norviGroup [[threadgroup_position_in_grid]]$parameters$)\n"
        "{\n"
        "$locals$"
        "NorviProgram program = {$arguments$};\n"
        "program.Run(norviGlobal, norviLocal, norviGroup);\n"
        "}\n",
};
// clang-format on

} // namespace norvi
