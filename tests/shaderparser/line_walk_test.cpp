#include <gtest/gtest.h>

#include "shaderparser/encoded_file.h"
#include "shaderparser/memory_files.h"
#include "shaderparser/text_lines.h"
#include "support/results.h"

namespace norvi {
namespace {

/// Parses a text as file "k.kernel" and shows the pieces.
class Walk {
  public:
    explicit Walk(const String& text, const char* templateArgument = "", const char* language = "GLSL")
        : parser(Id(language)),
          sources({{"k.kernel", text}}),
          result(parser.ParseFile("k.kernel", ParseOptions(templateArgument), sources.Get())) {}

    /// "kernel<text> global<text> inline<signature|text> param<name> texture<name>", as far as they are
    /// there. The block that every header adds is left out.
    String Describe() const {
        String text;
        for (size_t i = 1; i < parser.GetGlobalBlocks().size(); ++i)
            text += Format("global<@> ", parser.GetGlobalBlocks()[i].text);
        for (const InlineFunctionEntry& function : parser.GetInlineFunctions())
            text += Format("inline<@|@> ", function.signature, function.text.text);
        for (const KernelParameterEntry& parameter : parser.GetParameters())
            text += Format("param<@> ", parameter.name);
        for (const KernelTextureEntry& texture : parser.GetTextures())
            text += Format("texture<@> ", texture.name);
        if (!parser.GetKernelText().IsEmpty())
            text += Format("kernel<@> ", parser.GetKernelText().text);
        return text.substr(0, text.size() - (text.empty() ? 0 : 1));
    }

