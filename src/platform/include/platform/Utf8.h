#pragma once

#include <string_view>

namespace zemo::platform {

/// [any] Whether all of `text` is UTF-8: no sequence cut, none longer than need be, no surrogates,
/// nothing above U+10FFFF.
bool isUtf8(std::string_view text) noexcept;

} // namespace zemo::platform
