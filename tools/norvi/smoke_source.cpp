#include "norvi/smoke_source.h"

#include <algorithm>
#include <cmath>

#include <norvi/host/color_profile_convert.h>

namespace norvi {

namespace {

/// Colours beyond this would hide all others that they mix with.
constexpr Float32 MaxColor = 16;

/// A disc of smoke with a soft rim. Places and sizes are in heights of the picture, from the middle of its
/// lower edge.
struct Ember {
    Float32 right;
    Float32 up;
    Float32 radius;
    Vector32 color;
};

constexpr Ember Embers[] = {
    {-0.30f, 0.10f, 0.040f, {0.05f, 0.30f, 1.00f}}, {-0.15f, 0.07f, 0.035f, {0.75f, 0.06f, 0.90f}},
    {0.00f, 0.10f, 0.050f, {1.00f, 0.10f, 0.12f}},  {0.15f, 0.07f, 0.035f, {1.00f, 0.38f, 0.03f}},
    {0.30f, 0.10f, 0.040f, {0.03f, 0.85f, 0.65f}},
};

/// Four channels of any picture: grey and colour, with and without alpha.
Picture ToRgba(const Picture& picture) {
    Picture result{picture.width, picture.height, 4, {}};
    const auto channels = static_cast<std::size_t>(picture.channels);
    const Bool isColor = channels >= 3, hasAlpha = channels == 2 || channels >= 4;
    result.pixels.reserve(picture.pixels.size() / channels * 4);
    for (std::size_t i = 0; i < picture.pixels.size(); i += channels) {
        for (std::size_t c = 0; c < 3; ++c)
            result.pixels.push_back(picture.pixels[i + (isColor ? c : 0)]);
        result.pixels.push_back(hasAlpha ? picture.pixels[i + (isColor ? 3 : 1)] : 1.0f);
    }
    return result;
}

Result<void> ConvertToWorkingSpace(Picture& picture) {
    NORVI_TRY_VALUE(source, ColorProfile::FromName("srgb_tx"));
    NORVI_TRY_VALUE(working, ColorProfile::FromName(WorkingSpace));
    ColorProfileConvert convert;
    NORVI_TRY(convert.Init(Id(pixelformat::RgbaF32), source, Id(pixelformat::RgbaF32), working, 0, 0));
    return convert.Convert(picture.pixels.data(), picture.pixels.data(), picture.width * picture.height);
}

/// NaN gives 0.
Float32 Limited(Float32 value, Float32 limit) {
    return value > 0 ? std::min(value, limit) : 0.0f;
}

void MakeDensity(Picture& picture) {
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        Float32* pixel = &picture.pixels[i];
        const Float32 alpha = Limited(pixel[3], 1);
        for (int c = 0; c < 3; ++c)
            pixel[c] = Limited(pixel[c], MaxColor) * alpha;
        pixel[3] = std::min(std::max({pixel[0], pixel[1], pixel[2]}), 1.0f);
    }
}

} // namespace

Result<Picture> ReadSmokeSource(const String& path, Int width, Int height) {
    NORVI_TRY_VALUE(file, ReadPicture(path));
    Picture picture = ToRgba(file);
    if (!HoldsFloats(path))
        NORVI_TRY(ConvertToWorkingSpace(picture));
    NORVI_TRY_VALUE(resized, ResizePicture(picture, width, height));
    MakeDensity(resized);
    return resized;
}

Picture EmberPicture(Int width, Int height) {
    Picture picture{width, height, 4, BaseArray<Float32>(static_cast<std::size_t>(4 * width * height))};
    for (Int y = 0; y < height; ++y) {
        for (Int x = 0; x < width; ++x) {
            const auto tall = static_cast<Float32>(height);
            const Float32 right =
                (static_cast<Float32>(x) + 0.5f - 0.5f * static_cast<Float32>(width)) / tall;
            const Float32 up = (tall - static_cast<Float32>(y) - 0.5f) / tall;
            Float32* pixel = &picture.pixels[static_cast<std::size_t>(4 * (y * width + x))];
            for (const Ember& ember : Embers) {
                const Float32 distance = std::hypot(right - ember.right, up - ember.up) / ember.radius;
                const Float32 density = std::clamp(2 - 2 * distance, 0.0f, 1.0f);
                const Float32 values[]{ember.color.x, ember.color.y, ember.color.z, 1.0f};
                for (int c = 0; c < 4; ++c)
                    pixel[c] += values[c] * density;
            }
        }
    }
    return picture;
}

} // namespace norvi
