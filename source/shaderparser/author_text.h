// What is said about a text, shown to its author: with the place, and with the line as it stands there. Of
// encoded files nothing is shown but the place.
#pragma once

#include <norvi/host/result.h>

#include "mapped_text.h"

namespace norvi {

/// What a compiler says about line `line` (from 1) of `program`: "file(line): message" and below it the line.
/// For a line that no author wrote the message is all there is.
///
/// If the program holds text of encoded files, a message that has a word of that text which does not stand in
/// the author's own line gives way to a neutral sentence.
String DescribeForAuthor(const MappedText& program, const BaseArray<SourceFile>& files, Int line,
                         std::string_view message);

/// An error of the parser, in the same form.
String DescribeForAuthor(const Error& error, const BaseArray<SourceFile>& files);

/// Whether one of the files is encoded.
bool HoldEncodedText(const BaseArray<SourceFile>& files);

} // namespace norvi
