// Diagnostics. Messages go to one sink, which an application can replace.
#pragma once

#include <functional>

#include <norvi/host/result.h>

namespace norvi {

enum class LogLevel { Info, Warning, Error, Critical };

/// Receives every message. Called from any thread, one call at a time; must not log itself.
using LogSink = std::function<void(LogLevel level, const String& message)>;

/// Replaces the sink and returns the one before it. An empty sink stands for the default, which writes to the
/// standard error stream with the level in front.
LogSink SetLogSink(LogSink sink);

void Log(LogLevel level, const String& message) noexcept;

/// Reports a condition that must never happen; the program goes on.
/// The text gets the place as the suffix " [file(line)]".
void LogCritical(const String& message, SourceLocation at = SourceLocation::Current()) noexcept;

} // namespace norvi
