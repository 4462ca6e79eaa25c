#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "log_recorder.h"

namespace norvi {
namespace {

TEST(Log, SinkIsReplacedAndGivenBack) {
    LogRecorder outer;
    {
        LogRecorder inner;
        Log(LogLevel::Warning, "inside");
        EXPECT_EQ(inner.entries, BaseArray<String>{"warning: inside"});
    }
    LogCritical("Assertion failed: x", {"heat.cpp", 12});
    EXPECT_EQ(outer.entries, BaseArray<String>{"critical: Assertion failed: x [heat.cpp(12)]"});
}

TEST(Log, DefaultSinkWritesTheLevelToStandardError) {
    LogSink previous = SetLogSink(nullptr);
    testing::internal::CaptureStderr();
    Log(LogLevel::Info, "a");
    Log(LogLevel::Critical, "b");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "norvi info: a\nnorvi critical: b\n");
    SetLogSink(std::move(previous));
}

TEST(Log, SinkSeesOneCallAtATime) {
    Int calls = 0; // not atomic: the log itself must keep the calls apart
    std::atomic<bool> inside{false}, overlapped{false};
    LogSink previous = SetLogSink([&](LogLevel, const String&) {
        if (inside.exchange(true))
            overlapped = true;
        ++calls;
        std::this_thread::yield();
        inside = false;
    });
    std::thread threads[4];
    for (std::thread& thread : threads)
        thread = std::thread([] {
            for (int i = 0; i < 500; ++i)
                Log(LogLevel::Info, "message");
        });
    for (std::thread& thread : threads)
        thread.join();
    SetLogSink(std::move(previous));
    EXPECT_EQ(calls, 2000);
    EXPECT_FALSE(overlapped);
}

} // namespace
} // namespace norvi
