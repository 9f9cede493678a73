#pragma once

#include <string>

namespace zemo::platform {

class Alert {
public:
    Alert() = default;
    Alert(const Alert&) = delete;
    Alert& operator=(const Alert&) = delete;
    virtual ~Alert() = default;

    /// [main] Shows a critical alert with one button and returns when it was dismissed.
    /// All texts are UTF-8 and shown as they stand.
    virtual void runCritical(const std::string& title, const std::string& message,
                             const std::string& button) = 0;
};

} // namespace zemo::platform
