#include "drawport/spirv/finish_module.h"

#include <gtest/gtest.h>

#include "drawport/programs.h"
#include "support/results.h"

namespace norvi {
namespace {

BaseArray<UInt32> CompileGlsl(const String& text) {
    const TemporaryFolder folder;
    EXPECT_EQ(CompileToModule(text, "GLSL", folder / "module.spv"), "");
    return ReadWords(folder / "module.spv");
}

/// Ids of the results of an operation, and of what is decorated as uncontracted.
BaseArray<UInt32> ResultsOf(const BaseArray<UInt32>& words, std::initializer_list<UInt32> operations) {
    BaseArray<UInt32> ids;
    for (size_t i = 5; i < words.size(); i += words[i] >> 16)
        if (std::find(operations.begin(), operations.end(), words[i] & 0xFFFF) != operations.end())
            ids.push_back(words[i + 2]);
    return ids;
}
BaseArray<UInt32> Uncontracted(const BaseArray<UInt32>& words) {
    BaseArray<UInt32> ids;
    for (size_t i = 5; i < words.size(); i += words[i] >> 16)
        if (words[i] == (3u << 16 | 71) && words[i + 2] == 42)
            ids.push_back(words[i + 1]);
    return ids;
}

constexpr const char* sums =
    "#version 460\nlayout(set = 0, binding = 0) buffer B { float a; float b; float d; };\n"
    "void main() { precise float c = a * b + a; d = a * b - c / a; }\n";

TEST(FinishModule, NothingIsContracted) {
    BaseArray<UInt32> words = CompileGlsl(sums);
    const BaseArray<UInt32> arithmetic = ResultsOf(words, {129, 131, 133, 136});
    EXPECT_EQ(arithmetic.size(), 5u);
    EXPECT_EQ(Uncontracted(words).size(), 2u) << "the compiler marks what is precise";
    ASSERT_OK(FinishModule(words));
    BaseArray<UInt32> uncontracted = Uncontracted(words);
    std::sort(uncontracted.begin(), uncontracted.end());
    EXPECT_EQ(uncontracted, arithmetic);
}

TEST(FinishModule, WhatIsFinishedStaysAsItIs) {
    BaseArray<UInt32> words = CompileGlsl(sums);
    ASSERT_OK(FinishModule(words));
    const BaseArray<UInt32> finished = words;
    ASSERT_OK(FinishModule(words));
    EXPECT_EQ(words, finished);
}

// Whatever the words are, nothing is read beyond them.
TEST(FinishModule, DamagedModulesAreRefused) {
    const char* kind = "net.norvi.error.illegalargument";
    const BaseArray<UInt32> good = CompileGlsl(sums);
    BaseArray<UInt32> empty, noModule(8, 1);
    EXPECT_TRUE(FailsWith(FinishModule(empty), kind, "this is no SPIR-V module"));
    EXPECT_TRUE(FailsWith(FinishModule(noModule), kind, "this is no SPIR-V module"));
    BaseArray<UInt32> noTypes(good.begin(), good.begin() + 5);
    noTypes.insert(noTypes.end(), {5u << 16 | 129u, 1, 2, 3, 4}); // a sum
    EXPECT_TRUE(FailsWith(FinishModule(noTypes), kind, "the SPIR-V module is damaged"));
    int failed = 0;
    for (size_t length = 5; length < good.size(); ++length) {
        BaseArray<UInt32> part(good.begin(), good.begin() + static_cast<Int>(length));
        const BaseArray<UInt32> before = part;
        if (const Result<void> result = FinishModule(part); !result.IsOk()) {
            EXPECT_TRUE(FailsWith(result, kind, "the SPIR-V module is damaged"));
            EXPECT_EQ(part, before);
            ++failed;
        }
    }
    EXPECT_GT(failed, static_cast<int>(good.size() / 2));
    for (size_t i = 5; i < good.size(); ++i)
        for (const UInt32 value : {0u, 1u << 16, 0xFFFFFFFFu, good[i] ^ 1u, good[i] ^ 1u << 16}) {
            BaseArray<UInt32> changed = good;
            changed[i] = value;
            (void)FinishModule(changed).IsOk();
        }
}

} // namespace
} // namespace norvi
