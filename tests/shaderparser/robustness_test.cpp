// Files as nobody would write them: each gives a result or an error, in little memory.
#include <fstream>

#include <gtest/gtest.h>

#include "host/log_recorder.h"
#include "shaderparser/memory_files.h"
#include "support/results.h"

namespace norvi {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsSanitized = true;
#else
constexpr bool IsSanitized = false;
#endif

/// Peak of the memory of this process, in kilobytes, since it was last forgotten.
Int PeakKilobytes() {
    std::ifstream status("/proc/self/status");
    for (String line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            return std::stoll(line.substr(line.find_first_of("0123456789")));
    return 0;
}

void ForgetPeak() {
    std::ofstream("/proc/self/clear_refs") << "5";
}

String FilledWith(std::string_view text, size_t bytes) {
    String result;
    result.reserve(bytes + text.size());
    while (result.size() < bytes)
        result += text;
    return result;
}

/// What was understood, as one text.
String PiecesOf(const ShaderParser& parser) {
    String text = parser.GetKernelText().text;
    for (const auto* texts :
         {&parser.GetGlobalBlocks(), &parser.GetDefines(), &parser.GetGroupSharedDeclarations()})
        for (const MappedText& block : *texts)
            text += "\n--\n" + block.text;
    for (const KernelParameterEntry& entry : parser.GetParameters())
        text += "\n-- " + entry.name + ":" + entry.type.ToString() + entry.elementTypeName;
    for (const InlineFunctionEntry& entry : parser.GetInlineFunctions())
        text += "\n-- " + entry.signature + "\n" + entry.text.text;
    for (const StructEntry& entry : parser.GetStructs())
        text += Format("\n-- @ @", entry.name, UInt64{entry.lines.size()});
    return text;
}

/// The message of the failure, or "" for a parse that came to its end.
String Parse(const String& kernel, const String& header, const char* language = "METAL") {
    MemorySources sources({{"k.kernel", kernel}, {"k_header", header}});
    ShaderParser parser{Id(language)};
    const Result<void> result = parser.ParseFile("k.kernel", ParseOptions("float", 2), sources.Get());
    return result ? String() : result.GetError().GetMessage();
}

constexpr size_t Megabyte = 1 << 20;

TEST(Robustness, LinesOfAMegabyteTakeLittle) {
    const LogRecorder quiet;
    const struct {
        const char* name;
        String text;
    } cases[] = {
        {"words", "FP_KERNEL\n" + FilledWith("a ", Megabyte) + "\nFP_KERNEL_END"},
        {"blanks", "struct" + String(Megabyte, ' ') + "x"},
        {"parameter", "#define KERNELINPUTS\n(" + FilledWith("const ", Megabyte) + "x\n\n"},
        {"texture", "#define KERNELINPUTS\n(TextureSampler" + String(Megabyte, '_') + ") t\n\n"},
        {"buffer", "#define KERNELINPUTS\n(Block" + String(Megabyte, '<') + ") t\n\n"},
        {"input", "struct KernelInput\n{\n" + FilledWith("const ", Megabyte) + ";\n}"},
        {"method", FilledWith("NORVI_METHOD ", Megabyte)},
        {"group size", "GROUPSIZE(" + FilledWith("1, ", Megabyte)},
        {"arguments", "FP_KERNEL\nMAKELOCAL(" + FilledWith(", ", Megabyte) + ")\nFP_KERNEL_END"},
        {"shared", "FP_KERNEL\nGROUPSHAREDMEM(" + FilledWith(", ", Megabyte) + ")\nFP_KERNEL_END"},
        {"unclosed", "FP_KERNEL\n" + FilledWith("CPU_CONSTREF(", Megabyte) + "\nFP_KERNEL_END"},
        {"texels", "FP_KERNEL\n" + FilledWith(" GetFramebufferTexel(a, b)", Megabyte) + "\nFP_KERNEL_END"},
        {"offsets", "FP_KERNEL\nmatoff" + String(Megabyte, '(') + "\nFP_KERNEL_END"},
        {"signature", "inline void f(" + FilledWith("INOUT(int) a, ", Megabyte) + ")\n{\n}"},
        {"nul", String(Megabyte, '\0')},
        {"bad UTF-8", "FP_KERNEL\n" + String(Megabyte, '\xFF') + "\nFP_KERNEL_END"},
        {"guards", FilledWith("#ifndef A\n#define A\n", Megabyte)},
        {"braces", "inline f\n" + String(Megabyte, '{') + "\n" + String(Megabyte, '}')},
        {"line breaks", "FP_KERNEL\na" + String(Megabyte, '\n') + "b\nFP_KERNEL_END"},
    };
    for (const auto& test : cases)
        for (const char* language : {"GLSL", "HLSL", "METAL"}) {
            SCOPED_TRACE(Format("@ in @", test.name, language));
            ForgetPeak();
            const Int before = PeakKilobytes();
            Parse(test.text, test.text, language);
            if (!IsSanitized) {
                EXPECT_LT(PeakKilobytes() - before, 24 << 10);
            }
        }
}

TEST(Robustness, MarksAndLineBreaksOfOtherSystemsChangeNothing) {
    const String kernel =
        "#define KERNELINPUTS \\\n(Block<float>) data, \\\n(Int32) count\n\n"
        "GROUPSIZE(8, 8, 1)\n;\nfloat helper;\nFP_KERNEL(K)\n{\nint x = 1;\n}\nFP_KERNEL_END";
    const String header = "#define A 1\nstruct S\n{\nint a;\n};\ninline void f(INOUT(float) x)\n{\nx = 1;\n}";
    const auto withBreaks = [](const String& text) {
        String result;
        for (const char c : text)
            result += c == '\n' ? String("\r\n") : String(1, c);
        return result;
    };
    const auto pieces = [](const String& kernelText, const String& headerText) {
        MemorySources sources({{"k.kernel", kernelText}, {"k_header", headerText}});
        ShaderParser parser(Id("GLSL"));
        EXPECT_OK(parser.ParseFile("k.kernel", {}, sources.Get()));
        String text = PiecesOf(parser);
        // Defines are kept as they stand, line breaks included.
        std::erase(text, '\r');
        return text;
    };
    const String expected = pieces(kernel, header);
    EXPECT_NE(expected.find("-- data:float"), String::npos) << expected;
    EXPECT_EQ(pieces(withBreaks(kernel), withBreaks(header)), expected);
    EXPECT_EQ(pieces("\xEF\xBB\xBF" + kernel, "\xEF\xBB\xBF" + header), expected);
    EXPECT_EQ(pieces("\xEF\xBB\xBF" + withBreaks(kernel), "\n\n" + header + "\r\n \n"), expected);
}

TEST(Robustness, NulBytesStayInTheText) {
    MemorySources sources({{"k.kernel", String("FP_KERNEL\na\0b\n\0\nFP_KERNEL_END", 29)}});
    ShaderParser parser(Id("GLSL"));
    ASSERT_OK(parser.ParseFile("k.kernel", {}, sources.Get()));
    EXPECT_EQ(parser.GetKernelText().text, String("a\0b\n\0", 5));
}

TEST(Robustness, AUrlWithANulByteIsNoFile) {
    const String kernel = String(NORVI_KERNELS) + "/saxpy.kernel";
    EXPECT_TRUE(DiskFiles().IsFile(Url(kernel)));
    EXPECT_FALSE(DiskFiles().IsFile(Url(kernel + String("\0.png", 5))));
    EXPECT_FALSE(DiskFiles().Read(Url(kernel + String("\0", 1))).IsOk());
}

TEST(Robustness, CirclesOfIncludesAreCounted) {
    const String header = "// INCLUDE_STRUCTS_BEGIN\n" + FilledWith("#include \"k.h\"\n", 1 << 20);
    const Result<void> result = [&] {
        MemorySources sources({{"k.kernel", ""}, {"k_header", header}});
        ShaderParser parser(Id("GLSL"));
        return parser.ParseFile("k.kernel", {}, sources.Get());
    }();
    ASSERT_TRUE(FailsWith(result, errorkind::IllegalState,
                          Format("too many or too large includes: 1025 files of @ bytes with k_header",
                                 UInt64{header.size()})));
    EXPECT_EQ(result.GetError().GetPlace().file, "k_header");
    EXPECT_EQ(result.GetError().GetPlace().line, 1025);
    // The file that is read is known by its name however it is written.
    MemorySources sources(
        {{"./d/../k.kernel", ""}, {"k_header", "// INCLUDE_STRUCTS_BEGIN\n#include \"k.h\""}});
    ShaderParser parser(Id("GLSL"));
    EXPECT_OK(parser.ParseFile("./d/../k.kernel", {}, sources.Get()));
    EXPECT_EQ(sources.files.readCount, 2);
}

TEST(Robustness, AHeaderThatCannotBeReadIsLoggedWithItsPlace) {
    class LockedFiles final : public SourceFiles {
      public:
        Bool IsFile(const Url& url) override { return files.IsFile(url); }
        Result<String> Read(const Url& url) override {
            if (url == Url("locked_header"))
                return IllegalStateError("cannot read locked_header");
            return files.Read(url);
        }
        MemoryFiles files{
            {"k.kernel", "FP_KERNEL\na\nFP_KERNEL_END"},
            {"k_header", "// INCLUDE_STRUCTS_BEGIN\n#include \"locked.h\"\n#include \"none.h\""},
            {"locked_header", "x"}};
    };
    LockedFiles files;
    IncludeTextCache cache;
    for (int i = 0; i < 2; ++i) {
        LogRecorder log;
        ShaderParser parser(Id("GLSL"));
        EXPECT_OK(parser.ParseFile("k.kernel", {}, {files, cache}));
        EXPECT_EQ(log.entries,
                  (BaseArray<String>{"error: k_header(2): a header is left out: cannot read locked_header"}));
    }
}

// Here and with the long lines, work that grows with the square of the length would meet ctest's limit of
// time.
TEST(Robustness, BigFilesAreReadWhole) {
    const LogRecorder quiet;
    const String body =
        FilledWith("\tUNIFORM_BUFFER(data)[index] = Sqrt(value) + LOCALDATA(a, b, c);\n", 8 << 20);
    const String functions = FilledWith("inline float f(INOUT(float) x)\n{\n  return x;\n}\n", 8 << 20);
    EXPECT_EQ(Parse("FP_KERNEL\n{\n" + body + "}\nFP_KERNEL_END", ""), "");
    EXPECT_EQ(Parse("", functions), "");
}

} // namespace
} // namespace norvi
