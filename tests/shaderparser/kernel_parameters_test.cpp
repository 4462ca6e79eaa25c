#include "shaderparser/kernel_parameters.h"

#include <gtest/gtest.h>

#include "host/log_recorder.h"
#include "shaderparser/texture_type.h"
#include "shaderparser/type_names.h"
#include "support/results.h"

namespace norvi {
namespace {

/// "type|element|name|qualifier" of parameters and "kind|format|name|isLinear|isConst" of textures.
String Describe(const KernelInputs& inputs) {
    String text;
    for (const KernelParameterEntry& entry : inputs.parameters)
        text += Format("@|@|@|@ ", entry.type, entry.elementTypeName, entry.name, entry.qualifier);
    for (const KernelTextureEntry& entry : inputs.textures)
        text += Format("@|@|@|@|@ ", entry.textureKind, entry.pixelFormat, entry.name, UInt32{entry.isLinear},
                       UInt32{entry.isConst});
    return text.substr(0, text.size() - (text.empty() ? 0 : 1));
}

struct Reader {
    Result<String> ReadDefine(const char* line) {
        const MacroLists lists(context);
        KernelInputs inputs;
        NORVI_TRY(ReadKernelInputsLine(shader, SplitWords(line), {}, inputs, lists.global));
        return Describe(inputs);
    }
    String ReadStruct(const char* line) {
        KernelInputs inputs;
        ReadStructKernelInputLine(shader, SplitWords(line), {}, inputs);
        return Describe(inputs);
    }

