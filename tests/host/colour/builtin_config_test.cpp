// The built-in spaces against the published matrices and curves, computed here in double precision.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <norvi/host/color_profile_convert.h>
#include <norvi/host/text.h>

namespace norvi {
namespace {

struct BuiltinConfigTest : testing::Test {
    BuiltinConfigTest() { EXPECT_TRUE(UseBuiltinColorConfig().IsOk()); }

    static Vector32 Convert(const char* source, const char* target, Vector32 color) {
        ColorProfileConvert convert;
        const auto from = ColorProfile::FromName(source), to = ColorProfile::FromName(target);
        EXPECT_TRUE(from.IsOk() && to.IsOk()) << source << ' ' << target;
        EXPECT_TRUE(convert.Init(pixelformat::RgbF32, *from, pixelformat::RgbF32, *to, 0, 0).IsOk());
        Vector32 result;
        EXPECT_TRUE(convert.Convert(&color, &result, 1).IsOk());
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
        ExpectNear(Convert(row.source, row.target, {1, 0, 0}), row.columns[0], row.tolerance, what + ", red");
        ExpectNear(Convert(row.source, row.target, {0, 1, 0}), row.columns[1], row.tolerance,
                   what + ", green");
        ExpectNear(Convert(row.source, row.target, {0, 0, 1}), row.columns[2], row.tolerance,
                   what + ", blue");
    }
}

TEST_F(BuiltinConfigTest, WhiteIsWhiteInEveryLinearSpace) {
    for (const char* space :
         {"Linear Rec.2020", "Linear Display P3", "ACEScg", "ACES2065-1", "Linear ARRI Wide Gamut 3",
          "Linear CinemaGamut", "Linear V-Gamut", "Linear REDWideGamutRGB", "Linear S-Gamut3",
          "Linear S-Gamut3.Cine", "Linear Venice S-Gamut3", "Linear Venice S-Gamut3.Cine"})
        ExpectNear(Convert("Linear Rec.709", space, {1, 1, 1}), {1, 1, 1}, 2e-5, space);
}

double DecodeSrgb(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

double DecodeDisplay(double v) {
    return std::copysign(std::pow(std::abs(v), 2.4), v);
}

double DecodeCamera709(double v) {
    return v < 0.08124 ? v / 4.5 : std::pow((v + 0.0992968268) / 1.0992968268, 1 / 0.45);
}

double DecodeAcescct(double v) {
    return v <= 0.155251141552511 ? (v - 0.0729055341958355) / 10.5402377416545 : std::exp2(v * 17.52 - 9.72);
}

double DecodeAcescc(double v) {
    return v < (9.72 - 15) / 17.52 ? (std::exp2(v * 17.52 - 9.72) - std::exp2(-16)) * 2
                                   : std::exp2(v * 17.52 - 9.72);
}

double DecodeLogC(double v) {
    return v > 5.367655 * 0.010591 + 0.092809
               ? (std::pow(10, (v - 0.385537) / 0.247190) - 0.052272) / 5.555556
               : (v - 0.092809) / 5.367655;
}

double DecodeCanonLog2(double v) {
    const double x = v < 0.092864125 ? -(std::pow(10, (0.092864125 - v) / 0.24136077) - 1) / 87.099375
                                     : (std::pow(10, (v - 0.092864125) / 0.24136077) - 1) / 87.099375;
    return 0.9 * x;
}

double DecodeCanonLog3(double v) {
    if (v < 0.097465473)
        return -0.9 * (std::pow(10, (0.12783901 - v) / 0.36726845) - 1) / 14.98325;
    if (v <= 0.15277891)
        return 0.9 * (v - 0.12512219) / 1.9754798;
    return 0.9 * (std::pow(10, (v - 0.12240537) / 0.36726845) - 1) / 14.98325;
}

double DecodeVLog(double v) {
    return v < 0.181 ? (v - 0.125) / 5.6 : std::pow(10, (v - 0.598206) / 0.241514) - 0.00873;
}

double DecodeRedLogFilm(double v) {
    const double black = std::pow(10, (95 - 685) / 300.0);
    return (std::pow(10, (1023 * v - 685) / 300) - black) / (1 - black);
}

double DecodeLog3G10(double v) {
    return v < 0 ? v / 15.1927 - 0.01 : (std::pow(10, v / 0.224282) - 1) / 155.975327 - 0.01;
}

double DecodeSLog3(double v) {
    return v >= 171.2102946929 / 1023 ? std::pow(10, (v * 1023 - 420) / 261.5) * (0.18 + 0.01) - 0.01
                                      : (v * 1023 - 95) * 0.01125 / (171.2102946929 - 95);
}

TEST_F(BuiltinConfigTest, EncodedSpacesFollowThePublishedCurves) {
    // The library joins the straight part and the power smoothly, so that its slope differs in the fourth
    // digit from the rounded one of the standard: there the tolerance is wider.
    constexpr double Rounded = 4e-4, Exact = 3e-6, Table = 3e-5;
    const struct {
        const char* encoded;
        const char* linear;
        double (*decode)(double);
        double tolerance; ///< relative, and to 0.01 for smaller values
    } rows[] = {
        {"sRGB", "Linear Rec.709", DecodeSrgb, Rounded},
        {"Display P3", "Linear Display P3", DecodeSrgb, Rounded},
        {"Rec.709", "Linear Rec.709", DecodeDisplay, Exact},
        {"Rec.2020", "Linear Rec.2020", DecodeDisplay, Exact},
        {"Camera Rec.709", "Linear Rec.709", DecodeCamera709, Exact},
        {"ACEScct", "ACEScg", DecodeAcescct, Exact},
        {"ACEScc", "ACEScg", DecodeAcescc, Table},
        {"ARRI LogC3 (EI800)", "Linear ARRI Wide Gamut 3", DecodeLogC, Rounded},
        {"CanonLog2 CinemaGamut", "Linear CinemaGamut", DecodeCanonLog2, Table},
        {"CanonLog3 CinemaGamut", "Linear CinemaGamut", DecodeCanonLog3, Table},
        {"V-Log V-Gamut", "Linear V-Gamut", DecodeVLog, Rounded},
        {"REDLogFilm REDWideGamutRGB", "Linear REDWideGamutRGB", DecodeRedLogFilm, Exact},
        {"Log3G10 REDWideGamutRGB", "Linear REDWideGamutRGB", DecodeLog3G10, Exact},
        {"S-Log3 S-Gamut3", "Linear S-Gamut3", DecodeSLog3, Exact},
        {"S-Log3 S-Gamut3.Cine", "Linear S-Gamut3.Cine", DecodeSLog3, Exact},
        {"S-Log3 Venice S-Gamut3", "Linear Venice S-Gamut3", DecodeSLog3, Exact},
        {"S-Log3 Venice S-Gamut3.Cine", "Linear Venice S-Gamut3.Cine", DecodeSLog3, Exact},
    };
    for (const auto& row : rows)
        for (const double value : {0.01, 0.03, 0.1, 0.2, 0.4, 0.5, 0.75, 0.9}) {
            const double expected = row.decode(value);
            const double tolerance = row.tolerance * std::max(std::abs(expected), 0.01);
            const auto code = static_cast<Float32>(value), light = static_cast<Float32>(expected);
            ExpectNear(Convert(row.encoded, row.linear, {code, code, code}), {light, light, light}, tolerance,
                       Format("@ at @", row.encoded, value));
        }
}

TEST_F(BuiltinConfigTest, NegativeValuesOfDisplaySpacesGoOnBeyondBlack) {
    EXPECT_NEAR(Convert("sRGB", "Linear Rec.709", {-0.5f, 0, 0}).x, -0.5 / 12.92, 2e-5);
    EXPECT_NEAR(Convert("Rec.709", "Linear Rec.709", {-0.5f, 0, 0}).x, -std::pow(0.5, 2.4), 1e-6);
}

TEST_F(BuiltinConfigTest, EverySpaceReturnsToWhereItCameFrom) {
    const auto spaces = ListColorSpaces();
    ASSERT_TRUE(spaces.IsOk());
    EXPECT_EQ(spaces->size(), 32u);
    for (const ColorSpaceInfo& space : *spaces)
        for (const Float32 scale : {0.01f, 0.2f, 0.9f}) {
            const Vector32 color{0.5f * scale, 1 * scale, 0.7f * scale};
            const Vector32 there = Convert("ACES2065-1", space.name.c_str(), color);
            ExpectNear(Convert(space.name.c_str(), "ACES2065-1", there), color, 2e-4 * scale, space.name);
        }
}

TEST_F(BuiltinConfigTest, NamesAliasesAndRolesAreUniqueAndFindTheirSpace) {
    const auto spaces = ListColorSpaces();
    ASSERT_TRUE(spaces.IsOk());
    for (const ColorSpaceInfo& space : *spaces) {
        EXPECT_FALSE(space.description.empty()) << space.name;
        EXPECT_FALSE(space.aliases.empty()) << space.name;
        for (const String& alias : space.aliases)
            EXPECT_EQ((*ColorProfile::FromName(alias))->GetName(), space.name) << alias;
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
        EXPECT_NEAR(result.y, DecodeSrgb(0.5), 1e-6);
        EXPECT_EQ(std::isnan(special), std::isnan(result.x));
    }
}

} // namespace
} // namespace norvi
