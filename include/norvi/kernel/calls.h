// What kernel text reaches through its parameters beside buffers: counters, formulas, noise and colour
// conversions. A parameter that was never bound is not followed: a counter that nobody reads takes its place,
// a formula gives its input, noise gives 0, a conversion gives its colour.
#pragma once

#include <norvi/color_conversion.h>
#include <norvi/formula_data.h>
#include <norvi/host/noise.h>
#include <norvi/kernel/atomics.h>
#include <norvi/kernel/block.h>

namespace norvi::kernel {

using norvi::ColorConversionFunction;
using norvi::FormulaData;
using norvi::NoiseRef;

inline AtomicUInt32& Counter(AtomicUInt32* counter) {
    static AtomicUInt32 spare;
    return counter ? *counter : spare;
}

/// The formula's value for `value`; it may change `seed`.
inline float EvaluateFormula(FormulaData* formula, float value, int& seed) {
    if (!formula)
        return value;
    *formula->value = value;
    *formula->seed = seed;
    const float result = formula->cache->Evaluate();
    seed = *formula->seed;
    return result;
}

/// Generator `index` of the kernel's noise data.
inline float SampleNoise(const Block<NoiseRef>& noiseData, int index, vec3 position, float time) {
    if (index < 0 || index >= noiseData.GetCount())
        return 0.0f;
    return noiseData[index]->Noise({position.x, position.y, position.z}, time);
}

} // namespace norvi::kernel
