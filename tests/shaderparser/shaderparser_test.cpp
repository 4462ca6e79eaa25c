#include "shaderparser/shaderparser.h"

#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "shaderparser/memory_files.h"
#include "support/results.h"

namespace norvi {
namespace {

namespace fs = std::filesystem;

String KernelPath(const String& name) {
    return String(NORVI_KERNELS "/") + name;
}

TEST(ShaderParser, IsEmptyBeforeTheParse) {
    const ShaderParser parser(Id("GLSL"));
    EXPECT_EQ(parser.GetWorkGroupSize(), (Vec3<UInt32>{256, 1, 1}));
    EXPECT_EQ(parser.GetNoiseCallCount(), 0);
    EXPECT_TRUE(parser.GetGlobalBlocks().empty());
    EXPECT_TRUE(parser.GetKernelText().IsEmpty());
}

TEST(ShaderParser, NeedsAFile) {
    for (const char* url : {"", "/nowhere/at/all", "/tmp"})
        EXPECT_TRUE(
            FailsWith(ShaderParser(Id("GLSL")).ParseFile(Url(url), {}), errorkind::IllegalArgument,
                      "Illegal argument: Condition file.IoDetect() == IODETECT::FILE not fulfilled. "));
}

// Parameters "name:type", a buffer as "name[element]", with a "-" in front where it is read-only.
String DescribeParameters(const ShaderParser& parser) {
    String text;
    for (const KernelParameterEntry& entry : parser.GetParameters())
        text += (text.empty() ? "" : " ") + String(entry.qualifier & KernelParameterEntry::Const ? "-" : "") +
                (entry.type ? Format("@:@", entry.name, entry.type)
                            : Format("@[@]", entry.name, entry.elementTypeName));
    return text;
}

struct ShippedKernel {
    const char* file;
    const char* parameters;
    Vec3<UInt32> groupSize;
};

const ShippedKernel shippedKernels[] = {
    {"apply_formula.kernel", "-values[Float32] result[Float32] count:int32 randomSeed:int32", {64, 1, 1}},
    {"count_above.kernel",
     "-values[Float32] counter:AtomicUInt32 width:int32 rows:int32 threshold:float32",
     {64, 1, 1}},
    {"doubler.kernel", "data[UInt32] scale:uint32", {64, 1, 1}},
    {"fill.kernel", "data[float] fillValue:float32 count:int32", {256, 1, 1}},
    {"gray_scott.kernel",
     "-u[Float32] -v[Float32] uNext[Float32] vNext[Float32] -feed[Float32] width:int32 height:int32 "
     "kill:float32 "
     "diffusionU:float32 diffusionV:float32",
     {8, 8, 1}},
    {"heat_3d.kernel",
     "-temperature[Float32] result[Float32] width:int32 height:int32 depth:int32 diffusion:float32",
     {8, 4, 4}},
    {"histogram.kernel",
     "-values[Float32] bins[UInt32] outside:AtomicUInt32 count:int32 binCount:int32 lowest:float32 "
     "highest:float32",
     {64, 1, 1}},
    {"mandelbrot.kernel",
     "iterations[UInt32] width:int32 height:int32 maxIterations:int32 centre:Vector2d32 scale:float32",
     {8, 8, 1}},
    {"n_body.kernel",
     "-bodies[Body] bodiesNext[Body] velocities[Vector32] count:int32 timeStep:float32",
     {64, 1, 1}},
    {"palette.kernel", "-values[Float32] colors[Vector32] -palette[Vector32] count:int32", {64, 1, 1}},
    {"spin.kernel", "points[Vector32] axis:Vector32 angle:float32 count:int32", {64, 1, 1}},
};

TEST(ShaderParser, ReadsWhatShippedKernelsDeclare) {
    for (const ShippedKernel& kernel : shippedKernels) {
        SCOPED_TRACE(kernel.file);
        ShaderParser parser(Id("GLSL"));
        ASSERT_OK(parser.ParseFile(Url(KernelPath(kernel.file)), ParseOptions("float")));
        EXPECT_EQ(DescribeParameters(parser), kernel.parameters);
        EXPECT_EQ(parser.GetWorkGroupSize(), kernel.groupSize);
    }
}

TEST(ShaderParser, ReadsEveryShippedKernelInEveryLanguage) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(NORVI_KERNELS))
        for (const char* language : {"GLSL", "HLSL", "METAL"}) {
            if (entry.path().extension() != ".kernel")
                continue;
            SCOPED_TRACE(entry.path().string());
            ShaderParser parser{Id(language)};
            ASSERT_OK(parser.ParseFile(Url(entry.path().string()), ParseOptions("float")));
            const String& text = parser.GetKernelText().text;
            EXPECT_TRUE(text.starts_with("{\n") && text.ends_with("\n}")) << text;
            EXPECT_EQ(text.find("KERNEL_RETURN_NO_ERROR"), String::npos);
            EXPECT_FALSE(parser.GetParameters().empty());
            ++count;
        }
    EXPECT_GT(count, 45);
}

