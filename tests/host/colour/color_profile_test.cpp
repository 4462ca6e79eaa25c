#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <norvi/host/color_profile_convert.h>

#include "host/colour/color_config.h"
#include "host/log_recorder.h"
#include "support/results.h"

namespace norvi {
namespace {

/// A folder of configurations; the built-in one is current before each test and after it.
struct ColorProfileTest : testing::Test {
    ColorProfileTest()
        : folder(std::filesystem::temp_directory_path() / ("norvi_colour_" + std::to_string(getpid()))) {
        std::filesystem::create_directories(folder);
        EXPECT_OK(UseBuiltinColorConfig());
    }
    ~ColorProfileTest() override {
        EXPECT_OK(UseBuiltinColorConfig());
        std::filesystem::remove_all(folder);
    }

    String Write(const String& name, const String& text) const {
        const auto path = folder / name;
        std::ofstream(path) << text;
        return path.string();
    }

    /// A configuration with the reference space "aces" and more spaces.
    String WriteConfig(const String& name, const String& spaces, const String& more = "",
                       const String& role = "aces_interchange: aces") const {
        return Write(name, "ocio_profile_version: 2\nroles: {default: aces, " + role + "}\n" +
                               "file_rules:\n"
                               "  - !<Rule> {name: Default, colorspace: default}\n" +
                               "displays: {screen: [!<View> {name: plain, colorspace: aces}]}\n" + more +
                               "colorspaces:\n"
                               "  - !<ColorSpace> {name: aces}\n" +
                               spaces);
    }

    static ColorProfileRef Profile(std::string_view name) {
        auto profile = ColorProfile::FromName(name);
        EXPECT_OK(profile);
        return profile.IsOk() ? *profile : nullptr;
    }

