// How stored bytes become numbers. Single precision, in the order written: the card's results are compared
// bit by bit.
#pragma once

#include <cmath>
#include <cstring>
#include <limits>

#include <norvi/texture_records.h>

namespace norvi {

/// Towards zero. What no 32-bit integer holds, NaN included, gives the lowest one.
inline Int32 TruncateToInt(Float32 value) {
    return value >= -0x1p31f && value < 0x1p31f ? static_cast<Int32>(value)
                                                : std::numeric_limits<Int32>::min();
}

template <TextureFormat Format>
struct StoredChannel {
    using Type = Float32;
};
template <>
struct StoredChannel<TextureFormat::U8> {
    using Type = UChar;
};
template <>
struct StoredChannel<TextureFormat::S8> {
    using Type = std::int8_t;
};
template <>
struct StoredChannel<TextureFormat::U16> {
    using Type = UInt16;
};
template <>
struct StoredChannel<TextureFormat::S16> {
    using Type = Int16;
};
template <>
struct StoredChannel<TextureFormat::U32> {
    using Type = UInt32;
};
template <>
struct StoredChannel<TextureFormat::S32> {
    using Type = Int32;
};

/// How the channels of a texel are stored, and what is done to each of them on the way to a float.
template <TextureFormat Format, int StoredChannels, bool Normalize = false, bool Srgb = false>
struct TexelLayout {
    using Stored = typename StoredChannel<Format>::Type;
    static constexpr int Channels = StoredChannels;
    static constexpr bool IsFloat = std::is_same_v<Stored, Float32>;
    static constexpr bool IsPlainFloat = IsFloat && !Srgb;
    static constexpr std::size_t Bytes = sizeof(Stored) * StoredChannels;

    static Stored Read(const UChar* texel, int channel) {
        Stored stored;
        std::memcpy(&stored, texel + channel * sizeof(Stored), sizeof(Stored));
        return stored;
    }

    static Float32 Decode(Stored stored) {
        const Float32 value = Normalized(stored);
        if constexpr (!Srgb)
            return value;
        // On raw integers the threshold, converted to an integer, is 0.
        bool isDark;
        if constexpr (IsFloat || Normalize)
            isDark = 0.04045f >= value;
        else
            isDark = stored <= Stored{0};
        return isDark ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f);
    }

  private:
    static Float32 Normalized(Stored stored) {
        const auto value = static_cast<Float32>(stored);
        if constexpr (!Normalize || IsFloat)
            return value;
        else if constexpr (Format == TextureFormat::U8)
            return value / 255.0f;
        else if constexpr (Format == TextureFormat::S8)
            return Doubled((value + 128.0f) / 255.0f) + -1.0f;
        else if constexpr (Format == TextureFormat::U16)
            return value / 65535.0f;
        else if constexpr (Format == TextureFormat::S16)
            return Doubled((value + 32768.0f) / 65535.0f) + -1.0f;
        else if constexpr (Format == TextureFormat::U32)
            return value * 2.3283064e-10f + 0.0f;
        else
            return Doubled((value + 2147483648.0f) * 2.3283064e-10f) + -1.0f;
    }

    static Float32 Doubled(Float32 value) { return value + value; }
};

/// One to four floats as they lie in registers: components above the output's are without meaning.
using Float4 = Float32 __attribute__((vector_size(16)));

inline Float32 Lerp(Float32 a, Float32 b, Float32 f) {
    return a + f * (b - a);
}
inline Float4 Lerp(Float4 a, Float4 b, Float32 f) {
    return a + Float4{f, f, f, f} * (b - a);
}

/// What a sampler function delivers: how it comes from a texel, what it is outside the texture, and how it is
/// written.
template <int Components>
struct FloatOutput {
    using Value = std::conditional_t<Components == 1, Float32, Float4>;

    template <typename Layout>
    static Value Read(const UChar* texel) {
        const auto channel = [texel](int i) {
            return i < Components && i < Layout::Channels ? Layout::Decode(Layout::Read(texel, i)) : 0.0f;
        };
        if constexpr (Components == 1) {
            return channel(0);
        } else if constexpr (Components == 4 && Layout::Channels == 4 && Layout::IsPlainFloat) {
            Float4 value;
            std::memcpy(&value, texel, sizeof(value));
            return value;
        } else {
            const Float32 r = channel(0), g = channel(1), b = channel(2);
            return Float4{r, g, b, channel(3)};
        }
    }

    static Value Border(const SamplingData& data) { return FromFloats(data._borderColor); }

    static void* Write(void* result, Value value) {
        std::memcpy(result, &value, Components * sizeof(Float32));
        return result;
    }

  private:
    static Value FromFloats(const Float32* floats) {
        Value value;
        std::memcpy(&value, floats, sizeof(value));
        return value;
    }
};

/// An integer of one component. Integers keep their low bits or are extended by their own sign rule; floats
/// are truncated first.
template <typename Integer>
struct IntegerOutput {
    using Value = Integer;

    template <typename Layout>
    static Value Read(const UChar* texel) {
        return FromStored(Layout::Read(texel, 0));
    }
    static Value Border(const SamplingData& data) { return FromStored(data._borderColor[0]); }
    static void* Write(void* result, Value value) {
        std::memcpy(result, &value, sizeof(value));
        return result;
    }

  private:
    template <typename Stored>
    static Value FromStored(Stored stored) {
        if constexpr (std::is_same_v<Stored, Float32>)
            return static_cast<Value>(TruncateToInt(stored));
        else
            return static_cast<Value>(stored);
    }
};

} // namespace norvi
