// Writes complete programs.
#pragma once

#include "language_table.h"
#include "program_description.h"

namespace norvi {

/// One complete compute shader. Text that stands in no file of the author, such as the prologue, has the line
/// 0.
///
/// Bindings count from 0 in this order: the uniforms, if there are any, then buffers, counters and textures
/// as they were declared. All of the order is: prologue, the caller's code, defines, structs, uniforms,
/// buffers, counters, textures, functions, group shared memory, global text, the body.
Result<MappedText> WriteProgram(const ProgramDescription& program, const ShaderLanguage& language);

/// What a compiler says of line `line` (from 1) of a program, for its author: "file(line): message" and the
/// line as it stands there. Text of encoded files is not shown, and neither are the lines that no author
/// wrote; the message is then all there is.
String DescribeAtOrigin(const MappedText& program, const BaseArray<SourceFile>& files, Int line,
                        std::string_view message);

} // namespace norvi
