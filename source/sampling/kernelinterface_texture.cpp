#include "sampling/kernelinterface_texture.h"

#include <cstring>
#include <limits>
#include <optional>

#include <norvi/host/log.h>
#include <norvi/texture_sampler_objects.h>

#include "sampling/datatype_declaration.h"
#include "sampling/sampler_functions.h"
#include "sampling/texture_sampling_structs.h"

namespace norvi {

namespace {

#define NORVI_DECLARE_OBJ(dims, letters, channels, format, formatId, filter, filterId, linear)               \
    DeclareDataType<TextureSamplerObj_##dims##D_##letters##_##format##_##filter>(                            \
        "net.norvi.datatype.parallelprogram.textures.texturesamplerobj_" #dims "D_" #letters "_" #formatId   \
        "_" #filterId),

ClassDeclaration g_objectTypes[] = {NORVI_FOR_EACH_TEXTURE_SAMPLER_OBJ(NORVI_DECLARE_OBJ)};

/// The keys of textures that one object type reads alike are made one: both float formats are stored in the
/// same way, and a 32-bit integer texture is never filtered.
UInt32 ReadingKey(TextureFormat format, UInt32 dimensions, UInt32 numChannels, bool isLinear) {
    if (format == TextureFormat::F16)
        format = TextureFormat::F32;
    return MakeSamplerKey(dimensions, format, numChannels, isLinear && format != TextureFormat::S32);
}

UInt32 ReadingKey(const TextureSamplerDataHelper& texture) {
    const SamplingData& data = texture.samplingData;
    return ReadingKey(data._format, texture.key & 3, data._numChannels, texture.key & 128);
}

template <typename Object>
UInt32 ReadingKeyOf() {
    return ReadingKey(Object::Format, Object::Dimensions, Object::Channels, Object::IsLinear);
}

struct ObjectType {
    DataType type;
    UInt32 readingKey;
};

const ObjectType* FindObjectType(DataType type) {
#define NORVI_OBJECT_TYPE(dims, letters, channels, format, formatId, filter, filterId, linear)               \
    {DataType::Of<TextureSamplerObj_##dims##D_##letters##_##format##_##filter>(),                            \
     ReadingKeyOf<TextureSamplerObj_##dims##D_##letters##_##format##_##filter>()},
    static const ObjectType objectTypes[] = {NORVI_FOR_EACH_TEXTURE_SAMPLER_OBJ(NORVI_OBJECT_TYPE)};
    for (const ObjectType& objectType : objectTypes)
        if (objectType.type == type)
            return &objectType;
    return nullptr;
}

Result<const SamplerCombination*> ChooseCombination(const TextureBindData& texture) {
    const Vec3<UInt32>& extents = texture._dimensions;
    if (extents.x == 0 || extents.y == 0 || extents.z == 0)
        return IllegalArgumentError("_dimensions in texBindData have to be larger or equal to 1!");
    const UInt32 dimensions = UInt32{extents.x > 1} + UInt32{extents.y > 1} + UInt32{extents.z > 1};
    if (dimensions == 0 || texture._numChannels < 1 || texture._numChannels > 4)
        return IllegalArgumentError("Dimensions has to be in the range [1,3], numberChannels in [1,4].");
    const UInt32 key =
        MakeSamplerKey(dimensions, texture._format, texture._numChannels, texture._sampleLinear == 1);
    if (const SamplerCombination* found = FindSamplerCombination(key))
        return found;
    return IllegalArgumentError("Combination of input parameters "
                                "(dimensions/formatOut/numberChannels/sampleLinear) not allowed.");
}

/// The bytes that texels of these extents take; nothing if no 64-bit number holds them.
std::optional<Int> BytesOfTexels(UInt32 width, UInt32 height, UInt32 depth, Int texelBytes) {
    Int bytes = texelBytes;
    for (const UInt32 extent : {width, height, depth})
        if (__builtin_mul_overflow(bytes, Int{extent}, &bytes))
            return std::nullopt;
    return bytes;
}

/// `stored` bytes, of which the first `given` are those of `source` and the others zero. Null without memory.
/// Zeros come as pages that take no memory before they are written to.
TexelStore MakeTexelStore(Int stored, const UChar* source, Int given) {
    if (!source)
        return TexelStore(static_cast<UChar*>(std::calloc(static_cast<std::size_t>(stored), 1)));
    TexelStore store(static_cast<UChar*>(std::malloc(static_cast<std::size_t>(stored))));
    if (store) {
        std::memcpy(store.get(), source, static_cast<std::size_t>(given));
        std::memset(store.get() + given, 0, static_cast<std::size_t>(stored - given));
    }
    return store;
}

Result<void> FillTexels(SamplerEntry& entry, const TextureBindData& texture) {
    SamplingData& data = entry.helper.samplingData;
    const Int texelBytes = entry.helper.elementType->size * texture._numChannels;
    const std::optional<Int> needed = BytesOfTexels(data._width, data._height, data._depth, texelBytes);
    if (!needed || texture._size < 0)
        return OutOfMemoryError();
    const Int stored = std::max(*needed, texture._size);
    entry.texels = MakeTexelStore(stored, texture._data, texture._size);
    if (!entry.texels)
        return OutOfMemoryError();
    if (texture._size < *needed)
        Log(LogLevel::Warning,
            Format("the payload of a texture has @ bytes, but its texels take @; those that "
                   "are missing are zero",
                   texture._size, *needed));
    data._data = entry.texels.get();
    data._lastTexel =
        static_cast<UInt32>(std::min<Int>(stored / texelBytes - 1, std::numeric_limits<UInt32>::max()));
    return OK;
}

SamplingData DescribeSampling(const TextureBindData& texture) {
    SamplingData data;
    std::copy_n(texture._borderColor, 4, data._borderColor);
    data._numChannels = texture._numChannels;
    data._size = texture._size;
    data._width = texture._dimensions.x;
    data._height = texture._dimensions.y;
    data._depth = texture._dimensions.z;
    data._flags = PackedTextureFlags::Of(texture);
    data._format = texture._format;
    return data;
}

} // namespace

Result<SamplerEntry> MakeSamplerEntry(const TextureBindData& texture) noexcept {
    return CatchOutOfMemory([&]() -> Result<SamplerEntry> {
        NORVI_TRY_VALUE(combination, ChooseCombination(texture));
        NORVI_TRY_VALUE(functions, ChooseFunctions(*combination, texture._format, texture._numChannels,
                                                   texture._srgb != 0));
        SamplerEntry entry;
        NORVI_TRY_VALUE(elementType, GetElementType(texture._format));
        entry.helper = {combination->key,          functions->sample, functions->load,
                        DescribeSampling(texture), elementType,       functions->sampleRun};
        NORVI_TRY(FillTexels(entry, texture));
        return entry;
    });
}

Result<std::shared_ptr<SamplingData>> CopySamplingData(const SamplingData& source) noexcept {
    return CatchOutOfMemory([&]() -> Result<std::shared_ptr<SamplingData>> {
        NORVI_TRY_VALUE(elementType, GetElementType(source._format));
        const Int texelBytes = elementType->size * source._numChannels;
        const Int stored = std::max(source._size, (Int{source._lastTexel} + 1) * texelBytes);
        struct Owner {
            SamplingData data;
            TexelStore texels;
        };
        auto owner = std::make_shared<Owner>();
        owner->texels = MakeTexelStore(stored, source._data, stored);
        if (!owner->texels)
            return OutOfMemoryError();
        owner->data = source;
        owner->data._data = owner->texels.get();
        return std::shared_ptr<SamplingData>(owner, &owner->data);
    });
}

Bool AcceptsTexture(DataType parameterType, const TextureSamplerDataHelper& texture) {
    if (const ObjectType* objectType = FindObjectType(parameterType))
        return objectType->readingKey == ReadingKey(texture);
    return parameterType == DataType::Of<TextureSamplerDataHelper*>();
}

} // namespace norvi
