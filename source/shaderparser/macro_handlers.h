// How each macro of the kernel language is rewritten. All take an entry of a macro list, the line, and the
// position of the entry's key in it; what they make of a macro's arguments is described in
// docs/kernel_text.md.
#pragma once

#include "macro_list.h"

namespace norvi {

/// KEY becomes the value.
Result<void> ReplaceKey(const MacroEntry& entry, String& line, size_t position);
/// KEY(x) becomes x. The character behind the key goes, whatever it is, and so does the first ")".
Result<void> UnwrapKey(const MacroEntry& entry, String& line, size_t position);
/// KEY(x) becomes "value x".
Result<void> PrefixKey(const MacroEntry& entry, String& line, size_t position);

/// A parameter Block<T> of a function.
Result<void> RewriteBlock(const MacroEntry& entry, String& line, size_t position);
/// MAKELOCAL(name, count, mapper), which becomes the whole line.
Result<void> RewriteMakeLocal(const MacroEntry& entry, String& line, size_t position);
/// LOCALDATA(name, index, other)
Result<void> RewriteLocalData(const MacroEntry& entry, String& line, size_t position);
/// GROUPSHAREDMEM(type, name, size), which leaves an empty line and a declaration elsewhere.
Result<void> RewriteGroupSharedMemory(const MacroEntry& entry, String& line, size_t position);
/// ATOMIC, up to the next blank.
Result<void> RewriteAtomic(const MacroEntry& entry, String& line, size_t position);
/// GetFramebufferTexel(texture, position[, InSampleID])
Result<void> RewriteFramebufferTexel(const MacroEntry& entry, String& line, size_t position);
/// matoff(m), which becomes the whole line.
Result<void> RewriteMatrixOffset(const MacroEntry& entry, String& line, size_t position);
/// FORMULAPARSE(name, input, seed, type), which becomes the whole line.
Result<void> RewriteFormula(const MacroEntry& entry, String& line, size_t position);

} // namespace norvi
