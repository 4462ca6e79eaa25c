#include "shaderparser/macro_list.h"

#include <random>

#include <gtest/gtest.h>

#include "shaderparser/text_lines.h"
#include "support/results.h"

namespace norvi {
namespace {

enum class List { Signature, Global, Text };

struct RewriteCase {
    List list;
    const char* language;
    const char* templateArgument;
    Int32 multisampling;
    const char* line;
    const char* expected;
};

class Rewriter {
  public:
    Rewriter(const char* language, const char* templateArgument, Int32 multisampling) {
        shader.language = Id(language);
        context.templateArgument = templateArgument;
        context.multisampling = multisampling;
    }

    Result<String> Apply(List list, String line) {
        const MacroLists lists(context);
        const MacroList& macros = list == List::Signature ? lists.signature
                                  : list == List::Global  ? lists.global
                                                          : lists.text;
        NORVI_TRY(macros.Apply(line));
        return line;
    }

    ShaderPieces shader;
    MacroContext context{shader};
};

constexpr const char* MakeLocalText =
    "uint groupIndex = InLocalInvocationID.z * InWorkGroupSize.x * InWorkGroupSize.y + InLocalInvocationID.y "
    "* "
    "InWorkGroupSize.x + InLocalInvocationID.x; \n\tif (groupIndex < 64) \n\t{\n\ttile[groupIndex] =  "
    "UNIFORM_BUFFER(tile)[Map(InGlobalInvocationID, groupIndex)]; \n } \n\tgroupSharedBarrier;";

TEST(MacroList, RewritesLines) {
    // clang-format off
    const RewriteCase cases[] = {
        {List::Text, "GLSL", "", -1, "nothing to do", "nothing to do"},
        {List::Text, "GLSL", "", -1, "MYTYPE x", "MYTYPE x"},
        {List::Text, "GLSL", "float", -1, "MYTYPE TYPE", "MYfloat float"},
        {List::Global, "GLSL", "float", -1, "TYPE Sqrt", "float Sqrt"},
        {List::Text, "GLSL", "", -1, "mySqrt(sqmat)", "mysqrt(mat3)"},
        {List::Text, "GLSL", "", -1, "CPU_CONSTREF(x)", "x"},
        {List::Text, "GLSL", "", -1, "CPU_CONSTREF(f(y))", "f(y)"},
        {List::Text, "GLSL", "", -1, "CPU_CONSTREF", ""},
        {List::Text, "GLSL", "", -1, "CPU_PASS_BUFFER(a), CPU_PASS_BUFFER(b)", "a, b"},
        {List::Signature, "GLSL", "", -1, "NORVI_WARN_MUTE_FUNCTION_LENGTH inline", "nline"},
        {List::Signature, "GLSL", "float", -1, "f(INOUT(TYPE) x, CPU_CONSTREF(vec3) y)", "f(inout float x, vec3 y)"},
        {List::Text, "GLSL", "", -1, "GetAtomicCounter(c)", "(c)"},
        {List::Text, "GLSL", "", -1, "return KERNEL_RETURN_NO_ERROR;", "return ;"},
        {List::Text, "GLSL", "", -1, "NORVI_SWITCH_FALLTHROUGH;", ";"},
        {List::Text, "GLSL", "", -1, "ONLY_USE_FIRST_MSAA_SAMPLE", ""},
        {List::Text, "GLSL", "", 1, "ONLY_USE_FIRST_MSAA_SAMPLE", ""},
        {List::Text, "GLSL", "", 2, "ONLY_USE_FIRST_MSAA_SAMPLE", "if (InSampleID > 0) discard;"},
        {List::Text, "GLSL", "", -1, "x = GetFramebufferTexel(a, b);", "x = GetFramebufferTexel(a, b);"},
        {List::Text, "GLSL", "", 4, "x = GetFramebufferTexel(a, b);", "x =GetFramebufferTexel(a, b, InSampleID);"},
        {List::Text, "GLSL", "", 1, "x = GetFramebufferTexel(a, b, InSampleID);", "x =GetFramebufferTexel(a, b);"},
        {List::Text, "GLSL", "", 0, " GetFramebufferTexel(a, b) GetFramebufferTexel(", "GetFramebufferTexel(a, b)GetFramebufferTexel("},
        {List::Text, "GLSL", "", 4, "x = GetFramebufferTexel(a, b, InSampleID);", "x =GetFramebufferTexel(a, b, InSampleID);"},
        {List::Text, "GLSL", "", 4, "(GetFramebufferTexel(a, b))", "(GetFramebufferTexel(a, b))"},
        {List::Text, "GLSL", "", -1, "x = MAKELOCAL(tile, 64, Map) + MAKELOCAL", MakeLocalText},
        {List::Text, "GLSL", "", -1, "LOCALDATA(a, i, 0) + LOCALDATA(b, j, 1);", "a[i] + b[j];"},
        {List::Text, "GLSL", "", -1, "x GROUPSHAREDMEM(float, tile, 64) y", ""},
        {List::Text, "GLSL", "", -1, "ATOMIC uint counter", "uint counter"},
        {List::Text, "METAL", "", -1, "ATOMIC uint counter", "atomic_uint counter"},
        {List::Text, "GLSL", "", -1, "y = matoff(m) + 1;", "vec3((m.v0.w, (m.v1.w, (m.v2.w)"},
        {List::Text, "GLSL", "", -1, "matoff((m)) (x)", "vec3(((m)(x.v0.w, ((m)(x.v1.w, ((m)(x.v2.w)"},
        {List::Signature, "HLSL", "", -1, "f(const Block<Vector32> a, Block<float> b)", "f(StructuredBuffer<Vector32> a, RWStructuredBuffer<float> b)"},
        {List::Signature, "METAL", "", -1, "f(const Block<Vector32> a, Block<float> b)", "f(const Vector32* a, float* b)"},
        {List::Signature, "GLSL", "", -1, "f(const Block<Vector32> a)", " a)"},
        {List::Signature, "HLSL", "", -1, "Block<const T> a", "StructuredBuffer<const T> a"},
    };
    // clang-format on
    for (const RewriteCase& test : cases) {
        SCOPED_TRACE(test.line);
        const auto line =
            Rewriter(test.language, test.templateArgument, test.multisampling).Apply(test.list, test.line);
        ASSERT_OK(line);
        EXPECT_EQ(*line, test.expected);
    }
}

TEST(MacroList, RefusesBadArgumentsAndRewritingsWithoutEnd) {
    const struct {
        List list;
        const char* line;
        const char* message;
    } cases[] = {
        {List::Text, "MAKELOCAL(a, b, c", "MAKELOCAL missing )"},
        {List::Text, "MAKELOCAL(a, b)", "MAKELOCAL macro needs three parameters"},
        {List::Text, "MAKELOCAL)", "MAKELOCAL macro needs three parameters"},
        {List::Text, "LOCALDATA(a", "LOCALDATA missing )"},
        {List::Text, "LOCALDATA(a,b,c)", "LOCALDATA macro needs three parameters"},
        {List::Text, "GROUPSHAREDMEM(", "GROUPSHAREDMEM missing )"},
        {List::Text, "GROUPSHAREDMEM(float, x)", "GROUPSHAREDMEM macro needs two parameters"},
        {List::Text, " GetFramebufferTexel(a, b", "GetFramebufferTexel missing )"},
        {List::Text, " GetFramebufferTexel(a)",
         "GetFramebufferTexel function needs two parameters or three with the last being InSampleID"},
        {List::Text, "FORMULAPARSE", "FORMULAPARSE missing )"},
        {List::Text, "uint ATOMIC", "the rewriting of ATOMIC does not end"},
        {List::Text, "matoff(matoff(x))", "the rewriting of matoff does not end"},
        {List::Text, "x TYPE", "the rewriting of TYPE does not end"},
        {List::Signature, "Block<x", "the rewriting of Block< does not end"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.line);
        Rewriter rewriter("METAL", "", 4);
        if (String(test.line).find("TYPE") != String::npos)
            rewriter.context.templateArgument = "MYTYPE";
        EXPECT_TRUE(FailsWith(rewriter.Apply(test.list, test.line), errorkind::IllegalState, test.message));
    }
}

TEST(MacroList, DeclaresGroupSharedMemoryWithItsOrigin) {
    Rewriter rewriter("GLSL", "", -1);
    rewriter.context.origin = {3, 7};
    ASSERT_OK(rewriter.Apply(List::Text, "GROUPSHAREDMEM(float, tile, 64)"));
    ASSERT_EQ(rewriter.shader.groupSharedDeclarations.size(), 1u);
    const MappedText& declaration = rewriter.shader.groupSharedDeclarations[0];
    EXPECT_EQ(declaration.text, "groupSharedMemory float tile[64]; \n");
    EXPECT_EQ(declaration.lines, (BaseArray<LineOrigin>{{3, 7}}));
}

String Repeated(const char* text, int count) {
    String all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(MacroList, RewritesLongLinesInBoundedTimeAndMemory) {
    const auto rewrite = [](const String& line) { return Rewriter("GLSL", "", -1).Apply(List::Text, line); };
    const auto rewritten = rewrite(Repeated("CPU_CONSTREF(x) ", 5000));
    ASSERT_OK(rewritten);
    EXPECT_EQ(*rewritten, Repeated("x ", 5000));
    EXPECT_TRUE(FailsWith(rewrite(Repeated("CPU_CONSTREF(x) ", 200000)), errorkind::IllegalState,
                          "a line holds CPU_CONSTREF too many times"));
    EXPECT_TRUE(FailsWith(rewrite("matoff(matoff(" + String(200000, 'x')), errorkind::IllegalState,
                          "the rewriting of matoff does not end"));
}

// The finder must not pass a key by, wherever it stands.
TEST(KeyFinder, AgreesWithPlainSearch) {
    const BaseArray<std::string_view> keys = {"abab", "bbaab", " aab("};
    const KeyFinder finder(keys);
    std::mt19937 random(1);
    int found = 0;
    for (int i = 0; i < 20000; ++i) {
        String text(random() % 24, ' ');
        for (char& c : text)
            c = "ab ("[random() % 4];
        bool expected = false;
        for (std::string_view key : keys)
            expected |= text.find(key) != String::npos;
        ASSERT_EQ(finder.FindsAny(text), expected) << text;
        found += expected;
    }
    EXPECT_GT(found, 500);
    EXPECT_FALSE(KeyFinder({}).FindsAny("abab"));
}

TEST(DecodedText, DropsTheByteOrderMarkAndReplacesBadBytes) {
    const struct {
        const char* bytes;
        const char* expected;
    } cases[] = {
        {"plain", "plain"},
        {"\xEF\xBB\xBFmarked", "marked"},
        {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80",
         "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"a\xFFz", "a\xEF\xBF\xBDz"},
        {"\xC0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {"cut off \xE2\x82", "cut off \xEF\xBF\xBD\xEF\xBF\xBD"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(DecodedText(test.bytes).Get(), test.expected) << test.bytes;
}

} // namespace
} // namespace norvi
