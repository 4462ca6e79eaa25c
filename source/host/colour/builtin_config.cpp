// Tables of the spaces, and how a row becomes a space. The reference space is ACES2065-1, because every
// camera conversion that the library has built in leads there. Spaces with another white (all but the ACES
// ones) are adapted by the Bradford method.
#include "builtin_config.h"

#include "rgb_primaries.h"

namespace norvi {

namespace {

constexpr const char* ReferenceName = "ACES2065-1";
constexpr const char* ReferenceToXyz = "UTILITY - ACES-AP0_to_CIE-XYZ-D65_BFD";

constexpr Chromaticity D65{0.3127, 0.3290};
// Recommendation ITU-R BT.709-6, table 1.
constexpr RgbPrimaries Rec709{{0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}, D65};
// Recommendation ITU-R BT.2020-2, table 3.
constexpr RgbPrimaries Rec2020{{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}, D65};
// SMPTE EG 432-1.
constexpr RgbPrimaries P3{{0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, D65};

/// linear = ((value + offset) / (1 + offset)) ^ gamma, and a straight line near 0 where there is an offset.
struct Curve {
    double gamma;
    double offset;
};

constexpr Curve Linear{1, 0};
constexpr Curve Srgb{2.4, 0.055};  // IEC 61966-2-1
constexpr Curve Display24{2.4, 0}; // Recommendation ITU-R BT.1886 with a black of 0
// Recommendation ITU-R BT.709-6, item 1.2. With all digits of the offset, which it rounds to 0.099, the
// straight line gets the slope 1 / 4.5 of the text.
constexpr Curve Camera709{1 / 0.45, 0.09929682680944};

struct Names {
    const char* name;
    std::initializer_list<const char*> aliases;
    const char* description;
};

struct DisplaySpace {
    Names names;
    const RgbPrimaries& primaries;
    const Curve& curve;
};

const DisplaySpace displaySpaces[] = {
    {{"Linear Rec.709",
      {"lin_rec709", "lin_srgb", "linear_srgb", "Linear Rec.709 (sRGB)"},
      "Light in the primaries of Rec.709 and sRGB."},
     Rec709,
     Linear},
    {{"sRGB",
      {"srgb_tx", "srgb_texture", "sRGB - Texture", "srgb_rec709_scene"},
      "Pictures and textures made for ordinary screens."},
     Rec709,
     Srgb},
    {{"Rec.709",
      {"rec709", "bt709", "g24_rec709", "Gamma 2.4 Rec.709 - Texture"},
      "HD video as a reference monitor shows it: gamma 2.4."},
     Rec709,
     Display24},
    {{"Camera Rec.709",
      {"rec709_camera", "bt709_camera"},
      "HD video as a camera encodes it: the curve of BT.709."},
     Rec709,
     Camera709},
    {{"Linear Rec.2020",
      {"lin_rec2020", "linear_rec2020"},
      "Light in the primaries of Rec.2020 and Rec.2100."},
     Rec2020,
     Linear},
    {{"Rec.2020",
      {"rec2020", "bt2020", "g24_rec2020"},
      "UHD video as a reference monitor shows it: gamma 2.4."},
     Rec2020,
     Display24},
    {{"Linear Display P3",
      {"lin_displayp3", "lin_p3d65", "Linear P3-D65"},
      "Light in the primaries of P3 with the white D65."},
     P3,
     Linear},
    {{"Display P3",
      {"displayp3", "display_p3", "p3"},
      "Pictures made for wide-gamut screens: P3 primaries, curve of sRGB."},
     P3,
     Srgb},
};

/// A space whose steps to the reference the library has built in.
struct StyledSpace {
    Names names;
    const char* style;
};

const StyledSpace styledSpaces[] = {
    {{"ACEScg", {"lin_ap1"}, "Light in the primaries AP1; for rendering and compositing."},
     "ACEScg_to_ACES2065-1"},
    {{"ACEScct", {"acescct_ap1"}, "Log encoding of AP1 with a toe; for grading."}, "ACEScct_to_ACES2065-1"},
    {{"ACEScc", {"acescc_ap1"}, "Log encoding of AP1; for grading."}, "ACEScc_to_ACES2065-1"},
    {{"ARRI LogC3 (EI800)",
      {"logc", "logc3", "arri_logc3_ei800"},
      "ALEXA LogC at exposure index 800, ALEXA Wide Gamut."},
     "ARRI_ALEXA-LOGC-EI800-AWG_to_ACES2065-1"},
    {{"CanonLog2 CinemaGamut", {"clog2", "canonlog2_cgamut"}, "Canon Log 2, Cinema Gamut."},
     "CANON_CLOG2-CGAMUT_to_ACES2065-1"},
    {{"CanonLog3 CinemaGamut", {"clog3", "canonlog3_cgamut"}, "Canon Log 3, Cinema Gamut."},
     "CANON_CLOG3-CGAMUT_to_ACES2065-1"},
    {{"V-Log V-Gamut", {"vlog", "vlog_vgamut"}, "Panasonic V-Log, V-Gamut."},
     "PANASONIC_VLOG-VGAMUT_to_ACES2065-1"},
    {{"REDLogFilm REDWideGamutRGB", {"redlogfilm", "redlogfilm_rwg"}, "REDLogFilm, REDWideGamutRGB."},
     "RED_REDLOGFILM-RWG_to_ACES2065-1"},
    {{"Log3G10 REDWideGamutRGB", {"log3g10", "log3g10_rwg"}, "RED Log3G10, REDWideGamutRGB."},
     "RED_LOG3G10-RWG_to_ACES2065-1"},
    {{"S-Log3 S-Gamut3", {"slog3", "slog3_sgamut3"}, "Sony S-Log3, S-Gamut3."},
     "SONY_SLOG3-SGAMUT3_to_ACES2065-1"},
    {{"S-Log3 S-Gamut3.Cine", {"slog3_cine", "slog3_sgamut3cine"}, "Sony S-Log3, S-Gamut3.Cine."},
     "SONY_SLOG3-SGAMUT3.CINE_to_ACES2065-1"},
    {{"S-Log3 Venice S-Gamut3", {"slog3_venice", "slog3_sgamut3_venice"}, "Sony Venice, S-Log3, S-Gamut3."},
     "SONY_SLOG3-SGAMUT3-VENICE_to_ACES2065-1"},
    {{"S-Log3 Venice S-Gamut3.Cine",
      {"slog3_cine_venice", "slog3_sgamut3cine_venice"},
      "Sony Venice, S-Log3, S-Gamut3.Cine."},
     "SONY_SLOG3-SGAMUT3.CINE-VENICE_to_ACES2065-1"},
};

/// The linear spaces of cameras: what the style of their log space does after its curve.
const StyledSpace linearCameraSpaces[] = {
    {{"Linear ARRI Wide Gamut 3", {"lin_awg", "lin_arri_wide_gamut_3"}, "Light in ALEXA Wide Gamut."},
     "ARRI_ALEXA-LOGC-EI800-AWG_to_ACES2065-1"},
    {{"Linear CinemaGamut", {"lin_cinemagamut", "lin_cgamut"}, "Light in Canon Cinema Gamut."},
     "CANON_CLOG2-CGAMUT_to_ACES2065-1"},
    {{"Linear V-Gamut", {"lin_vgamut"}, "Light in Panasonic V-Gamut."},
     "PANASONIC_VLOG-VGAMUT_to_ACES2065-1"},
    {{"Linear REDWideGamutRGB", {"lin_rwg", "lin_redwidegamutrgb"}, "Light in REDWideGamutRGB."},
     "RED_LOG3G10-RWG_to_ACES2065-1"},
    {{"Linear S-Gamut3", {"lin_sgamut3"}, "Light in Sony S-Gamut3."}, "SONY_SLOG3-SGAMUT3_to_ACES2065-1"},
    {{"Linear S-Gamut3.Cine", {"lin_sgamut3cine"}, "Light in Sony S-Gamut3.Cine."},
     "SONY_SLOG3-SGAMUT3.CINE_to_ACES2065-1"},
    {{"Linear Venice S-Gamut3", {"lin_sgamut3_venice"}, "Light in S-Gamut3 of the Sony Venice."},
     "SONY_SLOG3-SGAMUT3-VENICE_to_ACES2065-1"},
    {{"Linear Venice S-Gamut3.Cine",
      {"lin_sgamut3cine_venice"},
      "Light in S-Gamut3.Cine of the Sony Venice."},
     "SONY_SLOG3-SGAMUT3.CINE-VENICE_to_ACES2065-1"},
};

const Names referenceNames{ReferenceName, {"aces", "lin_ap0"}, "Light in the primaries AP0; for exchange."};
const Names xyzNames{
    "XYZ D65", {"xyz", "xyz_d65", "cie_xyz_d65", "CIE-XYZ-D65"}, "CIE XYZ (1931) with the white D65."};
const Names rawNames{"Raw", {"data", "utility_raw"}, "Data that is no colour: never converted."};

struct Role {
    const char* name;
    const char* space;
};

constexpr Role roles[] = {
    {"aces_interchange", ReferenceName},
    {"scene_linear", "Linear Rec.709"},
    {"texture_paint", "sRGB"},
    {"default", "Raw"},
};

OCIO::TransformRcPtr BuiltinStep(const char* style, OCIO::TransformDirection direction) {
    auto transform = OCIO::BuiltinTransform::Create();
    transform->setStyle(style);
    transform->setDirection(direction);
    return transform;
}

OCIO::TransformRcPtr MatrixStep(const Matrix3& matrix) {
    double elements[16]{};
    for (int row = 0; row < 3; ++row)
        std::copy(matrix[row].begin(), matrix[row].end(), elements + 4 * row);
    elements[15] = 1;
    auto transform = OCIO::MatrixTransform::Create();
    transform->setMatrix(elements);
    return transform;
}

/// Negative values go on along the straight line, or mirrored where there is none, so that colours outside of
/// the gamut survive a round trip.
OCIO::TransformRcPtr CurveStep(const Curve& curve) {
    const double gammas[4] = {curve.gamma, curve.gamma, curve.gamma, 1};
    if (curve.offset == 0) {
        auto transform = OCIO::ExponentTransform::Create();
        transform->setValue(gammas);
        transform->setNegativeStyle(OCIO::NEGATIVE_MIRROR);
        return transform;
    }
    const double offsets[4] = {curve.offset, curve.offset, curve.offset, 0};
    auto transform = OCIO::ExponentWithLinearTransform::Create();
    transform->setGamma(gammas);
    transform->setOffset(offsets);
    transform->setNegativeStyle(OCIO::NEGATIVE_LINEAR);
    return transform;
}

OCIO::TransformRcPtr DisplaySteps(const DisplaySpace& space) {
    auto steps = OCIO::GroupTransform::Create();
    if (&space.curve != &Linear)
        steps->appendTransform(CurveStep(space.curve));
    steps->appendTransform(MatrixStep(RgbToXyz(space.primaries)));
    steps->appendTransform(BuiltinStep(ReferenceToXyz, OCIO::TRANSFORM_DIR_INVERSE));
    return steps;
}

/// The matrix that stands last among the steps of `style`.
OCIO::TransformRcPtr LastStep(const OCIO::Config& config, const char* style) {
    const auto steps =
        config.getProcessor(BuiltinStep(style, OCIO::TRANSFORM_DIR_FORWARD))->createGroupTransform();
    return steps->getTransform(steps->getNumTransforms() - 1)->createEditableCopy();
}

OCIO::ColorSpaceRcPtr MakeSpace(const Names& names) {
    auto space = OCIO::ColorSpace::Create();
    space->setName(names.name);
    for (const char* alias : names.aliases)
        space->addAlias(alias);
    space->setDescription(names.description);
    return space;
}

void AddSpace(OCIO::Config& config, const Names& names, const OCIO::TransformRcPtr& toReference) {
    const auto space = MakeSpace(names);
    if (toReference)
        space->setTransform(toReference, OCIO::COLORSPACE_DIR_TO_REFERENCE);
    config.addColorSpace(space);
}

} // namespace

OCIO::ConstConfigRcPtr MakeBuiltinConfig() {
    auto config = OCIO::Config::Create();
    config->setVersion(2, 1);
    config->setName("norvi");
    for (const DisplaySpace& space : displaySpaces)
        AddSpace(*config, space.names, DisplaySteps(space));
    AddSpace(*config, referenceNames, nullptr);
    AddSpace(*config, xyzNames, BuiltinStep(ReferenceToXyz, OCIO::TRANSFORM_DIR_INVERSE));
    for (const StyledSpace& space : styledSpaces)
        AddSpace(*config, space.names, BuiltinStep(space.style, OCIO::TRANSFORM_DIR_FORWARD));
    for (const StyledSpace& space : linearCameraSpaces)
        AddSpace(*config, space.names, LastStep(*config, space.style));
    const auto raw = MakeSpace(rawNames);
    raw->setIsData(true);
    config->addColorSpace(raw);
    for (const Role& role : roles)
        config->setRole(role.name, role.space);
    // A configuration without a display is not valid.
    config->addDisplayView("sRGB", "Raw", "Raw", "");
    config->validate();
    return config;
}

} // namespace norvi
