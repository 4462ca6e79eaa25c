// GLSL for Vulkan. The kernel language is close to it; these differ:
//
// - Buffers and uniforms lie in scalar layout, so that an array of vec3 has a stride of 12 bytes as on the
//   processor.
// - Names of parameters get a prefix, since words such as "input" or "sample" are reserved, and since group
//   shared memory has the name of the buffer that it is a copy of. Atomic counters keep their names: kernel
//   text uses them bare.
// - round may go either way at halves, and so becomes roundEven.
// - Only single variables can be declared precise. That nothing is contracted is said in the compiled module,
//   see spirv/finish_module.h.
// - Textures with three channels are stored with four. Channels that a texture does not have read as 0, where
//   GLSL has 1 for the fourth.
// - Buffers are no parameters of functions.
#include "language_table.h"

namespace norvi {

namespace {

constexpr ShaderWord glslWords[] = {
    {"Float32", "float"},
    {"Int32", "int"},
    {"UInt32", "uint"},
    {"float2", "vec2"},
    {"float3", "vec3"},
    {"float4", "vec4"},
    {"int4", "ivec4"},
    {"uint4", "uvec4"},
    {"Vector2d32", "vec2"},
    {"Vector32", "vec3"},
    {"Vector4d32", "vec4"},
    {"IntVector4d32", "ivec4"},
    {"SquareMatrix32", "mat3"},
    {"SquareMatrix4d32", "mat4"},
    {"Matrix32", "mat4"},
    {"HalfFloat", "float16_t"},
    {"half", "float16_t"},
    {"half2", "f16vec2"},
    {"half3", "f16vec3"},
    {"half4", "f16vec4"},
    {"InGlobalInvocationID", "gl_GlobalInvocationID"},
    {"InLocalInvocationID", "gl_LocalInvocationID"},
    {"InWorkGroupID", "gl_WorkGroupID"},
    {"InWorkGroupSize", "gl_WorkGroupSize"},
    {"groupSharedMemory", "shared"},
    {"groupSharedBarrier", "memoryBarrierShared(); barrier()"},
    {"round", "roundEven"},
    {"fma(a, b, c)", "((a) * (b) + (c))"},
    {"UNIFORM(name)", "norviUniforms.norvi_##name"},
    {"UNIFORM_BUFFER(name)", "norviBuffer_##name.elements"},
    {"SampleTexture(name, place)", "norviSample_##name(place)"},
    {"LoadTexture(name, place)", "norviLoad_##name(place)"},
    {"StoreTexture(name, place, value)", "imageStore(norviTexture_##name, place, value)"},
    {"GetTextureSize(name)", "norviSize_##name"},
    {"NOISE(index, place, time)",
     "norviNoise(norviUniforms.norviNoiseModes[index], norviUniforms.norviNoiseSeeds[index], place, time)"},
};

} // namespace

// clang-format off
const ShaderLanguage glslLanguage = {
    .id = "GLSL",
    .head =
        "#version 460\n"
        "#extension GL_EXT_scalar_block_layout : require\n"
        "#extension GL_EXT_shader_16bit_storage : require\n"
        "#extension GL_EXT_shader_explicit_arithmetic_types_float16 : require\n",
    .words = glslWords,
    .prologue = "",
    .groupSize = "layout(local_size_x = $x$, local_size_y = $y$, local_size_z = $z$) in;\n",
    .programBegin = "",
    .storageWords = {},
    .uniformsBegin = "layout(set = 0, binding = $binding$, scalar) uniform NorviUniforms {\n",
    .uniformsEnd = {"} norviUniforms;\n"},
    .buffer = {"layout(set = 0, binding = $binding$, scalar) buffer NorviBuffer_$name$ { $type$ elements[]; } norviBuffer_$name$;\n"},
    .readOnlyBuffer = {"layout(set = 0, binding = $binding$, scalar) readonly buffer NorviBuffer_$name$ { $type$ elements[]; } norviBuffer_$name$;\n"},
    .counter = {"layout(set = 0, binding = $binding$, scalar) buffer NorviCounter_$name$ { uint $name$; };\n"},
    .texture = {
        "layout(set = 0, binding = $binding$) uniform $class$sampler$dimensions$D norviTexture_$name$;\n"
        "#define norviSample_$name$(place) $class$vec4(textureLod(norviTexture_$name$, place, 0.0)$components$)\n"
        "#define norviLoad_$name$(place) $class$vec4(texelFetch(norviTexture_$name$, place, 0)$components$)\n"
        "#define norviSize_$name$ textureSize(norviTexture_$name$, 0)\n"},
    .image = {
        "layout(set = 0, binding = $binding$, $layout$) uniform $class$image$dimensions$D norviTexture_$name$;\n"
        "#define norviLoad_$name$(place) $class$vec4(imageLoad(norviTexture_$name$, place)$components$)\n"
        "#define norviSize_$name$ imageSize(norviTexture_$name$)\n"},
    .groupShared = {"groupSharedMemory $type$ $name$[$size$];\n"},
    .groupSharedLocal = "",
    .bodyBegin = "void main()\n{\n",
    .bodyEnd = "}\n",
};
// clang-format on

} // namespace norvi
