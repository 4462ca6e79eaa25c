// The words that kernels read and write textures with.
#include <norvi/kernel/texture.h>

#include <numeric>

#include <norvi/kernel/kernel_base.h>

#include "sampling/kernelinterface_texture.h"
#include "support/results.h"

namespace norvi::kernel {

namespace {

template <typename Object>
struct Bound {
    SamplerEntry entry;
    Object object;

    /// Texel i has the channels 10 * i + 1, 10 * i + 2, ...
    explicit Bound(norvi::Vec3<norvi::UInt32> extents, bool isLinear = Object::IsLinear) {
        TextureBindData bind;
        bind._dimensions = extents;
        bind._format = Object::Format;
        bind._numChannels = Object::Channels;
        bind._sampleLinear = isLinear;
        bind._wrapU = bind._wrapV = bind._wrapW = WRAP_BORDER;
        bind._borderColor[0] = -7;
        std::vector<detail::StoredOf<Object>> texels(extents.x * extents.y * extents.z * Object::Channels);
        for (std::size_t i = 0; i < texels.size(); ++i)
            texels[i] =
                static_cast<detail::StoredOf<Object>>(10 * (i / Object::Channels) + i % Object::Channels + 1);
        bind._data = reinterpret_cast<const UChar*>(texels.data());
        bind._size = static_cast<Int>(texels.size() * sizeof(texels[0]));
        auto made = MakeSamplerEntry(bind);
        EXPECT_OK(made);
        entry = std::move(*made);
        object.texture = &entry.helper;
    }
};

TEST(TextureWords, SampleHasFourComponents) {
    Bound<TextureSampler_1D_R_F32_LINEAR> r({4, 1, 1});
    EXPECT_EQ(SampleTexture(r.object, 1.0f), vec4(6, 0, 0, 0));
    Bound<TextureSampler_2D_RG_F32_LINEAR> rg({4, 2, 1});
    EXPECT_EQ(SampleTexture(rg.object, vec2(0.5f, 1.5f)), vec4(41, 42, 0, 0));
    EXPECT_EQ(SampleTexture(rg.object, vec3(1.5f, 0.5f, 9.0f).xy), vec4(11, 12, 0, 0));
    Bound<TextureSampler_3D_RGB_F32_LINEAR> rgb({2, 2, 2});
    EXPECT_EQ(SampleTexture(rgb.object, vec3(1.0f)), vec4(36, 37, 38, 0));
    Bound<TextureSampler_2D_RGBA_F32_LINEAR> rgba({2, 2, 1});
    EXPECT_EQ(SampleTexture(rgba.object, vec2(0.5f, 1.5f)), vec4(21, 22, 23, 24));
    EXPECT_EQ(SampleTexture(rgba.object, vec2(0.5f, 0.5f), 1), vec4(0.0f));
}

TEST(TextureWords, LoadHasTheKindOfTheFormat) {
    Bound<TextureSampler_1D_R_U8_POINT> u8({30, 1, 1});
    const uvec4 wide = LoadTexture(u8.object, 25);
    EXPECT_EQ(wide, uvec4(251, 0, 0, 0));
    EXPECT_EQ(LoadTexture(u8.object, 30), uvec4(0xF9, 0, 0, 0));
    Bound<TextureSampler_3D_R_S32_POINT> s32({2, 2, 2}, true);
    const ivec4 loaded = LoadTexture(s32.object, ivec3(1, 0, 1));
    EXPECT_EQ(loaded, ivec4(51, 0, 0, 0));
    EXPECT_EQ(LoadTexture(s32.object, ivec3(-1, 0, 0)), ivec4(-7, 0, 0, 0));
    Bound<TextureSampler_2D_RGB_F32_LINEAR> rgb({2, 2, 1});
    EXPECT_EQ(LoadTexture(rgb.object, ivec2(1, 1)), vec4(31, 32, 33, 0));
}

template <typename Object, typename Position>
void ExpectStores(norvi::Vec3<norvi::UInt32> extents, Position inside,
                  std::initializer_list<Position> outside, bool isLinear = Object::IsLinear) {
    using Texel = detail::TexelOf<Object>;
    Bound<Object> bound(extents, isLinear);
    const SamplingData& data = bound.entry.helper.samplingData;
    const BaseArray<UChar> before(data._data, data._data + data._size);
    for (const Position& position : outside)
        StoreTexture(bound.object, position, Texel(99));
    EXPECT_EQ(before, BaseArray<UChar>(data._data, data._data + data._size));
    StoreTexture(bound.object, inside, Texel(5, 6, 7, 8));
    EXPECT_EQ(
        LoadTexture(bound.object, inside),
        Texel(5, Object::Channels > 1 ? 6 : 0, Object::Channels > 2 ? 7 : 0, Object::Channels > 3 ? 8 : 0));
    Int changed = 0;
    for (std::size_t i = 0; i < before.size(); ++i)
        changed += before[i] != data._data[i] ? 1 : 0;
    EXPECT_GT(changed, 0);
    EXPECT_LE(changed, Object::Channels * Int{sizeof(detail::StoredOf<Object>)});
}

TEST(TextureWords, StoreWritesOneTexelInside) {
    ExpectStores<TextureSampler_1D_R_U8_POINT>({4, 1, 1}, 2, {-1, 4});
    ExpectStores<TextureSampler_2D_R_F32_POINT>({4, 3, 1}, ivec2(3, 2),
                                                {ivec2(4, 0), ivec2(0, 3), ivec2(-1, 1)});
    ExpectStores<TextureSampler_2D_RGBA_F32_LINEAR>({4, 3, 1}, ivec2(0, 1),
                                                    {ivec2(0, -1), ivec2(1 << 30, 2)});
    ExpectStores<TextureSampler_3D_R_S32_POINT>({2, 2, 2}, ivec3(1, 0, 1), {ivec3(0, 0, 2), ivec3(0, -1, 0)},
                                                true);
    Bound<TextureSampler_1D_R_U8_POINT> u8({4, 1, 1});
    StoreTexture(u8.object, 0, uvec4(0x1FE));
    EXPECT_EQ(LoadTexture(u8.object, 0).x, 0xFEu);
}

template <typename Declared>
concept CanStore = requires(Declared& texture) {
    StoreTexel<Declared>(texture, ivec2(0), vec4(0.0f));
};

TEST(TextureWords, OnlyTexturesDeclaredWithoutConstAreStoredTo) {
    EXPECT_TRUE(CanStore<TextureSampler_2D_RGBA_F32_LINEAR>);
    EXPECT_FALSE(CanStore<const TextureSampler_2D_RGBA_F32_LINEAR>);
}

TEST(TextureWords, SizeHasTheDimensions) {
    EXPECT_EQ(GetTextureSize(Bound<TextureSampler_1D_R_U8_POINT>({4, 1, 1}).object), 4);
    EXPECT_EQ(GetTextureSize(Bound<TextureSampler_2D_R_F32_POINT>({4, 3, 1}).object), ivec2(4, 3));
    EXPECT_EQ(GetTextureSize(Bound<TextureSampler_3D_R_F32_POINT>({4, 3, 2}).object), ivec3(4, 3, 2));
}

TEST(TextureWords, RunIsTheSamples) {
    Bound<TextureSampler_2D_RG_F32_LINEAR> rg({4, 2, 1});
    vec2 positions[150];
    vec4 results[150];
    for (int i = 0; i < 150; ++i)
        positions[i] = vec2(float(i) * 0.03f, float(i % 20) * 0.1f);
    SampleTextureRun(rg.object, positions, results, 150);
    for (int i = 0; i < 150; ++i)
        ASSERT_EQ(results[i], SampleTexture(rg.object, positions[i])) << i;
}

TEST(TextureWords, WithoutATextureAllIsZero) {
    TextureSampler_2D_RGBA_F32_LINEAR none;
    EXPECT_EQ(SampleTexture(none, vec2(0.5f)), vec4(0.0f));
    EXPECT_EQ(LoadTexture(none, ivec2(0)), vec4(0.0f));
    EXPECT_EQ(GetTextureSize(none), ivec2(0));
    StoreTexture(none, ivec2(0), vec4(1.0f));
    const vec2 positions[3] = {vec2(0.0f), vec2(0.0f), vec2(0.0f)};
    vec4 results[3] = {vec4(1.0f), vec4(1.0f), vec4(1.0f)};
    SampleTextureRun(none, positions, results, 3);
    EXPECT_EQ(results[2], vec4(0.0f));
    EXPECT_EQ(LoadTexture(TextureSampler_1D_R_U16_POINT(), 3), uvec4(0));
}

/// A texture of another kind than the parameter says is read without harm, and never written to.
TEST(TextureWords, WrongTextureDoesNoHarm) {
    Bound<TextureSampler_3D_RGBA_F32_LINEAR> volume({2, 2, 2});
    TextureSampler_1D_R_U8_POINT point;
    point.texture = volume.object.texture;
    LoadTexture(point, 1);
    StoreTexture(point, 1, uvec4(9));
    EXPECT_EQ(LoadTexture(volume.object, ivec3(0)), vec4(1, 2, 3, 4));
    TextureSampler_1D_R_F32_LINEAR narrow;
    narrow.texture = volume.object.texture;
    const float positions[2] = {0.5f, 0.5f};
    vec4 results[2] = {vec4(1.0f), vec4(1.0f)};
    SampleTextureRun(narrow, positions, results, 2);
    EXPECT_EQ(results[1], vec4(0.0f));
}

class TextureKernel : public KernelOf<TextureKernel> {
  public:
    Result<void> Init() noexcept override {
        AddParameter("source", source);
        return OK;
    }
    Result<void> Kernel(const norvi::Vec3<norvi::UInt32>&, const norvi::Vec3<norvi::UInt32>&,
                        const norvi::Vec3<norvi::UInt32>&) override {
        return OK;
    }
    TextureSampler_2D_RG_F32_LINEAR source;
};

TEST(TextureWords, SetStoresTheAddressOfTheHelper) {
    Bound<TextureSampler_2D_RG_F32_LINEAR> bound({4, 2, 1});
    TextureKernel kernel;
    ASSERT_OK(kernel.Init());
    ASSERT_OK(kernel.Set("source", &bound.entry.helper));
    EXPECT_EQ(kernel.source.texture, &bound.entry.helper);
    EXPECT_TRUE(AcceptsTexture(kernel.GetKernelParameterMap().at("source").type, bound.entry.helper));
}

} // namespace

} // namespace norvi::kernel
