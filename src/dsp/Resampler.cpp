#include "dsp/Resampler.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "dsp/EvenSpline.h"
#include "dsp/Spline.h"
#include "platform/Format.h"
#include "platform/OutOfMemory.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace dsp {
namespace {

/// A shorter sound takes the plain form.
constexpr std::int64_t kFewestBlockRows = 256;

constexpr float kTooManySamples = 2147483648.0F;

/// Newton's form of the parabola through three points an even step apart.
double parabolaAt(std::span<const float> y, double t, double rate) {
    const double u = t * rate; // in steps
    const auto y0 = static_cast<double>(y[0]);
    const double first = static_cast<double>(y[1]) - y0;
    const double second = static_cast<double>(y[2]) - 2.0 * static_cast<double>(y[1]) + y0;
    return y0 + u * (first + (u - 1.0) * second / 2.0);
}

/// The plain form, over whole arrays: 40 bytes a sample and 16 a new one.
void resamplePlainly(std::span<const float> input, std::span<float> output, float ratio,
                     double rate) {
    std::vector<double> points(output.size());
    for (std::size_t j = 0; j < points.size(); ++j) {
        points[j] = pointTime(static_cast<std::int64_t>(j), rate, ratio);
    }
    std::vector<double> times(input.size());
    std::vector<double> values(input.begin(), input.end());
    for (std::size_t i = 0; i < times.size(); ++i) {
        times[i] = knotTime(static_cast<std::int64_t>(i), rate);
    }
    std::vector<double> results(output.size());
    if (input.size() == static_cast<std::size_t>(kFewestKnots)) {
        for (std::size_t j = 0; j < results.size(); ++j) {
            results[j] = parabolaAt(input, points[j], rate);
        }
    } else {
        ispline_gen(times.data(), values.data(), static_cast<std::int32_t>(input.size()),
                    points.data(), results.data(), static_cast<std::int32_t>(output.size()));
    }
    for (std::size_t j = 0; j < output.size(); ++j) {
        output[j] = static_cast<float>(results[j]);
    }
}

} // namespace

double knotTime(std::int64_t i, double rate) {
    return static_cast<double>(i) / rate;
}

double pointTime(std::int64_t j, double rate, float ratio) {
    return static_cast<double>(j) / (rate * static_cast<double>(ratio));
}

std::int32_t resampledLength(std::int64_t count, float ratio, double rate) {
    if (count > INT32_MAX) {
        return 0;
    }
    const float length = static_cast<float>(static_cast<std::int32_t>(count) - 1) * ratio;
    if (!std::isfinite(ratio) || ratio <= 0.0F || !(length >= 1.0F) || length >= kTooManySamples) {
        return 0;
    }
    auto result = static_cast<std::int32_t>(length);
    const double lastKnot = knotTime(count - 1, rate);
    while (result > 1 && pointTime(result - 1, rate, ratio) > lastKnot) {
        --result;
    }
    return result;
}

void resample(std::span<const float> input, std::span<float> output, float ratio, double rate,
              std::int64_t runUp) {
    const EvenGrids grids{.samples = input.data(),
                          .knots = static_cast<std::int64_t>(input.size()),
                          .output = output.data(),
                          .points = static_cast<std::int64_t>(output.size()),
                          .rate = rate,
                          .ratio = ratio};
    const bool isInRange = grids.point(grids.points - 1) <= grids.knot(grids.knots - 1);
    auto outcome = SplineOutcome::ZeroPivot;
    if (grids.knots >= kFewestBlockRows && isInRange) {
        do {
            outcome = splineOnEvenGrids(grids, std::min(runUp, grids.knots));
            runUp *= 4;
        } while (outcome == SplineOutcome::BordersDiffer);
    }
    if (outcome == SplineOutcome::NotFinite) {
        std::fill(output.begin(), output.end(), std::numeric_limits<float>::quiet_NaN());
    } else if (outcome != SplineOutcome::Exact && outcome != SplineOutcome::Stopped) {
        resamplePlainly(input, output, ratio, rate); // also where that ends the process
    }
}

} // namespace dsp

namespace {

/// The first and the last point of a grid; both labels say [0].
void traceGrid(const char* name, double last) {
    platform::services().trace->print(
        platform::format("%s[0] = %lf\t%s[0] = %lf\n", name, 0.0, name, last));
}

void traceGrids(std::int64_t count, std::int32_t newCount, float ratio) {
    platform::services().trace->print(
        platform::format("len1 = %d\tlen2 = %d\n", static_cast<std::int32_t>(count), newCount));
    traceGrid("X1", dsp::knotTime(count - 1, R));
    traceGrid("X2", dsp::pointTime(newCount - 1, R, ratio));
}

} // namespace

Refusal resampleRefusal(float ratio) {
    const auto refuse = [](const platform::Sentence& sentence) {
        return platform::Error{platform::ErrorCategory::NotSupported, std::nullopt, sentence};
    };
    const std::int64_t count = fBuffersize.load();
    if (count == 0) {
        return std::nullopt; // nothing is asked of no sound
    }
    if (!std::isfinite(ratio) || ratio <= 0.0F) {
        return refuse("The resampling ratio must be a number above 0.");
    }
    if (count < dsp::kFewestKnots || count > INT32_MAX) {
        return refuse("Only a sound of 3 to 2147483647 samples can be resampled.");
    }
    if (dsp::resampledLength(count, ratio, R) == 0) {
        return refuse("With this ratio the sound would have no sample, or more than 2147483647.");
    }
    return std::nullopt;
}

Refusal resampleBuffer(float ratio, undo_struct* undo) {
    const std::int64_t count = fBuffersize.load();
    if (count == 0) {
        platform::services().trace->log("Nothing to resample");
        return std::nullopt;
    }
    if (Refusal refusal = resampleRefusal(ratio)) {
        return refusal;
    }
    const std::int32_t newCount = dsp::resampledLength(count, ratio, R);
    const auto sound = soundSamples();
    return platform::unlessOutOfMemory(
        [&] {
            traceGrids(count, newCount, ratio);
            return replaceSound(newCount, 0, undo, [&](std::span<float> result) {
                dsp::resample(sound, result, ratio, R);
            });
        },
        outOfMemory);
}

} // namespace zemo