    const std::filesystem::path folder;
};

String Space(const String& name, const String& toReference) {
    return "  - !<ColorSpace> {name: " + name + ", aliases: [" + name +
           "_alias], to_scene_reference: " + toReference + "}\n";
}

String Gain(const char* gain) {
    return Format("!<MatrixTransform> {matrix: [@, 0, 0, 0, 0, @, 0, 0, 0, 0, @, 0, 0, 0, 0, 1]}", gain, gain,
                  gain);
}

TEST_F(ColorProfileTest, UnknownNamesGetASuggestion) {
    const struct {
        std::string_view name;
        const char* message;
    } rows[] = {
        {"srbg", "no colour space 'srbg'; did you mean 'sRGB'?"},
        {"lin_rec790", "no colour space 'lin_rec790'; did you mean 'lin_rec709'?"},
        {"scene_linaer", "no colour space 'scene_linaer'; did you mean 'scene_linear'?"},
        {"something else", "no colour space 'something else'"},
        {"", "no colour space ''"},
    };
    for (const auto& row : rows)
        EXPECT_TRUE(FailsWith(ColorProfile::FromName(row.name), errorkind::IllegalArgument, row.message));
    EXPECT_FALSE(ColorProfile::FromName({"sRGB\0x", 6}).IsOk());
}

TEST_F(ColorProfileTest, EachBuiltinProfileAndTheEmptyOneEqualsItselfAlone) {
    BaseArray<ColorProfileRef> profiles{std::make_shared<ColorProfile>()};
    EXPECT_TRUE(profiles[0]->IsEmpty());
    for (const ColorSpaceInfo& space : *ListColorSpaces())
        profiles.push_back(Profile(space.name));
    for (const auto& one : profiles)
        for (const auto& two : profiles) {
            EXPECT_EQ(one->IsEqual(*two), one == two) << one->GetName() << ' ' << two->GetName();
            EXPECT_EQ(one->GetHashCode() == two->GetHashCode(), one == two);
        }
}

TEST_F(ColorProfileTest, EqualMeansTheSameConversionInAnyConfiguration) {
    const ColorProfileRef builtinReference = Profile("ACES2065-1");
    ASSERT_OK(LoadColorConfig(
        WriteConfig("one", Space("a", Gain("2")) + Space("b", Gain("3")) + Space("twin", Gain("2")))));
    const ColorProfileRef a = Profile("a"), b = Profile("b"), twin = Profile("twin"),
                          reference = Profile("aces");
    EXPECT_EQ(Profile("a_alias")->GetName(), "a");
    ASSERT_OK(LoadColorConfig(WriteConfig("two", Space("a", Gain("2.0000001")) + Space("c", Gain("3")))));
    const ColorProfileRef otherA = Profile("a"), c = Profile("c");
    ASSERT_OK(LoadColorConfig(WriteConfig("three", Space("a", Gain("2")), "", "reference: aces")));
    const ColorProfileRef unanchoredA = Profile("a"), unanchoredReference = Profile("aces");
    const struct {
        const char* what;
        ColorProfileRef one, two;
        Bool isEqual;
    } rows[] = {
        {"a space and itself", unanchoredA, Profile("A"), true},
        {"two names in one configuration", a, twin, true},
        {"two spaces of one configuration", a, b, false},
        {"two names in two configurations", b, c, true},
        {"one name in two configurations", a, otherA, false},
        {"the reference of two configurations", reference, builtinReference, true},
        {"a reference that is not anchored", reference, unanchoredReference, false},
        {"a space that is not anchored", a, unanchoredA, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.one->IsEqual(*row.two), row.isEqual) << row.what;
        EXPECT_EQ(row.one->GetHashCode() == row.two->GetHashCode(), row.isEqual) << row.what;
    }
}

TEST_F(ColorProfileTest, BrokenFilesAreErrorsThatChangeNothing) {
    // Each of these is known when the next refers to it.
    const String growingChain = [] {
        String spaces = Space("s0", Gain("2"));
        for (int i = 1; i <= 200; ++i)
            spaces +=
                Space("s" + std::to_string(i), Format("!<ColorSpaceTransform> {src: s@, dst: aces}", i - 1));
        return spaces;
    }();
    const String chain = [&] {
        // The longest first, so that none is known when it is reached.
        return "  - !<ColorSpace> {name: first, to_scene_reference: !<ColorSpaceTransform> {src: s200, dst: "
               "aces}}\n" +
               growingChain;
    }();
    const String doubling = [] {
        String spaces = Space("s0", Gain("2"));
        for (int i = 1; i <= 40; ++i)
            spaces +=
                Space("s" + std::to_string(i),
                      Format("!<GroupTransform> {children: [!<ColorSpaceTransform> {src: s@, dst: aces}, "
                             "!<ColorSpaceTransform> {src: s@, dst: aces}]}",
                             i - 1, i - 1));
        return spaces;
    }();
    const struct {
        const char* what;
        String path;
        const char*
            message; ///< after "the colour configuration '...' cannot be used: "; how the library's begin
    } rows[] = {
        {"missing", (folder / "absent").string(), "there is no such file"},
        {"folder", folder.string(), "there is no such file"},
        {"device", "/dev/zero", "there is no such file"},
        {"empty", Write("empty", ""), "Error: Loading the OCIO profile"},
        {"other text", Write("text", "hello: ["), "Error: Loading the OCIO profile"},
        {"deep nesting", Write("deep", "a: " + String(100000, '[')), "Error: Loading the OCIO profile"},
        {"unknown space in a role", WriteConfig("role", "", "", "scene_linear: none"),
         "Config failed validation"},
        {"self-reference",
         WriteConfig("self", Space("a", "!<ColorSpaceTransform> {src: A_ALIAS, dst: aces}")),
         "'a' is defined by itself"},
        {"circle",
         WriteConfig(
             "circle",
             Space("a", "!<ColorSpaceTransform> {src: b, dst: aces}") +
                 Space("b", "!<GroupTransform> {children: [!<ColorSpaceTransform> {src: aces, dst: a}]}")),
         "'a' is defined by itself"},
        {"circle through a look",
         WriteConfig("look", Space("a", "!<LookTransform> {src: aces, dst: aces, looks: '+warm'}"),
                     "looks: [!<Look> {name: warm, process_space: a, transform: " + Gain("2") + "}]\n"),
         "'a' is defined by itself"},
        {"circle through a view transform",
         WriteConfig("view", Space("a", "!<ColorSpaceTransform> {src: aces, dst: d}"),
                     "view_transforms: [!<ViewTransform> {name: v, from_scene_reference: "
                     "!<ColorSpaceTransform> {src: aces, dst: a}}]\n"
                     "display_colorspaces: [!<ColorSpace> {name: d}]\n"),
         "'a' is defined by itself"},
        {"circle through a display",
         Write("display", "ocio_profile_version: 2\nroles: {default: aces}\n"
                          "file_rules:\n  - !<Rule> {name: Default, colorspace: default}\n"
                          "displays: {own: [!<View> {name: own, colorspace: a}]}\n"
                          "colorspaces:\n  - !<ColorSpace> {name: aces}\n" +
                              Space("a", "!<DisplayViewTransform> {src: aces, display: own, view: own}")),
         "'a' is defined by itself"},
        {"long chain", WriteConfig("chain", chain),
         "the definition of 's100' is part of a chain of more than 100"},
        {"growing chain", WriteConfig("growing", growingChain),
         "the definition of 's101' is part of a chain of more than 100"},
        {"doubling", WriteConfig("doubling", doubling), "'s14' has more than 10000 steps"},
    };
    for (const auto& row : rows) {
        const auto loaded = LoadColorConfig(row.path);
        ASSERT_FALSE(loaded.IsOk()) << row.what;
        EXPECT_TRUE(loaded.GetError().Is(errorkind::IllegalArgument)) << row.what;
        const String start = Format("the colour configuration '@' cannot be used: @", row.path, row.message);
        EXPECT_EQ(loaded.GetError().GetMessage().substr(0, start.size()), start) << row.what;
        EXPECT_OK(ColorProfile::FromName("lin_rec709"));
    }
}

TEST_F(ColorProfileTest, ALoadedFileTakesThePlaceOfTheBuiltinSpaces) {
    const ColorProfileRef before = Profile("sRGB");
    ASSERT_OK(LoadColorConfig(WriteConfig("own", Space("a", Gain("2")) + Space("hidden", Gain("3")),
                                          "inactive_colorspaces: [hidden]\n")));
    String names;
    for (const ColorSpaceInfo& space : *ListColorSpaces())
        names += space.name + (space.aliases.empty() ? "" : " " + space.aliases[0]) + ", ";
    EXPECT_EQ(names, "aces, a a_alias, ");
    EXPECT_OK(ColorProfile::FromName("hidden"));
    EXPECT_FALSE(ColorProfile::FromName("sRGB").IsOk());
    EXPECT_EQ(before->GetName(), "sRGB");
}

TEST_F(ColorProfileTest, TheEnvironmentNamesTheFirstConfiguration) {
    LogRecorder log;
    const String own = WriteConfig("own", Space("a", Gain("2")));
    for (const auto& [path, space] :
         {std::pair<String, const char*>{own, "a"}, {"absent", "sRGB"}, {"", "sRGB"}}) {
        setenv("OCIO", path.c_str(), 1);
        SetCurrentColorConfig(nullptr);
        EXPECT_OK(ColorProfile::FromName(space));
        EXPECT_OK(ColorProfile::FromName(space));
    }
    unsetenv("OCIO");
    EXPECT_EQ(
        log.entries,
        BaseArray<String>{"error: the colour configuration 'absent' cannot be used: there is no such file; "
                          "the built-in colour configuration is used instead of what OCIO names"});
}

} // namespace
} // namespace norvi
