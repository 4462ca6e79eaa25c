// Pictures of what the settings of a texture do.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// Writes a picture, `size` pixels wide, for each wrap mode far out and at the edge, each filter, both units
/// of coordinates, and sRGB off and on, and `index.html`, which shows them. All are drawn by
/// texture_window.kernel. Makes the directory if it is missing and replaces files of these names. A size
/// outside 1 to 4096 is an illegal argument; a file that cannot be written is a system error that names it.
Result<void> WriteSamplingGallery(const String& directory, Int32 size = 160) noexcept;

} // namespace norvi
