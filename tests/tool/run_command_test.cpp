#include <cmath>

#include "norvi/npy_file.h"
#include "norvi/picture.h"
#include "tool_fixture.h"

namespace norvi {

namespace {

BaseArray<Float64> ReadNumbers(const String& path) {
    const auto array = ReadNpy(path);
    EXPECT_TRUE(array) << MessageOf(array);
    BaseArray<Float64> numbers;
    for (Int i = 0; array && i < array->GetCount(); ++i)
        numbers.push_back(
            static_cast<Float64>(array->scalar->load(array->bytes.data() + i * array->scalar->size)));
    return numbers;
}

RunOptions Saxpy(const ScratchFolder& folder) {
    RunOptions options =
        Options("saxpy", "5", {"x=float32:5", "y=float32:5"}, {"a=0.5"}, {"y=" + folder.File("y.npy")});
    options.ramps = {"x=0:4"};
    options.fills = {"y=10"};
    return options;
}

} // namespace

TEST(RunCommand, StepsWorkOnWhatTheLastOneLeftInTheBuffersThatAreBound) {
    const ScratchFolder folder;
    RunOptions options = Saxpy(folder);
    options.steps = 4;
    ASSERT_EQ(RunMessage(options), "");
    EXPECT_EQ(ReadNumbers(folder.File("y.npy")), (BaseArray<Float64>{10, 12, 14, 16, 18}));
    options.steps = 1;
    options.buffers = {"both=float32:5"};
    options.bindings = {"x=both", "y=both"};
    options.ramps = {"both=0:4"};
    options.fills = {};
    ASSERT_EQ(RunMessage(options), "");
    EXPECT_EQ(ReadNumbers(folder.File("y.npy")), (BaseArray<Float64>{0, 1.5, 3, 4.5, 6}));
}

TEST(RunCommand, SwappedBuffersChangePlacesBetweenSteps) {
    const ScratchFolder folder;
    RunOptions options = Saxpy(folder);
    options.uniforms = {"a=1"};
    options.fills = {"y=1"};
    options.ramps = {"x=1:1"};
    options.swaps = {"x,y"};
    options.steps = 6;
    options.outputEvery = 1;
    options.outputs = {"y=" + folder.File("y{step}.npy")};
    ASSERT_EQ(RunMessage(options), "");
    // Each step adds the two last ones.
    const Float64 expected[] = {2, 3, 5, 8, 13, 21};
    for (int step = 1; step <= 6; ++step)
        EXPECT_EQ(ReadNumbers(folder.File("y000" + std::to_string(step) + ".npy")),
                  BaseArray<Float64>(5, expected[step - 1]));
}

TEST(RunCommand, HistogramCountsWhatItReadsFromAFile) {
    const ScratchFolder folder;
    // As other programs write by default: 64-bit floats.
    const Float64 values[] = {0.1, 0.2, 0.3, 0.6, 0.7, 0.9, -1, 2, std::nan("")};
    ASSERT_EQ(MessageOf(WriteNpy(folder.File("v.npy"), *(*FindElementType(String("float64")))->scalar, {9},
                                 values)),
              "");
    RunOptions options =
        Options("histogram", "9", {"values=" + folder.File("v.npy"), "bins=uint32:4"},
                {"count=9", "binCount=4", "lowest=0", "highest=1"}, {"bins=" + folder.File("bins.npy")});
    options.counters = {"outside=100"};
    testing::internal::CaptureStdout();
    const String message = RunMessage(options);
    const String printed = testing::internal::GetCapturedStdout();
    ASSERT_EQ(message, "");
    EXPECT_EQ(ReadNumbers(folder.File("bins.npy")), (BaseArray<Float64>{2, 1, 2, 1}));
    EXPECT_EQ(printed, "outside      103\n");
}

TEST(RunCommand, FormulasAreApplied) {
    const ScratchFolder folder;
    RunOptions options = Options("apply_formula", "4", {"values=float32:4", "result=float32:4"},
                                 {"count=4", "randomSeed=1"}, {"result=" + folder.File("r.npy")});
    options.ramps = {"values=0:3"};
    options.formulas = {"formula=value*value+1"};
    ASSERT_EQ(RunMessage(options), "");
    EXPECT_EQ(ReadNumbers(folder.File("r.npy")), (BaseArray<Float64>{1, 2, 5, 10}));
    options.formulas = {"formula=value*("};
    EXPECT_NE(RunMessage(options), "");
}

TEST(RunCommand, NoiseFieldDependsOnModeAndSeed) {
    const ScratchFolder folder;
    const String file = folder.File("n.npy");
    RunOptions options = Options("noise_field", "16x16", {"result=float32:16x16"},
                                 {"width=16", "height=16", "scale=0.3", "time=0"}, {"result=" + file});
    const auto field = [&](const char* noise) {
        options.noises = {noise};
        EXPECT_EQ(RunMessage(options), "");
        return ReadNumbers(file);
    };
    const auto expected = field("perlin:1");
    EXPECT_EQ(field("0:1"), expected);
    EXPECT_NE(field("perlin:2"), expected);
    EXPECT_NE(field("turbulence:1"), expected);
    EXPECT_EQ(ReadNpy(file)->shape, (BaseArray<Int>{16, 16}));
}

TEST(RunCommand, FillTakesVectorsAndHalfs) {
    const ScratchFolder folder;
    const String file = folder.File("d.npy");
    ASSERT_EQ(RunMessage(Options("fill_vec3_T_", "2", {"data=vec3:2"}, {"fillValue=1,2,3", "count=2"},
                                 {"data=" + file})),
              "");
    EXPECT_EQ(ReadNumbers(file), (BaseArray<Float64>{1, 2, 3, 1, 2, 3}));
    EXPECT_EQ(ReadNpy(file)->shape, (BaseArray<Int>{2, 3}));
    ASSERT_EQ(RunMessage(Options("fill_half_T_", "2", {"data=half:2"}, {"fillValue=0.5", "count=2"},
                                 {"data=" + file})),
              "");
    EXPECT_EQ(ReadNumbers(file), (BaseArray<Float64>{0.5, 0.5}));
}

TEST(RunCommand, StructsTakeTheirTypeFromTheKernelAndTheirBytesFromFiles) {
    const ScratchFolder folder;
    // Two bodies of position and mass, a unit apart.
    const Float32 bodies[] = {0, 0, 0, 1, 1, 0, 0, 1};
    ASSERT_EQ(MessageOf(WriteNpy(folder.File("b.npy"), ScalarTypes()[0], {2, 4}, bodies)), "");
    ASSERT_EQ(
        RunMessage(Options("n_body", "2",
                           {"bodies=" + folder.File("b.npy"), "bodiesNext=kernel:2", "velocities=vec3:2"},
                           {"count=2", "timeStep=0.5"},
                           {"bodiesNext=" + folder.File("n.npy"), "velocities=" + folder.File("v.npy")})),
        "");
    const auto velocities = ReadNumbers(folder.File("v.npy"));
    EXPECT_NEAR(velocities[0], 0.5, 1e-3);
    EXPECT_NEAR(velocities[3], -0.5, 1e-3);
    EXPECT_EQ(ReadNpy(folder.File("n.npy"))->shape, (BaseArray<Int>{2, 16}));
}

TEST(RunCommand, PicturesAreReadAndWritten) {
    const ScratchFolder folder;
    RunOptions options = Saxpy(folder);
    options.grid = "6";
    options.buffers = {"x=float32:3x2", "y=float32:3x2"};
    options.ramps = {"x=0:255"};
    options.fills = {"y=0"};
    options.uniforms = {"a=1"};
    options.outputs = {"y=" + folder.File("y.png") + ":3x2:0:255"};
    ASSERT_EQ(RunMessage(options), "");
    const auto picture = ReadPicture(folder.File("y.png"));
    ASSERT_TRUE(picture) << MessageOf(picture);
    EXPECT_EQ(picture->width, 3);
    EXPECT_EQ(picture->channels, 1);
    // Back into a buffer, twice the value of which goes out again.
    options.buffers = {"x=" + folder.File("y.png"), "y=" + folder.File("y.png") + ":luminance"};
    options.ramps = options.fills = {};
    options.outputs = {"y=" + folder.File("y.npy")};
    ASSERT_EQ(RunMessage(options), "");
    const auto numbers = ReadNumbers(folder.File("y.npy"));
    ASSERT_EQ(numbers.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_NEAR(numbers[i], 2 * static_cast<Float64>(i) / 5, 1e-6);
}

TEST(RunCommand, RandomValuesAreTheSameForASeedAndInTheirRange) {
    const ScratchFolder folder;
    RunOptions options = Saxpy(folder);
    options.grid = "1000";
    options.buffers = {"x=float32:1000", "y=float32:1000"};
    options.ramps = {};
    options.fills = {};
    options.randoms = {"y=7"};
    ASSERT_EQ(RunMessage(options), "");
    const auto first = ReadNumbers(folder.File("y.npy"));
    ASSERT_EQ(RunMessage(options), "");
    EXPECT_EQ(ReadNumbers(folder.File("y.npy")), first);
    Float64 sum = 0;
    for (Float64 value : first) {
        EXPECT_GE(value, 0);
        EXPECT_LT(value, 1);
        sum += value;
    }
    EXPECT_NEAR(sum / 1000, 0.5, 0.05);
    options.randoms = {"y=8"};
    ASSERT_EQ(RunMessage(options), "");
    EXPECT_NE(ReadNumbers(folder.File("y.npy")), first);
}

TEST(RunCommand, AGridBeyondTheBuffersIsAnError) {
#ifndef NDEBUG
    GTEST_SKIP() << "kernels check indices themselves in this build";
#endif
    const ScratchFolder folder;
    RunOptions options = Saxpy(folder);
    options.grid = "100000";
    EXPECT_EQ(RunMessage(options),
              "kernel 'saxpy.kernel' wrote behind the end of buffer 'y', which has 5 elements; the "
              "grid has 100000 invocations");
    EXPECT_EQ(folder.CountFiles(), 0);
}

TEST(RunCommand, FaultsInFilesAreFoundBeforeTheRun) {
    const ScratchFolder folder;
    const String notArray = folder.Write("text.npy", "no array");
    const String file = folder.File("v.npy");
    const Float32 values[] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(MessageOf(WriteNpy(file, ScalarTypes()[0], {2, 3}, values)), "");
    const struct {
        const char* kernel;
        String buffer;
        String output;
        String message;
    } cases[] = {
        {"fill_float_T_", "data=float32:4", "data=/no/such/folder/a.npy",
         "--output 'data=/no/such/folder/a.npy': there is no folder \"/no/such/folder\""},
        {"fill_float_T_", "data=float32:4", "data=" + folder.File("a.png"),
         "--output 'data=" + folder.File("a.png") +
             "': the buffer has one dimension; add :WxH to the file's name"},
        {"fill_float_T_", "data=float32:4", "data=" + folder.File("a.png") + ":3x2",
         "--output 'data=" + folder.File("a.png") +
             "': the buffer has 4 numbers, which are no picture of 3x2 pixels"},
        {"fill_float_T_", "data=" + notArray, "data=" + folder.File("a.npy"),
         Format("--buffer 'data=@': cannot read \"@\": it is no .npy file", notArray, notArray)},
        {"fill_uint_T_", "data=" + file, "data=" + folder.File("a.npy"),
         Format("--buffer 'data=@': the array's numbers are floating point ('<f4'), uint32 is not", file)},
        {"fill_vec3_T_", "data=float32:4", "data=" + folder.File("a.npy"),
         "--buffer 'data=float32:4': the elements are of type float32, but parameter 'data' of kernel "
         "'fill_vec3_T_.kernel' takes vec3"},
    };
    for (const auto& [kernel, buffer, output, message] : cases)
        EXPECT_EQ(RunMessage(Options(kernel, "1", {buffer}, {}, {output})), message);
    EXPECT_EQ(folder.CountFiles(), 2);
}

TEST(RunCommand, MoreMemoryThanThereIsIsRefused) {
    const ScratchFolder folder;
    RunOptions options = Saxpy(folder);
    options.buffers[0] = "x=float32:1000000000000";
    const String message = RunMessage(options);
    EXPECT_TRUE(message.starts_with(
        "--buffer 'x=float32:1000000000000': 1000000000000 elements of 4 bytes do not fit "
        "into this machine's memory of "))
        << message;
}

} // namespace norvi
