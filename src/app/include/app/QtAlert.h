#pragma once

#include "platform/Alert.h"

namespace zemo {

/// Alerts as message boxes.
class QtAlert final : public platform::Alert {
public:
    void runCritical(const std::string& title, const std::string& message,
                     const std::string& button) override;
};

} // namespace zemo
