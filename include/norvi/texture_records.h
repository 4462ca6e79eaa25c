// The records that describe a texture on its way into a program and while a kernel samples it.
#pragma once

#include <algorithm>

#include <norvi/host/datatype.h>

namespace norvi {

/// How one channel of a texel is stored. The numbers are fixed: sampler keys are computed from them.
/// On the processor a texel of `F16` is stored as a 32-bit float, exactly like `F32`; only the card knows
/// halves.
enum class TextureFormat : UInt32 { U8 = 0, S8 = 1, U16 = 2, S16 = 3, U32 = 4, S32 = 5, F16 = 6, F32 = 7 };

inline constexpr UInt32 WRAP_REPEAT = 0; ///< the texture tiles
inline constexpr UInt32 WRAP_CLAMP = 1;  ///< clamp to the edge texel
inline constexpr UInt32 WRAP_BORDER = 2; ///< out of range yields `_borderColor`
inline constexpr UInt32 WRAP_NONE = 3;   ///< the coordinate is used as it stands

/// Description and payload of one texture.
struct TextureBindData {
    const UChar* _data = nullptr; ///< texels, not owned; null: a zero-filled store of `_size` bytes is made
    /// Bytes of the payload. Rows are tightly packed, channels adjacent in the order R, G, B, A. Texels that
    /// the payload does not reach read as zero bytes.
    Int _size = 0;
    Vec3<UInt32> _dimensions{1, 1, 1}; ///< in texels; at least 1 each
    TextureFormat _format = TextureFormat::F32;
    UInt32 _numChannels = 4;          ///< 1 to 4
    Bool _normalizeValues = false;    ///< integer texels are mapped to 0..1 (unsigned) or -1..1 (signed)
    UInt32 _sampleLinear = 0;         ///< 1: linear filtering; every other value: point sampling
    UChar _normalizedCoordinates = 0; ///< non-zero: float coordinates are in 0..1; zero: in texels
    UChar _srgb = 0;                  ///< non-zero: decoded channels pass through the sRGB decode
    UInt32 _wrapU = WRAP_REPEAT;      ///< of axis x; here and below the low two bits count on the processor
    UInt32 _wrapV = WRAP_REPEAT;
    UInt32 _wrapW = WRAP_REPEAT;
    Float32 _borderColor[4]{};

    bool operator==(const TextureBindData&) const = default;
};

/// What a sampler function decides on at each call, in 16 bits: wrap modes of x, y and z in bits 0-1, 2-3 and
/// 4-5, the filter in bits 6-7, `_normalizedCoordinates` in bits 8-15.
struct PackedTextureFlags {
    UInt16 bits = 0;

    static constexpr PackedTextureFlags Of(const TextureBindData& texture) {
        return {static_cast<UInt16>((texture._wrapU & 3) | (texture._wrapV & 3) << 2 |
                                    (texture._wrapW & 3) << 4 | (texture._sampleLinear & 3) << 6 |
                                    UInt32{texture._normalizedCoordinates} << 8)};
    }

    constexpr UInt32 GetWrap(int axis) const { return bits >> 2 * axis & 3u; }
    constexpr Bool IsLinear() const { return (bits & 0xC0) == 0x40; }
    constexpr Bool AreCoordinatesNormalized() const { return bits >= 0x100; }

    bool operator==(const PackedTextureFlags&) const = default;
};

/// What a sampler function reads. The texels belong to the sampler entry, not to this record.
struct SamplingData {
    Float32 _borderColor[4]{};
    UChar* _data = nullptr;
    UInt32 _numChannels = 0;
    Int _size = 0; ///< bytes that the caller gave; the memory behind `_data` also holds `_lastTexel`
    UInt32 _width = 0;
    UInt32 _height = 0;
    UInt32 _depth = 0;
    PackedTextureFlags _flags;
    TextureFormat _format{};
    /// The highest texel index that memory stands behind. A read beyond it yields a texel of zero bytes.
    UInt32 _lastTexel = 0;

    SamplingData() = default;
    SamplingData(const SamplingData&) = default;
    SamplingData& operator=(const SamplingData&) = default;
    /// Takes the border colour, the texels and the extents away from `other` and copies the rest.
    SamplingData(SamplingData&& other) noexcept : SamplingData(other) { other.ClearTaken(); }
    SamplingData& operator=(SamplingData&& other) noexcept {
        if (this != &other) {
            *this = static_cast<const SamplingData&>(other);
            other.ClearTaken();
        }
        return *this;
    }

    bool operator==(const SamplingData&) const = default;

  private:
    void ClearTaken() {
        std::fill_n(_borderColor, 4, 0.0f);
        _data = nullptr;
        _width = _height = _depth = 0;
    }
};

// One cache line holds all that a sampler function needs.
static_assert(sizeof(SamplingData) == 64);

struct TextureSamplerDataHelper;

/// Reads one texel or one sample.
/// @param result place of the output: 1 to 4 floats, an 8-bit unsigned or a 32-bit signed integer
/// @param coordinates x, then y, then z as the texture has dimensions: Float32 for a sample function, Int32
///        for a load function
/// @param layer slice of an array of textures; 0 for a plain texture
/// @return `result`
using TextureFunction = void* (*)(void* result, const void* coordinates, Int32 layer,
                                  const SamplingData* data);

/// Takes `count` samples at float coordinates that stand one after the other, and writes the outputs one
/// after the other. Results are those of the sample function, bit by bit. Faster
/// where the processor has AVX2, the layer is 0 and the texture is not sRGB.
using TextureRunFunction = void (*)(void* results, const void* coordinates, Int count, Int32 layer,
                                    const TextureSamplerDataHelper* texture);

/// What kernels hold of a bound texture, by pointer. The functions only read, may run on any number of
/// threads at once, never fail and never read outside the texture's memory.
struct TextureSamplerDataHelper {
    UInt32 key = 0; ///< of the combination of dimensions, format, channels and filter
    TextureFunction sampleFunction = nullptr;
    TextureFunction loadFunction = nullptr;
    SamplingData samplingData;
    DataType elementType; ///< of one channel
    TextureRunFunction sampleRunFunction =
        nullptr; ///< null for a point texture, which has no float coordinates
};

/// A record that kernels can name and nothing of this system reads.
struct ImageStorageBuffer {
    UInt64 word = 0;
    UInt32 words[4]{};

    bool operator==(const ImageStorageBuffer&) const = default;
};

NORVI_DATATYPE_NAME(TextureBindData, "norvi::TextureBindData");
NORVI_DATATYPE_NAME(SamplingData, "norvi::SamplingData");
NORVI_DATATYPE_NAME(PackedTextureFlags, "norvi::PackedTextureFlags");
NORVI_DATATYPE_NAME(ImageStorageBuffer, "norvi::ImageStorageBuffer");
NORVI_DATATYPE_NAME(TextureSamplerDataHelper, "norvi::TextureSamplerDataHelper");

namespace detail {

/// A type whose values are pointers, under the name of `Named`.
template <typename T, typename Named = T>
DataType::Description DescribePointerLike() {
    DataType::Description description;
    description.name = DataTypeName<Named>::Get();
    description.size = sizeof(T);
    description.alignment = alignof(T);
    description.kind = DataTypeKind::Pointer;
    description.isTrivial = true;
    description.operations = OperationsOf<T>();
    return description;
}

/// The record is passed by pointer, so a value of its data type is the pointer.
template <>
inline DataType::Description Describe<TextureSamplerDataHelper*>() {
    return DescribePointerLike<TextureSamplerDataHelper*, TextureSamplerDataHelper>();
}

} // namespace detail

} // namespace norvi
