#include "drawport/text/program_text.h"

#include <sstream>

#include <gtest/gtest.h>

#include <norvi/host/text.h>

#include "drawport/programs.h"
#include "shaderparser/author_text.h"
#include "shaderparser/encoded_file.h"
#include "shaderparser/memory_files.h"
#include "shaderparser/text_lines.h"
#include "support/results.h"

namespace norvi {
namespace {

/// What the compiler says of a shader; empty if it is content.
String Compile(const String& text, const char* language) {
    const TemporaryFolder folder;
    if (String(language) != "METAL")
        return CompileToModule(text, language, folder / "program.spv");
    WriteText(folder / "program.cpp", ForShim(text));
    return CompileWithShim(folder / "program.cpp", "-fsyntax-only");
}

TEST(ProgramText, FormulasOfEveryFunctionCompile) {
    const char* formula =
        "-value + !value - value * 2 / 3 % 4 ^ value + value ^ 3 + (value < 1) + (value <= 1) + (value > 1) "
        "+ "
        "(value >= 1) + (value == 1) + (value != 1) + (value && 1) + (value || 0) + (value ? 2 : 3) + "
        "sin(value) + "
        "cos(value) + tan(value) + asin(value) + acos(value) + atan(value) + atan2(value; 1) + sinh(value) + "
        "cosh(value) + tanh(value) + exp(value) + exp2(value) + log(value) + log2(value) + log10(value) + "
        "sqrt(value) + inversesqrt(value) + hypot(value; 2) + abs(value) + sign(value) + floor(value) + "
        "ceil(value) + "
        "round(value) + trunc(value) + fract(value) + min(value; 2) + max(value; seed) + clamp(value; 0; 1) "
        "+ "
        "saturate(value) + mix(value; 1; 0.5) + step(value; 0.5) + smoothstep(0; 1; value) + radians(value) "
        "+ "
        "degrees(value) + rnd() + rnd(value) + rnd(value; 2.5) + 0 / 0 - 1 / 0 + 1e30 + pi";
    MemorySources sources(
        {{"k.kernel", "#define KERNELINPUTS\n(Block<float>) a\n\nFP_KERNEL(K)\n{\nint s = 1;\n"
                      "FORMULAPARSE(f, UNIFORM_BUFFER(a)[0], s, float)\n"
                      "UNIFORM_BUFFER(a)[0] = fResult;\n}\nFP_KERNEL_END"}});
    for (const char* language : shaderLanguages) {
        ShaderParser parser{Id(language)};
        ASSERT_OK(parser.AddFormula("f", formula));
        ASSERT_OK(parser.ParseFile("k.kernel", {}, sources.Get()));
        auto program = WriteParsed(parser);
        ASSERT_OK(program);
        EXPECT_EQ(Compile(program->text, language), "") << program->text;
    }
}

TEST(ProgramText, DeclaresEveryKindOfParameter) {
    MemorySources sources(
        {{"k_header",
          "#define SCALE 2.0\nstruct Pair\n{\nvec3 a;\nhalf b;\n};\ninline float twice(INOUT(float) x)\n{\n"
          "x = x * SCALE;\nreturn x;\n}"},
         {"k.kernel",
          "#define KERNELINPUTS\n(Vec4<UInt32>) input, \\\n(Matrix32) sample, \\\n(HalfFloat) half1, \\\n"
          "(Block<Pair>) pairs, \\\n(Block<const half3>) small, \\\n"
          "(const TextureSampler_3D_R_S32_POINT) volume, \\\n(TextureSampler_1D_RGB_U16_POINT) line, \\\n"
          "(AtomicUInt32*) counter\n\n"
          "GROUPSIZE(4, 2, 1)\n;\nNORVI_METHOD Result<void> Kernel(x)\n{\n"
          "float x = float(atomicAdd(GetAtomicCounter(counter), 1u)) + Sqrt(UNIFORM(sample)[0].x) + "
          "round(1.5);\n"
          "twice(x);\nPair pair = UNIFORM_BUFFER(pairs)[InGlobalInvocationID.x];\n"
          "pair.a = pair.a * fma(x, x, vec3(UNIFORM_BUFFER(small)[0]).y);\n"
          "UNIFORM_BUFFER(pairs)[0] = pair;\n"
          "ivec4 texel = LoadTexture(volume, GetTextureSize(volume) - 1);\n"
          "StoreTexture(line, GetTextureSize(line) - 1, uvec4(texel) + LoadTexture(line, 0) + "
          "UNIFORM(input));\n"
          "}"}});
    for (const char* language : shaderLanguages) {
        ShaderParser parser{Id(language)};
        ASSERT_OK(parser.ParseFile("k.kernel", {}, sources.Get()));
        auto program = WriteParsed(parser);
        ASSERT_OK(program);
        EXPECT_EQ(Compile(program->text, language), "") << program->text;
    }
}

// The compiler's message about a line of the generated text is shown at the line that its author wrote.
TEST(ProgramText, MessagesAreShownAtTheAuthorsLines) {
    auto encoded = EncodeShaderFile("inline void hidden()\n{\nsecretWord;\n}", BaseArray<UChar>(16));
    ASSERT_OK(encoded);
    const struct {
        const char* header;
        const char* kernel;
        const char* expected;
    } cases[] = {
        {"", "// text\n\nFP_KERNEL(K)\n{\n\tMAKELOCAL(a, 1, b)\n\tint x = wrong;\n}\nFP_KERNEL_END",
         "k.kernel(5): 'a' : undeclared identifier\n\tMAKELOCAL(a, 1, b)"},
        {"", "// text\n\nFP_KERNEL(K)\n{\n\tint s;\n\tFORMULAPARSE(f, wrong, s, float)\n}\nFP_KERNEL_END",
         "k.kernel(6): 'wrong' : undeclared identifier\n\tFORMULAPARSE(f, wrong, s, float)"},
        {"", "FP_KERNEL(K)\n{\n\tTYPE x = wrong;\n}\nFP_KERNEL_END",
         "k.kernel(3): 'wrong' : undeclared identifier\n\tTYPE x = wrong;"},
        {"\n\ninline void f()\n{\n\n  wrong = 1;\n}", "FP_KERNEL(K)\nFP_KERNEL_END",
         "k_header(6): 'wrong' : undeclared identifier\n  wrong = 1;"},
        {"\nstruct S\n{\n  int a;\n  wrong b;\n};", "FP_KERNEL(K)\nFP_KERNEL_END", "k_header(5): "},
        {encoded->c_str(), "FP_KERNEL(K)\nFP_KERNEL_END",
         "k_header(3): an error in encoded text, of which nothing is shown"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.expected);
        MemorySources sources({{"k_header", test.header}, {"k.kernel", test.kernel}});
        if (test.header == encoded->c_str())
            sources.files.texts["k_header"] = *encoded;
        ShaderParser parser(Id("GLSL"));
        ASSERT_OK(parser.AddFormula("f", "value + 1"));
        ASSERT_OK(parser.ParseFile("k.kernel", ParseOptions("float"), sources.Get()));
        auto program = WriteParsed(parser);
        ASSERT_OK(program);
        // "ERROR: /path:LINE: message"
        std::istringstream output(Compile(program->text, "GLSL"));
        String shown, line;
        for (; shown.empty() && std::getline(output, line);)
            if (const size_t mark = line.find(".comp:");
                line.starts_with("ERROR: ") && mark != String::npos) {
                const size_t colon = line.find(": ", mark);
                shown = DescribeForAuthor(*program, parser.GetSourceFiles(), std::stoi(line.substr(mark + 6)),
                                          Trim(line.substr(colon + 2)));
            }
        EXPECT_TRUE(shown.starts_with(test.expected)) << shown << "\n" << program->text;
        EXPECT_EQ(shown.find("secretWord"), String::npos) << shown;
    }
}

} // namespace
} // namespace norvi
