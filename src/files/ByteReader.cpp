#include "files/ByteReader.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "files/ByteWriter.h"

namespace zemo {
namespace {

constexpr int kExtendedBias = 16383;
constexpr int kMantissaBits = 63; ///< below the explicit leading one
static_assert(std::numeric_limits<long double>::digits > kMantissaBits &&
              std::numeric_limits<long double>::max_exponent > kExtendedBias);

} // namespace

std::uint64_t ByteReader::number(std::size_t bytes) {
    std::array<std::uint8_t, 8> raw{};
    if (failed_ || stream_->readAt(offset_, raw.data(), bytes) != bytes) {
        failed_ = true;
        return 0;
    }
    offset_ += bytes;
    std::uint64_t result = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        result = (result << 8) | raw[i];
    }
    return result;
}

double ByteReader::f64() {
    return std::bit_cast<double>(number(8));
}

double ByteReader::extended80() {
    const std::uint16_t signAndExponent = u16();
    const std::uint64_t mantissa = u64();
    const int exponent = signAndExponent & 0x7FFF;
    double magnitude = 0.0;
    if (exponent == 0x7FFF) {
        magnitude = (mantissa << 1) == 0 ? std::numeric_limits<double>::infinity()
                                         : std::numeric_limits<double>::quiet_NaN();
    } else {
        // Exact in a long double; as a double it would be rounded here and again where it is tiny.
        magnitude = static_cast<double>(std::ldexp(static_cast<long double>(mantissa),
                                                   exponent - kExtendedBias - kMantissaBits));
    }
    return (signAndExponent & 0x8000) != 0 ? -magnitude : magnitude;
}

void ByteWriter::number(std::uint64_t value, std::size_t bytes) {
    for (std::size_t i = bytes; i-- > 0;) {
        bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

void ByteWriter::f64(double value) {
    number(std::bit_cast<std::uint64_t>(value), 8);
}

void ByteWriter::extended80(double value) {
    const std::uint16_t sign = std::signbit(value) ? 0x8000 : 0;
    if (value == 0.0 || !std::isfinite(value)) {
        u16(value == 0.0 ? sign : static_cast<std::uint16_t>(sign | 0x7FFF));
        u64(std::isnan(value) ? 0xC000000000000000ULL : 0);
        return;
    }
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(value), &exponent); // in [0.5, 1)
    u16(static_cast<std::uint16_t>(sign | (exponent - 1 + kExtendedBias)));
    u64(static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits + 1)));
}

} // namespace zemo
