// What is written for each kernel, beside the texts in golden/. With the environment variable
// NORVI_RENEW_GOLDEN they are written anew.
#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include <norvi/host/text.h>

#include "drawport/programs.h"
#include "support/results.h"

namespace norvi {
namespace {

namespace fs = std::filesystem;

const fs::path golden = fs::path(NORVI_DRAWPORT_TESTS) / "golden";

/// "line 3: 'a' instead of 'b'" for the first line that differs.
String FirstDifference(const String& written, const String& expected) {
    std::istringstream a(written), b(expected);
    String lineA, lineB;
    for (int line = 1;; ++line) {
        const bool isA = bool(std::getline(a, lineA)), isB = bool(std::getline(b, lineB));
        if (!isA && !isB)
            return {};
        if (isA != isB || lineA != lineB)
            return Format("line @: @ instead of @", Int{line}, isA ? "'" + lineA + "'" : "the end",
                          isB ? "'" + lineB + "'" : "the end");
    }
}

class GoldenTest : public testing::TestWithParam<const char*> {
  protected:
    void Compare(const String& name, const String& text) {
        const fs::path path = golden / GetParam() / (name + ".txt");
        seen_.insert(path.filename().string());
        if (std::getenv("NORVI_RENEW_GOLDEN")) {
            fs::create_directories(path.parent_path());
            WriteText(path, text);
        }
        if (!fs::exists(path))
            ADD_FAILURE() << path << " is missing";
        else
            EXPECT_EQ(FirstDifference(text, ReadText(path)), "") << path;
    }
    /// A file that belongs to no kernel is left over.
    void ExpectNothingElse() {
        for (const auto& entry : fs::directory_iterator(golden / GetParam()))
            EXPECT_TRUE(seen_.contains(entry.path().filename().string()))
                << entry.path() << " is not looked at";
    }

  private:
    std::set<String> seen_;
};

// What all programs begin with stands in a text of its own.
TEST_P(GoldenTest, ProgramsAreWrittenAsBefore) {
    const String prologue = PrologueOf(*FindShaderLanguage(Id(GetParam())));
    Compare("prologue", prologue);
    for (const KernelCase& kernel : AllKernels()) {
        auto program = WriteKernel(kernel, GetParam());
        ASSERT_OK(program);
        ASSERT_TRUE(program->text.starts_with(prologue));
        EXPECT_EQ(program->lines.size(),
                  static_cast<size_t>(std::count(program->text.begin(), program->text.end(), '\n')));
        Compare(kernel.Name(), program->text.substr(prologue.size()));
    }
    ExpectNothingElse();
}
INSTANTIATE_TEST_SUITE_P(Languages, GoldenTest, testing::ValuesIn(shaderLanguages),
                         [](const auto& test) { return test.param; });

TEST(GoldenTexts, FirstDifferenceIsShown) {
    EXPECT_EQ(FirstDifference("a\nb\n", "a\nb\n"), "");
    EXPECT_EQ(FirstDifference("a\nb\n", "a\nc\nd\n"), "line 2: 'b' instead of 'c'");
    EXPECT_EQ(FirstDifference("a\n", "a\nc\n"), "line 2: the end instead of 'c'");
}

} // namespace
} // namespace norvi
