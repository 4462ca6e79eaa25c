#include "norvi/demo_smoke.h"

#include <cmath>

#include <norvi/host/thread_services.h>

#include "norvi/smoke_source.h"
#include "tool_fixture.h"

namespace norvi {
namespace {

namespace fs = std::filesystem;

class SmokeTest : public testing::Test {
  protected:
    SmokeTest() {
        LoadedContext();
        options_.settings.size = {64, 48};
        options_.settings.pressureIterations = 12;
        options_.steps = 20;
        options_.outputFolder = folder_.File("out");
    }
    ~SmokeTest() override { JobQueue::SetThreadCount(0); }

    /// The picture after so many steps, and nothing after a failure.
    static BaseArray<Float32> PixelsOf(const SmokeSettings& settings, const Picture& source, Int steps) {
        auto simulation = Smoke::New(settings, source);
        EXPECT_TRUE(simulation) << simulation.GetError().ToString();
        for (Int i = 0; simulation && i < steps; ++i)
            EXPECT_TRUE(simulation->Step());
        const auto picture = simulation ? simulation->Render() : Result<Picture>(Picture{});
        EXPECT_TRUE(picture);
        return picture ? picture->pixels : BaseArray<Float32>{};
    }
    BaseArray<Float32> PixelsOf(Int steps) const {
        const auto [width, height] = options_.settings.size;
        return PixelsOf(options_.settings, EmberPicture(width, height), steps);
    }

