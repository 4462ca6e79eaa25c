#include <norvi/host/log.h>

#include <cstdio>
#include <mutex>

#include <norvi/host/text.h>

namespace norvi {

namespace {

std::mutex g_sinkMutex;

// Never destroyed: static objects log while the process ends.
LogSink& Sink() {
    static auto* sink = new LogSink;
    return *sink;
}

void WriteToStandardError(LogLevel level, const String& message) {
    static constexpr const char* names[] = {"info", "warning", "error", "critical"};
    std::fprintf(stderr, "norvi %s: %s\n", names[static_cast<int>(level)], message.c_str());
}

} // namespace

LogSink SetLogSink(LogSink sink) {
    std::lock_guard lock(g_sinkMutex);
    std::swap(Sink(), sink);
    return sink;
}

void Log(LogLevel level, const String& message) noexcept {
    std::lock_guard lock(g_sinkMutex);
    if (Sink())
        Sink()(level, message);
    else
        WriteToStandardError(level, message);
}

void LogCritical(const String& message, SourceLocation at) noexcept {
    try {
        Log(LogLevel::Critical, Format("@ [@(@)]", message, at.file, at.line));
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "norvi critical: %s(%d)\n", at.file, at.line);
    }
}

} // namespace norvi
