// The sampler of the Vulkan driver. Places are computed as in sampling_scene.cpp: the software driver reads
// buffers slowly. Built with DIMENSIONS 2 or 3, or with LOADS.
#version 450

layout(local_size_x = 64) in;
layout(constant_id = 0) const bool isRandom = true;
layout(constant_id = 1) const uint extent = 1;
layout(constant_id = 2) const float firstCoordinate = 0;
layout(constant_id = 3) const uint samplesPerBlock = 1;
layout(constant_id = 4) const uint blockCount = 1;

#ifdef LOADS
layout(binding = 0) uniform usampler2D picture;
#elif DIMENSIONS == 2
layout(binding = 0) uniform sampler2D picture;
#else
layout(binding = 0) uniform sampler3D picture;
#endif
layout(std430, binding = 1) writeonly buffer Sums { vec4 sums[]; };

uint Hash(uint number)
{
    number *= 0x9E3779B9u;
    number = (number ^ number >> 15) * 0x85EBCA6Bu;
    return number ^ number >> 13;
}

float UnitCoordinate(uint place, uint axis)
{
    if (isRandom)
        return float(Hash(place * 3u + axis) >> 8) * 5.9604644775390625e-8;
#if DIMENSIONS == 3
    place += extent * extent / 2u * extent;
#else
    place += extent * extent / 2u;
#endif
    for (uint i = 0u; i < axis; ++i)
        place /= extent;
    return (float(place % extent) + 0.3) / float(extent);
}

vec4 Sample(uint place)
{
    vec2 unit = vec2(UnitCoordinate(place, 0u), UnitCoordinate(place, 1u));
#ifdef LOADS
    return vec4(texelFetch(picture, ivec2(unit * float(extent)), 0).x, 0, 0, 0);
#elif DIMENSIONS == 2
    return textureLod(picture, firstCoordinate + unit, 0);
#else
    return textureLod(picture, firstCoordinate + vec3(unit, UnitCoordinate(place, 2u)), 0);
#endif
}

void main()
{
    uint block = gl_GlobalInvocationID.x;
    vec4 sum = vec4(0);
    // Neighbouring invocations take neighbouring samples, as is best for a processor of vectors.
    for (uint i = 0u; i < samplesPerBlock; ++i)
        sum += Sample(i * blockCount + block);
    sums[block] = sum;
}
