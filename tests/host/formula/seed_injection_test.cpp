#include <gtest/gtest.h>

#include <norvi/host/formula.h>

namespace norvi {
namespace {

TEST(SeedInjection, AddsTheSeedToRandomCallsWithOneArgument) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"value * 2", "value * 2"},
        {"rnd(x) + rnd(y; 3)", "rnd(x; seed) + rnd(y; 3)"},
        {"rnd(x;y) + rnd(z)", "rnd(x;y) + rnd(z; seed)"},
        {"rnd()", "rnd()"},
        {"rnd( )", "rnd( ; seed)"},
        {"rnd() + rnd(x)", "rnd() + rnd(x; seed)"},
        {"grnd(x)", "grnd(x; seed)"},
        {"rnds + max(1 + 2)", "rnds + max(1 + 2; seed)"}, // text, not syntax: the next list is taken
        {"rnd rnd (x)", "rnd rnd (x; seed)"},
        {"rnd(rnd(x))", "rnd(rnd(x; seed))"}, // the first ")" ends the list
        {"rnd(sin(x); 3)", "rnd(sin(x; seed); 3)"},
        {"rnd", "rnd"},
        {"rnd(x", "rnd(x"},
        {"rnd)x(", "rnd)x("},
        {")rnd(x)(", ")rnd(x; seed)("},
        {"rn d(x)", "rn d(x)"},
        {"RND(x)", "RND(x)"},
    };
    for (const auto& [formula, expected] : cases)
        EXPECT_EQ(*InjectSeed(formula, "seed"), expected) << formula;
    EXPECT_EQ(*InjectSeed("rnd(x)", "rndRound"), "rnd(x; rndRound)");
}

TEST(SeedInjection, TakesLinearTimeForHostileText) {
    String calls;
    for (int i = 0; i < 500000; ++i)
        calls += "rnd";
    EXPECT_EQ(*InjectSeed(calls, "seed"), calls);
    EXPECT_EQ(*InjectSeed(calls + "()", "seed"), calls + "()"); // minutes, were the rest searched each time
    EXPECT_EQ(*InjectSeed(calls + "(x)", "seed"), calls + "(x; seed)");
}

} // namespace
} // namespace norvi
