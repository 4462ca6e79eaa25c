#include <norvi/host/near_name.h>

#include <gtest/gtest.h>

namespace norvi {
namespace {

TEST(NearName, SuggestsTheNearestCandidateWithinTheLimit) {
    const std::vector<std::string_view> candidates = {"sin", "sinh", "smoothstep", "clamp",
                                                      "max", "min",  "e",          "pi"};
    const std::pair<const char*, const char*> cases[] = {
        {"sni", "sin"},              // neighbours swapped
        {"sn", "sin"},               // one left out
        {"clampp", "clamp"},         // one too many
        {"nax", "max"},              // one replaced
        {"mix", "max"},              // two equally near: the first
        {"SINH", "sinh"},            // case counts nothing
        {"E", "e"},                  //
        {"smothstpe", "smoothstep"}, // two edits in nine bytes
        {"smohtsetp", "smoothstep"}, // three edits in nine bytes
        {"smhtsetp", ""},            // four edits
        {"snii", ""},                // swapped and one too many: two edits in four bytes
        {"x", ""},                   // a single letter is no basis for a guess
        {"cosine", ""},              //
        {"", ""},                    //
        {"sin", "sin"},              // an exact match is the nearest
    };
    for (const auto& [name, expected] : cases)
        EXPECT_EQ(SuggestNearName(name, candidates), expected) << name;
    EXPECT_EQ(SuggestNearName("sin", {}), "");
    const String longest(64, 'a'), beyond(65, 'a'), near = String(66, 'a') + "b", huge(1 << 20, 'a');
    EXPECT_EQ(SuggestNearName(longest, {near}), near);
    EXPECT_EQ(SuggestNearName(beyond, {near}), "");
    EXPECT_EQ(SuggestNearName(huge, {near, longest}), "");
    EXPECT_EQ(SuggestNearName(longest, {huge}), "");
}

} // namespace
} // namespace norvi
