// The table of noise generators: one row for each class id.
#pragma once

#include <array>

#include <norvi/host/noise.h>

namespace norvi {

/// Evaluates a generator. `mask` is 2^power - 1.
using NoiseFunction = Float (*)(const Vector32& position, Float time, UInt32 seed, UInt32 mask);

struct NoiseKind {
    NoiseInfo info;
    NoiseFunction evaluate;
    /// The function of the text, `float name(vec3 position, float time, uint seed, uint mask)`.
    const char* functionName;
    /// The texts in kernels/noise that it needs (without the suffix ".noise"), each after those it needs
    /// itself, separated by blanks. The last holds the function.
    const char* files;
};

extern const std::array<NoiseKind, 24> noiseKinds;

} // namespace norvi