TEST(ShaderParser, TakesHeadersOfShippedKernels) {
    ShaderParser parser(Id("GLSL"));
    ASSERT_OK(parser.ParseFile(Url(KernelPath("n_body.kernel")), {}));
    ASSERT_EQ(parser.GetStructs().size(), 1u);
    EXPECT_EQ(parser.GetStructs()[0].name, "Body");
    EXPECT_EQ(parser.GetStructs()[0].lines, (BaseArray<String>{"\n", "vec3 position;", "float mass;", "\n"}));
    ASSERT_EQ(parser.GetDefines().size(), 1u);
    EXPECT_EQ(parser.GetDefines()[0].text, "#define SOFTENING 0.0001");
    ASSERT_EQ(parser.GetInlineFunctions().size(), 1u);
    EXPECT_EQ(parser.GetInlineFunctions()[0].signature, "vec3 Attraction(vec3 from, vec3 to, float mass)");
}

TEST(ShaderParser, ParsesOnce) {
    MemorySources sources({{"k.kernel", "FP_KERNEL\na\nFP_KERNEL_END"}, {"other", "GROUPSIZE(1, 1, 1)"}});
    ShaderParser parser(Id("GLSL"));
    ASSERT_OK(parser.ParseFile("k.kernel", {}, sources.Get()));
    ASSERT_OK(parser.ParseFile("other", {}, sources.Get()));
    EXPECT_EQ(sources.files.readCount, 2);
    EXPECT_EQ(parser.GetKernelText().text, "a");
    EXPECT_EQ(parser.GetWorkGroupSize().x, 256u);
}

TEST(ShaderParser, TriesAgainAfterAFailureAndKeepsWhatIsThere) {
    MemorySources sources({{"k.kernel", "inline f()\n{\n}\nGROUPSIZE(x)"}});
    ShaderParser parser(Id("GLSL"));
    EXPECT_FALSE(parser.ParseFile("k.kernel", {}, sources.Get()).IsOk());
    sources.files.texts["k.kernel"] = "inline g()\n{\n}";
    ASSERT_OK(parser.ParseFile("k.kernel", {}, sources.Get()));
    ASSERT_EQ(parser.GetInlineFunctions().size(), 2u);
    EXPECT_EQ(parser.GetInlineFunctions()[1].signature, "g()");
    EXPECT_EQ(parser.GetInlineFunctions()[1].text.lines[0], (LineOrigin{1, 2}));
}

TEST(ShaderParser, ChecksItsOptions) {
    MemorySources sources({{"k.kernel", ""}});
    DataDictionary options;
    options.Set(Id(shaderparseroption::Multisampling), String("four"));
    const Result<void> result = ShaderParser(Id("GLSL")).ParseFile("k.kernel", options, sources.Get());
    EXPECT_TRUE(FailsWith(result, errorkind::IllegalState, "Data holds String, but int32 is needed."));
}

TEST(ShaderParser, ReadsOnlyRegularFilesOfModerateSize) {
    const fs::path path = fs::temp_directory_path() / Format("norvi_huge_@.kernel", Int{getpid()});
    std::ofstream(path).put('x');
    fs::resize_file(path, 100 << 20);
    const Url url(path.string());
    EXPECT_TRUE(FailsWith(ShaderParser(Id("GLSL")).ParseFile(url, {}), errorkind::IllegalArgument,
                          Format("@ has 104857600 bytes; more than 67108864 are not read", url)));
    fs::remove(path);
    // Reading a pipe that nobody writes to would never end.
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_TRUE(
        FailsWith(DiskFiles().Read(url), errorkind::IllegalArgument, Format("@ is no regular file", url)));
    fs::remove(path);
}

// Half of the threads share one object, the others have their own; all share headers. Three of four parses
// of the shared file fail and are tried again by the next thread.
TEST(ShaderParser, IsParsedByManyThreads) {
    class FlakyFiles final : public SourceFiles {
      public:
        Bool IsFile(const Url& url) override { return files.IsFile(url); }
        Result<String> Read(const Url& url) override {
            if (url == Url("shared.kernel") && attempts++ % 4 != 3)
                return NotFoundError("not yet");
            return files.Read(url);
        }
        MemoryFiles files{{"shared.kernel", "FP_KERNEL\na\nFP_KERNEL_END"},
                          {"own.kernel", "FP_KERNEL\nb\nFP_KERNEL_END"},
                          {"shared_header", "// INCLUDE_STRUCTS_BEGIN\n#include \"common.h\""},
                          {"own_header", "// INCLUDE_STRUCTS_BEGIN\n#include \"common.h\""},
                          {"common_header", "#define COMMON 1"}};
        std::atomic<int> attempts = 0;
    };
    for (int round = 0; round < 20; ++round) {
        FlakyFiles files;
        IncludeTextCache cache;
        ShaderParser shared(Id("GLSL"));
        std::atomic<int> failures = 0, good = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 16; ++i)
            threads.emplace_back([&, i] {
                ShaderParser own(Id("METAL"));
                ShaderParser& parser = i % 2 ? own : shared;
                const Url url(i % 2 ? "own.kernel" : "shared.kernel");
                if (parser.ParseFile(url, {}, {files, cache}))
                    good += parser.GetKernelText().text == (i % 2 ? "b" : "a");
                else
                    ++failures;
            });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(failures, 3);
        EXPECT_EQ(good, 13);
        EXPECT_EQ(files.attempts, 4);
        EXPECT_EQ(shared.GetDefines().size(), 4u); // of each attempt
    }
}

} // namespace
} // namespace norvi
