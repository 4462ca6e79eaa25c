// The built-in spaces against the published matrices and curves.
#include <cmath>
#include <limits>

#include <norvi/host/color_profile_convert.h>

#include "support/results.h"

namespace norvi {
namespace {

struct BuiltinConfigTest : testing::Test {
    BuiltinConfigTest() { EXPECT_OK(UseBuiltinColorConfig()); }

    static Vector32 Convert(const char* source, const char* target, Vector32 color) {
        ColorProfileConvert convert;
        const auto from = ColorProfile::FromName(source), to = ColorProfile::FromName(target);
        EXPECT_TRUE(from.IsOk() && to.IsOk()) << source << ' ' << target;
        EXPECT_OK(convert.Init(pixelformat::RgbF32, *from, pixelformat::RgbF32, *to, 0, 0));
        Vector32 result;
        EXPECT_OK(convert.Convert(&color, &result, 1));
        return result;
    }
};

void ExpectNear(const Vector32& value, const Vector32& expected, double tolerance, const std::string& what) {
    EXPECT_NEAR(value.x, expected.x, tolerance) << what;
    EXPECT_NEAR(value.y, expected.y, tolerance) << what;
    EXPECT_NEAR(value.z, expected.z, tolerance) << what;
}

TEST_F(BuiltinConfigTest, LinearSpacesDifferByThePublishedMatrices) {
    const struct {
        const char* source;
        const char* target;
        Vector32 columns[3]; ///< what pure red, green and blue become
        double tolerance;    ///< half of the last digit that is published
    } rows[] = {
        // IEC 61966-2-1.
        {"Linear Rec.709",
         "XYZ D65",
         {{0.4124f, 0.2126f, 0.0193f}, {0.3576f, 0.7152f, 0.1192f}, {0.1805f, 0.0722f, 0.9505f}},
         6e-5},
        // Recommendation ITU-R BT.2020.
        {"Linear Rec.2020",
         "XYZ D65",
         {{0.6370f, 0.2627f, 0.0000f}, {0.1446f, 0.6780f, 0.0281f}, {0.1689f, 0.0593f, 1.0610f}},
         6e-5},
        // Recommendation ITU-R BT.2087.
        {"Linear Rec.709",
         "Linear Rec.2020",
         {{0.6274f, 0.0691f, 0.0164f}, {0.3293f, 0.9195f, 0.0880f}, {0.0433f, 0.0114f, 0.8956f}},
         6e-5},
        // SMPTE RP 431-2 with D65.
        {"Linear Display P3",
         "XYZ D65",
         {{0.4866f, 0.2290f, 0.0000f}, {0.2657f, 0.6917f, 0.0451f}, {0.1982f, 0.0793f, 1.0439f}},
         6e-5},
        // Academy S-2014-004.
        {"ACEScg",
         "ACES2065-1",
         {{0.6954522f, 0.0447946f, -0.0055259f},
          {0.1406787f, 0.8596711f, 0.0040252f},
          {0.1638691f, 0.0955343f, 1.0015007f}},
         2e-7},
        // With Bradford adaptation from D65 to the white of ACES.
        {"Linear Rec.709",
         "ACEScg",
         {{0.6131f, 0.0702f, 0.0206f}, {0.3395f, 0.9164f, 0.1096f}, {0.0474f, 0.0135f, 0.8698f}},
         6e-5},
    };
    for (const auto& row : rows) {
        const std::string what = std::string(row.source) + " to " + row.target;
        const Vector32 primaries[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        for (int i = 0; i < 3; ++i)
            ExpectNear(Convert(row.source, row.target, primaries[i]), row.columns[i], row.tolerance, what);
    }
}

TEST_F(BuiltinConfigTest, WhiteIsWhiteInEveryLinearSpace) {
    for (const char* space :
         {"Linear Rec.2020", "Linear Display P3", "ACEScg", "ACES2065-1", "Linear ARRI Wide Gamut 3",
          "Linear CinemaGamut", "Linear V-Gamut", "Linear REDWideGamutRGB", "Linear S-Gamut3",
          "Linear S-Gamut3.Cine", "Linear Venice S-Gamut3", "Linear Venice S-Gamut3.Cine"})
        ExpectNear(Convert("Linear Rec.709", space, {1, 1, 1}), {1, 1, 1}, 2e-5, space);
}

TEST_F(BuiltinConfigTest, EncodedSpacesFollowThePublishedCurves) {
    // The library joins the straight part and the power smoothly, so that its slope differs in the fourth
    // digit from the rounded one of the standard: there the tolerance is wider.
    constexpr double Rounded = 4e-4, Exact = 3e-6, Table = 3e-5;
    constexpr Float32 Codes[] = {0.03f, 0.12f, 0.4f, 0.9f};
    const struct {
        const char* encoded;
        const char* linear;
        double light[4];  ///< what the published formula gives for the codes
        double tolerance; ///< relative, and to 0.01 for smaller values
    } rows[] = {
        // clang-format off
        {"sRGB", "Linear Rec.709", {0.00232198142, 0.0134117489, 0.132868322, 0.787412289}, Rounded},
        {"Display P3", "Linear Display P3", {0.00232198142, 0.0134117489, 0.132868322, 0.787412289}, Rounded},
        {"Rec.709", "Linear Rec.709", {0.000221355854, 0.00616644682, 0.110903175, 0.776572528}, Exact},
        {"Rec.2020", "Linear Rec.2020", {0.000221355854, 0.00616644682, 0.110903175, 0.776572528}, Exact},
        {"Camera Rec.709", "Linear Rec.709", {0.00666666667, 0.0278138321, 0.173108991, 0.809011174}, Exact},
        {"ACEScct", "ACEScg", {-0.00407064198, 0.00446806485, 0.152618314, 66.1651671}, Exact},
        {"ACEScc", "ACEScg", {0.0017069068, 0.00509183011, 0.152618314, 66.1651671}, Table},
        {"ARRI LogC3 (EI800)", "Linear ARRI Wide Gamut 3", {-0.0117013854, 0.00506571305, 0.196550678, 21.6934859}, Rounded},
        {"CanonLog2 CinemaGamut", "Linear CinemaGamut", {-0.00848978988, 0.00305313979, 0.183195625, 22.8105769}, Table},
        {"CanonLog3 CinemaGamut", "Linear CinemaGamut", {-0.0508588172, -0.00233359562, 0.282284436, 7.80811212}, Table},
        {"V-Log V-Gamut", "Linear V-Gamut", {-0.0169642857, -0.000892857143, 0.142388905, 17.7573722}, Rounded},
        {"REDLogFilm REDWideGamutRGB", "Linear REDWideGamutRGB", {-0.00425243533, 0.00259208941, 0.110809886, 6.1604542}, Exact},
        {"Log3G10 REDWideGamutRGB", "Linear REDWideGamutRGB", {-0.00768749911, 0.00556655923, 0.373004128, 66.0148211}, Exact},
        {"S-Log3 S-Gamut3", "Linear S-Gamut3", {-0.00949330406, 0.00409787157, 0.162764063, 15.6026403}, Exact},
        {"S-Log3 S-Gamut3.Cine", "Linear S-Gamut3.Cine", {-0.00949330406, 0.00409787157, 0.162764063, 15.6026403}, Exact},
        {"S-Log3 Venice S-Gamut3", "Linear Venice S-Gamut3", {-0.00949330406, 0.00409787157, 0.162764063, 15.6026403}, Exact},
        {"S-Log3 Venice S-Gamut3.Cine", "Linear Venice S-Gamut3.Cine", {-0.00949330406, 0.00409787157, 0.162764063, 15.6026403}, Exact},
        // clang-format on
    };
    for (const auto& row : rows)
        for (int i = 0; i < 4; ++i) {
            const auto light = static_cast<Float32>(row.light[i]);
            ExpectNear(Convert(row.encoded, row.linear, {Codes[i], Codes[i], Codes[i]}),
                       {light, light, light}, row.tolerance * std::max(std::abs(row.light[i]), 0.01),
                       Format("@ at @", row.encoded, Codes[i]));
        }
}

TEST_F(BuiltinConfigTest, NegativeValuesOfDisplaySpacesGoOnBeyondBlack) {
    EXPECT_NEAR(Convert("sRGB", "Linear Rec.709", {-0.5f, 0, 0}).x, -0.5 / 12.92, 2e-5);
    EXPECT_NEAR(Convert("Rec.709", "Linear Rec.709", {-0.5f, 0, 0}).x, -std::pow(0.5, 2.4), 1e-6);
}

TEST_F(BuiltinConfigTest, EverySpaceIsFoundByItsNamesAndReturnsToWhereItCameFrom) {
    const auto spaces = ListColorSpaces();
    ASSERT_TRUE(spaces.IsOk());
    EXPECT_EQ(spaces->size(), 32u);
    for (const ColorSpaceInfo& space : *spaces) {
        for (const String& alias : space.aliases)
            EXPECT_EQ((*ColorProfile::FromName(alias))->GetName(), space.name) << alias;
        for (const Float32 scale : {0.01f, 0.2f, 0.9f}) {
            const Vector32 color{0.5f * scale, 1 * scale, 0.7f * scale};
            const Vector32 there = Convert("ACES2065-1", space.name.c_str(), color);
            ExpectNear(Convert(space.name.c_str(), "ACES2065-1", there), color, 2e-4 * scale, space.name);
        }
    }
    EXPECT_EQ((*ColorProfile::FromName("scene_linear"))->GetName(), "Linear Rec.709");
    EXPECT_EQ((*ColorProfile::FromName("SRGB"))->GetName(), "sRGB");
}

TEST_F(BuiltinConfigTest, SpecialValuesOfOneChannelLeaveTheOthersAlone) {
    const auto spaces = ListColorSpaces();
    ASSERT_TRUE(spaces.IsOk());
    constexpr Float32 Infinity = std::numeric_limits<Float32>::infinity();
    for (const ColorSpaceInfo& space : *spaces)
        for (const Float32 special : {std::nanf(""), Infinity, -Infinity, -1e30f, 3e38f, 1e-42f}) {
            Convert(space.name.c_str(), "Linear Rec.709", {special, special, special});
            Convert("Linear Rec.709", space.name.c_str(), {special, special, special});
        }
    // A curve works on each channel by itself.
    for (const Float32 special : {std::nanf(""), Infinity, -Infinity}) {
        const Vector32 result = Convert("sRGB", "Linear Rec.709", {special, 0.5f, 1});
        EXPECT_NEAR(result.y, 0.214041140, 1e-6);
        EXPECT_EQ(std::isnan(special), std::isnan(result.x));
    }
}

} // namespace
} // namespace norvi