    ShaderParser parser;
    MemorySources sources;
    Result<void> result;
};

TEST(LineWalk, SortsLines) {
    const struct {
        const char* text;
        const char* expected;
    } cases[] = {
        {"", ""},
        {"NORVI_PARALLEL_KERNEL(K)\n{\n\tx\n\n  y  \r\n}\nNORVI_PARALLEL_KERNEL_END", "kernel<{\nx\ny\n}>"},
        {"FP_KERNELX\na\nFP_KERNEL_ENDX", "kernel<a>"},
        {"NORVI_TEMPLATED_PARALLEL_KERNEL\na\nNORVI_PARALLEL_KERNEL_END", "kernel<a>"},
        // An unfinished kernel is dropped.
        {"FP_KERNEL\na", ""},
        // A stray end begins a kernel where none is open.
        {"NORVI_PARALLEL_KERNEL_END\na\nFP_KERNEL_END", "kernel<a>"},
        // An entry inside an open kernel begins anew.
        {"FP_KERNEL(A)\na\nFP_KERNEL(B)\nb\nFP_KERNEL_END", "kernel<b>"},
        // More closing braces than opening ones close even this form, and the closing line goes.
        {"FP_KERNEL\n{\na\n}\n}\nglobal", "kernel<{\na\n}>"},
        {"NORVI_METHOD Result<void> Kernel(a)\n{\na\n{ b }\n}\n", "kernel<a\n{ b }>"},
        {"NORVI_METHOD Result<void> Kerne\na\nFP_KERNEL\nFP_KERNEL_END",
         "global<NORVI_METHOD Result<void> Kerne\na\n>"},
        {"NORVI_METHOD  Result<void> Kernel\na", ""},
        // Global lines go out where a scope begins, without lines of the preprocessor and closing braces.
        {"one\n#two\n}three\nfour}\ninline f()\n{\n}\nlate", "global<one\nfour}\n> inline<f()|{\n}>"},
        {"inline int f() { return 1; }\nx\ninline g()\n{\nif (a) {\n}\n}",
         "global<x\n> inline<int f() { return 1; }|> inline<g()|{\nif (a) {\n}\n}>"},
        {"inline f(INOUT(int) a)\n{\nINOUT(a)\n}", "inline<f(inout int a)|{\nINOUT(a)\n}>"},
        {"inlined\nFP_KERNEL\nFP_KERNEL_END", "global<inlined\n>"},
        // Braces in comments and strings count.
        {"inline f()\n{\n// }\ninline g()", "inline<f()|{\n// }> "},
        {"struct KernelInput\n{\nFloat32 a;\nBlock<int> b;\n};\nFP_KERNEL\nFP_KERNEL_END",
         "param<a> param<b>"},
        {"struct KernelInputs\nx\nFP_KERNEL\nFP_KERNEL_END", "global<struct KernelInputs\nx\n>"},
        {"#define KERNELINPUTS \\\n(Vector32) offset, \\\n(Block<TYPE>) data, "
         "\\\n(TextureSampler_2D_RGBA_F32_LINEAR) tex\n\nx",
         "param<offset> param<data> texture<tex>"},
        {"#define KERNELINPUTS\n(int) a,\nFP_KERNEL\nb\nFP_KERNEL_END", "param<a> kernel<b>"},
        {"#define KERNELINPUTS\n(int) a}", "param<a}>"},
        {"#define KERNELINPUTS\n(int) a", ""},
        {"#define KERNELINPUTS\n(int) a\nFP_KERNEL_END", ""},
        {"GROUPSIZE(8, 8, 1)\nlost\nkept\nFP_KERNEL\nFP_KERNEL_END", "global<kept\n>"},
        {"CPU_GRANULARITY(4)\nlost\nCPU_SINGLETHREADEDTHRESHOLD(1)\nlost\nnamespace "
         "foo\n{\nkept\nFP_KERNEL\nFP_KERNEL_END",
         "global<kept\n>"},
        {"CPU_SCOPE_START\n} { lost\nCPU_SCOPE_ENDS\n\nCPU_SCOPE_END "
         "more\nFP_KERNEL\na\nCPU_SCOPE_START\nFP_KERNEL_END\nCPU_SCOPE_END\nb\nFP_KERNEL_END",
         "kernel<a\nb>"},
        {"FP_KERNEL\nCPU_SCOPE_START\nFP_KERNEL_END", ""},
        {"ADDNOISECALL\nADDNOISECALLS\nFP_KERNEL\nADDNOISECALL\nx ADDNOISECALL\nFP_KERNEL_END",
         "global<ADDNOISECALLS\n> kernel<ADDNOISECALL\nx ADDNOISECALL>"},
        // Two blanks make an empty word.
        {"struct  KernelInput\nFP_KERNEL\nFP_KERNEL_END", "global<struct  KernelInput\n>"},
        {"\xEF\xBB\xBF"
         "FP_KERNEL\r\na\r\nFP_KERNEL_END\r\n",
         "kernel<a>"},
        {"FP_KERNEL\na\xFF\nFP_KERNEL_END", "kernel<a\xEF\xBF\xBD>"},
        {"FP_KERNEL\nGROUPSHAREDMEM(int, a, 1)\nb\nFP_KERNEL_END", "kernel<\nb>"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        const Walk walk(test.text);
        EXPECT_OK(walk.result);
        EXPECT_EQ(walk.Describe(), Trim(test.expected));
    }
}

TEST(LineWalk, CountsNoiseAndGroupSizes) {
    const Walk walk("GROUPSIZE(8, 4, 2)\n;\nADDNOISECALL\nCPU_SCOPE_START\nADDNOISECALL\nCPU_SCOPE_END\n"
                    "inline f()\n{\nADDNOISECALL\nx = 1; ADDNOISECALL\n}");
    ASSERT_OK(walk.result);
    EXPECT_EQ(walk.parser.GetNoiseCallCount(), 2);
    EXPECT_EQ(walk.parser.GetWorkGroupSize(), (Vec3<UInt32>{8, 4, 2}));
}

TEST(LineWalk, FailsWithFileAndLine) {
    constexpr const char* groupSize = "GROUPSIZE used wrong, please used the format GROUPSIZE(x, y, z) only";
    const struct {
        const char* text;
        const char* kind;
        const char* message;
        Int line;
    } cases[] = {
        {"\n\nFP_KERNEL\nFP_KERNEL_END\nFP_KERNEL\n", errorkind::IllegalState,
         "Illegal state: Parser Error: Second Kernel function at line 2 in k.kernel", 5},
        {"FP_KERNEL\nFP_KERNEL_END\nNORVI_METHOD Result<void> Kernel()", errorkind::IllegalState,
         "Illegal state: Parser Error: Second Kernel function at line 2 in k.kernel", 3},
        {"\nGROUPSIZE(8,8,1)", errorkind::IllegalState, groupSize, 2},
        {"GROUPSIZE(8, 8)", errorkind::IllegalState, groupSize, 1},
        {"GROUPSIZE(8, x, 1)", errorkind::IllegalState, "GROUPSIZE needs whole numbers", 1},
        {"GROUPSIZE(8, 8, 1);", errorkind::IllegalState, "GROUPSIZE needs whole numbers", 1},
        {"GROUPSIZE(8, 8, 99999999999)", errorkind::IllegalState, "GROUPSIZE needs whole numbers", 1},
        {"#define KERNELINPUTS\n(int)a", errorkind::IllegalArgument,
         "struct entry is not conforming to '(type) name' structure", 2},
        {"#define KERNELINPUTS\nADDNOISECALL", errorkind::IllegalArgument,
         "struct entry is not conforming to '(type) name' structure", 2},
        {"a\nMAKELOCAL(", errorkind::IllegalState, "MAKELOCAL missing )", 2},
        {"a\n\ninline f(Block<)", errorkind::IllegalState, "the rewriting of Block< does not end", 3},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        const Walk walk(test.text);
        ASSERT_TRUE(FailsWith(walk.result, test.kind, test.message));
        EXPECT_EQ(walk.result.GetError().GetPlace().file, "k.kernel");
        EXPECT_EQ(walk.result.GetError().GetPlace().line, test.line);
    }
}

TEST(LineWalk, RemembersWhereLinesComeFrom) {
    const Walk walk("\n// global\n\nFP_KERNEL\n\n a;\n\nMAKELOCAL(t, 1, m)\nb;\nFP_KERNEL_END");
    ASSERT_OK(walk.result);
    EXPECT_EQ(walk.parser.GetGlobalBlocks()[1].lines, (BaseArray<LineOrigin>{{0, 2}}));
    const MappedText& kernel = walk.parser.GetKernelText();
    EXPECT_EQ(kernel.lines.size(),
              1u + static_cast<size_t>(std::count(kernel.text.begin(), kernel.text.end(), '\n')));
    EXPECT_EQ(kernel.lines,
              (BaseArray<LineOrigin>{{0, 6}, {0, 8}, {0, 8}, {0, 8}, {0, 8}, {0, 8}, {0, 8}, {0, 9}}));
    EXPECT_EQ(GetOriginText(walk.parser.GetSourceFiles(), kernel.lines[0]), " a;");
    EXPECT_EQ(GetOriginText(walk.parser.GetSourceFiles(), {0, 100}), "");
    EXPECT_EQ(GetOriginText(walk.parser.GetSourceFiles(), {}), "");
}

TEST(LineWalk, NeverShowsEncodedText) {
    auto bytes = EncodeShaderFile("FP_KERNEL\nsecret\nFP_KERNEL_END", BaseArray<UChar>(16));
    ASSERT_OK(bytes);
    const Walk walk(*bytes);
    ASSERT_OK(walk.result);
    EXPECT_EQ(walk.parser.GetKernelText().text, "secret");
    EXPECT_TRUE(walk.parser.GetSourceFiles()[0].isEncoded);
    EXPECT_EQ(GetOriginText(walk.parser.GetSourceFiles(), walk.parser.GetKernelText().lines[0]), "");

    const Walk broken("encoded text\nFP_KERNEL\na\nFP_KERNEL_END");
    EXPECT_OK(broken.result);
    EXPECT_EQ(broken.parser.GetKernelText().text, "a");
}

TEST(LineWalk, TakesHugeLinesAndManyOfThem) {
    const String line(1 << 20, 'x');
    String body;
    for (int i = 0; i < 100000; ++i)
        body += "{ y = x; }\n\n";
    const Walk walk("FP_KERNEL\n" + line + "\n" + String("\0{", 2) + "\n" + body + "FP_KERNEL_END");
    ASSERT_OK(walk.result);
    EXPECT_EQ(walk.parser.GetKernelText().lines.size(), 100002u);
}

} // namespace
} // namespace norvi
