// Takes defines, structs and inline functions out of a header.
#pragma once

#include "includes.h"
#include "macro_list.h"
#include "text_lines.h"

namespace norvi {

/// Reads `entry` into `shader`. A failure is logged with the file, and returned.
/// @param signatureMacros the list MacroListSignature.
Result<void> ReadIncludeFile(ShaderPieces& shader, const IncludeFileEntry& entry, SourceFiles& files,
                             const MacroList& signatureMacros, MacroContext& context);

/// Read a block whose first line is the present one of `lines`, which then stands at its last line.
/// @param file index of the file in the table of source files.
Result<StructEntry> ReadStruct(LineReader& lines, UInt32 file);
Result<InlineFunctionEntry> ReadInlineFunction(LineReader& lines, UInt32 file,
                                               const MacroList& signatureMacros, MacroContext& context);

} // namespace norvi
