#include <set>
#include <thread>

#include <gtest/gtest.h>

#include <norvi/host/id.h>
#include <norvi/host/text.h>

namespace norvi {
namespace {

TEST(Id, HashIsThePolynomialOf31BelowBit44WithTheLengthAbove) {
    const struct {
        String text;
        UInt64 length, polynomial;
    } cases[] = {
        {"", 0, 0},
        {"a", 1, 97},
        {"abc", 3, 97 * 961 + 98 * 31 + 99},
        {"\xff", 1, 255}, // bytes count as unsigned
        {String(17, '\0'), 1, 0},
        {"\1" + String(9, '\0'), 10, 8847436116255}, // 31^9 modulo 2^44
    };
    for (const auto& test : cases)
        EXPECT_EQ(Id::Hash(test.text), test.length << 44 | test.polynomial) << test.text;
}

TEST(Id, EqualHashesDoNotMakeEqualIds) {
    ASSERT_EQ(Id::Hash("Aa"), Id::Hash("BB"));
    EXPECT_FALSE(Id("Aa") == Id("BB"));
    EXPECT_TRUE(Id() == Id("") && Id().IsEmpty());
}

TEST(InternedId, IsTheSameForTheSameTextOnly) {
    const InternedId first("heat"), second(String("heat"));
    EXPECT_TRUE(first == second);
    EXPECT_EQ(&first.ToString(), &second.ToString());
    EXPECT_EQ(first.GetHashCode(), second.GetHashCode());
    EXPECT_FALSE(first == InternedId("Heat"));
    EXPECT_FALSE(InternedId(std::string_view("a\0b", 3)) == InternedId("a"));
    for (const InternedId& empty : {InternedId(), InternedId(""), *InternedId::Create("")})
        EXPECT_TRUE(empty.IsEmpty() && empty == InternedId() && empty.ToString().empty());
}

TEST(InternedId, ThreadsInternTheSameEntries) {
    constexpr int Names = 500;
    std::vector<const String*> seen[4];
    std::vector<std::thread> threads;
    for (auto& mine : seen)
        threads.emplace_back([&mine] {
            for (int i = 0; i < Names; ++i)
                mine.push_back(&InternedId(Format("thread test @", i)).ToString());
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& mine : seen)
        EXPECT_EQ(mine, seen[0]);
    EXPECT_EQ(std::set(seen[0].begin(), seen[0].end()).size(), Names);
    EXPECT_EQ(*seen[0][7], "thread test 7"); // addresses hold while the table grows
}

} // namespace
} // namespace norvi
