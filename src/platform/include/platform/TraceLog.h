#pragma once

#include <string_view>

namespace zemo::platform {

/// Where the program's trace lines go. Not for the audio thread.
class TraceLog {
public:
    TraceLog() = default;
    TraceLog(const TraceLog&) = delete;
    TraceLog& operator=(const TraceLog&) = delete;
    virtual ~TraceLog() = default;

    virtual void print(std::string_view text) = 0;      ///< [main] standard output, as it stands
    virtual void printError(std::string_view text) = 0; ///< [main] standard error, as it stands
    virtual void log(std::string_view text) = 0;        ///< [main] the system log
};

} // namespace zemo::platform
