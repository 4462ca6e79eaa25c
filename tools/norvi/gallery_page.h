// The page that shows the pictures of a gallery.
#pragma once

#include <filesystem>

#include <norvi/host/result.h>

namespace norvi {

/// Makes the folder if it is missing. A size of pictures outside 1 to 4096 is an illegal argument, and a
/// folder that cannot be made a system error that names it.
Result<std::filesystem::path> PrepareGallery(const String& directory, Int32 size);

/// Shows `<name>.png`, and beside it a description in HTML.
String GalleryRow(std::string_view name, const String& description);

/// Writes `index.html`. A system error names the file.
Result<void> WriteGalleryPage(const std::filesystem::path& folder, const char* title, const String& rows);

} // namespace norvi
