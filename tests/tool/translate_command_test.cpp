#include "norvi/translate_command.h"

#include <nlohmann/json.hpp>

#include "norvi/encode_command.h"
#include "norvi/kernel_file.h"
#include "norvi/shader_check.h"
#include "tool_fixture.h"

namespace norvi {

namespace {

String Translate(const String& kernel, TranslateOptions options = {}) {
    options.translation.kernel = kernel;
    const auto text = TranslateText(options);
    return text ? *text : "error: " + MessageOf(text);
}

TranslateOptions Check() {
    TranslateOptions options;
    options.check = true;
    return options;
}

TranslateOptions Pieces(bool isJson) {
    TranslateOptions options;
    options.showPieces = true;
    options.isJson = isJson;
    return options;
}

bool HasCompiler() {
    return Translate("saxpy", Check()) !=
           "error: there is no compiler at hand for GLSL: install glslangValidator";
}

constexpr const char* bodyBegin = "#define KERNELINPUTS \\\n(Block<float>) data\n\nFP_KERNEL(K)\n{\n";
constexpr const char* bodyEnd = "}\nFP_KERNEL_END\n";

} // namespace

TEST(TranslateCommand, KernelsAreFoundByPathAndByName) {
    const ScratchFolder folder;
    const String file =
        folder.Write("mine.kernel", String(bodyBegin) + "UNIFORM_BUFFER(data)[0] = 1.0;\n" + bodyEnd);
    EXPECT_NE(Translate(file).find("\nUNIFORM_BUFFER(data)[0] = 1.0;\n"), String::npos);
    EXPECT_EQ(Translate("saxpy"), Translate("saxpy.kernel"));
    EXPECT_EQ(Translate("saxpy"), Translate(KernelSourceFolder() + "/saxpy.kernel"));
    EXPECT_EQ(Translate("saxpi"),
              "error: there is no file and no installed kernel 'saxpi'; did you mean 'saxpy'?");
}

TEST(TranslateCommand, OptionsReachTheParser) {
    const ScratchFolder folder;
    const String file = folder.Write("k.kernel", String(bodyBegin) +
                                                     "TYPE x;\nONLY_USE_FIRST_MSAA_SAMPLE\n"
                                                     "FORMULAPARSE(f, 1.0, s, float)\n" +
                                                     bodyEnd);
    TranslateOptions options;
    options.translation.templateArgument = "double";
    options.translation.multisampling = 4;
    options.translation.formulas = {"f=value * 3"};
    const String text = Translate(file, options);
    for (const char* part :
         {"\ndouble x;\n", "\nif (InSampleID > 0) discard;\n", "\n// generated formula code\n"})
        EXPECT_NE(text.find(part), String::npos) << text;
    options.translation.formulas = {"f"};
    EXPECT_EQ(Translate(file, options), "error: --formula 'f' is not NAME=VALUE");
}

TEST(TranslateCommand, ErrorsOfTheParserShowTheAuthorsLine) {
    const ScratchFolder folder;
    const String file = folder.Write("k.kernel", "// text\n\n  GROUPSIZE(8,8,1)\n");
    EXPECT_EQ(Translate(file), "error: " + file +
                                   "(3): GROUPSIZE used wrong, please used the format GROUPSIZE(x, y, z) "
                                   "only\n  GROUPSIZE(8,8,1)");
}

TEST(TranslateCommand, PiecesAreToldWithTheirPlaces) {
    const String folder = KernelSourceFolder();
    const String text = Translate("n_body", Pieces(false));
    EXPECT_TRUE(text.starts_with("language:\n  GLSL\nwork group:\n  64 x 1 x 1\nparameters:\n"
                                 "  bodies           buffer Body, read-only "))
        << text;
    for (const char* part : {"\ntextures:\n  none\n", "\ndefines:\n  #define SOFTENING 0.0001 ",
                             "\nstructs:\n  Body, 2 members ", "/n_body_header("})
        EXPECT_NE(text.find(part), String::npos) << part << text;
    const auto json = nlohmann::json::parse(Translate("resample", Pieces(true)));
    ASSERT_EQ(json["textures"].size(), 2u);
    EXPECT_EQ(json["textures"][0]["kind"], "2D texture");
    EXPECT_EQ(json["textures"][0]["file"], folder + "/resample.kernel");
    EXPECT_GT(json["textures"][0]["line"], 1);
    EXPECT_EQ(json["groupSize"].size(), 3u);
}

TEST(TranslateCommand, TheCompilersMessagesStandAtTheAuthorsLines) {
    if (!HasCompiler())
        GTEST_SKIP() << "there is no glslangValidator";
    const ScratchFolder folder;
    EXPECT_EQ(Translate("saxpy", Check()), KernelSourceFolder() + "/saxpy.kernel compiles as glsl\n");
    const String file =
        folder.Write("k.kernel", String(bodyBegin) + "\tint x = wrong;\n\tfloat y = z;\n" + bodyEnd);
    const String text = Translate(file, Check());
    EXPECT_TRUE(text.starts_with("error: " + file + "(6): 'wrong' : undeclared identifier\n\tint x = wrong;"))
        << text;
}

TEST(TranslateCommand, TextOfEncodedFilesIsNotShown) {
    const ScratchFolder folder;
    const String header = folder.Write("k_header", "inline float hiddenName(float hiddenOther)\n{\n"
                                                   "return wrongName;\n}\n");
    const String file =
        folder.Write("k.kernel", String(bodyBegin) + "float x = hiddenName(vec3(0.0));\n" + bodyEnd);
    ASSERT_EQ(MessageOf(EncodeFile(header, header)), "");
    EXPECT_EQ(Translate(file), "error: the program of " + file +
                                   " holds text of encoded files, which is not shown; --check works");
    for (bool isJson : {false, true}) {
        const String pieces = Translate(file, Pieces(isJson));
        EXPECT_NE(pieces.find("(encoded)"), String::npos) << pieces;
        EXPECT_EQ(pieces.find("hiddenOther"), String::npos) << pieces;
    }
    // A failure of the parser, then one of the compiler.
    const String broken = folder.Write("b.kernel", "  GROUPSIZE(secretNumber)\n");
    ASSERT_EQ(MessageOf(EncodeFile(broken, broken)), "");
    EXPECT_EQ(Translate(broken),
              "error: " + broken + "(1): an error in encoded text, of which nothing is shown");
    if (!HasCompiler())
        GTEST_SKIP() << "there is no glslangValidator";
    EXPECT_TRUE(
        Translate(file, Check())
            .starts_with("error: " + header + "(3): an error in encoded text, of which nothing is shown"));
}

TEST(TranslateCommand, CompilersOutputIsTakenApart) {
    MappedText program;
    program.AppendLine("first", {});
    program.AppendLine("second", {0, 7});
    const BaseArray<SourceFile> files{{Url("k.kernel"), false, nullptr}};
    const struct {
        const char* output;
        const char* shown;
    } cases[] = {
        {"stdin\nERROR: stdin:2: 'x' : bad \nERROR: 1 compilation errors.\n", "k.kernel(7): 'x' : bad"},
        {"<stdin>:2:5: error: bad thing\n  code;\n", "k.kernel(7): error: bad thing"},
        {"ERROR: 0:1: of the prologue\nERROR: 0:2: own", "of the prologue\nk.kernel(7): own"},
        {"ERROR: 0:99999999999999999999: x", "ERROR: 0:99999999999999999999: x"},
        {"ERROR: 0:9: outside", "outside"},
        {"cannot start\n\nat all", "cannot start\nat all"},
        {"", ""},
    };
    for (const auto& test : cases)
        EXPECT_EQ(CompilerMessages(program, files, test.output), test.shown) << test.output;
}

} // namespace norvi
