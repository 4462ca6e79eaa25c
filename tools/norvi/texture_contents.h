// The first contents of a texture, and what one looks like to files.
#pragma once

#include "norvi/run_plan.h"

namespace norvi {

/// A texture as the program takes it. Without texels it is all zeros.
struct TextureContents {
    BaseArray<UChar> texels;
    TextureBindData description; ///< points into the texels; moving the contents keeps that right
};

/// Zeros, or the picture in the format and channels of the kernel's parameter. Errors quote the argument.
Result<TextureContents> LoadTextureContents(const PlannedTexture& texture);

/// The type of one channel.
DataType TextureElementType(const SamplingData& texture);
/// Height, width and, if there are several, channels. Slices of three dimensions stand one below the other.
BaseArray<Int> TextureShape(const SamplingData& texture);

} // namespace norvi
