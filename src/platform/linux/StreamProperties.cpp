#include "platform_linux/StreamProperties.h"

#include "platform/OwnEnvironment.h"

namespace zemo::platform {

/// By the environment of PulseAudio's library, which PipeWire is spoken to by as well: cubeb hands
/// no properties on but the program's name and the stream's.
void setStreamProperties(const char* version) {
    constexpr const char* kDesktopEntry = "zemo"; ///< and the icon of that name
    setOwnVariable("PULSE_PROP_application.id", kDesktopEntry);
    setOwnVariable("PULSE_PROP_application.icon_name", kDesktopEntry);
    setOwnVariable("PULSE_PROP_application.version", version);
    setOwnVariable("PULSE_PROP_media.role", "production");
}

} // namespace zemo::platform
