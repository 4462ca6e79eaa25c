#include "shaderparser/author_text.h"

#include <gtest/gtest.h>

#include "shaderparser/memory_files.h"

namespace norvi {
namespace {

constexpr const char* Neutral = "an error in encoded text, of which nothing is shown";

struct Author {
    Author() {
        files.push_back({Url("open.kernel"), false, std::make_shared<String>("one\n\ttwo(known);\r\nthree")});
        files.push_back({Url("hidden_header"), true, nullptr});
        program.AppendLine("#define prologue", {});
        program.AppendLine("two(known);", {0, 2});
        program.AppendLine("secret known", {1, 5});
    }
    BaseArray<SourceFile> files;
    MappedText program;
};

TEST(AuthorText, ShowsPlaceAndLine) {
    Author author;
    author.files.pop_back();
    author.program.lines.pop_back();
    const auto describe = [&](Int line) {
        return DescribeForAuthor(author.program, author.files, line, "'secret' is bad");
    };
    EXPECT_EQ(describe(2), "open.kernel(2): 'secret' is bad\n\ttwo(known);");
    for (Int line : {Int{-1}, Int{0}, Int{1}, Int{3}, Int{1} << 62})
        EXPECT_EQ(describe(line), "'secret' is bad");
}

TEST(AuthorText, HidesWordsOfEncodedText) {
    const Author author;
    const struct {
        Int line;
        const char* message;
        String shown;
    } cases[] = {
        {2, "'known' is bad", "open.kernel(2): 'known' is bad\n\ttwo(known);"},
        {2, "'two': other words", "open.kernel(2): 'two': other words\n\ttwo(known);"},
        {2, "'secret' is bad", String("open.kernel(2): ") + Neutral + "\n\ttwo(known);"},
        {2, "secretive", "open.kernel(2): secretive\n\ttwo(known);"},
        {3, "anything", String("hidden_header(5): ") + Neutral},
        {1, "of the prologue", "of the prologue"},
        {1, "known", Neutral},
        {0, "secret", Neutral},
    };
    for (const auto& test : cases)
        EXPECT_EQ(DescribeForAuthor(author.program, author.files, test.line, test.message), test.shown)
            << test.message;
}

TEST(AuthorText, DescribesErrorsOfTheParser) {
    const Author author;
    const auto describe = [&](TextPlace place) {
        return DescribeForAuthor(Error(errorkind::IllegalState, "wrong", {}, 0, std::move(place)),
                                 author.files);
    };
    EXPECT_EQ(describe({}), "wrong");
    EXPECT_EQ(describe({"open.kernel", 3}), "open.kernel(3): wrong\nthree");
    EXPECT_EQ(describe({"open.kernel", 4}), "open.kernel(4): wrong");
    EXPECT_EQ(describe({"unknown", 4}), "unknown(4): wrong");
    EXPECT_EQ(describe({"hidden_header", 1}), String("hidden_header(1): ") + Neutral);
}

} // namespace
} // namespace norvi
