// HLSL, as the compiler reads it that also reads GLSL (profile 5.1 and 16-bit types). What differs from the
// kernel language, and how it is bridged:
//
// - `m * v` multiplies as in the kernel language with this compiler; others multiply element by element. With
//   rows packed, m[i] is what the kernel language calls a column.
// - Elements of structured buffers are packed without padding in this language, but the compiler pads them
//   and puts uniforms on rows of 16 bytes. The compiled module is laid out anew, see spirv/finish_module.h.
// - That nothing is contracted is said in the compiled module too: only single variables can be precise. It
//   must be compiled without optimisation, which contracts.
// - Atomic operations have no result but an output.
// - Comparing two vectors gives a vector of bool: `==` needs `all` around it.
// - A texture and its sampler are two things, which share a binding.
// - Names of parameters have a prefix, see glsl.cpp. A counter is a macro, so nothing else may have its name.
// - NaN as an argument of min, max and clamp may give either number.
#include "language_table.h"

namespace norvi {

namespace {

constexpr ShaderWord hlslWords[] = {
    {"Float32", "float"},
    {"Int32", "int"},
    {"UInt32", "uint"},
    {"vec2", "float2"},
    {"vec3", "float3"},
    {"vec4", "float4"},
    {"ivec2", "int2"},
    {"ivec3", "int3"},
    {"ivec4", "int4"},
    {"uvec2", "uint2"},
    {"uvec3", "uint3"},
    {"uvec4", "uint4"},
    {"bvec2", "bool2"},
    {"bvec3", "bool3"},
    {"bvec4", "bool4"},
    {"mat3", "float3x3"},
    {"mat4", "float4x4"},
    {"Vector2d32", "float2"},
    {"Vector32", "float3"},
    {"Vector4d32", "float4"},
    {"IntVector4d32", "int4"},
    {"SquareMatrix32", "float3x3"},
    {"SquareMatrix4d32", "float4x4"},
    {"Matrix32", "float4x4"},
    {"HalfFloat", "half"},
    {"groupSharedMemory", "groupshared"},
    {"groupSharedBarrier", "GroupMemoryBarrierWithGroupSync()"},
    {"inversesqrt", "rsqrt"},
    {"fract", "frac"},
    {"mix", "norviMix"},
    {"roundEven", "round"},
    {"fma(a, b, c)", "((a) * (b) + (c))"},
    {"floatBitsToInt", "asint"},
    {"floatBitsToUint", "asuint"},
    {"intBitsToFloat", "asfloat"},
    {"uintBitsToFloat", "asfloat"},
    {"bitfieldReverse", "reversebits"},
    {"atomicAdd(cell, value)", "NORVI_ATOMIC(InterlockedAdd, cell, value)"},
    {"atomicAnd(cell, value)", "NORVI_ATOMIC(InterlockedAnd, cell, value)"},
    {"atomicOr(cell, value)", "NORVI_ATOMIC(InterlockedOr, cell, value)"},
    {"atomicXor(cell, value)", "NORVI_ATOMIC(InterlockedXor, cell, value)"},
    {"atomicMin(cell, value)", "NORVI_ATOMIC(InterlockedMin, cell, value)"},
    {"atomicMax(cell, value)", "NORVI_ATOMIC(InterlockedMax, cell, value)"},
    {"atomicExchange(cell, value)", "NORVI_ATOMIC(InterlockedExchange, cell, value)"},
    {"atomicCompSwap(cell, expected, value)",
     "(InterlockedCompareExchange(cell, expected, value, norviOld), norviLike(norviOld, cell))"},
    {"UNIFORM(name)", "norviUniforms.norvi_##name"},
    {"UNIFORM_BUFFER(name)", "norviBuffer_##name"},
    {"SampleTexture(name, place)", "norviSample_##name(place)"},
    {"LoadTexture(name, place)", "norviLoad_##name(place)"},
    {"StoreTexture(name, place, value)", "norviStore_##name(place, value)"},
    {"GetTextureSize(name)", "norviSize_##name()"},
    {"NOISE(index, place, time)",
     "norviNoise(norviUniforms.norviNoiseModes[index], norviUniforms.norviNoiseSeeds[index], place, time)"},
};

} // namespace

// clang-format off
const ShaderLanguage hlslLanguage = {
    .id = "HLSL",
    .head = "#pragma pack_matrix(row_major)\n",
    .words = hlslWords,
    .prologue = R"(
// What an atomic operation leaves here, as the type of its cell.
static uint norviOld;
uint norviLike(uint old, uint cell) { return old; }
int norviLike(uint old, int cell) { return int(old); }
#define NORVI_ATOMIC(operation, cell, value) (operation(cell, value, norviOld), norviLike(norviOld, cell))

// Coordinates with a level, and sizes.
#define NORVI_PLACE_1(place) int2(place, 0)
#define NORVI_PLACE_2(place) int3(place, 0)
#define NORVI_PLACE_3(place) int4(place, 0)
#define NORVI_SIZE_1(texture) int norviSize##texture() { uint x; norviTexture##texture.GetDimensions(x); return int(x); }
#define NORVI_SIZE_2(texture) int2 norviSize##texture() { uint x, y; norviTexture##texture.GetDimensions(x, y); return int2(x, y); }
#define NORVI_SIZE_3(texture) int3 norviSize##texture() { uint x, y, z; norviTexture##texture.GetDimensions(x, y, z); return int3(x, y, z); }

#define NORVI_SELECT(T, B) \
T norviMix(T x, T y, B condition) { return condition ? y : x; }
#define NORVI_COMPARE(T, B) \
NORVI_SELECT(T, B) \
B lessThan(T x, T y) { return x < y; } \
B lessThanEqual(T x, T y) { return x <= y; } \
B greaterThan(T x, T y) { return x > y; } \
B greaterThanEqual(T x, T y) { return x >= y; } \
B equal(T x, T y) { return x == y; } \
B notEqual(T x, T y) { return x != y; }
#define NORVI_WORDS(F, I, U, B) \
F mod(F x, F y) { return x - y * floor(x / y); } \
F norviMix(F x, F y, F a) { return x * (1.0 - a) + y * a; } \
F atan(F y, F x) { return atan2(y, x); } \
F norviAsinh(F a) { return a < 1e-3 ? a - a * a * a / 6.0 : a > 1e4 ? log(a) + 0.69314718 : log(a + sqrt(a * a + 1.0)); } \
F asinh(F x) { return x < 0.0 ? -norviAsinh(-x) : norviAsinh(x); } \
F acosh(F x) { return x > 1e4 ? log(x) + 0.69314718 : log(x + sqrt((x - 1.0) * (x + 1.0))); } \
F atanh(F x) { return abs(x) < 1e-3 ? x + x * x * x / 3.0 : 0.5 * log((1.0 + x) / (1.0 - x)); } \
I bitCount(I x) { return I(countbits(asuint(x))); } \
I bitCount(U x) { return I(countbits(x)); } \
I findLSB(I x) { return I(firstbitlow(x)); } \
I findLSB(U x) { return I(firstbitlow(x)); } \
I findMSB(I x) { return I(firstbithigh(x)); } \
I findMSB(U x) { return I(firstbithigh(x)); } \
NORVI_COMPARE(F, B) \
NORVI_COMPARE(I, B) \
NORVI_COMPARE(U, B)
NORVI_WORDS(float, int, uint, bool)
#define NORVI_VECTOR_WORDS(F, I, U, B) \
NORVI_WORDS(F, I, U, B) \
F mod(F x, float y) { return x - y * floor(x / y); } \
F norviMix(F x, F y, float a) { return x * (1.0 - a) + y * a; } \
NORVI_SELECT(B, B) \
B equal(B x, B y) { return x == y; } \
B notEqual(B x, B y) { return x != y; } \
B not(B x) { return !x; }
NORVI_VECTOR_WORDS(float2, int2, uint2, bool2)
NORVI_VECTOR_WORDS(float3, int3, uint3, bool3)
NORVI_VECTOR_WORDS(float4, int4, uint4, bool4)

float3x3 inverse(float3x3 m)
{
    return transpose(float3x3(cross(m[1], m[2]), cross(m[2], m[0]), cross(m[0], m[1]))) / determinant(m);
}
float4 norviCofactors(float4 v, float3 low, float3 high)
{
    return float4(v.y * high.z - v.z * high.y + v.w * high.x, -v.x * high.z + v.z * low.z - v.w * low.y, v.x * high.y - v.y * low.z + v.w * low.x, -v.x * high.x + v.y * low.y - v.z * low.x);
}
float4x4 inverse(float4x4 m)
{
    // The determinants of two rows each of the first two columns, and of the last two: xy xz xw, and yz yw zw.
    float3 s = m[0].x * m[1].yzw - m[1].x * m[0].yzw;
    float3 t = m[0].yyz * m[1].zww - m[1].yyz * m[0].zww;
    float3 c = m[2].x * m[3].yzw - m[3].x * m[2].yzw;
    float3 d = m[2].yyz * m[3].zww - m[3].yyz * m[2].zww;
    float4x4 columns = float4x4(norviCofactors(m[1], c, d), -norviCofactors(m[0], c, d), norviCofactors(m[3], s, t), -norviCofactors(m[2], s, t));
    return transpose(columns) / determinant(m);
}
)",
    .groupSize = "#define InWorkGroupSize uint3($x$, $y$, $z$)\n",
    .programBegin = "",
    .storageWords = {},
    .uniformsBegin = "struct NorviUniforms {\n",
    .uniformsEnd = {
        "};\n"
        "[[vk::binding($binding$, 0)]] ConstantBuffer<NorviUniforms> norviUniforms;\n"},
    .buffer = {"[[vk::binding($binding$, 0)]] RWStructuredBuffer<$type$> norviBuffer_$name$;\n"},
    .readOnlyBuffer = {"[[vk::binding($binding$, 0)]] StructuredBuffer<$type$> norviBuffer_$name$;\n"},
    .counter = {
        "[[vk::binding($binding$, 0)]] RWStructuredBuffer<uint> norviCounter_$name$;\n"
        "#define $name$ norviCounter_$name$[0]\n"},
    .texture = {
        "[[vk::binding($binding$, 0)]] Texture$dimensions$D<$kind$4> norviTexture_$name$;\n"
        "[[vk::binding($binding$, 0)]] SamplerState norviSampler_$name$;\n"
        "#define norviSample_$name$(place) $kind$4(norviTexture_$name$.SampleLevel(norviSampler_$name$, place, 0.0)$components$)\n"
        "#define norviLoad_$name$(place) $kind$4(norviTexture_$name$.Load(NORVI_PLACE_$dimensions$(place))$components$)\n"
        "NORVI_SIZE_$dimensions$(_$name$)\n"},
    .image = {
        "[[vk::binding($binding$, 0)]] [[spv::format_$layout$]] RWTexture$dimensions$D<$kind$$stored$> norviTexture_$name$;\n"
        "#define norviLoad_$name$(place) $kind$4(norviTexture_$name$[place]$components$)\n"
        "#define norviStore_$name$(place, value) norviTexture_$name$[place] = $kind$$stored$(value)\n"
        "NORVI_SIZE_$dimensions$(_$name$)\n"},
    .groupShared = {"groupSharedMemory $type$ $name$[$size$];\n"},
    .groupSharedLocal = "",
    .bodyBegin =
        "[numthreads($x$, $y$, $z$)]\n"
        "void main(uint3 InGlobalInvocationID : SV_DispatchThreadID, uint3 InLocalInvocationID : SV_GroupThreadID, uint3 InWorkGroupID : SV_GroupID)\n"
        "{\n",
    .bodyEnd = "}\n",
};
// clang-format on

} // namespace norvi
