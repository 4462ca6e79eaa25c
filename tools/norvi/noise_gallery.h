// A picture of every noise, and a page that shows them.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// Writes `<name>.png` for each noise class (8-bit grey, `size` x `size` pixels, 6 x 6 cells; black and white
/// are the ends of the noise's range) and `index.html`, which shows them with id, modes, range and
/// description. Makes the directory if it is missing and replaces files of these names. A size outside 1 to
/// 4096 is an illegal argument; a file that cannot be written is a system error that names it.
Result<void> WriteNoiseGallery(const String& directory, Int32 size = 160) noexcept;

} // namespace norvi
