#pragma once

#include <cstdint>

namespace zemo::platform {

class SystemVersion {
public:
    SystemVersion() = default;
    SystemVersion(const SystemVersion&) = delete;
    SystemVersion& operator=(const SystemVersion&) = delete;
    virtual ~SystemVersion() = default;

    /// [main] The operating system's minor version number; 0 when it is not known.
    virtual std::int32_t minorVersion() = 0;
};

} // namespace zemo::platform
