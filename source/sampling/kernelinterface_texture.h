// Sampler entries: textures as kernels read them.
#pragma once

#include <cstdlib>
#include <memory>

#include <norvi/texture_records.h>

namespace norvi {

struct FreeTexels {
    void operator()(UChar* texels) const { std::free(texels); }
};
using TexelStore = std::unique_ptr<UChar[], FreeTexels>;

/// One texture of a program. `helper.samplingData` points into `texels`, and kernels point at `helper`: an
/// entry that is bound must not move.
struct SamplerEntry {
    TextureSamplerDataHelper helper;
    TexelStore texels;
};

/// Makes an entry with a copy of the payload (zeros if `texture._data` is null) and the functions for its
/// combination of dimensions, channels, format, filter and sRGB.
///
/// Errors: extents, channels or a combination that are not allowed are illegal arguments, and no memory for
/// the texels is an out-of-memory error, which a negative `_size` counts as too. A payload that is smaller
/// than the texture is logged as a warning and completed with zero bytes; `_size` stays the caller's.
Result<SamplerEntry> MakeSamplerEntry(const TextureBindData& texture) noexcept;

/// A copy of `source` with memory of its own, completed with zeros as the source's is, and freed with its
/// last reference.
Result<std::shared_ptr<SamplingData>> CopySamplingData(const SamplingData& source) noexcept;

/// May the object type `parameterType` of a kernel be bound to this texture? A texture of another kind would
/// be read as what it is not. The type of a pointer to TextureSamplerDataHelper accepts every texture.
Bool AcceptsTexture(DataType parameterType, const TextureSamplerDataHelper& texture);

} // namespace norvi
