#include "norvi/kernel_file.h"

#include <algorithm>
#include <filesystem>

#include <norvi/host/text.h>

#include "norvi/argument_text.h"

namespace norvi {

namespace fs = std::filesystem;

namespace {

/// All files of the folder but the headers, sorted.
BaseArray<fs::path> InstalledKernels() {
    BaseArray<fs::path> files;
    std::error_code ignored;
    for (fs::directory_iterator entry(KernelSourceFolder(), ignored), end; entry != end;
         entry.increment(ignored))
        if (entry->path().has_extension() && entry->is_regular_file(ignored))
            files.push_back(entry->path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

String KernelSourceFolder() {
    std::error_code ignored;
    const fs::path program = fs::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path().parent_path() / "share" / "norvi" / "shaders").string();
}

Result<String> FindKernelFile(const String& text) {
    std::error_code ignored;
    if (fs::is_regular_file(text, ignored))
        return text;
    BaseArray<String> names;
    for (const fs::path& file : InstalledKernels()) {
        if (file.filename() == text || file.stem() == text)
            return file.string();
        names.push_back(file.stem().string());
    }
    return NotFoundError(
        Format("there is no file and no installed kernel '@'@", text, SuggestText(text, names)));
}

} // namespace norvi
