#include "noise_table.h"

#include <algorithm>
#include <iterator>

#include "lanes.h"

namespace norvi {

namespace noise {
// clang-format off
// Shared texts in the order in which they need each other, then one for each noise.
#include <noise/lattice.noise>
#include <noise/gradient.noise>
#include <noise/octaves.noise>
#include <noise/displacement.noise>
#include <noise/points.noise>
#include <noise/nearest.noise>
#include <noise/blisteredturbulence.noise>
#include <noise/box.noise>
#include <noise/buya.noise>
#include <noise/cell.noise>
#include <noise/cranal.noise>
#include <noise/dents.noise>
#include <noise/displacedturbulence.noise>
#include <noise/electric.noise>
#include <noise/gaseous.noise>
#include <noise/hama.noise>
#include <noise/luka.noise>
#include <noise/mod.noise>
#include <noise/naki.noise>
#include <noise/nutous.noise>
#include <noise/ober.noise>
#include <noise/perlin.noise>
#include <noise/pezo.noise>
#include <noise/poxo.noise>
#include <noise/sema.noise>
#include <noise/stupl.noise>
#include <noise/turbulence.noise>
#include <noise/vl.noise>
#include <noise/wavyturbulence.noise>
#include <noise/zada.noise>
// clang-format on
} // namespace noise

namespace {

/// The function of the text behind the plain types of the host. Everything it calls is inlined: vectors in
/// calls would go through memory.
template <float (*function)(noise::vec3, float, noise::uint, noise::uint)>
[[gnu::flatten]] Float Evaluate(const Vector32& position, Float time, UInt32 seed, UInt32 mask) {
    return function(noise::vec3(position.x, position.y, position.z), time, seed, mask);
}

// clang-format off
constexpr const char* modes[] = {
    noiseclassid::Perlin, noiseclassid::Turbulence, noiseclassid::Turbulence, noiseclassid::Gaseous, noiseclassid::Electric,
    noiseclassid::Box, noiseclassid::BlisteredTurbulence, noiseclassid::DisplacedTurbulence, noiseclassid::Buya, noiseclassid::Cranal,
    noiseclassid::Dents, noiseclassid::Hama, noiseclassid::Luka, noiseclassid::Mod, noiseclassid::Naki,
    noiseclassid::Nutous, noiseclassid::Ober, noiseclassid::Pezo, noiseclassid::Poxo, noiseclassid::Sema,
    noiseclassid::Stupl, noiseclassid::Vl, noiseclassid::WavyTurbulence, noiseclassid::Zada, noiseclassid::Cell,
};
// clang-format on
static_assert(std::size(modes) == NoiseModeCount);

#define NOISE(name, minimum, maximum, isContinuous, files, description)                                      \
    NoiseKind {                                                                                              \
        {noiseclassid::name, minimum, maximum, isContinuous, description}, Evaluate<noise::Noise##name>,     \
            "Noise" #name, files                                                                             \
    }

#define GRADIENT "lattice gradient "
#define OCTAVES GRADIENT "octaves "
#define POINTS "lattice points "
#define NEAREST POINTS "nearest "

} // namespace

// clang-format off
constinit const std::array<NoiseKind, 24> noiseKinds = {
    NOISE(Perlin, -1, 1, true, GRADIENT "perlin",
          "gradient noise: soft waves of one size"),
    NOISE(Turbulence, 0, 1, true, OCTAVES "turbulence",
          "sum of the absolute values of four octaves: creased smoke"),
    NOISE(Gaseous, 0, 1, true, OCTAVES "gaseous",
          "octaves blown aside by those before them: drifting gas"),
    NOISE(Electric, 0, 1, true, OCTAVES "electric",
          "ridges of four octaves: discharges"),
    NOISE(Box, 0, 1, false, "lattice box",
          "cells halved at random along each axis: flat blocks"),
    NOISE(BlisteredTurbulence, 0, 1, true, OCTAVES "points nearest blisteredturbulence",
          "turbulence raised by round blisters"),
    NOISE(DisplacedTurbulence, 0, 1, true, OCTAVES "displacement displacedturbulence",
          "turbulence at displaced positions: swirling creases"),
    NOISE(Buya, 0, 1, true, NEAREST "buya",
          "F2 - F1 by the largest component: angular plates"),
    NOISE(Cranal, 0, 1, true, NEAREST "cranal",
          "plates of random shade with cracks between them"),
    NOISE(Dents, 0, 1, true, OCTAVES "dents",
          "turbulence to the third power: scattered peaks"),
    NOISE(Hama, 0, 1, true, NEAREST "hama",
          "square of the distance to the nearest point: hammered metal"),
    NOISE(Luka, 0, 1, true, POINTS "luka",
          "circles around feature points: bubbles"),
    NOISE(Mod, 0, 1, true, OCTAVES "mod",
          "gradient noise in rings: growth rings"),
    NOISE(Naki, 0, 1, true, OCTAVES "naki",
          "gradient noise drawn out along y: fibres"),
    NOISE(Nutous, 0, 1, true, NEAREST "nutous",
          "1 - F1 / F2: kernels"),
    NOISE(Ober, 0, 1, true, OCTAVES "ober",
          "octaves weighted by height: a weathered surface"),
    NOISE(Pezo, 0, 1, true, OCTAVES "pezo",
          "two thresholds of gradient noise: islands"),
    NOISE(Poxo, 0, 1, true, POINTS "poxo",
          "craters of random size: pocks"),
    NOISE(Sema, 0, 1, true, OCTAVES "sema",
          "gradient noise in six steps: terraces"),
    NOISE(Stupl, 0, 1, true, GRADIENT "points nearest stupl",
          "dots as large as gradient noise is high: stipple"),
    NOISE(Vl, -1, 1, true, OCTAVES "displacement vl",
          "gradient noise at displaced positions: variable lacunarity"),
    NOISE(WavyTurbulence, 0, 1, true, OCTAVES "wavyturbulence",
          "turbulence at swaying positions: rippled glass"),
    NOISE(Zada, 0, 1, true, OCTAVES "zada",
          "stripes bent by turbulence: veined stone"),
    NOISE(Cell, 0, 1, false, NEAREST "cell",
          "random number of the nearest feature point: flat cells"),
};
// clang-format on

const char* NoiseClassIdOfMode(UInt32 mode) {
    return mode < NoiseModeCount ? modes[mode] : noiseclassid::Turbulence;
}

const NoiseInfo* FindNoiseInfo(std::string_view classId) {
    const auto found = std::find_if(noiseKinds.begin(), noiseKinds.end(),
                                    [&](const NoiseKind& kind) { return classId == kind.info.id; });
    return found == noiseKinds.end() ? nullptr : &found->info;
}

} // namespace norvi
