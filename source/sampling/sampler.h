// The sampler functions, as one template.
#pragma once

#include "sampling/inside_taps.h"
#include "sampling/texel_decode.h"

namespace norvi {

/// The functions for one combination of output, dimensions and layout of texels. Wrap modes, filter and
/// coordinate scale are read from the texture's flags at each call.
template <typename Output, int Dims, typename Layout>
class Sampler {
  public:
    /// One texel at integer coordinates. (A TextureFunction.)
    static void* Load(void* result, const void* coordinates, Int32 layer, const SamplingData* data) {
        const auto* position = static_cast<const Int32*>(coordinates);
        UInt32 texel[Dims];
        for (int axis = 0; axis < Dims; ++axis) {
            const UInt32 extent = GetExtent(*data, axis), wrap = data->_flags.GetWrap(axis);
            texel[axis] = static_cast<UInt32>(position[axis]);
            if (position[axis] >= 0 && position[axis] < static_cast<Int32>(extent)) [[likely]]
                continue;
            if (wrap == WRAP_BORDER)
                return Output::Write(result, Output::Border(*data));
            texel[axis] = WrapTexelOutside(position[axis], extent, wrap);
        }
        return Output::Write(result, ReadTexel(*data, layer, texel));
    }

    /// One sample at float coordinates. (A TextureFunction.)
    static void* Sample(void* result, const void* coordinates, Int32 layer, const SamplingData* data) {
        const auto* position = static_cast<const Float32*>(coordinates);
        if (!data->_flags.IsLinear()) [[unlikely]]
            return SampleNearest(result, position, layer, data);

        const InsideTaps<Dims> inside(position, *data);
        if (!inside.AreAll(layer)) [[unlikely]]
            return SampleOutside(result, position, layer, data);
        return FilterInside(result, inside, data);
    }

  private:
    using Value = typename Output::Value;
    static constexpr int Taps = 1 << Dims;

    static Value ReadTexel(const SamplingData& data, Int32 layer, const UInt32* texel) {
        const UInt32 index = TexelIndex<Dims>(data, static_cast<UInt32>(layer), texel);
        return Output::template Read<Layout>(TexelAt<Layout::Bytes>(data, index));
    }

    static bool IsInside(Float32 position, Float32 extent) {
        return !(position < 0.0f) && !(position >= extent);
    }

    /// Bits of those taps that lie at the first position of the axis.
    static constexpr UInt32 FirstTapsOf(int axis) { return axis == 0 ? 0x55 : axis == 1 ? 0x33 : 0x0F; }

    /// Tap number t lies at the second position of axis a if bit a of t is set.
    [[gnu::always_inline]] static inline Value Combine(Value* taps, Float4 fractions) {
        for (int axis = 0; axis < Dims; ++axis)
            for (int i = 0; i < Taps >> (axis + 1); ++i)
                taps[i] = Lerp(taps[2 * i], taps[2 * i + 1], fractions[axis]);
        return taps[0];
    }

    [[gnu::always_inline]] static inline void* FilterInside(void* result, const InsideTaps<Dims>& inside,
                                                            const SamplingData* data) {
        const std::size_t steps[3] = {1, data->_width, std::size_t{data->_width} * data->_height};
        const UChar* first = data->_data + std::size_t{inside.GetFirstIndex(*data)} * Layout::Bytes;
        Value taps[Taps];
        for (int tap = 0; tap < Taps; ++tap) {
            std::size_t offset = 0;
            for (int axis = 0; axis < Dims; ++axis)
                offset += tap >> axis & 1 ? steps[axis] : 0;
            taps[tap] = Output::template Read<Layout>(first + offset * Layout::Bytes);
        }
        return Output::Write(result, Combine(taps, inside.GetFractions()));
    }

    static bool HasRepetition(PackedTextureFlags flags) {
        bool has = false;
        for (int axis = 0; axis < Dims; ++axis)
            has |= flags.GetWrap(axis) == WRAP_REPEAT;
        return has;
    }

    [[gnu::noinline]] static void* SampleOutside(void* result, const Float32* coordinates, Int32 layer,
                                                 const SamplingData* data) {
        InsideTaps<Dims> inside(coordinates, *data);
        if (HasRepetition(data->_flags)) {
            inside.Repeat(*data);
            if (inside.AreAll(layer))
                return FilterInside(result, inside, data);
        }
        return FilterWrapped(result, coordinates, layer, data);
    }

    [[gnu::noinline]] static void* FilterWrapped(void* result, const Float32* coordinates, Int32 layer,
                                                 const SamplingData* data) {
        UInt32 texel[2][Dims];
        Float4 fractions{};
        UInt32 outside = 0; // a bit for each tap
        for (int axis = 0; axis < Dims; ++axis) {
            const auto extent = static_cast<Float32>(GetExtent(*data, axis));
            const UInt32 wrap = data->_flags.GetWrap(axis);
            const Float32 first = ScaledPosition(coordinates[axis], extent, data->_flags) - 0.5f;
            const Float32 second = first + 1.0f;
            texel[0][axis] = WrapPosition(first, extent, wrap);
            texel[1][axis] = WrapPosition(second, extent, wrap);
            fractions[axis] = FractionOf(first);
            if (wrap == WRAP_BORDER) {
                outside |= IsInside(first, extent) ? 0 : FirstTapsOf(axis);
                outside |= IsInside(second, extent) ? 0 : ~FirstTapsOf(axis);
            }
        }
        Value taps[Taps];
        for (int tap = 0; tap < Taps; ++tap) {
            UInt32 corner[Dims];
            for (int axis = 0; axis < Dims; ++axis)
                corner[axis] = texel[tap >> axis & 1][axis];
            taps[tap] = outside >> tap & 1 ? Output::Border(*data) : ReadTexel(*data, layer, corner);
        }
        return Output::Write(result, Combine(taps, fractions));
    }

    [[gnu::noinline]] static void* SampleNearest(void* result, const Float32* coordinates, Int32 layer,
                                                 const SamplingData* data) {
        UInt32 texel[Dims];
        for (int axis = 0; axis < Dims; ++axis) {
            const auto extent = static_cast<Float32>(GetExtent(*data, axis));
            const UInt32 wrap = data->_flags.GetWrap(axis);
            const Float32 position = ScaledPosition(coordinates[axis], extent, data->_flags);
            if (wrap == WRAP_BORDER && !IsInside(position, extent))
                return Output::Write(result, Output::Border(*data));
            texel[axis] = WrapPosition(position, extent, wrap);
        }
        return Output::Write(result, ReadTexel(*data, layer, texel));
    }
};

} // namespace norvi
