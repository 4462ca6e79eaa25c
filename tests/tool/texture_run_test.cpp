// Textures of `norvi run`, from files through kernels to files.
#include "norvi/info_command.h"
#include "norvi/npy_file.h"
#include "norvi/picture.h"
#include "tool_fixture.h"

namespace norvi {

namespace {

/// Grey, with a black and a white half: left and right.
String WriteHalves(const ScratchFolder& folder) {
    const String file = folder.File("halves.exr");
    EXPECT_EQ(MessageOf(WritePicture(file, {4, 2, 1, {0, 0, 1, 1, 0, 0, 1, 1}})), "");
    return file;
}

RunOptions Resample(const ScratchFolder& folder, const String& options) {
    RunOptions run;
    run.kernel = "resample";
    run.grid = "4x2";
    run.textures = {"picture=" + WriteHalves(folder) + ":" + options, "result=4x2"};
    run.uniforms = {"angle=0", "zoom=1"};
    run.outputs = {"result=" + folder.File("r.npy")};
    return run;
}

/// Red, or another channel, of the result's first row.
BaseArray<Float32> FirstRow(const ScratchFolder& folder, Int channel) {
    const auto array = ReadNpy(folder.File("r.npy"));
    EXPECT_TRUE(array) << MessageOf(array);
    EXPECT_EQ(array ? array->shape : BaseArray<Int>(), (BaseArray<Int>{2, 4, 4}));
    BaseArray<Float32> row;
    for (Int i = 0; array && i < 4; ++i)
        row.push_back(static_cast<Float32>(array->scalar->load(array->bytes.data() + (i * 4 + channel) * 4)));
    return row;
}

} // namespace

TEST(TextureRun, PicturesReachKernelsAndStoresReachFiles) {
    using Row = BaseArray<Float32>;
    const ScratchFolder folder;
    const struct {
        const char* options;
        const char* zoom;
        Row red;
        Row alpha;
    } cases[] = {
        // Samples fall on the middles of texels; grey without alpha is opaque.
        {"normalized,filter=linear", "zoom=1", {0, 0, 1, 1}, {1, 1, 1, 1}},
        // Samples are taken a whole picture apart, all of them above it and two beside it.
        {"normalized,wrap=clamp", "zoom=0.25", {0, 0, 1, 1}, {1, 1, 1, 1}},
        {"normalized,wrap=border", "zoom=0.25", {0, 0, 0, 0}, {0, 0, 0, 0}},
        // In texels, coordinates from 0 to 1 are the corner; its left half is mixed with the far edge.
        {"wrap=clamp", "zoom=1", {0, 0, 0, 0}, {1, 1, 1, 1}},
        {"wrap=repeat", "zoom=1", {0.375f, 0.125f, 0, 0}, {1, 1, 1, 1}},
    };
    for (const auto& [options, zoom, red, alpha] : cases) {
        SCOPED_TRACE(options);
        RunOptions run = Resample(folder, options);
        run.uniforms[1] = zoom;
        ASSERT_EQ(RunMessage(run), "");
        EXPECT_EQ(FirstRow(folder, 0), red);
        EXPECT_EQ(FirstRow(folder, 3), alpha);
    }
}

TEST(TextureRun, SwappedTexturesChangePlacesBetweenSteps) {
    const ScratchFolder folder;
    RunOptions run = Resample(folder, "normalized,wrap=clamp");
    run.textures[1] = "result=4x2:normalized,wrap=clamp";
    run.uniforms[0] = "angle=3.14159265"; // half a turn mirrors, and another one brings the picture back
    run.swaps = {"picture,result"};
    for (const int steps : {1, 2}) {
        run.steps = steps;
        ASSERT_EQ(RunMessage(run), "");
        const auto row = FirstRow(folder, 0);
        EXPECT_NEAR(row[0], steps == 1, 1e-5);
        EXPECT_NEAR(row[3], steps == 2, 1e-5);
    }
}

TEST(TextureRun, InfoTellsTheKindsOfTextures) {
    const auto text = InfoText({"kernel", "resample", false}, LoadedContext().modules);
    ASSERT_TRUE(text) << MessageOf(text);
    EXPECT_EQ(text->substr(text->find('\n')), "\n"
                                              "    picture          texture 2D_RGBA_F32_LINEAR\n"
                                              "    result           texture 2D_RGBA_F32_LINEAR\n"
                                              "    angle            uniform float32\n"
                                              "    zoom             uniform float32\n");
}

TEST(TextureRun, ArgumentsThatDoNotSuitTheKernelGiveErrors) {
    const ScratchFolder folder;
    const String halves = WriteHalves(folder);
    const String missing = folder.File("no.png");
    const String extents = "the parameter is of type texture 2D_RGBA_F32_LINEAR, which has WxH of at least 2 "
                           "texels each, not ";
    const struct {
        BaseArray<String> textures;
        String message;
    } cases[] = {
        {{"pictur=4x4"},
         "--texture 'pictur=4x4': kernel 'resample.kernel' has no parameter 'pictur'; did you mean "
         "'picture'?"},
        {{"zoom=4x4"},
         "--texture 'zoom=4x4': parameter 'zoom' of kernel 'resample.kernel' is of type float32; use "
         "--uniform"},
        {{"result=4x4", "result=4x4"}, "--texture 'result=4x4': parameter 'result' was given before"},
        {{"result=4x4"},
         "texture parameter 'picture' of kernel 'resample.kernel' was not given; add --texture "
         "picture=PICTURE or --texture picture=WxH"},
        {{"picture=" + missing, "result=4x4"},
         Format("--texture 'picture=@': cannot read picture \"@\": there is no such file", missing, missing)},
        {{"picture=" + halves, "result=4x4:filter=point"},
         "--texture 'result=4x4:filter=point': the filter is point, but the parameter is of type texture "
         "2D_RGBA_F32_LINEAR"},
        {{"picture=" + halves, "result=4"}, "--texture 'result=4': " + extents + "4"},
        {{"picture=" + halves, "result=1x4"}, "--texture 'result=1x4': " + extents + "1x4"},
        {{"picture=" + halves, "result=4x4x4"}, "--texture 'result=4x4x4': " + extents + "4x4x4"},
    };
    for (const auto& [textures, message] : cases) {
        RunOptions run = Resample(folder, "normalized");
        run.textures = textures;
        EXPECT_EQ(RunMessage(run), message);
    }
    RunOptions large = Resample(folder, "normalized");
    large.textures[1] = "result=1000000x1000000";
    EXPECT_TRUE(RunMessage(large).starts_with("--texture 'result=1000000x1000000': a texture of type "
                                              "2D_RGBA_F32_LINEAR has at most "))
        << RunMessage(large);
    RunOptions buffer = Resample(folder, "normalized");
    buffer.buffers = {"picture=float32:4"};
    EXPECT_EQ(RunMessage(buffer), "--buffer 'picture=float32:4': parameter 'picture' of kernel "
                                  "'resample.kernel' is of type texture 2D_RGBA_F32_LINEAR; use --texture");
}

} // namespace norvi
