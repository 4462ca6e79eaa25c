#include <gtest/gtest.h>

#include <norvi/host/url.h>

namespace norvi {
namespace {

TEST(Url, NameIsTheLastComponent) {
    const std::pair<const char*, const char*> cases[] = {{"relative:kernels/heat.kernel", "heat.kernel"},
                                                         {"relative:heat.kernel", "heat.kernel"},
                                                         {"/a/b/c.d.e", "c.d.e"},
                                                         {"heat.kernel", "heat.kernel"},
                                                         {"kernels/", ""},
                                                         {"", ""}};
    for (const auto& [url, name] : cases)
        EXPECT_EQ(Url(url).GetName(), name) << url;
}

} // namespace
} // namespace norvi
