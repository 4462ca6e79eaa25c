#include <norvi/host/color_profile_convert.h>

#include <algorithm>
#include <mutex>

#include "color_config.h"

namespace norvi {

struct ColorProfileConvert::Steps {
    OCIO::ConstCPUProcessorRcPtr processor;
    int sourceChannels;
    int targetChannels;

    void ConvertSmall(const Float32* source, Float32* target, Int count) const;
    void ConvertLarge(const Float32* source, Float32* target, Int count) const;
    void ConvertPixel(const Float32* source, Float32* target) const;
    void ConvertLines(const Float32* source, Float32* target, Int width, Int height) const;
    void CopyAlpha(const Float32* source, Float32* target, Int count) const;
};

namespace {

// Pixels that the library handles at a time: a line, 16 KiB inside it, stays in the first-level cache,
// and what a call costs disappears. One line for a whole image took up to 8 times as long.
constexpr Int LineLength = 1024;

Result<int> CountChannels(const Id& format) {
    if (format == Id(pixelformat::RgbF32))
        return 3;
    if (format == Id(pixelformat::RgbaF32))
        return 4;
    return IllegalArgumentError(
        Format("colours in the pixel format '@' cannot be converted, only '@' and '@'", format,
               pixelformat::RgbF32, pixelformat::RgbaF32));
}

Result<void> CheckProfile(const char* which, const ColorProfileRef& profile) {
    if (!profile)
        return NullPtrError(Format("the @ colour profile is null", which));
    if (profile->IsEmpty())
        return IllegalArgumentError(Format("the @ colour profile is empty", which));
    return OK;
}

// One at a time: the library reads its settings from the environment through one static string.
OCIO::ConstCPUProcessorRcPtr MakeProcessor(const ColorProfile& source, const ColorProfile& target) {
    static std::mutex making;
    const std::lock_guard lock(making);
    const auto& from = source.GetConfig()->Get();
    const auto& to = target.GetConfig()->Get();
    const char* fromName = source.GetName().c_str();
    const char* toName = target.GetName().c_str();
    const auto processor = from == to ? from->getProcessor(fromName, toName)
                                      : OCIO::Config::GetProcessorFromConfigs(from, fromName, to, toName);
    return processor->getDefaultCPUProcessor();
}

} // namespace

Result<void> ColorProfileConvert::Init(const Id& sourceFormat, const ColorProfileRef& source,
                                       const Id& targetFormat, const ColorProfileRef& target,
                                       UInt32 reserved1, UInt32 reserved2) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(sourceChannels, CountChannels(sourceFormat));
        NORVI_TRY_VALUE(targetChannels, CountChannels(targetFormat));
        NORVI_TRY(CheckProfile("source", source));
        NORVI_TRY(CheckProfile("target", target));
        if (reserved1 != 0 || reserved2 != 0)
            return IllegalArgumentError(Format(
                "the reserved arguments of a colour conversion are @ and @, not 0", reserved1, reserved2));
        const String what = Format("no conversion from '@' to '@'", source->GetName(), target->GetName());
        return CatchColorErrors(what, [&]() -> Result<void> {
            auto processor = MakeProcessor(*source, *target);
            steps_ =
                std::make_shared<const Steps>(Steps{std::move(processor), sourceChannels, targetChannels});
            return OK;
        });
    });
}

Result<void> ColorProfileConvert::Convert(const void* source, void* target, Int pixelCount) const noexcept {
    if (!steps_)
        return IllegalStateError("the colour conversion is not initialised");
    if (pixelCount < 0)
        return IllegalArgumentError("the number of pixels to convert is negative");
    const auto* from = static_cast<const Float32*>(source);
    auto* to = static_cast<Float32*>(target);
    return CatchColorErrors("colours cannot be converted", [&]() -> Result<void> {
        if (pixelCount <= LargestSmallCount)
            steps_->ConvertSmall(from, to, pixelCount);
        else
            steps_->ConvertLarge(from, to, pixelCount);
        return OK;
    });
}

void ColorProfileConvert::Steps::ConvertSmall(const Float32* source, Float32* target, Int count) const {
    for (Int i = 0; i < count; ++i) {
        ConvertPixel(source, target);
        source += sourceChannels;
        target += targetChannels;
    }
}

void ColorProfileConvert::Steps::ConvertLarge(const Float32* source, Float32* target, Int count) const {
    const Int lines = count / LineLength, inLines = lines * LineLength;
    if (lines > 0)
        ConvertLines(source, target, LineLength, lines);
    if (count > inLines)
        ConvertLines(source + inLines * sourceChannels, target + inLines * targetChannels, count - inLines,
                     1);
}

// Alpha goes around the library, whose curves would change it in the last digits.

void ColorProfileConvert::Steps::ConvertPixel(const Float32* source, Float32* target) const {
    CopyAlpha(source, target, 1);
    std::copy_n(source, 3, target);
    processor->applyRGB(target);
}

void ColorProfileConvert::Steps::ConvertLines(const Float32* source, Float32* target, Int width,
                                              Int height) const {
    const auto describe = [&](Float32* pixels, int channels) {
        constexpr ptrdiff_t Size = sizeof(Float32);
        return OCIO::PackedImageDesc(pixels, width, height, 3, OCIO::BIT_DEPTH_F32, Size, channels * Size,
                                     width * channels * Size);
    };
    // The library only reads the source, but its description takes no const.
    const OCIO::PackedImageDesc from = describe(const_cast<Float32*>(source), sourceChannels);
    OCIO::PackedImageDesc to = describe(target, targetChannels);
    processor->apply(from, to);
    CopyAlpha(source, target, width * height);
}

void ColorProfileConvert::Steps::CopyAlpha(const Float32* source, Float32* target, Int count) const {
    if (targetChannels == 4 && source != target)
        for (Int i = 0; i < count; ++i)
            target[4 * i + 3] = sourceChannels == 4 ? source[4 * i + 3] : 1;
}

} // namespace norvi
