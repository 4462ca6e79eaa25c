#include "mapped_text.h"

#include <algorithm>

namespace norvi {

void MappedText::AppendLines(std::string_view block, LineOrigin origin) {
    AppendLine(block, origin);
    lines.insert(lines.end(), static_cast<size_t>(std::count(block.begin(), block.end(), '\n')), origin);
}

String GetOriginText(const BaseArray<SourceFile>& files, LineOrigin origin) {
    if (origin.line == 0 || origin.file >= files.size() || !files[origin.file].text)
        return {};
    std::string_view rest = *files[origin.file].text;
    for (UInt32 line = 1; line < origin.line; ++line) {
        const size_t end = rest.find('\n');
        if (end == rest.npos)
            return {};
        rest.remove_prefix(end + 1);
    }
    rest = rest.substr(0, rest.find('\n'));
    return String(rest.ends_with('\r') ? rest.substr(0, rest.size() - 1) : rest);
}

} // namespace norvi
