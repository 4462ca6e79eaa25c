#include <gtest/gtest.h>

#include "shaderparser/memory_files.h"
#include "support/results.h"

namespace norvi {
namespace {

/// The kernel text of one line, with the formula "height" if there is one.
Result<String> Rewrite(const String& line, const char* formula) {
    ShaderParser parser(Id("GLSL"));
    if (formula)
        NORVI_TRY(parser.AddFormula("height", formula));
    MemorySources sources({{"k.kernel", "FP_KERNEL\n" + line + "\nFP_KERNEL_END"}});
    NORVI_TRY(parser.ParseFile("k.kernel", {}, sources.Get()));
    return parser.GetKernelText().text;
}

TEST(FormulaMacro, ConvertsTheInputWithoutAFormula) {
    const struct {
        const char* line;
        const char* expected;
    } cases[] = {
        {"FORMULAPARSE(height, p.x, rndSeed, float)", "float heightResult = float(p.x); "},
        {"lost FORMULAPARSE(height, f(x), s, vec3) // not lost (", "vec3 heightResult = vec3(f(x)); "},
        {"FORMULAPARSE(a, x, s, float) )", "float)  aResult = float) (x); "},
    };
    for (const auto& test : cases) {
        const auto text = Rewrite(test.line, nullptr);
        ASSERT_OK(text);
        EXPECT_EQ(*text, test.expected);
    }
    const auto otherCase = Rewrite("FORMULAPARSE(Height, x, s, float)", "value");
    ASSERT_OK(otherCase);
    EXPECT_EQ(*otherCase, "float HeightResult = float(x); ");
}

TEST(FormulaMacro, GeneratesStatements) {
    const auto text = Rewrite("before FORMULAPARSE(height, p.x, rndSeed, float)", "value * 2");
    ASSERT_OK(text);
    EXPECT_EQ(
        *text,
        "// setup input and result\nfloat resultFloat32 = 0.0;\nfloat value = p.x;\nint seed = rndSeed;\n\n"
        "// generated formula code\nresultFloat32 = value * 2.0;\nrndSeed = seed;\n"
        "float heightResult =  float(resultFloat32);");
}

TEST(FormulaMacro, SeedsRandomCalls) {
    const auto text = Rewrite("FORMULAPARSE(height, x, s, float)", "rnd(value)");
    ASSERT_OK(text);
    EXPECT_NE(text->find("uint(seed)"), String::npos) << *text;
    const auto unseeded = Rewrite("FORMULAPARSE(height, x, s, float)", "rnd() + rnd(value; 3)");
    ASSERT_OK(unseeded);
    EXPECT_EQ(unseeded->find("uint(seed)"), String::npos) << *unseeded;
}

TEST(FormulaMacro, FailsAsTheFormulaDoes) {
    const char* wrongCount =
        "FORMULAPARSE macro needs three parameters. The parser name, the input value and the datatype";
    EXPECT_TRUE(FailsWith(Rewrite("FORMULAPARSE(a,b,c,d)", nullptr), errorkind::IllegalState, wrongCount));
    EXPECT_TRUE(
        FailsWith(Rewrite(") FORMULAPARSE(a, b, c, d", nullptr), errorkind::IllegalState, wrongCount));
    const auto result = Rewrite("FORMULAPARSE(height, x, s, float)", "1 +");
    ASSERT_FALSE(result.IsOk());
    EXPECT_TRUE(result.GetError().Is(errorkind::IllegalArgument));
    EXPECT_EQ(result.GetError().GetPlace().line, 2);
}

} // namespace
} // namespace norvi
