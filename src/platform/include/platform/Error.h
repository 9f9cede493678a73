#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace zemo::platform {

enum class ErrorCategory : std::uint8_t {
    CannotOpen,   ///< absent, forbidden, or not a regular file
    NotSupported, ///< not a kind of file that is read here
    Malformed,    ///< says of itself what cannot be
    OutOfMemory,
    DeviceFailed,
    Cancelled, ///< by the user
};

/// What went wrong, for a person.
struct Error {
    ErrorCategory category = ErrorCategory::Malformed;
    std::optional<std::uint64_t> offset; ///< byte in the file, where there is one
    std::string sentence;                ///< UTF-8
};

/// A value or the reason why there is none.
template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : content_(std::move(value)) {}
    Result(Error error) : content_(std::move(error)) {}

    explicit operator bool() const noexcept { return std::holds_alternative<T>(content_); }
    T& value() { return std::get<T>(content_); }
    const T& value() const { return std::get<T>(content_); }
    const Error& error() const { return std::get<Error>(content_); }

private:
    std::variant<T, Error> content_;
};

} // namespace zemo::platform
