// Has compilers judge programs.
#pragma once

#include "shaderparser/shaderparser.h"

namespace norvi {

/// Compiles the program of a parsed kernel, in the parser's language, with the compiler that is installed for
/// it. The error, if it refuses, holds its messages one below the other, at the lines of their author. It is
/// an error, too, if there is no compiler.
Result<void> CheckProgram(const MappedText& program, const ShaderParser& parser);

/// What a compiler has printed, for the author of the kernel: the lines that have a place in the program at
/// the place that they come from, or all lines if none has.
String CompilerMessages(const MappedText& program, const BaseArray<SourceFile>& files,
                        std::string_view output);

} // namespace norvi
