#pragma once

#include <unistd.h>

#include <utility>

namespace zemo::rescue {

/// An open file of the system's, closed when it goes. [any]
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {} ///< negative: none
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }

    int number() const noexcept { return number_; }
    explicit operator bool() const noexcept { return number_ >= 0; }

private:
    int number_ = -1;
};

} // namespace zemo::rescue
