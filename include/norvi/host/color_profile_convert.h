// Conversion of pixels between colour spaces.
#pragma once

#include <norvi/host/color_profile.h>
#include <norvi/host/id.h>

namespace norvi {

/// Ids of the pixel formats that colours are converted in.
namespace pixelformat {
/// Red, green, blue: 12 bytes.
inline constexpr const char* RgbF32 = "net.norvi.image.pixelformat.rgb.f32";
/// Red, green, blue, alpha: 16 bytes.
inline constexpr const char* RgbaF32 = "net.norvi.image.pixelformat.rgba.f32";
} // namespace pixelformat

/// Converts pixels from one space to another. Made once by Init; from then on any number of threads may call
/// Convert at once.
class ColorProfileConvert {
  public:
    /// Prepares the conversion from `source` to `target`. Illegal-argument errors: another pixel format than
    /// those in `pixelformat`, an empty profile, reserved arguments that are not 0, two spaces that cannot be
    /// connected (of two configurations of which one lacks the role aces_interchange). A null profile is a
    /// null-pointer error. After an error the object is as it was.
    ///
    /// Cost: 0.1 ms; some tens of milliseconds where a lookup table must be inverted.
    Result<void> Init(const Id& sourceFormat, const ColorProfileRef& source, const Id& targetFormat,
                      const ColorProfileRef& target, UInt32 reserved1, UInt32 reserved2) noexcept;

    /// Converts `pixelCount` pixels that stand one after the other. `source` and `target` are addresses of
    /// Float32, aligned to 4; they may be the same if both formats are, and must not overlap otherwise.
    ///
    /// Alpha is kept, becomes 1 where the source has none, and colours are taken as not multiplied by it.
    /// Values below 0 and above 1 are converted like others, so far as the spaces define them; NaN and
    /// infinities do no harm, but some log curves turn NaN into a number.
    ///
    /// Before Init it is an illegal-state error; a negative count is an illegal-argument error.
    ///
    /// Cost: 20 to 50 ns a pixel in images, 45 to 120 ns for a single one; up to `LargestSmallCount` pixels
    /// without an allocation, above with a few per call (if there is no memory for them: the out-of-memory
    /// error, and target pixels without meaning).
    Result<void> Convert(const void* source, void* target, Int pixelCount) const noexcept;

    static constexpr Int LargestSmallCount = 16;

  private:
    struct Steps;
    std::shared_ptr<const Steps> steps_;
};

using ColorProfileConvertRef = std::shared_ptr<ColorProfileConvert>;

} // namespace norvi
