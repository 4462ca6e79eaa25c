#include <cstdlib>

#include <gtest/gtest.h>

#include <norvi/host/configuration.h>

#include "log_recorder.h"

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

TEST(Configuration, RefusesUnknownValues) {
    Bool value = true;
    ASSERT_TRUE(ConfigurationRegister("g_hostTestStrict", "help", &value).IsOk());
    for (const char* text : {"", "2", "TRUE", "yes", " 1", "1 "}) {
        const Result<void> set = SetConfiguration("g_hostTestStrict", text);
        ASSERT_FALSE(set.IsOk()) << text;
        EXPECT_TRUE(set.GetError().Is(errorkind::IllegalArgument));
        EXPECT_EQ(set.GetError().GetMessage(),
                  Format("the value '@' of the configuration variable 'g_hostTestStrict' is not one of 0, 1, "
                         "false, true, off, on",
                         text));
    }
    EXPECT_TRUE(value);
    ConfigurationUnregister("g_hostTestStrict");
}

TEST(Configuration, ListsWhatIsPublishedAndRefusesASecondOne) {
    Bool a = true, b = false, second = false;
    ASSERT_TRUE(SetConfiguration("g_hostTestB", "1").IsOk());
    ASSERT_TRUE(ConfigurationRegister("g_hostTestB", "help of b", &b).IsOk());
    ASSERT_TRUE(ConfigurationRegister("g_hostTestA", "help of a", &a).IsOk());
    const Result<void> again = ConfigurationRegister("g_hostTestB", "other", &second);
    ASSERT_FALSE(again.IsOk());
    EXPECT_TRUE(again.GetError().Is(errorkind::IllegalArgument));
    EXPECT_EQ(again.GetError().GetMessage(), "the configuration variable 'g_hostTestB' is published already");
    EXPECT_FALSE(second);

    const BaseArray<ConfigurationVariable> variables = GetConfigurationVariables();
    ASSERT_EQ(variables.size(), 2u);
    EXPECT_EQ(variables[0].name, "g_hostTestA");
    EXPECT_TRUE(variables[0].defaultValue);
    EXPECT_EQ(variables[1].help, "help of b");
    EXPECT_EQ(variables[1].address, &b);
    EXPECT_FALSE(variables[1].defaultValue); // not the value that was set
    ConfigurationUnregister("g_hostTestA");
    ConfigurationUnregister("g_hostTestB");
    ConfigurationUnregister("g_hostTestB");
    EXPECT_TRUE(GetConfigurationVariables().empty());
    EXPECT_TRUE(SetConfiguration("g_hostTestB", "0").IsOk());
    EXPECT_TRUE(b); // no longer written to
}

} // namespace
} // namespace norvi
