// Runs of samples on processors with AVX2: addresses are computed for eight samples at a time and their cache
// lines fetched ahead; then samples of one channel are filtered eight at a time, others one by one with all
// channels at once. The arithmetic is that of the sample function, operation by operation.
//
// Only functions that are marked for it use AVX2, so that nothing of it is called elsewhere.
#pragma once

#include <immintrin.h>

#include <limits>

#include <norvi/texture_records.h>

namespace norvi::avx2 {

#define NORVI_AVX2 [[gnu::target("avx2")]]
#define NORVI_AVX2_INLINE [[gnu::target("avx2"), gnu::always_inline]] static inline

template <int Dims, int Channels>
class SampleRun {
  public:
    static constexpr Int Width = 8; ///< samples whose addresses are computed together

    /// @param count a multiple of Width
    NORVI_AVX2 static void Run(Float32* results, const Float32* coordinates, Int count,
                               const TextureSamplerDataHelper& texture) {
        const Axes axes(texture.samplingData);
        Taps taps[BlockSize / Width];
        while (count > 0) {
            const Int groups = std::min(count, BlockSize) / Width;
            for (Int i = 0; i < groups; ++i)
                FindTaps(taps[i], coordinates + i * Width * Dims, axes, texture.samplingData);
            for (Int i = 0; i < groups; ++i)
                Filter(results + i * Width * Channels, coordinates + i * Width * Dims, taps[i], axes,
                       texture);
            results += groups * Width * Channels;
            coordinates += groups * Width * Dims;
            count -= groups * Width;
        }
    }

  private:
    /// Samples between the fetch of a line and its use: too few, and the line has not arrived; too many, and
    /// it is gone from the nearest cache.
    static constexpr Int BlockSize = 32;
    static constexpr int Rows = 1 << (Dims - 1);
    static constexpr std::size_t TexelBytes = Channels * sizeof(Float32);

    /// What is the same for all samples.
    struct Axes {
        NORVI_AVX2 explicit Axes(const SamplingData& data) {
            const UInt32 extents[3] = {data._width, data._height, data._depth};
            for (int axis = 0; axis < Dims; ++axis) {
                // Beyond the signed range an extent becomes negative, and nothing is inside.
                extentBits[axis] = _mm256_set1_epi32(static_cast<Int32>(extents[axis]));
                extent[axis] = _mm256_cvtepi32_ps(extentBits[axis]);
                repeats[axis] = data._flags.GetWrap(axis) == WRAP_REPEAT;
                scale[axis] = data._flags.AreCoordinatesNormalized() ? extent[axis] : _mm256_set1_ps(1.0f);
            }
            const std::size_t row = data._width * TexelBytes;
            for (int i = 0; i < Rows; ++i)
                rowOffset[i] = (i & 1 ? row : 0) + (i & 2 ? row * data._height : 0);
        }
        __m256i extentBits[Dims];
        __m256 extent[Dims];
        __m256 scale[Dims];
        bool repeats[Dims];
        std::size_t rowOffset[Rows]; ///< from the first tap, in bytes
    };

    /// Of eight samples.
    struct Taps {
        alignas(32) UInt32 firstIndex[Width];
        alignas(32) Float32 fraction[Dims][Width];
        UInt32
            others; ///< bits of samples that have not all taps inside the first layer and next to each other
    };

