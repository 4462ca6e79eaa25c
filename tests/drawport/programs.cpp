#include "programs.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <regex>
#include <sstream>

#include <unistd.h>

#include <norvi/host/text.h>

#include "shaderparser/memory_files.h"

namespace norvi {

namespace fs = std::filesystem;

namespace {

/// The gradient noise of the library behind every number.
MappedText NoiseCode() {
    String text;
    for (const char* name : {"lattice", "gradient", "perlin"})
        text += ReadText(fs::path(NORVI_KERNELS) / "noise" / (String(name) + ".noise"));
    for (size_t found = text.find("inline "); found != String::npos; found = text.find("inline ", found))
        text.erase(found, 7);
    MappedText code;
    code.AppendLines(text + "float norviNoise(int mode, int seed, vec3 place, float time)\n"
                            "{\nreturn NoisePerlin(place, time, uint(seed), 1023u);\n}",
                     {});
    return code;
}

BaseArray<KernelCase> KernelsOf(const fs::path& folder) {
    BaseArray<KernelCase> kernels;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() != ".kernel")
            continue;
        if (ReadText(entry.path()).find("TYPE") == String::npos)
            kernels.push_back({entry.path(), ""});
        else
            for (const char* type : {"float", "half", "vec3"})
                kernels.push_back({entry.path(), type});
    }
    std::sort(kernels.begin(), kernels.end(),
              [](const KernelCase& a, const KernelCase& b) { return a.Name() < b.Name(); });
    return kernels;
}

} // namespace

String ReadText(const fs::path& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

void WriteText(const fs::path& path, std::string_view text) {
    std::ofstream(path) << text;
}

Result<MappedText> WriteParsed(const ShaderParser& parser) {
    NORVI_TRY_VALUE(program, DescribeProgram(parser));
    if (program.hasNoise)
        program.code.push_back(NoiseCode());
    if (program.body.text.find("toDisplay(") != String::npos)
        program.code.emplace_back().AppendLine("#define toDisplay(color) (color)", {});
    return WriteProgram(program, *FindShaderLanguage(parser.GetLanguage()));
}

String KernelCase::Name() const {
    return file.stem().string() + (type.empty() ? "" : "_" + type);
}

BaseArray<KernelCase> ShippedKernels() {
    return KernelsOf(NORVI_KERNELS);
}

BaseArray<KernelCase> FeatureKernels() {
    return KernelsOf(fs::path(NORVI_DRAWPORT_TESTS) / "golden" / "inputs");
}

BaseArray<KernelCase> AllKernels() {
    BaseArray<KernelCase> kernels = ShippedKernels();
    for (KernelCase& kernel : FeatureKernels())
        kernels.push_back(std::move(kernel));
    return kernels;
}

Result<void> ParseKernel(ShaderParser& parser, const KernelCase& kernel, const String& formula) {
    if (!formula.empty())
        for (const char* name : {"formula", "feedFormula", "liftFormula"})
            NORVI_TRY(parser.AddFormula(name, formula));
    return parser.ParseFile(Url(kernel.file.string()), ParseOptions(kernel.type));
}

Result<MappedText> WriteKernel(const KernelCase& kernel, const char* language) {
    ShaderParser parser{Id(language)};
    NORVI_TRY(ParseKernel(parser, kernel, "value * 2 + seed"));
    return WriteParsed(parser);
}

String Run(const String& command) {
    String output;
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output += static_cast<char>(c);
    return pclose(pipe) == 0 ? String() : output + "(" + command + ")";
}

String CompileToModule(const String& text, const char* language, const fs::path& module) {
    const bool isHlsl = String(language) == "HLSL";
    const fs::path source = fs::path(module).replace_extension(".comp");
    WriteText(source, text);
    // The compiler writes valid modules of HLSL for this version only, and contracts when it optimises.
    const char* options = isHlsl ? "-D -Od --hlsl-enable-16bit-types --target-env vulkan1.1 -e main -S comp"
                                 : "--target-env vulkan1.2";
    return Run(Format("@ -V @ -o @ @", NORVI_GLSLANG_VALIDATOR, options, module.string(), source.string()));
}

BaseArray<UInt32> ReadWords(const fs::path& module) {
    const String bytes = ReadText(module);
    BaseArray<UInt32> words(bytes.size() / 4);
    std::memcpy(words.data(), bytes.data(), words.size() * 4);
    return words;
}

void WriteWords(const fs::path& module, const BaseArray<UInt32>& words) {
    WriteText(module, {reinterpret_cast<const char*>(words.data()), words.size() * 4});
}

String ForShim(const String& program) {
    static const struct {
        std::regex found;
        const char* replacement;
    } rules[] = {
        {std::regex(R"(\[\[[^\]]*\]\])"), ""},
        {std::regex(R"((^|[^#\w])((float|int|uint|bool|half)[234])\()"), "$1make_$2("},
        {std::regex(R"((^|[^#\w])K##([234])\()"), "$1make_##K##$2("},
        // Group shared memory of the entry.
        {std::regex(R"((^|\n)threadgroup NorviProgram::)"), "$1static NorviProgram::"},
    };
    String text = program;
    for (const auto& rule : rules)
        text = std::regex_replace(text, rule.found, rule.replacement);
    return text;
}

String CompileWithShim(const fs::path& source, const String& options) {
    return Run(
        Format("@ -x c++ -std=c++20 -Werror -Wno-unknown-pragmas -Wno-macro-redefined -Wno-unused-value "
               "-ffp-contract=off -Xclang -cl-single-precision-constant -isystem @/metal_shim @ @",
               NORVI_CLANG, NORVI_DRAWPORT_TESTS, options, source.string()));
}

TemporaryFolder::TemporaryFolder()
    : path_(fs::temp_directory_path() / Format("norvi_programs_@", Int{getpid()})) {
    fs::create_directories(path_);
}

} // namespace norvi
