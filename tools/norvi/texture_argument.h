// --texture, taken apart.
#pragma once

#include <optional>

#include <norvi/texture_records.h>

#include "norvi/argument_text.h"

namespace norvi {

/// A texture of zeros, or a picture.
struct TextureArgument {
    String name;
    String file;            ///< empty: zeros
    BaseArray<Int> extents; ///< of zeros, one to three: width, height, depth
    UInt32 wrap = WRAP_REPEAT;
    Bool isNormalized = false;         ///< coordinates are in 0..1
    Bool isSrgb = false;               ///< what is read passes through the sRGB decode
    std::optional<Bool> isLinear = {}; ///< the filter, if it is named; the kernel's parameter decides it
};

/// NAME=SOURCE[:OPTION,...]. Errors quote the argument.
Result<TextureArgument> ParseTexture(const String& text);

} // namespace norvi
