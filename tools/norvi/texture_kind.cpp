#include "norvi/texture_kind.h"

#include <norvi/texture_sampler_objects.h>

namespace norvi {

const char* TextureKind::GetSizeForm() const {
    static constexpr const char* forms[] = {"W", "WxH", "WxHxD"};
    return forms[dimensions - 1];
}

const TextureKind* FindTextureKind(DataType type) {
#define NORVI_TEXTURE_KIND(dims, letters, channels, format, formatId, filter, filterId, linear)              \
    {#dims "D_" #letters "_" #format "_" #filter,                                                            \
     DataType::Of<TextureSamplerObj_##dims##D_##letters##_##format##_##filter>(),                            \
     dims,                                                                                                   \
     channels,                                                                                               \
     TextureFormat::format,                                                                                  \
     linear},
    static const TextureKind kinds[] = {NORVI_FOR_EACH_TEXTURE_SAMPLER_OBJ(NORVI_TEXTURE_KIND)};
#undef NORVI_TEXTURE_KIND
    for (const TextureKind& kind : kinds)
        if (kind.type == type)
            return &kind;
    return nullptr;
}

} // namespace norvi
