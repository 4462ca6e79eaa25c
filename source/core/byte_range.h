// Stretches of buffers and textures.
#pragma once

#include <cstring>

#include <norvi/host/types.h>

namespace norvi {

/// Does the stretch [offset, offset + count) lie inside of `size`? Sums that overflow do not.
inline Bool Fits(Int offset, Int count, Int size) {
    Int end = 0;
    return offset >= 0 && count >= 0 && !__builtin_add_overflow(offset, count, &end) && end <= size;
}

/// Copies a stretch that Fits; overlap is allowed.
inline void CopyBytes(const void* source, void* target, Int bytes) {
    if (bytes > 0)
        std::memmove(target, source, static_cast<std::size_t>(bytes));
}

} // namespace norvi
