#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
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

/// A sentence for a person, in UTF-8. A literal is kept where it is, and its copies are: a refusal
/// for want of memory must need none. [any]
class Sentence {
public:
    Sentence() noexcept = default;
    template <std::size_t Bytes>
    Sentence(const char (&literal)[Bytes]) noexcept // the terminating zero is among them
        : lasting_(literal, Bytes - 1), isLasting_(true) {}
    Sentence(std::string text) noexcept : text_(std::move(text)) {}
    /// A text that lasts as long as the program, kept where it is as well.
    static Sentence lasting(std::string_view text) noexcept {
        Sentence result;
        result.lasting_ = text;
        result.isLasting_ = true;
        return result;
    }

    operator std::string_view() const noexcept { return isLasting_ ? lasting_ : text_; }
    operator std::string() const { return std::string(std::string_view(*this)); }

    bool empty() const noexcept { return std::string_view(*this).empty(); }
    bool starts_with(std::string_view start) const noexcept {
        return std::string_view(*this).starts_with(start);
    }
    friend bool operator==(const Sentence& sentence, std::string_view text) noexcept {
        return std::string_view(sentence) == text;
    }
    template <typename Stream> friend Stream& operator<<(Stream& stream, const Sentence& sentence) {
        stream << std::string_view(sentence);
        return stream;
    }

private:
    std::string_view lasting_;
    std::string text_;
    bool isLasting_ = false;
};

/// What went wrong, for a person.
struct Error {
    ErrorCategory category = ErrorCategory::Malformed;
    std::optional<std::uint64_t> offset; ///< byte in the file, where there is one
    Sentence sentence;
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
