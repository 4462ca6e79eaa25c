// Text that remembers where each of its lines comes from, so that what a compiler says about a generated
// program can be shown at the line that its author wrote.
#pragma once

#include <memory>

#include <norvi/host/types.h>
#include <norvi/host/url.h>

namespace norvi {

/// A line of a source file.
struct LineOrigin {
    UInt32 file = 0; ///< index into the parser's table of source files
    UInt32 line = 0; ///< from 1; 0: the text was made for the file as a whole

    bool operator==(const LineOrigin&) const = default;
};

/// Lines joined by "\n", and the origin of each.
struct MappedText {
    String text;
    BaseArray<LineOrigin> lines;

    /// Appends one more line.
    void AppendLine(std::string_view line, LineOrigin origin) {
        if (!lines.empty())
            text += '\n';
        text += line;
        lines.push_back(origin);
    }
    /// Appends the lines of `block`, all of which have the same origin.
    void AppendLines(std::string_view block, LineOrigin origin);
    /// Forgets all lines, but not the memory.
    void Clear() {
        text.clear();
        lines.clear();
    }
    /// Whether no line, not even an empty one, was appended.
    bool IsEmpty() const { return lines.empty(); }
};

/// A file that text was taken from.
struct SourceFile {
    Url url;
    bool isEncoded = false;             ///< its text must not be shown
    std::shared_ptr<const String> text; ///< bytes of the file; null if it is encoded
};

/// The line that `origin` names, as its author wrote it; empty for text that must not be shown.
String GetOriginText(const BaseArray<SourceFile>& files, LineOrigin origin);

} // namespace norvi
