// How kernels on the processor convert colours.
#pragma once

#include <algorithm>

#include <norvi/host/color_profile_convert.h>
#include <norvi/host/datatype.h>

namespace norvi {

/// A colour conversion that a kernel calls like a function: a parameter of this type receives it from
/// `UpdateColorConversionActiveKernel`. Converts one linear or encoded RGB colour at a time. Immutable; any
/// number of threads may call it. One that was never set gives colours back as they are.
class ColorConversionFunction {
  public:
    /// What a conversion of three floats yields.
    struct Pixel {
        Float32 rgb[3]{};
        Float32 unused = 0;
    };

    ColorConversionFunction() = default;
    explicit ColorConversionFunction(ColorProfileConvertRef converter) : converter_(std::move(converter)) {}

    /// @param rgb three floats
    Pixel operator()(const Float32* rgb) const noexcept {
        Pixel result;
        if (!converter_ || !converter_->Convert(rgb, result.rgb, 1))
            std::copy_n(rgb, 3, result.rgb);
        return result;
    }

    /// As above, for a vector of three components.
    template <typename Color>
    requires requires(const Color& color) { Color(color.x, color.y, color.z); }
    Color operator()(const Color& color) const noexcept {
        const Float32 rgb[]{color.x, color.y, color.z};
        const Pixel result = (*this)(rgb);
        return Color(result.rgb[0], result.rgb[1], result.rgb[2]);
    }

  private:
    ColorProfileConvertRef converter_;
};

static_assert(sizeof(ColorConversionFunction::Pixel) == 16);

NORVI_DATATYPE_NAME(ColorConversionFunction, "norvi::ColorConversionFunction");

} // namespace norvi
