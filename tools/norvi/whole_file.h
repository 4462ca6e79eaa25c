// Files that are written as a whole or not at all.
#pragma once

#include <norvi/host/result.h>

namespace norvi {

/// Puts `bytes` into a file beside `path` and gives that its name, so that a failure leaves what was there
/// before, and nothing else. A file that is there keeps its mode, and a link goes on to point to it; what is
/// no regular file, such as a device, is written to.
Result<void> WriteWholeFile(const String& path, std::string_view bytes) noexcept;

} // namespace norvi
