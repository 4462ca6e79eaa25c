// Collects what is logged.
#pragma once

#include <norvi/host/log.h>
#include <norvi/host/text.h>

namespace norvi {

/// Takes the place of the log's sink while it lives.
class LogRecorder {
  public:
    LogRecorder()
        : previous_(SetLogSink([this](LogLevel level, const String& message) {
              static constexpr const char* names[] = {"info", "warning", "error", "critical"};
              entries.push_back(Format("@: @", names[static_cast<int>(level)], message));
          })) {}
    ~LogRecorder() { SetLogSink(std::move(previous_)); }
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    BaseArray<String> entries; ///< "warning: message"

  private:
    LogSink previous_;
};

} // namespace norvi
