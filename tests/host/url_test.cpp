#include <gtest/gtest.h>

#include <norvi/host/url.h>

namespace norvi {
namespace {

TEST(Url, NameIsTheLastComponent) {
    const struct {
        const char* url;
        const char* name;
    } cases[] = {
        {"relative:kernels/heat.kernel", "heat.kernel"},
        {"relative:heat.kernel", "heat.kernel"},
        {"/a/b/c.d.e", "c.d.e"},
        {"heat.kernel", "heat.kernel"},
        {"kernels/", ""},
        {"", ""},
    };
    for (const auto& test : cases)
        EXPECT_EQ(Url(test.url).GetName(), test.name) << test.url;
    EXPECT_TRUE(Url().IsEmpty());
    EXPECT_FALSE(Url("a") == Url("b"));
}

} // namespace
} // namespace norvi
