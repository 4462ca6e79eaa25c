// The two forms in which a kernel declares its inputs.
#pragma once

#include "macro_list.h"
#include "text_lines.h"

namespace norvi {

/// Parameters and textures that were read so far.
struct KernelInputs {
    BaseArray<KernelParameterEntry> parameters;
    BaseArray<KernelTextureEntry> textures;
};

/// Reads a line "Type name;" or "const Type name;" of a `struct KernelInput`. Counts buffers in `shader`. A
/// line that is neither a known type nor a buffer adds nothing.
void ReadStructKernelInputLine(ShaderPieces& shader, const Words& words, LineOrigin origin,
                               KernelInputs& inputs);

/// Reads a line "(Type) name," of a KERNELINPUTS list. Counts buffers and writable textures in `shader`. A
/// line of one word is an illegal-argument error; a type that is not known adds nothing.
/// @param globalMacros the list MacroListGlobal.
Result<void> ReadKernelInputsLine(ShaderPieces& shader, const Words& words, LineOrigin origin,
                                  KernelInputs& inputs, const MacroList& globalMacros);

} // namespace norvi
