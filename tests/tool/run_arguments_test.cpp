#include "norvi/run_arguments.h"

#include "tool_fixture.h"

namespace norvi {

namespace {

/// A text and how the message about it goes on behind "--OPTION 'TEXT'".
using Malformed = std::pair<const char*, String>;

template <typename Parse>
void ExpectMessages(const char* option, Parse&& parse, const BaseArray<Malformed>& cases) {
    for (const auto& [text, reason] : cases)
        EXPECT_EQ(MessageOf(parse(text)), Format("--@ '@'@", option, text, reason));
}

const char* const NoAssignment = " is not NAME=VALUE";
const String FileKindsText =
    "names of files end in .npy, .png, .jpg, .jpeg, .exr, .tif, .tiff, .bmp, .tga, .hdr, "
    ".ppm, .pgm or .webp";

} // namespace

TEST(ParseBuffer, MalformedTextsGiveErrorsThatQuoteThem) {
    const String noSource = ": expected TYPE:COUNT, kernel:COUNT or a file; " + FileKindsText;
    const char* const noCount = ": '@' is no count of elements; expected N or WxH, at least 1";
    const char* const noSuffix =
        ": only :rgb or :luminance may follow the name of a picture, nothing that of an array";
    ExpectMessages("buffer", &ParseBuffer,
                   {
                       {"", NoAssignment},
                       {"=", NoAssignment},
                       {"x=", NoAssignment},
                       {"=float32:3", NoAssignment},
                       {"x=12", noSource},
                       {"x=flot32:100", ": 'flot32' is no element type; did you mean 'float32'?"},
                       {"x=float32:", Format(noCount, "")},
                       {"x=float32:0", Format(noCount, "0")},
                       {"x=float32:-5", Format(noCount, "-5")},
                       {"x=float32:99999999x99999999", Format(noCount, "99999999x99999999")},
                       {"x=float32:99999999999999999999999", Format(noCount, "99999999999999999999999")},
                       {"x=float32:2x3x4", Format(noCount, "2x3x4")},
                       {"x=a.png:grey", noSuffix},
                       {"x=a.npy:rgb", noSuffix},
                   });
}

TEST(ParseBuffer, TellsZerosArraysAndPicturesApart) {
    const auto zeros = ParseBuffer("x=vec3:40x30");
    ASSERT_TRUE(zeros) << MessageOf(zeros);
    EXPECT_EQ(zeros->type->type, DataType::Of<Vector32>());
    EXPECT_EQ(zeros->shape, (BaseArray<Int>{30, 40}));
    const auto inferred = ParseBuffer("bodies=kernel:7");
    ASSERT_TRUE(inferred) << MessageOf(inferred);
    EXPECT_EQ(inferred->type, nullptr);
    EXPECT_EQ(inferred->GetCount(), 7);
    const auto array = ParseBuffer("x=some/a=b.npy");
    ASSERT_TRUE(array) << MessageOf(array);
    EXPECT_EQ(array->file, "some/a=b.npy");
    EXPECT_FALSE(array->IsPicture());
    const auto picture = ParseBuffer("x=A.PNG:rgb");
    ASSERT_TRUE(picture) << MessageOf(picture);
    EXPECT_TRUE(picture->IsPicture());
    EXPECT_EQ(picture->channels, PictureChannels::Rgb);
}

TEST(ParseOutput, MalformedTextsGiveErrorsThatQuoteThem) {
    const char* const noSize = ": expected FILE:WxH or FILE:WxH:BLACK:WHITE";
    const char* const noRange = ": black and white must be two different numbers";
    ExpectMessages("output", &ParseOutput,
                   {
                       {"y", NoAssignment},
                       {"y=a.txt", ": " + FileKindsText},
                       {"y=a.npy:3x4", ": only the name of a picture can be followed by a size"},
                       {"y=a.png:34", noSize},
                       {"y=a.png:3x-4", noSize},
                       {"y=a.png:3x4:1", noSize},
                       {"y=a.png:3x4:1:1", noRange},
                       {"y=a.png:3x4:0:nan", noRange},
                   });
}

TEST(ParseOutput, PutsTheStepIntoTheFileName) {
    const auto output = ParseOutput("y=heat-{step}.png:3x4:0:2");
    ASSERT_TRUE(output) << MessageOf(output);
    EXPECT_EQ(output->FileOfStep(42), "heat-0042.png");
    EXPECT_EQ(output->FileOfStep(123456), "heat-123456.png");
    EXPECT_EQ(output->width, 3);
    EXPECT_EQ(output->height, 4);
    EXPECT_EQ(output->white, 2);
}

TEST(ParseGrid, TakesUpToThreeSizesWhoseProductHas32Bits) {
    EXPECT_EQ(*ParseGrid("7"), (Vec3<UInt32>{7, 1, 1}));
    EXPECT_EQ(*ParseGrid("7x8"), (Vec3<UInt32>{7, 8, 1}));
    EXPECT_EQ(*ParseGrid("7,8,9"), (Vec3<UInt32>{7, 8, 9}));
    EXPECT_EQ(*ParseGrid("4294967295"), (Vec3<UInt32>{4294967295u, 1, 1}));
    for (const char* text :
         {"", "0", "-1", "1.5", "x", "7x", "7x8x9x10", "7x8,9", "4294967296", "65536x65536", "1e3"})
        EXPECT_EQ(
            MessageOf(ParseGrid(text)),
            Format("--grid '@': expected X, XxY or XxYxZ invocations, each at least 1, at most 4294967295 "
                   "together",
                   text));
}

TEST(ParseInitial, MalformedTextsGiveErrorsThatQuoteThem) {
    ExpectMessages("fill", [](const char* text) { return ParseInitial(InitialValues::Fill, text); },
                   {{"x=", NoAssignment}, {"x=1,two", ": 'two' is no number"}});
    ExpectMessages("ramp", [](const char* text) { return ParseInitial(InitialValues::Ramp, text); },
                   {{"x=1", ": expected NAME=FROM:TO"}, {"x=1:2:3", ": expected NAME=FROM:TO"}});
    ExpectMessages("random", [](const char* text) { return ParseInitial(InitialValues::Random, text); },
                   {{"x=1.5", ": expected NAME=SEED, a whole number"},
                    {"x=1,2", ": expected NAME=SEED, a whole number"}});
}

TEST(ParseNoise, TakesNumbersAndNamesOfModes) {
    EXPECT_EQ(ParseNoise("0:5")->mode, 0);
    EXPECT_EQ(ParseNoise("perlin:-3")->mode, 0);
    EXPECT_EQ(ParseNoise("perlin:-3")->seed, -3);
    EXPECT_EQ(ParseNoise("24:0")->mode, 24);
    const String expected = "--noise '@': expected MODE:SEED, where the seed is a 32-bit integer";
    for (const char* text : {"", "0", "0:", "0:1:2", "0:x", "0:4294967296"})
        EXPECT_EQ(MessageOf(ParseNoise(text)), Format(expected, text));
    EXPECT_EQ(MessageOf(ParseNoise("prelin:1")),
              "--noise 'prelin:1': modes are the numbers 0 to 24, and names; did you mean 'perlin'?");
}

TEST(ParseCounterAndSwap, MalformedTextsGiveErrorsThatQuoteThem) {
    EXPECT_EQ(ParseCounter("hits")->start, 0u);
    EXPECT_EQ(ParseCounter("hits=7")->start, 7u);
    ExpectMessages("counter", &ParseCounter,
                   {{"", NoAssignment},
                    {"hits=-1", ": a counter starts at 0 to 4294967295"},
                    {"hits=4294967296", ": a counter starts at 0 to 4294967295"}});
    const char* const noPair = ": expected the names of two parameters, A,B";
    ExpectMessages("swap", &ParseSwap, {{"a", noPair}, {"a,", noPair}, {"a,a", noPair}, {"a,b,c", noPair}});
}

} // namespace norvi
