#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>

#include <gtest/gtest.h>

#include <norvi/host/id.h>
#include <norvi/host/text.h>

namespace norvi {
namespace {

TEST(Text, FormatReplacesPlaceholdersInOrder) {
    EXPECT_EQ(Format("Kernel @ has @ parameters", Id("heat"), 3), "Kernel heat has 3 parameters");
    EXPECT_EQ(Format("@ and @", "a@b", 1), "a@b and 1"); // a value is no pattern
    EXPECT_EQ(Format("@@@", true, UInt64{0} - 1), "true18446744073709551615@");
    EXPECT_EQ(Format("none", 1, 2), "none");
    EXPECT_EQ(Format("", 1), "");
    EXPECT_EQ(Format("@", std::numeric_limits<Int64>::min()), "-9223372036854775808");
}

struct CommaNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(Text, NumbersAreShortReadBackExactlyAndIgnoreTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new CommaNumbers));
    const std::pair<Float32, const char*> cases[] = {
        {1, "1"},      {0.1f, "0.1"},    {-0.0f, "-0"},     {1234567, "1234567"},
        {0.5f, "0.5"}, {1e20f, "1e+20"}, {INFINITY, "inf"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(ToText(value), text);
    for (Float32 value : {1 / 3.f, 16777217.f, std::numeric_limits<Float32>::denorm_min(),
                          std::numeric_limits<Float32>::max(), -1e-7f})
        EXPECT_EQ(std::strtof(ToText(value).c_str(), nullptr), value);
    for (Float64 value : {1 / 3., 0.1, std::numeric_limits<Float64>::denorm_min()})
        EXPECT_EQ(std::strtod(ToText(value).c_str(), nullptr), value);
    EXPECT_EQ(ToText(Int32{1234567}), "1234567");
    std::locale::global(before);
}

} // namespace
} // namespace norvi
