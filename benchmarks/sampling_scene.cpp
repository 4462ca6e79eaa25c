#include "sampling_scene.h"

#include <cstring>
#include <random>

#include <tbb/parallel_for.h>

namespace norvi::benchmark {

namespace {

/// As the shader of sampling_vulkan.comp computes it.
UInt32 Hash(UInt32 number) {
    number *= 0x9E3779B9u;
    number = (number ^ number >> 15) * 0x85EBCA6Bu;
    return number ^ number >> 13;
}

float UnitCoordinate(const SamplingScene& scene, UInt32 sample, int axis) {
    if (scene.isRandom)
        return static_cast<float>(Hash(sample * 3 + static_cast<UInt32>(axis)) >> 8) * 0x1p-24f;
    const auto extent = static_cast<UInt32>(scene.extent);
    sample += extent * extent / 2 * (scene.dimensions > 2 ? extent : 1);
    for (int i = 0; i < axis; ++i)
        sample /= extent;
    return (static_cast<float>(sample % extent) + 0.3f) / static_cast<float>(extent);
}

} // namespace

SamplingInput::SamplingInput(const SamplingScene& theScene) : scene(theScene) {
    std::size_t channels = static_cast<std::size_t>(scene.channels);
    for (int axis = 0; axis < scene.dimensions; ++axis)
        channels *= static_cast<std::size_t>(scene.extent);
    std::mt19937 random(1);
    texels.resize(channels * (scene.IsFiltered() ? sizeof(float) : 1));
    for (std::size_t i = 0; i < channels; ++i) {
        const float value = static_cast<float>(random() >> 8) * 0x1p-24f;
        if (scene.IsFiltered())
            std::memcpy(&texels[i * sizeof(float)], &value, sizeof(value));
        else
            texels[i] = static_cast<UChar>(value * 256.0f);
    }
    for (UInt32 sample = 0; sample < SampleCount; ++sample)
        for (int axis = 0; axis < scene.dimensions; ++axis) {
            const float unit = UnitCoordinate(scene, sample, axis);
            if (scene.IsFiltered())
                coordinates.push_back(scene.firstCoordinate + unit);
            else
                positions.push_back(static_cast<Int32>(unit * static_cast<float>(scene.extent)));
        }
}

void ForEachBlock(const std::function<void(int)>& block) {
    constexpr int blocksAtOnce = 64;
    tbb::parallel_for(0, BlockCount / blocksAtOnce, [&](int first) {
        for (int i = 0; i < blocksAtOnce; ++i)
            block(first * blocksAtOnce + i);
    });
}

} // namespace norvi::benchmark
