#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace zemo::batch {

/// The words of a command line that are still to be read, and what was said about those before.
class Words {
public:
    explicit Words(const std::vector<std::string>& words) : words_(words) {}

    bool empty() const { return next_ == words_.size(); }
    std::string take() { return empty() ? std::string() : words_[next_++]; }
    bool takeIf(const std::string& word) {
        const bool found = !empty() && words_[next_] == word;
        next_ += found ? 1 : 0;
        return found;
    }
    /// The value of a word `name=value` that stands next.
    std::optional<std::string> takeValueOf(const std::string& name) {
        const std::string start = name + "=";
        if (empty() || words_[next_].compare(0, start.size(), start) != 0) {
            return std::nullopt;
        }
        return words_[next_++].substr(start.size());
    }

    std::string complaint;            ///< what is wrong, one sentence
    std::vector<std::string> notices; ///< values that were clamped, a sentence each

private:
    const std::vector<std::string>& words_;
    std::size_t next_ = 0;
};

/// The whole text as a number, in the notation of C.
template <typename Number> bool parseNumber(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end && !text.empty();
}

/// `on` or `off`, of the setting `name`.
inline bool parseSwitch(const std::string& text, const std::string& name, bool& isOn,
                        std::string& complaint) {
    isOn = text == "on";
    if (!isOn && text != "off") {
        complaint = name + " is on or off.";
        return false;
    }
    return true;
}

} // namespace zemo::batch
