#include "dsp/Filters.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "dsp/TwoPole.h"

namespace zemo {
namespace {

/// Stored as doubles, used as floats.
struct TwoPoleCoefficients {
    double twoBack; ///< feedback on y[n-2]
    double oneBack; ///< feedback on y[n-1]
    double gain;    ///< divides the input
};

constexpr std::array kTwoPoleSets{
    TwoPoleCoefficients{-0.9041630409, 1.8993334201, 1.051663921},
    TwoPoleCoefficients{-0.8175124034, 1.7990964095, 1.106008476},
};

constexpr double kFirGain = 49.99849746;
constexpr std::size_t kFirCentre = 256;
/// A sinc under a Gaussian window: the cut-off (of the sample rate) and the window's exponent at
/// the ends are those for which the taps sum to kFirGain and the outermost are -1.33008e-5.
constexpr double kFirCutOff = 0.010000134335136331;
constexpr double kFirWindow = 7.450999953298499;
constexpr double kFirCentreTap = 0.9999997;

std::array<float, 513> makeFirTable() {
    std::array<float, 513> table{};
    table[kFirCentre] = static_cast<float>(kFirCentreTap);
    for (std::size_t n = 1; n <= kFirCentre; ++n) {
        const double angle = 2.0 * std::numbers::pi * kFirCutOff * static_cast<double>(n);
        const double place = static_cast<double>(n) / static_cast<double>(kFirCentre);
        const double tap =
            kFirCentreTap * std::sin(angle) / angle * std::exp(-kFirWindow * place * place);
        table[kFirCentre - n] = static_cast<float>(tap);
        table[kFirCentre + n] = static_cast<float>(tap);
    }
    return table;
}

} // namespace

std::array<float, 3> xv{};
std::array<float, 3> yv{};
const std::array<float, 513> firxcoeffs = makeFirTable();
std::array<float, 513> firxv{};

dsp::TwoPole dsp::twoPole(std::uint8_t selector) {
    const TwoPoleCoefficients& set = kTwoPoleSets[selector == 1 ? 1 : 0];
    return {static_cast<float>(set.twoBack), static_cast<float>(set.oneBack),
            static_cast<float>(set.gain)};
}

std::array<float, 3> dsp::keptHistory(const std::array<float, 3>& history) {
    return {0.0F, 0.0F, std::isfinite(history[2]) ? history[2] : 0.0F};
}

void dsp::twoPoleHighPass(const float* in, float* out, std::int64_t n, std::uint8_t selector,
                          std::array<float, 3>& inputs, std::array<float, 3>& outputs) {
    const TwoPole filter = twoPole(selector);
    std::array<float, 3> lastIn = keptHistory(inputs);
    std::array<float, 3> lastOut = keptHistory(outputs);
    for (std::int64_t i = 0; i < n; ++i) {
        out[i] = filter.step(in[i], lastIn, lastOut);
    }
    inputs = lastIn;
    outputs = lastOut;
}

void two_pole_iir(const float* in, float* out, std::int64_t n, std::uint8_t selector) {
    dsp::twoPoleHighPass(in, out, n, selector, xv, yv);
}

float firhp(float x) {
    std::copy(firxv.begin() + 1, firxv.end(), firxv.begin());
    firxv.back() = static_cast<float>(static_cast<double>(x) / kFirGain);
    float sum = 0.0F;
    for (std::size_t k = 0; k < firxv.size(); ++k) {
        sum += firxcoeffs[k] * firxv[k];
    }
    return sum;
}

} // namespace zemo
