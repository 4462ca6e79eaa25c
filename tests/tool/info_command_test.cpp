#include "norvi/info_command.h"

#include <nlohmann/json.hpp>

#include "tool_fixture.h"

namespace norvi {

namespace {

String Info(const String& what, const String& name = {}) {
    const auto text = InfoText({what, name, false}, LoadedContext().modules);
    return text ? *text : "error: " + MessageOf(text);
}

nlohmann::json InfoJson(const String& what, const String& name = {}) {
    const auto text = InfoText({what, name, true}, LoadedContext().modules);
    EXPECT_TRUE(text) << MessageOf(text);
    return nlohmann::json::parse(text ? *text : "null");
}

} // namespace

TEST(InfoCommand, OneKernelIsDescribedInTheOrderOfItsSource) {
    EXPECT_EQ(Info("kernel", "saxpy"),
              "  saxpy.kernel  (module kernels.norvi-kernels, work group 256x1x1, granularity "
              "1024, single-threaded up to 0)\n"
              "    x                buffer of float32\n"
              "    y                buffer of float32\n"
              "    a                uniform float32\n");
}

TEST(InfoCommand, JsonHoldsEverySection) {
    const auto all = InfoJson("");
    for (const char* section : {"machine", "modules", "kernels", "configuration", "classes", "interfaces"}) {
        ASSERT_TRUE(all.contains(section)) << section;
        EXPECT_FALSE(all[section].empty() && section != std::string_view("configuration")) << section;
        EXPECT_EQ(InfoJson(section), all[section]);
    }
    EXPECT_GE(all["machine"]["workers"], 1);
}

TEST(InfoCommand, JsonTellsOperationsAndParameters) {
    const auto kernel = InfoJson("interface", "net.norvi.interface.kernelinterface");
    ASSERT_EQ(kernel["operations"].size(), 7u);
    EXPECT_EQ(kernel["operations"][1]["name"], "Set");
    EXPECT_EQ(kernel["operations"][1]["parameters"][0]["name"], "paramName");
    const auto histogram = InfoJson("kernel", "histogram.kernel");
    EXPECT_EQ(histogram["parameters"][2]["name"], "outside");
    EXPECT_EQ(histogram["parameters"][2]["role"], "counter");
}

TEST(InfoCommand, UnknownNamesAreErrorsWithSuggestions) {
    EXPECT_EQ(Info("kernles"), "error: there is nothing called 'kernles'; did you mean 'kernels'?");
    EXPECT_EQ(Info("kernel"), "error: the name of the kernel is missing");
    EXPECT_EQ(Info("kernel", "saxpi"), "error: there is no kernel 'saxpi'; did you mean 'saxpy'?");
    EXPECT_EQ(Info("machine", "x"), "error: 'machine' takes no name, but 'x' was given");
}

} // namespace norvi
