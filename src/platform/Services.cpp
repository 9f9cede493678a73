#include "platform/Services.h"

namespace zemo::platform {

Services& services() noexcept {
    static constinit Services instance;
    return instance;
}

} // namespace zemo::platform
