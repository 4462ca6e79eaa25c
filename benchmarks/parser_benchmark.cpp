// Kernel text becomes pieces: how long that takes, beside what a compiler's preprocessor takes for the
// program that comes of them.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <norvi/host/text.h>

#include "drawport/text/program_text.h"
#include "harness.h"
#include "parser_glslang.h"
#include "shaderparser/shaderparser.h"

namespace norvi::benchmark {

namespace {

namespace fs = std::filesystem;

Settings g_settings;

template <typename T>
T Require(Result<T> result) {
    if (!result) {
        std::fprintf(stderr, "%s\n", result.GetError().ToString().c_str());
        std::exit(1);
    }
    return std::move(result).GetValue();
}

/// Kernel files that are measured together.
struct Subject {
    String label;
    BaseArray<Url> files;
    size_t bytes = 0; ///< of the files and their headers
    BaseArray<String> programs;
};

DataDictionary Options() {
    DataDictionary options;
    options.Set(Id(shaderparseroption::TemplateArgument), String("float"));
    return options;
}

/// Reads from the disk, with a cache for headers.
void Parse(ShaderParser& parser, const Url& file, IncludeTextCache& cache) {
    static DiskFiles files;
    static const DataDictionary options = Options();
    if (const Result<void> result = parser.ParseFile(file, options, {files, cache}); !result) {
        std::fprintf(stderr, "%s\n", result.GetError().ToString().c_str());
        std::exit(1);
    }
}

void Add(Subject& subject, const fs::path& path) {
    IncludeTextCache cache;
    ShaderParser parser(Id("GLSL"));
    const Url file(path.string());
    Parse(parser, file, cache);
    subject.files.push_back(file);
    for (const SourceFile& source : parser.GetSourceFiles())
        subject.bytes += source.text->size();
    const ProgramDescription program = Require(DescribeProgram(parser));
    subject.programs.push_back(
        Require(WriteProgram(program, *FindShaderLanguage(parser.GetLanguage()))).text);
}

void PrintTitle() {
    std::printf(
        "\n| text | bytes | first time, us | with headers cached, us | MB/s | preprocessor, us | norvi / "
        "preprocessor |\n|---|---|---|---|---|---|---|\n");
}

/// A row with the times for all files of the subject.
void MeasureSubject(const Subject& subject) {
    IncludeTextCache warm;
    const auto parseAll = [&](IncludeTextCache& cache) {
        for (const Url& file : subject.files) {
            ShaderParser parser(Id("GLSL"));
            Parse(parser, file, cache);
        }
    };
    std::vector<Contender> contenders{
        {"first",
         [&] {
             IncludeTextCache cold;
             parseAll(cold);
         },
         false},
        {"warm", [&] { parseAll(warm); }, false},
    };
    if (HasPreprocessor())
        contenders.push_back({"glslang", [&] {
                                  for (const String& program : subject.programs)
                                      Preprocess(program);
                              }});
    const auto measurements = Measure(contenders, g_settings);
    const double first = measurements[0].seconds, cached = measurements[1].seconds;
    std::printf("| %s | %zu | %.1f | %.1f | %.0f |", subject.label.c_str(), subject.bytes, first * 1e6,
                cached * 1e6, static_cast<double>(subject.bytes) / cached / 1e6);
    if (HasPreprocessor())
        std::printf(" %.1f | %.3f |\n", measurements[2].seconds * 1e6, measurements[0].ratioToBestPeer);
    else
        std::printf(" - | - |\n");
    std::fflush(stdout);
}

/// A kernel of so many lines in its body.
void WriteKernel(const fs::path& path, int lines) {
    std::ofstream file(path);
    file << "#define KERNELINPUTS \\\n(Block<const Float32>) values, \\\n(Block<Float32>) result\n\n"
            "GROUPSIZE(64, 1, 1)\n;\nNORVI_PARALLEL_KERNEL(Lines)\n{\n"
            "\tint index = int(InGlobalInvocationID.x);\n\tfloat x = UNIFORM_BUFFER(values)[index];\n";
    for (int i = 0; i < lines; ++i)
        file << (i % 8 == 7 ? "\tx = Sqrt(abs(x)) + UNIFORM_BUFFER(values)[index];\n"
                            : "\tx = x * 1.0625 + 0.25 * (x - float(index));\n");
    file << "\tUNIFORM_BUFFER(result)[index] = x;\n}\nNORVI_PARALLEL_KERNEL_END\n";
}

void BenchmarkShippedKernels() {
    Subject all{"all shipped kernels", {}, 0, {}};
    BaseArray<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(NORVI_SHADERS))
        if (entry.path().extension() == ".kernel" && entry.path().stem() != "sample_grid")
            paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths) {
        Subject one{path.stem().string(), {}, 0, {}};
        Add(one, path);
        Add(all, path);
        MeasureSubject(one);
    }
    MeasureSubject(all);
    const fs::path grid = fs::path(NORVI_SHADERS) / "sample_grid.kernel";
    if (fs::exists(grid)) {
        Subject one{"sample_grid, with PNanoVDB.h", {}, 0, {}};
        Add(one, grid);
        MeasureSubject(one);
    }
}

void BenchmarkLengths() {
    const fs::path folder = fs::temp_directory_path() / "norvi_parser_benchmark";
    fs::create_directories(folder);
    for (int lines : {1, 4, 16, 64, 256, 1000, 1024, 4096}) {
        const fs::path path = folder / Format("lines_@.kernel", lines);
        WriteKernel(path, lines);
        Subject subject{Format("@ lines", lines), {}, 0, {}};
        Add(subject, path);
        MeasureSubject(subject);
    }
    fs::remove_all(folder);
}

} // namespace

} // namespace norvi::benchmark

int main(int argc, char** argv) {
    using namespace norvi::benchmark;
    if (argc > 1 && std::strcmp(argv[1], "--quick") == 0)
        g_settings = {.rounds = 3, .secondsPerSample = 0.001};
    if (!HasPreprocessor())
        std::printf("glslang's library was not found: there is nothing to compare with\n");
    PrintTitle();
    BenchmarkShippedKernels();
    PrintTitle();
    BenchmarkLengths();
    return 0;
}