    ShaderPieces shader;
    MacroContext context{shader};
};

TEST(KernelParameters, ReadsKernelInputsLines) {
    const struct {
        const char* line;
        const char* expected;
    } cases[] = {
        {"(Float32) a,\\", "float32||a|0"},
        {"(Float32) a, \\", "float32||a|0"},
        {"(Vector32) last", "Vector32||last|0"},
        {"(AtomicUInt32*) counter,", "AtomicUInt32||counter|0"},
        {"(out float) x", "float32||x|4"},
        {"(layout float) x", "float32||x|4"},
        {"(varying vec2) uv,", "Vector2d32||uv|2"},
        {"(attribute vec4) position,", "Vector4d32||position|8"},
        {"(IGNORE_VARIABLE_GPU Foo) x", ""},
        {"(Unknown) x", ""},
        {"(Block<TYPE>) data, \\", "|half|data|0"},
        {"(TYPE) value, \\", "HalfFloat||value|0"},
        {"(BaseArray<Foo<Bar>>) x,", "|Foo|x|0"},
        {"(Block<const Float32>) x,", "|Float32|x|1"},
        {"(const Block<Float32>) x,", "|Float32|x|1"},
        {"(const Vector32) x,", ""},
        {"(Other<Float32>) x,", ""},
        {"(const Block<Float32>)", ""},
        {"(TextureSampler_2D_RGBA_F32_LINEAR) t,", "6|net.norvi.image.pixelformat.rgba.f32|t|1|0"},
        {"(const TextureSampler_1D_R_U8_POINT) t", "1|net.norvi.image.pixelformat.dynamic.redu8|t|0|1"},
        {"(const TextureSampler_3D_RG_S32_POINT) t",
         "10|net.norvi.image.pixelformat.dynamic.redgreens32|t|0|1"},
        {"(TextureSampler_2D_XYZ_F16_POINT) t", "6|net.norvi.image.pixelformat.rgb.f16|t|0|0"},
        {"(TextureSampler_2D_RGBA_F32) t", ""},
        {"(MyTextureSampler_2D_R_F32_POINT) t", ""},
        {"(TextureSampler_4D_R_F32_POINT) t", ""},
        {"(TextureSampler_0D_R_F32_POINT) t", ""},
        {"(TextureSampler_2D_R_F32_CUBIC) t", ""},
        {"(const TextureSampler_2D_R_F32_POINT)", ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.line);
        Reader reader;
        reader.context.templateArgument = "half";
        const auto text = reader.ReadDefine(test.line);
        ASSERT_OK(text);
        EXPECT_EQ(*text, test.expected);
    }
}

TEST(KernelParameters, RefusesBadKernelInputsLines) {
    EXPECT_TRUE(FailsWith(Reader().ReadDefine("(Float32)a,"), errorkind::IllegalArgument,
                          "struct entry is not conforming to '(type) name' structure"));
    for (const char* line : {"(TextureSampler_2D_R_F64_POINT) t", "(TextureSampler_2D_RGBAX_F32_POINT) t"})
        EXPECT_TRUE(FailsWith(Reader().ReadDefine(line), errorkind::IllegalArgument,
                              "wrong combination of numChannels and format string"));
}

TEST(KernelParameters, ReadsStructLines) {
    const struct {
        const char* line;
        const char* expected;
    } cases[] = {
        {"Vector32 axis;", "Vector32||axis|0"},
        {"Block<Vector32> points;", "|Vector32|points|0"},
        {"const BaseArray<Foo> x;", "|Foo|x|1"},
        {"const Float32 x;", ""},
        {"TextureSampler_2D_R_F32_POINT t;", ""},
        {"Unknown x;", ""},
        {"Float32", ""},
        {"const", ""},
        {"Float32  x;", "float32|||0"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(Reader().ReadStruct(test.line), test.expected) << test.line;
}

TEST(KernelParameters, WarnsOfTooManyBuffersAndWritableTextures) {
    LogRecorder log;
    Reader reader;
    for (int i = 0; i < 30; ++i)
        EXPECT_NE(reader.ReadStruct("Block<float> b;"), "");
    for (int i = 0; i < 8; ++i)
        ASSERT_OK(reader.ReadDefine("(TextureSampler_2D_R_F32_POINT) t"));
    for (int i = 0; i < 9; ++i)
        ASSERT_OK(reader.ReadDefine("(const TextureSampler_2D_R_F32_POINT) t"));
    EXPECT_EQ(log.entries.size(), 0u);
    ASSERT_OK(reader.ReadDefine("(Block<float>) b"));
    ASSERT_OK(reader.ReadDefine("(TextureSampler_2D_R_F32_POINT) t"));
    EXPECT_EQ(
        log.entries,
        (BaseArray<String>{
            "critical: Assertion failed: Too many buffers bound to kernel(>30). Metal compile will fail.",
            "critical: Assertion failed: Too many UAV textures bound to kernel(>8). Metal compile will "
            "fail."}));
    EXPECT_EQ(reader.shader.bufferCount, 31);
    EXPECT_EQ(reader.shader.uavTextureCount, 9);
}

TEST(TextureType, PixelFormatsComeApart) {
    int count = 0;
    for (const char* format : {"F32", "F16", "U8", "U16", "U32", "S32"})
        for (size_t channels = 1; channels <= 4; ++channels, ++count) {
            const PixelFormatParts parts = GetPixelFormatParts(GetPixelFormat(channels, format));
            EXPECT_EQ(parts.channelCount, channels);
            String lower(format);
            lower[0] = static_cast<char>(lower[0] + 32);
            EXPECT_EQ(parts.format, lower);
        }
    EXPECT_EQ(count, 24);
    EXPECT_EQ(GetPixelFormatParts(DataType::Of<Float32>()).channelCount, 0u);
}

TEST(TypeNames, MapBothWays) {
    const struct {
        BaseArray<const char*> names;
        const char* shaderName;
        const char* metalName;
    } cases[] = {
        {{"Float32", "float"}, "float", "float"},
        {{"Vector2d32", "vec2", "float2"}, "vec2", "vec2"},
        {{"Vector32", "vec3", "float3"}, "vec3", "vec3"},
        {{"Vector4d32", "vec4", "float4"}, "vec4", "vec4"},
        {{"Matrix32", "mat4", "SquareMatrix4d32"}, "mat4", "mat4"},
        {{"SquareMatrix32", "mat3"}, "mat3", "mat3"},
        {{"UInt32", "uint"}, "uint", "uint"},
        {{"Int32", "int"}, "int", "int"},
        {{"Vec4<UInt32>", "uint4"}, "uint4", "uint4"},
        {{"Vec4<Int32>", "IntVector4d32", "int4"}, "int4", "int4"},
        {{"AtomicUInt32*", "AtomicUInt32"}, "uint", "atomic_uint"},
        {{"GradientRenderData*", "GradientRenderData"}, "GradientRenderData", "GradientRenderData"},
        {{"HalfFloat", "half"}, "half", "half"},
        {{"Vec2<HalfFloat>", "half2"}, "half2", "half2"},
        {{"Vec3<HalfFloat>", "half3"}, "half3", "half3"},
        {{"Vec4<HalfFloat>", "half4"}, "half4", "half4"},
        {{"Float64", "Vec2<Int32>", "float ", ""}, "fallback", "fallback"},
    };
    for (const auto& test : cases)
        for (const char* name : test.names) {
            EXPECT_EQ(MapDataTypeToShaderName(MapTypeName(name), "fallback", "GLSL"), test.shaderName)
                << name;
            EXPECT_EQ(MapDataTypeToShaderName(MapTypeName(name), "fallback", "METAL"), test.metalName)
                << name;
        }
    EXPECT_EQ(MapTypeName("vec3"), DataType::Of<Vector32>());
}

} // namespace
} // namespace norvi
