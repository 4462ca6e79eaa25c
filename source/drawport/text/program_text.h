// Writes complete programs.
#pragma once

#include "language_table.h"
#include "program_description.h"

namespace norvi {

/// What every program of a language begins with.
String PrologueOf(const ShaderLanguage& language);

/// One complete compute shader. Text that stands in no file of the author, such as the prologue, has the line
/// 0.
///
/// Bindings count from 0 in this order: the uniforms, if there are any, then buffers, counters and textures
/// as they were declared. All of the order is: prologue, the caller's code, defines, structs, uniforms,
/// buffers, counters, textures, functions, group shared memory, global text, the body.
Result<MappedText> WriteProgram(const ProgramDescription& program, const ShaderLanguage& language);

} // namespace norvi