    ScratchFolder folder_;
    SmokeOptions options_;
};

TEST_F(SmokeTest, ReportsWhatWasRunAndWritesPictures) {
    options_.every = 8;
    const auto report = RunSmoke(options_, true);
    ASSERT_TRUE(report) << report.GetError().ToString();
    EXPECT_EQ(report->steps, 20);
    EXPECT_EQ(report->invocationsPerStep, 4 * 64 * 48 + 13 * 62 * 46);
    EXPECT_EQ(report->samplesPerStep, 5 * 64 * 48);
    const String base = options_.outputFolder + "/step-0000";
    EXPECT_EQ(report->pictures, (BaseArray<String>{base + "08.png", base + "16.png", base + "20.png"}));
    for (const String& path : report->pictures) {
        const Picture picture = *ReadPicture(path);
        EXPECT_EQ((BaseArray<Int>{picture.width, picture.height, picture.channels}),
                  (BaseArray<Int>{64, 48, 3}));
    }
}

TEST_F(SmokeTest, AnyNumberOfWorkersGivesTheSamePixels) {
    options_.settings.force = "0.5*value+0.1*rnd(value)";
    BaseArray<Float32> expected;
    for (const Int workers : {1, 2, 7}) {
        JobQueue::SetThreadCount(workers);
        const auto pixels = PixelsOf(25);
        if (expected.empty())
            expected = pixels;
        EXPECT_EQ(pixels, expected) << workers << " workers";
    }
}

TEST_F(SmokeTest, EveryOptionOfTheFlowChangesThePicture) {
    const auto plain = PixelsOf(20);
    const SmokeSettings settings = options_.settings;
    const auto changed = [&](auto change) {
        options_.settings = settings;
        change(options_.settings);
        return PixelsOf(20);
    };
    EXPECT_EQ(changed([](SmokeSettings& s) { s.force += "+0"; }), plain);
    EXPECT_NE(changed([](SmokeSettings& s) { s.force = "1-value"; }), plain);
    EXPECT_NE(changed([](SmokeSettings& s) { s.noise.seed = 2; }), plain);
    EXPECT_NE(changed([](SmokeSettings& s) { s.noise.mode = 4; }), plain);
    EXPECT_NE(changed([](SmokeSettings& s) { s.emission = 0; }), plain);
    EXPECT_NE(changed([](SmokeSettings& s) { s.pressureIterations = 13; }), plain);
    EXPECT_NE(changed([](SmokeSettings& s) { s.display = "Linear Rec.709"; }), plain);
}

TEST_F(SmokeTest, NoForceMakesColoursLeaveTheirRange) {
    for (const char* force : {"0.3*value", "1e30", "-1e30*value", "0/0", "1/0", "1e6*(rnd(value)-0.5)"}) {
        options_.settings.force = force;
        const auto pixels = PixelsOf(200);
        EXPECT_FALSE(pixels.empty());
        for (const Float32 value : pixels)
            ASSERT_TRUE(value >= 0 && value <= 1.5f) << force << ": " << value;
    }
}

TEST_F(SmokeTest, SmokeRisesWithTheLiftAndSinksAgainstIt) {
    // Emitted in the middle; the centre of what is brighter than the background tells.
    Picture source{64, 48, 4, BaseArray<Float32>(4 * 64 * 48)};
    for (Int y = 20; y < 28; ++y)
        std::fill_n(&source.pixels[static_cast<std::size_t>(4 * (y * 64 + 28))], 4 * 8, 1.0f);
    const auto centreOf = [&](const char* force) {
        options_.settings.force = force;
        const auto pixels = PixelsOf(options_.settings, source, 40);
        double sum = 0, moment = 0;
        for (Int i = 0; i < 64 * 48; ++i) {
            const double smoke = std::max(pixels[static_cast<std::size_t>(3 * i)] - 0.2f, 0.0f);
            sum += smoke;
            moment += smoke * static_cast<double>(i / 64);
        }
        return moment / sum;
    };
    const double still = centreOf("0*value");
    EXPECT_NEAR(still, 23.5, 1.0);
    EXPECT_LT(centreOf("2*value"), still - 1);
    EXPECT_GT(centreOf("-2*value"), still + 1);
}

/// The kernels of the pressure on a field that flows out of one place, without the simulation around them.
TEST_F(SmokeTest, ProjectionTakesMostOfTheDivergenceAway) {
    constexpr Int width = 40, height = 32;
    auto program = *ParallelProgramRef::Create(programid::CpuProgram);
    ASSERT_TRUE(program->Init({}, {}, 0, false));
    BaseArray<Float32> field;
    for (Int i = 0; i < width * height; ++i) {
        const auto right = static_cast<Float32>(i % width) - 15.2f,
                   down = static_cast<Float32>(i / width) - 14.7f;
        const Float32 strength = std::exp(-(right * right + down * down) / 30);
        field.insert(field.end(), {right * strength, down * strength});
    }
    TextureBindData texture;
    texture._dimensions = {width, height, 1};
    texture._numChannels = 2;
    texture._size = width * height * 8;
    texture._sampleLinear = 1;
    texture._wrapU = texture._wrapV = WRAP_CLAMP;
    ASSERT_TRUE(program->CreateTexture("velocityNext", texture));
    texture._data = reinterpret_cast<const UChar*>(field.data());
    ASSERT_TRUE(program->StoreTextureBindData("velocity", texture, false));
    const BaseArray<Float32> zeros(width * height);
    for (const char* name : {"divergence", "pressure", "pressureNext"})
        ASSERT_TRUE(program->StoreUniformBufferData(
            name, *ArrayRef::NewBaseArray(DataType::Of<Float32>(), zeros.data(), width * height)));
    for (const char* name : {"divergence", "pressure", "project"}) {
        ASSERT_TRUE(program->AddKernel(name, String("smoke_") + name + ".kernel", true, {}));
        ASSERT_TRUE(program->SetUniform("width", Int32{width}));
        ASSERT_TRUE(program->SetUniform("height", Int32{height}));
        for (const char* buffer : {"divergence", "pressure", "pressureNext"})
            ASSERT_TRUE(program->SetBufferToActiveKernelSameId(buffer));
    }
    const auto run = [&](const char* kernel, BaseArray<const char*> textures, UInt32 countX, UInt32 countY) {
        program->SetActiveKernel(kernel);
        for (const char* name : textures)
            EXPECT_TRUE(program->SetTextureToActiveKernelSameId(name, false));
        EXPECT_TRUE(program->UpdateUniforms());
        EXPECT_TRUE(program->DispatchKernel(countX, countY, 1, false));
        EXPECT_TRUE(program->Execute(true));
    };
    const auto divergence = [&] {
        run("divergence", {"velocity"}, width - 2, height - 2);
        const auto values = *program->GetGlobalBufferData("divergence")->GetAs<ArrayRef>();
        double sum = 0;
        for (Int i = 0; i < width * height; ++i)
            sum += std::abs(*static_cast<const Float32*>(values->GetElement(i)));
        return sum;
    };

    const double before = divergence();
    for (int i = 0; i < 400; ++i) {
        program->SetActiveKernel("pressure");
        ASSERT_TRUE(program->SetUniform("weight", 1.0f));
        run("pressure", {}, width - 2, height - 2);
        ASSERT_TRUE(program->SwapBuffers("pressure", "pressureNext"));
    }
    run("project", {"velocity", "velocityNext"}, width, height);
    ASSERT_TRUE(program->SwapTextures("velocity", "velocityNext"));
    EXPECT_GT(before, 100);
    EXPECT_LT(divergence(), before / 5);
}

TEST_F(SmokeTest, AnyPictureIsASource) {
    struct Case {
        const char* file;
        std::size_t channels;
        Float32 pixel[4];
        Float32 source[4];
    };
    const Float32 half = 0.2140411f; // what 0.5 of sRGB is in linear light
    const Case cases[] = {
        {"grey.exr", 1, {0.5f}, {0.5f, 0.5f, 0.5f, 0.5f}},
        {"bright.exr", 3, {3, 2, 100}, {3, 2, 16, 1}},
        {"clear.exr", 4, {0.8f, 0.4f, 0, 0.5f}, {0.4f, 0.2f, 0, 0.4f}},
        {"holes.exr", 3, {NAN, -1, 0.25f}, {0, 0, 0.25f, 0.25f}},
        {"half.png", 3, {0.5f, 0, 0}, {half, 0, 0, half}},
    };
    for (const Case& c : cases) {
        Picture picture{1, 1, static_cast<Int>(c.channels), {}};
        picture.pixels.assign(c.pixel, c.pixel + c.channels);
        ASSERT_TRUE(WritePicture(folder_.File(c.file), picture));
        const auto source = ReadSmokeSource(folder_.File(c.file), 1, 1);
        ASSERT_TRUE(source) << c.file;
        ASSERT_EQ(source->pixels.size(), 4u) << c.file;
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(source->pixels[i], c.source[i], 0.003f) << c.file << ", channel " << i;
    }
}

TEST_F(SmokeTest, WrongOptionsAreFoundBeforeAnythingIsWritten) {
    struct Case {
        void (*change)(SmokeOptions& options);
        const char* message;
    };
    const Case cases[] = {
        {[](SmokeOptions& o) { o.settings.size.width = 15; },
         "--size '15x48': a grid has at least 16 x 16 cells"},
        {[](SmokeOptions& o) {
             o.settings.size = {8192, 8192};
         },
         "--size '8192x8192': a grid has at most 16384 cells on a side and 16777216 in all"},
        {[](SmokeOptions& o) { o.settings.force = "2*valeu"; },
         "--force '2*valeu': Formula error at column 3: unknown variable \"valeu\"; did you mean \"value\"?"},
        {[](SmokeOptions& o) { o.settings.emission = -1; },
         "--emission '-1': smoke can be renewed from 0 to 60 times a second"},
        {[](SmokeOptions& o) { o.settings.pressureIterations = 0; },
         "--pressure-iterations '0': from 1 to 10000 iterations can be run"},
        {[](SmokeOptions& o) { o.settings.display = "sRBG"; },
         "--display 'sRBG': no colour space 'sRBG'; did you mean 'sRGB'?"},
        {[](SmokeOptions& o) { o.steps = 0; }, "--steps '0': from 1 to 1000000000 steps can be run"},
        {[](SmokeOptions& o) { o.picture = "/nowhere/dye.png"; },
         "cannot read picture \"/nowhere/dye.png\": there is no such file"},
        {[](SmokeOptions& o) { o.isFilmed = true; },
         "--video: pictures are needed every so many steps; add --every"},
    };
    for (const Case& c : cases) {
        SmokeOptions options = options_;
        c.change(options);
        EXPECT_EQ(MessageOf(RunSmoke(options, true)), c.message);
    }
    EXPECT_FALSE(fs::exists(options_.outputFolder));
}

} // namespace
} // namespace norvi
