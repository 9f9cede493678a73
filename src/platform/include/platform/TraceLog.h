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

    virtual void print(std::string_view text) = 0; ///< [main] standard output, as it stands
    /// [main] The same with what the user has asked for, which must not be lost without a word: 0,
    /// or the system's error number.
    virtual int printResult(std::string_view text) {
        print(text);
        return 0;
    }
    virtual void printError(std::string_view text) = 0; ///< [main] standard error, as it stands
    virtual void log(std::string_view text) = 0;        ///< [main] the system log
};

} // namespace zemo::platform
