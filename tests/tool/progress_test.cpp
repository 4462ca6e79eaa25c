#include "norvi/progress.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

namespace norvi {
namespace {

TEST(Progress, ClockTexts) {
    const std::pair<double, const char*> cases[] = {
        {-1, "0:00"},    {0, "0:00"},       {4.4, "0:04"},         {59.6, "1:00"},
        {3599, "59:59"}, {3723, "1:02:03"}, {360000, "100:00:00"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(ClockText(seconds), text);
}

TEST(Progress, LinesTellRateAndRemainingTime) {
    struct Case {
        ProgressState state;
        Int columns;
        const char* line;
    };
    const Case cases[] = {
        {{"Run", "steps", 0, 10, 0, ""}, 40, "Run  [                      ]   0%  0/10"},
        {{"Run", "steps", 5, 10, 2.5, ""},
         60,
         "Run  [========>         ]  50%  5/10  2.0 steps/s  0:03 left"},
        {{"Run", "steps", 5, 10, 2.5, "7 live"},
         69,
         "Run  [========>          ]  50%  5/10  2.0 steps/s  0:03 left  7 live"},
        // Not 100 percent before the end.
        {{"Run", "steps", 999, 1000, 10, ""}, 54, "Run  [======> ]  99%  999/1000  100 steps/s  0:00 left"},
        {{"Run", "steps", 10, 10, 0.01, ""}, 50, "Run  [===========] 100%  10/10  1000 steps/s  0:00"},
        // The bar goes first, then the end of the words.
        {{"Run", "files", 2, 4, 7200, ""}, 48, "Run   50%  2/4  0.0 files/s  2:00:00 left"},
        {{"Run", "steps", 5, 10, 2.5, ""}, 20, "Run   50%  5/10  2.0"},
        {{"Run", "steps", 5, 10, 2.5, ""}, 0, ""},
    };
    for (const Case& c : cases) {
        const String line = ProgressLine(c.state, c.columns);
        EXPECT_EQ(line, c.line);
        EXPECT_LE(static_cast<Int>(line.size()), c.columns);
    }
    const String wide = ProgressLine({"Run", "steps", 5, 10, 0, ""}, 500);
    EXPECT_EQ(wide.find(']') - wide.find('[') - 1, 40u);
}

TEST(Progress, WithoutATerminalEachQuarterIsALineUnlessQuiet) {
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    {
        Progress quiet("Quiet", 4, "steps", true, file);
        EXPECT_FALSE(quiet.IsDue(4));
        quiet.Update(4);
        Progress progress("Run", 1000, "steps", false, file);
        for (Int i = 1; i <= 1000; ++i)
            progress.Update(i);
    }
    std::rewind(file);
    String text(10000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4) << text;
    for (const char* part : {" 25%  250/1000", " 50%  500/1000", " 75%  750/1000", "100%  1000/1000"})
        EXPECT_NE(text.find(part), String::npos) << text;
    EXPECT_EQ(text.find('\r'), String::npos);
    EXPECT_EQ(text.find("Quiet"), String::npos);
    std::fclose(file);
}

TEST(Progress, OnATerminalOneLineIsDrawnInPlaceAndEndedOnce) {
    int master = -1, slave = -1;
    const winsize size{24, 70, 0, 0};
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, &size), 0);
    std::FILE* terminal = fdopen(slave, "w");
    double seconds = 0;
    {
        Progress progress("Run", 100000, "steps", false, terminal);
        for (Int i = 1; i <= 100000; ++i)
            progress.Update(i);
        seconds = progress.GetSeconds();
    }
    std::fclose(terminal);
    String text;
    char part[4096];
    for (ssize_t count; (count = read(master, part, sizeof(part))) > 0;)
        text.append(part, static_cast<std::size_t>(count));
    close(master);
    // The terminal turns the line break into "\r\n".
    ASSERT_GE(text.size(), 2u);
    EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
    text.resize(text.size() - 2);
    EXPECT_EQ(text.find('\n'), String::npos);
    EXPECT_LE(std::count(text.begin(), text.end(), '\r'), 2 + static_cast<Int>(seconds / 0.1));
    EXPECT_NE(text.find("100%  100000/100000"), String::npos) << text;
}

} // namespace
} // namespace norvi
