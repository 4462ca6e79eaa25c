// What a sampler function must deliver, computed from the description of a texture in double precision, with
// one rounding to single precision after each operation.
#pragma once

#include <cstddef>
#include <vector>

#include <norvi/texture_records.h>

namespace norvi {

struct ReferenceTexture {
    TextureBindData bind; ///< with 32-bit floats, 8-bit or 32-bit integers as payload
    int dimensions = 0;
};

/// Components that the texture does not have are 0.
using ReferenceTexel = std::vector<double>;

/// Whether the description says what is read at this position; without wrap it does not for what is far out.
bool IsDefined(const ReferenceTexture& texture, const float* coordinates);

ReferenceTexel ReferenceLoad(const ReferenceTexture& texture, const int* position, int layer);
ReferenceTexel ReferenceSample(const ReferenceTexture& texture, const float* coordinates, int layer);

} // namespace norvi
