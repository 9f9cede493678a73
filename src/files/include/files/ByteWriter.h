#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zemo {

/// Appends big-endian numbers to a block of bytes.
class ByteWriter {
public:
    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void u16(std::uint16_t value) { number(value, 2); }
    void u32(std::uint32_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    void i64(std::int64_t value) { number(static_cast<std::uint64_t>(value), 8); }
    void f64(double value);
    void extended80(double value); ///< exact for every finite double that is not subnormal

    const std::vector<std::uint8_t>& bytes() const noexcept { return bytes_; }

private:
    void number(std::uint64_t value, std::size_t bytes);

    std::vector<std::uint8_t> bytes_;
};

} // namespace zemo
