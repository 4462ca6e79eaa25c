#include "norvi/demo_reaction_diffusion.h"

#include <csignal>

#include <norvi/host/thread_services.h>

#include "norvi/interrupt.h"
#include "tool_fixture.h"

namespace norvi {
namespace {

namespace fs = std::filesystem;

class DemoTest : public testing::Test {
  protected:
    DemoTest() {
        LoadedContext();
        options_.settings.size = {64, 48};
        options_.steps = 30;
        options_.outputFolder = folder_.File("out");
    }
    ~DemoTest() override { JobQueue::SetThreadCount(0); }

    static String FailureOf(const ReactionDiffusionOptions& options) {
        return MessageOf(RunReactionDiffusion(options, true));
    }

    ScratchFolder folder_;
    ReactionDiffusionOptions options_;
};

TEST_F(DemoTest, WritesPicturesOfLiveCellsEverySoManyStepsAndAtTheEnd) {
    options_.every = 12;
    const auto report = RunReactionDiffusion(options_, true);
    ASSERT_TRUE(report) << report.GetError().ToString();
    EXPECT_EQ(report->steps, 30);
    EXPECT_EQ(report->cellsPerStep, 62 * 46);
    EXPECT_EQ(report->bytesPerStep, 62 * 46 * 20);
    EXPECT_GT(report->stepSeconds, 0);
    EXPECT_TRUE(report->liveCells > 0 && report->liveCells < 62u * 46u) << report->liveCells;
    const String base = options_.outputFolder + "/step-0000";
    EXPECT_EQ(report->pictures, (BaseArray<String>{base + "12.png", base + "24.png", base + "30.png"}));
    for (const String& path : report->pictures) {
        const Picture picture = *ReadPicture(path);
        EXPECT_EQ((BaseArray<Int>{picture.width, picture.height, picture.channels}),
                  (BaseArray<Int>{64, 48, 3}));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(options_.outputFolder), fs::directory_iterator()), 3);
}

TEST_F(DemoTest, AnyNumberOfWorkersGivesTheSamePixels) {
    BaseArray<Float32> expected;
    for (const Int workers : {1, 3}) {
        JobQueue::SetThreadCount(workers);
        const auto& settings = options_.settings;
        auto simulation =
            ReactionDiffusion::New(settings, SpiralPicture(settings.size.width, settings.size.height));
        ASSERT_TRUE(simulation) << simulation.GetError().ToString();
        for (int i = 0; i < 50; ++i)
            ASSERT_TRUE(simulation->Step());
        const auto picture = simulation->Render();
        ASSERT_TRUE(picture);
        if (expected.empty())
            expected = picture->pixels;
        EXPECT_EQ(picture->pixels, expected) << workers << " workers";
    }
}

TEST_F(DemoTest, TheSeedPictureIsScaledToTheGridAndSown) {
    // Bright on the left; little noise reaches from 0 or 1 over the border at 0.5 there and nowhere on the
    // right.
    const String path = folder_.File("seed.png");
    Picture seed{16, 16, 3, {}};
    for (int i = 0; i < 16 * 16; ++i)
        seed.pixels.insert(seed.pixels.end(), 3, i % 16 < 8 ? 1.0f : 0.0f);
    ASSERT_TRUE(WritePicture(path, seed));
    options_.seedPicture = path;
    options_.steps = 1;
    const auto bright = RunReactionDiffusion(options_, true);
    ASSERT_TRUE(bright) << bright.GetError().ToString();
    const auto picture = ReadPicture(bright->pictures.front());
    ASSERT_TRUE(picture);
    Float32 sums[2] = {};
    for (Int i = 0; i < 64 * 48; ++i)
        sums[i % 64 < 32 ? 0 : 1] += picture->pixels[static_cast<std::size_t>(3 * i)];
    EXPECT_GT(sums[0], 2 * sums[1]);
}

TEST_F(DemoTest, TheFeedFormulaAndTheNoiseChangeThePicture) {
    const auto pixelsOf = [&](const char* feed, NoiseArgument noise) {
        options_.settings.feed = feed;
        options_.settings.noise = noise;
        const auto report = RunReactionDiffusion(options_, true);
        return report ? ReadPicture(report->pictures.front())->pixels : BaseArray<Float32>{};
    };
    const auto plain = pixelsOf("0.03", {0, 1});
    EXPECT_FALSE(plain.empty());
    EXPECT_EQ(pixelsOf("0.03 + 0 * rnd(value)", {0, 1}), plain);
    EXPECT_NE(pixelsOf("0.03 + 0.02 * value", {0, 1}), plain);
    EXPECT_NE(pixelsOf("0.03", {0, 2}), plain);
    EXPECT_NE(pixelsOf("0.03", {5, 1}), plain);
}

TEST_F(DemoTest, WrongOptionsAreFoundBeforeAnythingIsWritten) {
    struct Case {
        void (*change)(ReactionDiffusionOptions& options);
        const char* message;
    };
    using Options = ReactionDiffusionOptions;
    const Case cases[] = {
        {[](Options& o) { o.settings.size.width = 2; }, "--size '2x48': a grid has at least 3 x 3 cells"},
        {[](Options& o) { o.settings.size.height = -5; }, "--size '64x-5': a grid has at least 3 x 3 cells"},
        {[](Options& o) { o.settings.size.height = 16385; },
         "--size '64x16385': a grid has at most 16384 cells on a side and 67108864 in all"},
        {[](Options& o) {
             o.settings.size = {16384, 16384};
         },
         "--size '16384x16384': a grid has at most 16384 cells on a side and 67108864 in all"},
        {[](Options& o) { o.settings.kill = 1.5f; }, "--kill '1.5': a kill rate lies between 0 and 1"},
        {[](Options& o) { o.settings.feed = "0.03+0.02*sni(value)"; },
         "--feed '0.03+0.02*sni(value)': Formula error at column 11: unknown function \"sni\"; did you mean "
         "\"sin\"?"},
        {[](Options& o) { o.steps = 0; }, "--steps '0': from 1 to 1000000000 steps can be run"},
        {[](Options& o) { o.every = -1; }, "--every '-1': the steps between pictures cannot be negative"},
        {[](Options& o) { o.seedPicture = "/nowhere/seed.png"; },
         "cannot read picture \"/nowhere/seed.png\": there is no such file"},
    };
    for (const Case& c : cases) {
        Options options = options_;
        c.change(options);
        EXPECT_EQ(FailureOf(options), c.message);
    }
    EXPECT_FALSE(fs::exists(options_.outputFolder));
    options_.settings.feed = "2 + 0 * value";
    EXPECT_EQ(FailureOf(options_).substr(0, 50), "--feed '2 + 0 * value': the rate is 2 for the valu");
    options_.settings.feed = "0 / 0";
    EXPECT_NE(FailureOf(options_), "");
}

TEST_F(DemoTest, AFolderThatCannotBeMadeOrWrittenToIsAnError) {
    options_.outputFolder = folder_.Write("file", "in the way");
    EXPECT_EQ(FailureOf(options_),
              "cannot make the output folder \"" + options_.outputFolder + "\": Not a directory");
    if (geteuid() == 0)
        return; // who may write to every folder
    options_.outputFolder = folder_.File("locked");
    fs::create_directory(options_.outputFolder);
    fs::permissions(options_.outputFolder, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(FailureOf(options_),
              "cannot write to the output folder \"" + options_.outputFolder + "\": Permission denied");
}

TEST_F(DemoTest, SizesAreReadAsWidthAndHeight) {
    const auto size = ParseSize("640x480");
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 640);
    EXPECT_EQ(size->height, 480);
    for (const char* text :
         {"", "640", "x", "640x", "x480", "640x480x1", "640 x 480", "6e2x480", "640X480"}) {
        const auto result = ParseSize(text);
        ASSERT_FALSE(result) << text;
        EXPECT_EQ(result.GetError().GetMessage(),
                  String("--size '") + text + "': a width and a height are needed, as in 1024x768");
    }
}

TEST_F(DemoTest, AnInterruptIsRememberedWhileTheScopeLives) {
    const InterruptScope interrupt;
    EXPECT_FALSE(interrupt.IsRequested());
    std::raise(SIGINT);
    EXPECT_TRUE(interrupt.IsRequested());
}

TEST_F(DemoTest, ReportsAreTables) {
    const ReactionDiffusionReport report{{400, 0.5, {}, {}}, 1'000'000, 20'000'000, 1234};
    options_.steps = 400;
    options_.settings.size = {1002, 1002};
    JobQueue::SetThreadCount(2);
    EXPECT_EQ(ReportText(report, options_), "grid          1002 x 1002 cells\n"
                                            "steps         400\n"
                                            "step kernel   0.50 s\n"
                                            "invocations   0.800 G/s\n"
                                            "memory        16.0 GB/s\n"
                                            "workers       2\n"
                                            "live cells    1234\n");
    options_.steps = 500;
    EXPECT_NE(ReportText(report, options_).find("steps         400 of 500, interrupted\n"), String::npos);
}

} // namespace
} // namespace norvi
