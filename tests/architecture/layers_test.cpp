// Include lines may only lead to a file's own layer or to one below it, and each library is seen by one
// place.
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

struct Layer {
    const char* folder;
    int height;
};

// The first row that matches counts, so special folders stand before those that hold them.
constexpr Layer layers[] = {
    {"include/norvi/host/", 0},
    {"source/host/", 0},
    {"include/norvi/drawport/", 1},
    {"kernels/noise/", 0},
    {"kernels/", 3},
    {"include/norvi/kernel/", 3},
    {"include/norvi/", 2},
    {"source/sampling/", 3},
    {"source/shaderparser/", 3},
    {"source/drawport/", 4},
    {"source/core/", 4},
    {"source/module/", 5},
    {"tools/", 6},
    {"examples/", 6},
    {"benchmarks/", 6},
};

int HeightOf(const std::string& path) {
    for (const Layer& layer : layers)
        if (path.starts_with(layer.folder))
            return layer.height;
    return -1;
}

struct Library {
    const char* header; ///< how its include lines begin
    const char* user;   ///< the one folder or file that may include it
};

constexpr Library libraries[] = {
    {"tbb/", "source/host/thread_services.cpp"},    {"CLI/", "tools/norvi/"},
    {"OpenImageIO/", "tools/norvi/picture.cpp"},    {"nlohmann/", "tools/norvi/"},
    {"dlfcn.h", "source/host/module.cpp"},          {"OpenColorIO/", "source/host/colour/"},
    {"openssl/", "source/host/stream_conversion/"},
};

struct Include {
    std::string from;   ///< relative to the root
    std::string target; ///< as written
};

std::vector<Include> ReadIncludes() {
    static const std::regex line(R"(^\s*#\s*include\s*[<"]([^>"]+)[>"])");
    std::vector<Include> includes;
    const fs::path root = NORVI_ROOT;
    for (const char* folder : {"include", "source", "kernels", "tools", "examples"})
        for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
            if (!entry.is_regular_file())
                continue;
            std::ifstream file(entry.path());
            std::smatch match;
            for (std::string text; std::getline(file, text);)
                if (std::regex_search(text, match, line))
                    includes.push_back({fs::relative(entry.path(), root).string(), match[1]});
        }
    return includes;
}

/// The file of this project that an include line means, relative to the root; empty for others.
std::string Resolve(const Include& include) {
    const fs::path root = NORVI_ROOT;
    for (const fs::path& base : {fs::path(include.from).parent_path(), fs::path("include"),
                                 fs::path("source"), fs::path("kernels"), fs::path("tools")})
        if (fs::is_regular_file(root / base / include.target))
            return (base / include.target).lexically_normal().string();
    return {};
}

TEST(Layers, NoIncludeLeadsUpwards) {
    int resolved = 0;
    for (const Include& include : ReadIncludes()) {
        const std::string target = Resolve(include);
        if (target.empty())
            continue;
        ++resolved;
        ASSERT_GE(HeightOf(target), 0) << target << " lies in no layer";
        EXPECT_LE(HeightOf(target), HeightOf(include.from)) << include.from << " includes " << target;
    }
    EXPECT_GT(resolved, 100) << "the include lines were not found";
}

TEST(Layers, EachLibraryIsSeenByOnePlace) {
    for (const Include& include : ReadIncludes())
        for (const Library& library : libraries)
            if (include.target.starts_with(library.header)) {
                EXPECT_TRUE(include.from.starts_with(library.user))
                    << include.from << " includes " << include.target << ", which belongs to "
                    << library.user;
            }
}

} // namespace
