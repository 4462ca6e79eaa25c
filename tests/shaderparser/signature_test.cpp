#include "shaderparser/signature.h"

#include <gtest/gtest.h>

#include <norvi/host/id.h>
#include <norvi/host/text.h>

#include "support/results.h"

namespace norvi {
namespace {

/// The text of a function with this signature and the body "{}".
Result<String> Translate(const char* signature, const char* language) {
    CString name, returnType;
    BaseArray<FunctionParameterEntry> parameters;
    NORVI_TRY(ParseSignature(signature, name, returnType, parameters));
    return BuildFunctionText(name, returnType, parameters, "{}", Id(language).GetHashCode());
}

TEST(Signature, IsWrittenForEachLanguage) {
    // clang-format off
    const struct {
        const char* signature;
        const char* language;
        const char* expected;
    } cases[] = {
        {"void f()", "GLSL", "void f()"},
        {"void f ( ) const", "GLSL", "void f()"},
        {"int f(float a,\\\n vec3 b)", "GLSL", "int f(float a, vec3 b)"},
        {"void Blend(StructuredBuffer<Vector32> src, inout float a, float w[4])", "HLSL", "void Blend(StructuredBuffer<Vector32> src, inout float a, float w[4])"},
        {"void Blend(const Vector32* src, inout float a, float w[4])", "METAL", "void Blend(const device Vector32* src, thread float& a, float w[4])"},
        {"void f(Vector32* src)", "GLSL", "void f(device Vector32* src)"},
        {"void f(RWStructuredBuffer<int> a)", "HLSL", "void f(RWStructuredBuffer<int> a)"},
        {"void f(const float a, const inout int b)", "GLSL", "void f(float a, inout int b)"},
        {"void f(in float w[], out float v[0])", "HLSL", "void f(float w[], out float v)"},
        {"void f(out float x, out float y[4], inout float z[])", "METAL", "void f(thread float& x, thread float y[4], thread float z[])"},
        {"void f(out float x)", "GLSLES", "void f(out float x)"},
        {"void f(out float x)", "OTHER", "void f(float x)"},
        {"void f(__CONSTANT x, __THREAD y)", "METAL", "void f(constant __CONSTANT x, __THREAD y)"},
        {"void f(__CONSTANT x)", "HLSL", "void f(__CONSTANT x)"},
        {"void f(sampler2dTypedef s, FramebufferLayerTypedef tex, genType g)", "GLSL", "void f(SAMPLER2D_TYPEDEF(s), FRAMEBUFFER_LAYER_TYPEDEF(tex), genType g)"},
        {"void f(usampler2dArrayTypedef s[2], out sampler2dTypedef t)", "METAL", "void f(USAMPLER2D_ARRAY_TYPEDEF(s)[2], thread sampler2dTypedef& t)"},
    };
    // clang-format on
    for (const auto& test : cases) {
        SCOPED_TRACE(test.signature);
        const auto text = Translate(test.signature, test.language);
        ASSERT_OK(text);
        EXPECT_EQ(*text, String(test.expected) + "\n{}\n");
    }
}

TEST(Signature, FailsWithTheNumberOfTheSymbol) {
    const struct {
        const char* signature;
        const char* message;
    } cases[] = {
        {"", "Expected identifier, got 0."},
        {"12 f()", "Expected identifier, got 257."},
        {"void (", "Expected identifier, got 40."},
        {"void f", "Expected (, got 0."},
        {"void f[", "Expected (, got 91."},
        {"void f(", "Expected identifier, got 0."},
        {" src, inout float a, float w[4])", "Expected identifier, got 44."},
        {"void f(float)", "Expected identifier, got 41."},
        {"void f(float x", "Expected comma, got 0. Function: f"},
        {"void f(__CONSTANT float x)", "Expected comma, got 256. Function: f"},
        {"void f(float w[n])", "Expected comma, got 93. Function: f"},
        {"void f(float w[4)", "Expected ], got 41. Function: f"},
        {"void f(float w[4", "Expected ], got 0. Function: f"},
        {"void f(float w[99999999999])", "the array size 99999999999 is too large. Function: f"},
        {"void f(const)", "Expected identifier, got 41."},
        {"void f(float x,)", "Expected identifier, got 41."},
        {"void f(StructuredBuffer<int> a, )", "Expected identifier, got 41."},
        {"void f(StructuredBuffer<int>)", "Expected identifier, got 41."},
        {"void f(StructuredBuffer<int> a, 3)", "Expected identifier, got 257."},
    };
    for (const auto& test : cases)
        EXPECT_TRUE(FailsWith(Translate(test.signature, "GLSL"), errorkind::IllegalState, test.message))
            << test.signature;
}

} // namespace
} // namespace norvi
