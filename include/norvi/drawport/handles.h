// What callers of a compute program need to know of the renderer: opaque handles and references.
#pragma once

#include <memory>

#include <norvi/host/types.h>

namespace norvi {

namespace drawport {
class Context;
class TextureItem;
} // namespace drawport

using DrawportContextRef = std::shared_ptr<drawport::Context>;
using DrawportTextureItemRef = std::shared_ptr<drawport::TextureItem>;

/// A bindless handle of a texture on the card; zero stands for none.
struct DrawportTextureHandle {
    UInt64 value = 0;
    bool operator==(const DrawportTextureHandle&) const = default;
};

} // namespace norvi