    /// Takes the coordinates of eight samples apart by axis.
    NORVI_AVX2_INLINE void LoadCoordinates(const Float32* p, __m256 (&axes)[Dims]) {
        if constexpr (Dims == 1) {
            axes[0] = _mm256_loadu_ps(p);
        } else if constexpr (Dims == 2) {
            const __m256 a = LoadHalves(p, p + 8), b = LoadHalves(p + 4, p + 12);
            axes[0] = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
            axes[1] = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
        } else {
            // xyzx yzxy zxyz of samples 0 to 3 and 4 to 7
            const __m256 a = LoadHalves(p, p + 12), b = LoadHalves(p + 4, p + 16),
                         c = LoadHalves(p + 8, p + 20);
            const __m256 xy = _mm256_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));
            const __m256 yz = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
            axes[0] = _mm256_shuffle_ps(a, xy, _MM_SHUFFLE(2, 0, 3, 0));
            axes[1] = _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0));
            axes[2] = _mm256_shuffle_ps(yz, c, _MM_SHUFFLE(3, 0, 3, 1));
        }
    }

    NORVI_AVX2_INLINE __m256 LoadHalves(const Float32* low, const Float32* high) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(low)), _mm_loadu_ps(high), 1);
    }

    /// NaN is not inside. Close below a whole number adding 1 rounds up, and the taps are not neighbours.
    NORVI_AVX2_INLINE __m256i AreInside(__m256 first, __m256 second, __m256 extent) {
        const __m256i isNext = _mm256_cmpeq_epi32(
            _mm256_cvttps_epi32(second), _mm256_add_epi32(_mm256_cvttps_epi32(first), _mm256_set1_epi32(1)));
        const __m256 isInRange = _mm256_and_ps(_mm256_cmp_ps(first, _mm256_setzero_ps(), _CMP_GE_OQ),
                                               _mm256_cmp_ps(second, extent, _CMP_LT_OQ));
        return _mm256_and_si256(isNext, _mm256_castps_si256(isInRange));
    }

    /// Positions wrapped by the extent; exact, as Remainder tells. From 2^25 on, where it may not be, both
    /// taps are one position, and never taken for neighbours.
    NORVI_AVX2_INLINE __m256 Repeated(__m256 position, __m256 extent) {
        const __m128 low = Remainder(_mm256_castps256_ps128(position), _mm256_castps256_ps128(extent));
        const __m128 high = Remainder(_mm256_extractf128_ps(position, 1), _mm256_castps256_ps128(extent));
        const __m256 isNegative = _mm256_cmp_ps(position, _mm256_setzero_ps(), _CMP_LT_OQ);
        return _mm256_add_ps(_mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1),
                             _mm256_and_ps(isNegative, extent));
    }

    NORVI_AVX2_INLINE __m128 Remainder(__m128 value, __m128 divisor) {
        const __m256d dividend = _mm256_cvtps_pd(value), extent = _mm256_cvtps_pd(divisor);
        const __m256d quotient =
            _mm256_round_pd(_mm256_div_pd(dividend, extent), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
        return _mm256_cvtpd_ps(_mm256_sub_pd(dividend, _mm256_mul_pd(quotient, extent)));
    }

    NORVI_AVX2_INLINE void FindTaps(Taps& taps, const Float32* coordinates, const Axes& axes,
                                    const SamplingData& data) {
        const __m256 one = _mm256_set1_ps(1.0f);
        __m256 position[Dims];
        LoadCoordinates(coordinates, position);
        __m256i index = _mm256_setzero_si256();
        __m256i inside = _mm256_set1_epi32(-1);
        for (int axis = Dims - 1; axis >= 0; --axis) {
            const __m256 first =
                _mm256_sub_ps(_mm256_mul_ps(position[axis], axes.scale[axis]), _mm256_set1_ps(0.5f));
            const __m256 second = _mm256_add_ps(first, one);
            __m256i texel = _mm256_cvttps_epi32(first);
            __m256i axisInside = AreInside(first, second, axes.extent[axis]);
            if (axes.repeats[axis] && _mm256_movemask_epi8(axisInside) != -1) {
                const __m256 wrapped = Repeated(first, axes.extent[axis]);
                texel = _mm256_cvttps_epi32(wrapped);
                axisInside = AreInside(wrapped, Repeated(second, axes.extent[axis]), axes.extent[axis]);
            }
            _mm256_store_ps(taps.fraction[axis], _mm256_sub_ps(first, _mm256_floor_ps(first)));
            inside = _mm256_and_si256(inside, axisInside);
            index = _mm256_add_epi32(_mm256_mullo_epi32(index, axes.extentBits[axis]), texel);
        }
        // The others read at the first texel and are overwritten: as many extents are 2 or more as the
        // texture has dimensions, so its taps exist.
        index = _mm256_and_si256(index, inside);
        _mm256_store_si256(reinterpret_cast<__m256i*>(taps.firstIndex), index);
        taps.others = static_cast<UInt32>(~_mm256_movemask_ps(_mm256_castsi256_ps(inside))) & 0xFF;
        for (int i = 0; i < Width; ++i) {
            const auto* texel = reinterpret_cast<const char*>(data._data) + taps.firstIndex[i] * TexelBytes;
            for (int row = 0; row < Rows; ++row)
                _mm_prefetch(texel + axes.rowOffset[row], _MM_HINT_T0);
        }
    }

    NORVI_AVX2_INLINE void Filter(Float32* results, const Float32* coordinates, const Taps& taps,
                                  const Axes& axes, const TextureSamplerDataHelper& texture) {
        const UChar* data = texture.samplingData._data;
        if constexpr (Channels == 1) {
            _mm256_storeu_ps(results, FilterLanes(data, taps, axes));
        } else {
            for (int i = 0; i < Width; ++i)
                StoreTexel(results + i * Channels, FilterChannels(data, taps, axes, i));
        }
        for (UInt32 others = taps.others; others != 0; others &= others - 1) {
            const int i = __builtin_ctz(others);
            texture.sampleFunction(results + i * Channels, coordinates + i * Dims, 0, &texture.samplingData);
        }
    }

    NORVI_AVX2_INLINE __m256 Lerp(__m256 a, __m256 b, __m256 f) {
        return _mm256_add_ps(a, _mm256_mul_ps(f, _mm256_sub_ps(b, a)));
    }
    NORVI_AVX2_INLINE __m128 Lerp(__m128 a, __m128 b, __m128 f) {
        return _mm_add_ps(a, _mm_mul_ps(f, _mm_sub_ps(b, a)));
    }

    /// One channel of eight samples.
    NORVI_AVX2_INLINE __m256 FilterLanes(const UChar* data, const Taps& taps, const Axes& axes) {
        const __m256 fx = _mm256_load_ps(taps.fraction[0]);
        __m256 rows[Rows];
        for (int row = 0; row < Rows; ++row) {
            const UChar* first = data + axes.rowOffset[row];
            // Both taps of a row at once: samples 0 1 4 5 and 2 3 6 7.
            const __m256 a = LoadPairs(first, taps, 0), b = LoadPairs(first, taps, 2);
            rows[row] = Lerp(_mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)),
                             _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)), fx);
        }
        for (int axis = 1; axis < Dims; ++axis)
            for (int i = 0; i < Rows >> axis; ++i)
                rows[i] = Lerp(rows[2 * i], rows[2 * i + 1], _mm256_load_ps(taps.fraction[axis]));
        return rows[0];
    }

    NORVI_AVX2_INLINE __m256 LoadPairs(const UChar* row, const Taps& taps, int i) {
        __m128 low = _mm_loadl_pi(_mm_setzero_ps(), PairAt(row, taps, i));
        low = _mm_loadh_pi(low, PairAt(row, taps, i + 1));
        __m128 high = _mm_loadl_pi(_mm_setzero_ps(), PairAt(row, taps, i + 4));
        high = _mm_loadh_pi(high, PairAt(row, taps, i + 5));
        return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1);
    }

    static const __m64* PairAt(const UChar* row, const Taps& taps, int sample) {
        return reinterpret_cast<const __m64*>(row + taps.firstIndex[sample] * TexelBytes);
    }

    /// All channels of sample `i`.
    NORVI_AVX2_INLINE __m128 FilterChannels(const UChar* data, const Taps& taps, const Axes& axes, int i) {
        const UChar* first = data + taps.firstIndex[i] * TexelBytes;
        const __m256 fx = _mm256_broadcast_ss(&taps.fraction[0][i]);
        if constexpr (Dims == 1) {
            return Lerp(LoadTexel(first), LoadTexel(first + TexelBytes), _mm256_castps256_ps128(fx));
        } else {
            // The rows at y and y + 1 lie in the lower and the upper half.
            __m256 rows = LerpRows(first + axes.rowOffset[0], first + axes.rowOffset[1], fx);
            __m128 upper = _mm256_extractf128_ps(rows, 1);
            const __m256 fy = _mm256_broadcast_ss(&taps.fraction[1][i]);
            if constexpr (Dims == 2) {
                return Lerp(_mm256_castps256_ps128(rows), upper, _mm256_castps256_ps128(fy));
            } else {
                const __m256 far = LerpRows(first + axes.rowOffset[2], first + axes.rowOffset[3], fx);
                const __m256 layers = Lerp(_mm256_permute2f128_ps(rows, far, 0x20),
                                           _mm256_permute2f128_ps(rows, far, 0x31), fy);
                return Lerp(_mm256_castps256_ps128(layers), _mm256_extractf128_ps(layers, 1),
                            _mm_broadcast_ss(&taps.fraction[2][i]));
            }
        }
    }

    NORVI_AVX2_INLINE __m256 LerpRows(const UChar* lower, const UChar* upper, __m256 fx) {
        return Lerp(LoadTexels(lower, upper), LoadTexels(lower + TexelBytes, upper + TexelBytes), fx);
    }

    NORVI_AVX2_INLINE __m256 LoadTexels(const UChar* lower, const UChar* upper) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(LoadTexel(lower)), LoadTexel(upper), 1);
    }

    NORVI_AVX2_INLINE __m128 LoadTexel(const UChar* texel) {
        const auto* floats = reinterpret_cast<const Float32*>(texel);
        if constexpr (Channels == 4)
            return _mm_loadu_ps(floats);
        const __m128 pair = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(texel));
        return Channels == 3 ? _mm_movelh_ps(pair, _mm_load_ss(floats + 2)) : pair;
    }

    NORVI_AVX2_INLINE void StoreTexel(Float32* result, __m128 value) {
        if constexpr (Channels == 4)
            return _mm_storeu_ps(result, value);
        _mm_storel_pi(reinterpret_cast<__m64*>(result), value);
        if constexpr (Channels == 3)
            _mm_store_ss(result + 2, _mm_movehl_ps(value, value));
    }
};

} // namespace norvi::avx2
