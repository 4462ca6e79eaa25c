#include "shaderparser/include_file.h"

#include <gtest/gtest.h>

#include "host/log_recorder.h"
#include "shaderparser/memory_files.h"
#include "support/results.h"

namespace norvi {
namespace {

constexpr const char* WarnBlock = "#define NORVI_WARN_MUTE_FUNCTION_LENGTH \n\n";

struct Includes {
    explicit Includes(std::initializer_list<std::pair<const String, String>> texts,
                      const char* language = "GLSL")
        : sources(texts) {
        shader.language = Id(language);
    }

    /// Urls of the headers of `file`, separated by blanks.
    Result<String> Read(const char* file) {
        NORVI_TRY_VALUE(entries, IncludeReader(shader, sources.Get()).ReadIncludes(Url(file)));
        String text;
        for (const IncludeFileEntry& entry : entries)
            text += (text.empty() ? "" : " ") + entry.url.ToString();
        return text;
    }

    /// Reads one header, "h_header".
    Result<void> ReadFile() {
        NORVI_TRY_VALUE(entries, IncludeReader(shader, sources.Get()).ReadIncludes("h.kernel"));
        const MacroLists lists(context);
        return ReadIncludeFile(shader, entries.at(0), sources.files, lists.signature, context);
    }

    MemorySources sources;
    ShaderPieces shader;
    MacroContext context{shader};
};

TEST(Includes, DeriveCompanions) {
    const struct {
        const char* file;
        const char* companion;
    } cases[] = {
        {"dir/foo.src", "dir/foo_header"},
        {"foo", "foo_header"},
        {"a.b/foo", "a.b/foo_header"},
        {"bar.h", "bar_header"},
        {"x/MyPNanoVDB.hpp", "x/MyPNanoVDB.h"},
        {"s.vert", "s.inc"},
        {"s.fragment", "s.inc"},
        {"two.dots.kernel", "two.dots_header"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(GetCompanionUrl(test.file).ToString(), test.companion);
}

TEST(Includes, FollowRegionsDependenciesFirst) {
    Includes includes(
        {{"d/k_header", "#include \"no.h\"\n// INCLUDE_STRUCTS_BEGIN\nother\n#include \"a.h\"\n"
                        "  #include \"../d/sub/b.h\" // why\n// INCLUDE_STRUCTS_END\n#include \"no.h\""},
         {"d/a_header", "// INCLUDE_FUNCTIONS_BEGIN\n// INCLUDE_STRUCTS_BEGIN\n#include \"sub/c.h\""},
         {"d/sub/b_header", ""},
         {"d/sub/c_header", ""},
         {"d/no_header", ""}});
    const auto urls = includes.Read("d/k.kernel");
    ASSERT_OK(urls);
    EXPECT_EQ(*urls, "d/sub/c_header d/a_header d/sub/b_header d/k_header");
    EXPECT_EQ(includes.shader.globalBlocks.size(), 4u);
    EXPECT_EQ(includes.shader.globalBlocks[0].text, WarnBlock);
}

TEST(Includes, CountGuardedFilesOnce) {
    const String guarded = "#ifndef G\n#define G\nstruct X";
    Includes includes(
        {{"k_header", "// INCLUDE_STRUCTS_BEGIN\n#include \"a.h\"\n#include \"b.h\"\n#include \"c.h\"\n"
                      "#include \"d.h\""},
         {"a_header", guarded},
         {"b_header", guarded},
         {"c_header", "text\n\n#ifndef G\n#define H\n"},
         {"d_header", "#ifndef\n#ifndef G"}});
    const auto urls = includes.Read("k.kernel");
    ASSERT_OK(urls);
    EXPECT_EQ(*urls, "a_header c_header d_header k_header");
}

TEST(Includes, EndInCirclesAndAtLimits) {
    const String self = "// INCLUDE_STRUCTS_BEGIN\n#include \"k.h\"\n#include \"d/../k.x\"\n#include \"o.h\"";
    Includes circle({{"k_header", self}, {"o_header", "// INCLUDE_STRUCTS_BEGIN\n#include \"./k.h\""}});
    const auto urls = circle.Read("k.kernel");
    ASSERT_OK(urls);
    EXPECT_EQ(*urls, "o_header k_header");

    Includes deep({});
    Includes wide({});
    for (int i = 0; i < 70; ++i) {
        const String next = Format("// INCLUDE_STRUCTS_BEGIN\n#include \"@.h\"", i + 1);
        deep.sources.files.texts[Format("@_header", i)] = next;
        wide.sources.files.texts[Format("@_header", i)] =
            i < 20 ? next + "\n" + next.substr(next.find('#')) : "";
    }
    const auto tooDeep = deep.Read("0.kernel");
    EXPECT_TRUE(
        FailsWith(tooDeep, errorkind::IllegalState, "includes are nested more than 64 deep at 64_header"));
    EXPECT_EQ(tooDeep.GetError().GetPlace().file, "63_header");
    EXPECT_EQ(tooDeep.GetError().GetPlace().line, 2);
    EXPECT_FALSE(wide.Read("0.kernel").IsOk());
}

TEST(Includes, ChoosePrologueByLanguage) {
    const struct {
        const char* language;
        const char* text;
    } cases[] = {{"GLSL", "#define PNANOVDB_GLSL\n\n"},
                 {"HLSL", "#define PNANOVDB_HLSL\n\n"},
                 {"METAL", "#define PNANOVDB_METAL\n\n"},
                 {"OTHER", ""}};
    for (const auto& test : cases) {
        Includes includes({{"PNanoVDB.h", "text"}}, test.language);
        EXPECT_OK(includes.Read("PNanoVDB.h"));
        ASSERT_EQ(includes.shader.globalBlocks.size(), 2u);
        EXPECT_EQ(includes.shader.globalBlocks[0].text, test.text);
        EXPECT_EQ(includes.shader.globalBlocks[1].text, WarnBlock);
    }
}

TEST(Includes, AreReadOnceInTheLifeOfTheCache) {
    Includes includes({{"k_header", "x"}});
    for (int i = 0; i < 3; ++i) {
        EXPECT_OK(includes.Read("k.kernel"));
        EXPECT_OK(includes.Read("missing.kernel"));
    }
    EXPECT_EQ(includes.sources.files.readCount, 2);
    includes.sources.files.texts["missing_header"] = "late";
    const auto urls = includes.Read("missing.kernel");
    ASSERT_OK(urls);
    EXPECT_EQ(*urls, "");
}

TEST(IncludeFile, TakesDefinesStructsAndFunctions) {
    Includes includes({{"h_header", "\n\n"
                                    "#define\tFOO  1  // as it stands\r\n"
                                    "  #define BAR(x) \\\n"
                                    "#define FOO_H__ 1\n"
                                    "#define FOO_H_ 1\n"
                                    "#define EMPTY\n"
                                    "struct Foo\n{\n\tint a;\n\n  int b;\n};\n"
                                    "struct Lost {\nint first;\nint second;\n}; // end\n"
                                    "inline void f(INOUT(float) x)\n"
                                    "{\n\tINOUT(x)\n\n  NORVI_SWITCH_FALLTHROUGH;\n{\n}\n}\n"
                                    "inline void prototype();\n\n"
                                    "#define LAST 2"}});
    ASSERT_OK(includes.ReadFile());
    const ShaderPieces& shader = includes.shader;
    const char* defines[] = {"#define\tFOO  1  // as it stands\r", "  #define BAR(x) \\", "#define FOO_H_ 1",
                             "#define LAST 2"};
    ASSERT_EQ(shader.defines.size(), std::size(defines));
    for (size_t i = 0; i < std::size(defines); ++i)
        EXPECT_EQ(shader.defines[i].text, defines[i]);
    EXPECT_EQ(shader.defines[0].lines[0], (LineOrigin{0, 3}));
    ASSERT_EQ(shader.structs.size(), 2u);
    EXPECT_EQ(shader.structs[0].name, "Foo");
    EXPECT_EQ(shader.structs[0].lines, (BaseArray<String>{"\n", "int a;", "int b;", "\n"}));
    EXPECT_EQ(shader.structs[0].lineOrigins, (BaseArray<LineOrigin>{{0, 8}, {0, 10}, {0, 12}, {0, 13}}));
    EXPECT_EQ(shader.structs[1].lines, (BaseArray<String>{"\n", "int second;", "\n"}));
    ASSERT_EQ(shader.inlineFunctions.size(), 2u);
    EXPECT_EQ(shader.inlineFunctions[0].signature, "void f(inout float x)");
    EXPECT_EQ(shader.inlineFunctions[0].origin, (LineOrigin{0, 18}));
    EXPECT_EQ(shader.inlineFunctions[0].text.text, "{\nINOUT(x)\n{\n}\n}");
    EXPECT_EQ(shader.inlineFunctions[0].text.lines,
              (BaseArray<LineOrigin>{{0, 19}, {0, 20}, {0, 23}, {0, 24}, {0, 25}}));
    EXPECT_EQ(shader.inlineFunctions[1].signature, "void prototype();");
    EXPECT_TRUE(shader.inlineFunctions[1].text.IsEmpty());
    EXPECT_EQ(GetOriginText(shader.sourceFiles, {0, 10}), "\tint a;");
    EXPECT_EQ(GetOriginText(shader.sourceFiles, {0, 3}), "#define\tFOO  1  // as it stands");
}

TEST(IncludeFile, GivesFullTextAndStops) {
    const String text = "\n#define A 1\n#define NORVI_INCLUDE_AS_FULLTEXT\n#define B 2\nstruct X\n\xFF";
    Includes includes({{"h_header", text}});
    ASSERT_OK(includes.ReadFile());
    ASSERT_EQ(includes.shader.globalBlocks.size(), 2u);
    EXPECT_EQ(includes.shader.globalBlocks[1].text, text);
    EXPECT_EQ(includes.shader.globalBlocks[1].lines.size(), 6u);
    ASSERT_EQ(includes.shader.defines.size(), 1u);
    EXPECT_EQ(includes.shader.defines[0].text, "#define A 1");
    EXPECT_TRUE(includes.shader.structs.empty());
}

TEST(IncludeFile, RefusesUnfinishedBlocks) {
    constexpr const char* missingEnd = "could not find end of a struct. missing }; as single line";
    const struct {
        const char* text;
        const char* message;
        Int line;
    } cases[] = {
        {"\n\n// x\nstruct Foo\n{\nint a;\n} ;", missingEnd, 4},
        {"struct Foo", missingEnd, 1},
        {"inline void f()\n{", missingEnd, 1},
        {"#define A 1\ninline void f()\n{\ninline void g()\n{\n}", missingEnd, 2},
        {"inline void f()\n{\nstruct X", missingEnd, 1},
        {"struct\tFoo\n{\n};", "Illegal state: Condition words[0] == \"struct\"_s not fulfilled. ", 1},
        {"inline\tvoid f()\n{\n}", "Illegal state: Condition words[0] == \"inline\"_s not fulfilled. ", 1},
        {"inline void f(Block<x)\n{\n}", "the rewriting of Block< does not end", 1},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        Includes includes({{"h_header", test.text}});
        LogRecorder log;
        const Result<void> result = includes.ReadFile();
        ASSERT_TRUE(FailsWith(result, errorkind::IllegalState, test.message));
        const Error& error = result.GetError();
        EXPECT_EQ(error.GetPlace().file, "h_header");
        EXPECT_EQ(error.GetPlace().line, test.line);
        ASSERT_EQ(log.entries.size(), 1u);
        EXPECT_EQ(log.entries[0],
                  Format("error: Error parsing shader h_header: h_header(@): @ [@(@)]", test.line,
                         test.message, error.GetLocation().file, error.GetLocation().line));
        EXPECT_TRUE(includes.shader.defines.empty());
    }
    // No line of a header's walk is empty, but the reader checks it.
    LineReader empty("");
    ASSERT_TRUE(empty.Next());
    EXPECT_TRUE(FailsWith(ReadStruct(empty, 0), errorkind::IllegalState,
                          "Illegal state: Condition line.IsPopulated() not fulfilled. "));
}

} // namespace
} // namespace norvi
