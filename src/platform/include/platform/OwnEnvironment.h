#pragma once

#include <string_view>

/// Environment variables that this program sets for the libraries that it uses. They are not meant
/// for the programs that are started from it.
namespace zemo::platform {

/// [main] While there is no other thread. A variable that is set already stays as it is.
void setOwnVariable(std::string_view name, std::string_view value);

/// [main] While one lives, the programs that are started do not get those variables. At most one.
class WithoutOwnVariables {
public:
    WithoutOwnVariables() noexcept;
    WithoutOwnVariables(const WithoutOwnVariables&) = delete;
    WithoutOwnVariables& operator=(const WithoutOwnVariables&) = delete;
    ~WithoutOwnVariables();
};

} // namespace zemo::platform
