#include "platform/Format.h"

#include <cstdarg>
#include <cstdio>

#include "platform/RealTime.h"

namespace zemo::platform {

std::string format(const char* text, ...) {
    assertNotRealTime();
    va_list arguments;
    va_start(arguments, text);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, text, arguments);
    va_end(arguments);
    std::string result(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    const int written = std::vsnprintf(result.data(), result.size() + 1, text, again);
    va_end(again);
    return written == length ? result : std::string();
}

} // namespace zemo::platform
