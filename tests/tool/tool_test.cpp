#include "norvi/tool.h"

#include "tool_fixture.h"

namespace norvi {

namespace {

struct Outcome {
    int status;
    String out;
    String err;
};

Outcome RunWords(const BaseArray<const char*>& words) {
    UnloadContext();
    BaseArray<const char*> arguments{"norvi"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = RunTool(static_cast<int>(arguments.size()), arguments.data());
    std::fflush(stdout);
    const String out = testing::internal::GetCapturedStdout();
    return {status, out, testing::internal::GetCapturedStderr()};
}

} // namespace

TEST(Tool, HelpVersionAndCommonOptionsBehindTheCommandSucceed) {
    const Outcome machine = RunWords({"info", "machine", "--workers", "3"});
    EXPECT_EQ(machine.status, 0);
    EXPECT_NE(machine.out.find("workers    3\n"), String::npos) << machine.out;
    EXPECT_EQ(RunWords({"--version"}).status, 0);
    EXPECT_TRUE(RunWords({"--version"}).out.starts_with("norvi "));
    for (const BaseArray<const char*>& words :
         BaseArray<BaseArray<const char*>>{{"--help"}, {"run", "--help"}, {"info", "--help"}}) {
        const Outcome outcome = RunWords(words);
        EXPECT_EQ(outcome.status, 0);
        // The lines below are tried by themselves; they need this form.
        EXPECT_NE(outcome.out.find("\nExamples:\n  norvi "), String::npos) << outcome.out;
    }
}

TEST(Tool, CommandLinesThatAreNotUnderstoodGiveStatus2) {
    EXPECT_EQ(RunWords({}).status, 2);
    EXPECT_EQ(RunWords({"run", "saxpy"}).status, 2);
    EXPECT_EQ(RunWords({"--workers", "-1", "info"}).status, 2);
    EXPECT_EQ(RunWords({"--workers", "many", "info"}).status, 2);
    const Outcome option = RunWords({"run", "saxpy", "--grid", "1", "--bufer", "x=float32:1"});
    EXPECT_EQ(option.status, 2);
    EXPECT_NE(option.err.find("did you mean '--buffer'?"), String::npos) << option.err;
    const Outcome command = RunWords({"inof"});
    EXPECT_EQ(command.status, 2);
    EXPECT_NE(command.err.find("did you mean 'info'?"), String::npos) << command.err;
}

TEST(Tool, FailingCommandsGiveStatus1AndOneLine) {
    const Outcome outcome = RunWords({"run", "saxpi", "--grid", "1"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "norvi: there is no kernel 'saxpi'; did you mean 'saxpy'?\n");
}

TEST(Tool, UnknownConfigurationAndModuleFoldersAreErrors) {
    EXPECT_EQ(RunWords({"--config", "x", "info"}).err, "norvi: --config 'x' is not NAME=VALUE\n");
    EXPECT_EQ(RunWords({"--config", "g_x=maybe", "info"}).err,
              "norvi: the value 'maybe' of the configuration variable 'g_x' is not one of 0, 1, false, true, "
              "off, on\n");
    EXPECT_TRUE(RunWords({"--config", "g_x=1", "info"})
                    .err.starts_with("norvi: --config: there is no variable 'g_x'"));
    EXPECT_EQ(RunWords({"--modules", "/no/such/folder", "info"}).err,
              "norvi: the module directory '/no/such/folder' cannot be read: No such file or directory\n");
}

} // namespace norvi
