#include "gallery_page.h"

#include <cerrno>
#include <fstream>

#include <norvi/host/text.h>

namespace norvi {

Result<std::filesystem::path> PrepareGallery(const String& directory, Int32 size) {
    if (size < 1 || size > 4096)
        return IllegalArgumentError(Format("the picture size is @, not 1 to 4096", size));
    std::filesystem::path folder = directory;
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code)
        return SystemError(Format("cannot make the directory '@'", directory), code.value());
    return folder;
}

String GalleryRow(std::string_view name, const String& description) {
    return Format("<tr><td><img src=\"@.png\" alt=\"@\"></td><td>@</td></tr>\n", name, name, description);
}

Result<void> WriteGalleryPage(const std::filesystem::path& folder, const char* title, const String& rows) {
    const String path = (folder / "index.html").string();
    std::ofstream page(path);
    page << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" << title
         << "</title></head><body>\n<table>\n"
         << rows << "</table>\n</body></html>\n";
    page.close();
    return page ? Result<void>() : SystemError(Format("cannot write '@'", path), errno);
}

} // namespace norvi
