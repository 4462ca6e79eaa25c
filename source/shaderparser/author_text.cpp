#include "author_text.h"

#include <algorithm>
#include <unordered_set>

#include <norvi/host/text.h>

namespace norvi {

namespace {

constexpr std::string_view EncodedMessage = "an error in encoded text, of which nothing is shown";

bool IsWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// Calls `visit` with each run of letters, digits and underscores.
template <typename Visit>
void ForEachWord(std::string_view text, Visit&& visit) {
    for (auto end = text.begin(); end != text.end();) {
        const auto begin = std::find_if(end, text.end(), IsWordCharacter);
        end = std::find_if_not(begin, text.end(), IsWordCharacter);
        if (begin != end)
            visit(text.substr(static_cast<size_t>(begin - text.begin()), static_cast<size_t>(end - begin)));
    }
}

bool IsEncoded(const BaseArray<SourceFile>& files, LineOrigin origin) {
    return origin.line != 0 && origin.file < files.size() && files[origin.file].isEncoded;
}

/// Whether `message` has a word that only encoded text has told it.
bool Tells(std::string_view message, const MappedText& program, const BaseArray<SourceFile>& files,
           std::string_view authorLine) {
    std::unordered_set<std::string_view> words;
    ForEachWord(message, [&](std::string_view word) { words.insert(word); });
    ForEachWord(authorLine, [&](std::string_view word) { words.erase(word); });
    bool tells = false;
    std::string_view rest = program.text;
    for (const LineOrigin origin : program.lines) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        if (IsEncoded(files, origin))
            ForEachWord(line, [&](std::string_view word) { tells |= words.contains(word); });
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    return tells;
}

String AtLine(const String& file, Int line, std::string_view message, std::string_view text) {
    return Format("@(@): @", file, line, message).append(text.empty() ? "" : "\n").append(text);
}

} // namespace

bool HoldEncodedText(const BaseArray<SourceFile>& files) {
    return std::any_of(files.begin(), files.end(), [](const SourceFile& file) { return file.isEncoded; });
}

String DescribeForAuthor(const MappedText& program, const BaseArray<SourceFile>& files, Int line,
                         std::string_view message) {
    const auto index = static_cast<size_t>(line - 1);
    const LineOrigin origin = line > 0 && index < program.lines.size() ? program.lines[index] : LineOrigin();
    const String text = GetOriginText(files, origin);
    if (IsEncoded(files, origin) || (HoldEncodedText(files) && Tells(message, program, files, text)))
        message = EncodedMessage;
    if (origin.line == 0 || origin.file >= files.size())
        return String(message);
    return AtLine(files[origin.file].url.ToString(), origin.line, message, text);
}

String DescribeForAuthor(const Error& error, const BaseArray<SourceFile>& files) {
    const TextPlace& place = error.GetPlace();
    if (place.line == 0)
        return error.GetMessage();
    const auto file = std::find_if(files.begin(), files.end(), [&](const SourceFile& candidate) {
        return candidate.url.ToString() == place.file;
    });
    if (file == files.end())
        return AtLine(place.file, place.line, error.GetMessage(), {});
    const LineOrigin origin{static_cast<UInt32>(file - files.begin()), static_cast<UInt32>(place.line)};
    return AtLine(place.file, place.line,
                  file->isEncoded ? EncodedMessage : std::string_view(error.GetMessage()),
                  GetOriginText(files, origin));
}

} // namespace norvi
