#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/FileStream.h"

namespace zemo {

/// Reads big-endian numbers from a file, one after the other. A read past the end fails the reader
/// for good, gives 0 and moves nothing.
class ByteReader {
public:
    ByteReader(platform::FileStream& stream, std::uint64_t offset)
        : stream_(&stream), offset_(offset) {}

    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t u64() { return number(8); }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    std::int64_t i64() { return static_cast<std::int64_t>(number(8)); }
    double f64();        ///< IEEE 754 double
    double extended80(); ///< IEEE 754 80-bit extended, rounded once where a double is too narrow

    bool failed() const noexcept { return failed_; }
    std::uint64_t offset() const noexcept { return offset_; }

private:
    std::uint64_t number(std::size_t bytes);

    platform::FileStream* stream_;
    std::uint64_t offset_;
    bool failed_ = false;
};

} // namespace zemo
