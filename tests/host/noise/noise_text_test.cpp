// The noise text itself: readable line by line, complete as the table says, and the same with the vectors of
// the kernel language as with the host's lanes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include <norvi/kernel/vector.h>

#include "host/noise/noise_table.h"

namespace norvi {

namespace plainnoise {
using namespace kernel;
// clang-format off
#include "../../../kernels/noise/lattice.noise"
#include "../../../kernels/noise/gradient.noise"
#include "../../../kernels/noise/octaves.noise"
#include "../../../kernels/noise/displacement.noise"
#include "../../../kernels/noise/points.noise"
#include "../../../kernels/noise/nearest.noise"
#include "../../../kernels/noise/box.noise"
#include "../../../kernels/noise/displacedturbulence.noise"
#include "../../../kernels/noise/perlin.noise"
#include "../../../kernels/noise/poxo.noise"
#include "../../../kernels/noise/cell.noise"
// clang-format on
} // namespace plainnoise

namespace {

const std::filesystem::path folder =
    std::filesystem::path(__FILE__).parent_path() / ".." / ".." / ".." / "kernels" / "noise";

BaseArray<String> Words(const String& line) {
    std::istringstream stream(line);
    BaseArray<String> words;
    for (String word; stream >> word;)
        words.push_back(word);
    return words;
}

BaseArray<String> Lines(const String& name) {
    std::ifstream file(folder / (name + ".noise"));
    EXPECT_TRUE(file) << name;
    BaseArray<String> lines;
    for (String line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/// The functions of a text in their order, found as a reader of lines finds them: from the line that begins
/// with `inline` to the line whose first word closes the first brace again.
BaseArray<String> Functions(const String& name) {
    BaseArray<String> functions;
    Int depth = 0;
    Bool isInside = false;
    for (const String& line : Lines(name)) {
        const auto words = Words(line);
        if (words.empty()) {
            EXPECT_FALSE(isInside && depth == 0) << name << ": blank line below a signature";
            continue;
        }
        const auto braces = [&](char brace) { return std::count(line.begin(), line.end(), brace); };
        EXPECT_EQ(braces('{') + braces('}'), words[0] == "{" || words[0] == "}" ? 1 : 0)
            << name << ": " << line;
        if (words[0] == "inline") {
            EXPECT_FALSE(isInside) << name << ": " << line;
            EXPECT_EQ(line.back(), ')') << name << ": " << line;
            functions.push_back(words.at(2).substr(0, words[2].find('(')));
            isInside = true;
        } else {
            EXPECT_TRUE(isInside || words[0] == "//") << name << ": " << line;
        }
        depth += words[0] == "{" ? 1 : words[0] == "}" ? -1 : 0;
        isInside = isInside && !(words[0] == "}" && depth == 0);
        for (const char* reserved :
             {"TYPE", "Sqrt", "sqmat", "ATOMIC", "rnd", "INOUT", "static_cast", "std::", "\t"})
            EXPECT_EQ(line.find(reserved), String::npos) << name << ": " << line;
    }
    EXPECT_FALSE(isInside) << name;
    return functions;
}

/// The functions that a line of code calls or declares, save the language's own, which are lower-case.
BaseArray<String> Calls(const String& line) {
    BaseArray<String> names;
    for (auto at = line.find('('); at != String::npos; at = line.find('(', at + 1)) {
        auto begin = at;
        while (begin > 0 && std::isalnum(static_cast<UChar>(line[begin - 1])))
            --begin;
        if (std::isupper(static_cast<UChar>(line[begin])))
            names.push_back(line.substr(begin, at - begin));
    }
    return names;
}

TEST(NoiseText, HoldsTheFunctionOfEachRowLastAndNothingTwice) {
    std::set<String> needed;
    for (const NoiseKind& kind : noiseKinds) {
        const auto files = Words(kind.files);
        EXPECT_EQ(std::set(files.begin(), files.end()).size(), files.size()) << kind.files;
        std::set<String> known;
        for (const String& file : files) {
            needed.insert(file + ".noise");
            const auto functions = Functions(file);
            ASSERT_FALSE(functions.empty()) << file;
            for (const String& function : functions)
                EXPECT_TRUE(known.insert(function).second) << function;
            if (file == files.back()) {
                EXPECT_EQ(functions.back(), kind.functionName);
            }
        }
        // What a text calls stands in the texts before it.
        for (const String& file : files)
            for (const String& line : Lines(file))
                for (const String& name : Calls(line))
                    EXPECT_TRUE(known.contains(name)) << file << ": " << line;
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        EXPECT_TRUE(needed.contains(entry.path().filename().string())) << entry.path();
}

TEST(NoiseText, GivesTheSameBitsWithTheVectorsOfTheKernelLanguage) {
    struct Row {
        std::string_view id;
        float (*plain)(plainnoise::vec3, float, plainnoise::uint, plainnoise::uint);
    };
    const Row rows[] = {{noiseclassid::Perlin, plainnoise::NoisePerlin},
                        {noiseclassid::Box, plainnoise::NoiseBox},
                        {noiseclassid::DisplacedTurbulence, plainnoise::NoiseDisplacedTurbulence},
                        {noiseclassid::Poxo, plainnoise::NoisePoxo},
                        {noiseclassid::Cell, plainnoise::NoiseCell}};
    for (const Row& row : rows) {
        const auto kind = std::find_if(noiseKinds.begin(), noiseKinds.end(),
                                       [&](const NoiseKind& k) { return row.id == k.info.id; });
        ASSERT_NE(kind, noiseKinds.end());
        for (Int32 i = 0; i < 5000; ++i) {
            const Vector32 p{static_cast<Float>(i) * 0.173f - 400, static_cast<Float>(i) * -0.0917f,
                             static_cast<Float>(i % 71) * 0.311f};
            const Float time = static_cast<Float>(i) * 0.037f - 90;
            ASSERT_EQ(kind->evaluate(p, time, 7, 1023),
                      row.plain(plainnoise::vec3(p.x, p.y, p.z), time, 7, 1023))
                << row.id << " " << i;
        }
    }
}

} // namespace
} // namespace norvi
