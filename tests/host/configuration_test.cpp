#include <cstdlib>

#include <norvi/host/configuration.h>

#include "log_recorder.h"
#include "support/results.h"

namespace norvi {
namespace {

TEST(Configuration, ValueReachesTheVariableWhicheverComesFirst) {
    const struct {
        const char* environment; ///< null: not set
        const char* before;      ///< set before the variable is published
        const char* after;
        bool initial;
        bool published; ///< value once published
        bool final;
        bool warns = false;
    } cases[] = {
        {nullptr, nullptr, nullptr, true, true, true},     {nullptr, nullptr, "1", false, false, true},
        {nullptr, "true", nullptr, false, true, true},     {nullptr, "off", "on", true, false, true},
        {"1", nullptr, nullptr, false, true, true},        {"false", nullptr, "true", true, false, true},
        {"1", "0", nullptr, true, false, false}, // the application has the last word
        {"yes", nullptr, nullptr, true, true, true, true}, {"", nullptr, nullptr, true, true, true, true},
    };
    Int number = 0;
    for (const auto& test : cases) {
        LogRecorder log;
        const String name = Format("g_hostTest@", ++number);
        const String variable = Format("NORVI_HOSTTEST@", number);
        if (test.environment)
            setenv(variable.c_str(), test.environment, 1);
        EXPECT_TRUE(!test.before || SetConfiguration(name, test.before).IsOk());
        Bool value = test.initial;
        ASSERT_TRUE(ConfigurationRegister(name, "help", &value).IsOk());
        EXPECT_EQ(value, test.published) << name;
        EXPECT_TRUE(!test.after || SetConfiguration(name, test.after).IsOk());
        EXPECT_EQ(value, test.final) << name;
        EXPECT_EQ(log.entries.size(), test.warns) << name;
        ConfigurationUnregister(name);
        unsetenv(variable.c_str());
    }
}

TEST(Configuration, RefusesUnknownValuesAndASecondVariable) {
    Bool value = true, second = false;
    ASSERT_OK(SetConfiguration("g_hostTest", "1"));
    ASSERT_OK(ConfigurationRegister("g_hostTest", "help", &value));
    for (const char* text : {"", "2", "TRUE", "yes", " 1", "1 "})
        EXPECT_TRUE(
            FailsWith(SetConfiguration("g_hostTest", text), errorkind::IllegalArgument,
                      Format("the value '@' of the configuration variable 'g_hostTest' is not one of 0, 1, "
                             "false, true, off, on",
                             text)));
    EXPECT_TRUE(FailsWith(ConfigurationRegister("g_hostTest", "other", &second), errorkind::IllegalArgument,
                          "the configuration variable 'g_hostTest' is published already"));
    EXPECT_TRUE(value && !second);
    ConfigurationUnregister("g_hostTest");
    EXPECT_OK(SetConfiguration("g_hostTest", "0"));
    EXPECT_TRUE(value) << "no longer written to";
}

TEST(Configuration, ListsWhatIsPublishedWithItsDefault) {
    Bool a = true, b = false;
    ASSERT_OK(SetConfiguration("g_hostTestB", "1"));
    ASSERT_OK(ConfigurationRegister("g_hostTestB", "help of b", &b));
    ASSERT_OK(ConfigurationRegister("g_hostTestA", "help of a", &a));
    String text;
    for (const auto& variable : GetConfigurationVariables())
        text += Format("@ (@) @ @; ", variable.name, variable.help, variable.defaultValue, *variable.address);
    EXPECT_EQ(text, "g_hostTestA (help of a) true true; g_hostTestB (help of b) false true; ");
    for (const char* name : {"g_hostTestA", "g_hostTestB", "g_hostTestB"})
        ConfigurationUnregister(name);
    EXPECT_TRUE(GetConfigurationVariables().empty());
}

} // namespace
} // namespace norvi
