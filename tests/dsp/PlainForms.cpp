#include "PlainForms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace zemo::test::plain {
namespace {

constexpr double kTurn = 6.283185307179586;

float step(float cf, double rate) {
    const auto hertz = static_cast<double>(cf);
    const double radians = hertz * kTurn;
    return static_cast<float>(radians / rate);
}

float once(float phase) {
    if (static_cast<double>(phase) > kTurn) {
        phase = static_cast<float>(static_cast<double>(phase) - kTurn);
    }
    return phase;
}

double t2(double x) {
    return 2.0 * (x * x) - 1.0;
}

} // namespace

float sine(float phase) {
    return static_cast<float>(std::sin(static_cast<long double>(phase)));
}

Sound amplitudeModulation(Sound x, float cf, float index, double rate) {
    const float w = step(cf, rate);
    for (std::size_t i = 0; i < x.size(); ++i) {
        float phase = static_cast<float>(i);
        phase *= w;
        const float s = sine(once(phase));
        const float dry = (1.0F - index) * x[i];
        float wet = index * x[i];
        wet *= s;
        x[i] = dry + wet;
    }
    return x;
}

double hilbertTap(int k) {
    if (k == 1) {
        return 0.9999653629; // 0.99996536285 before it was rounded: the table has it rounded up
    }
    const long double pi = 3.14159265358979323846264338327950288L;
    const long double window = 0.54L + 0.46L * std::cos(pi * static_cast<long double>(k) / 256.0L);
    std::array<char, 32> decimals{};
    std::snprintf(decimals.data(), decimals.size(), "%.10Lf", window / static_cast<long double>(k));
    return std::strtod(decimals.data(), nullptr);
}

double Hilbert::operator()(double x, double rate) {
    static const std::vector<double> taps = [] {
        std::vector<double> table(513, 0.0);
        for (int k = 1; k <= 255; k += 2) {
            table.at(static_cast<std::size_t>(256 - k)) = hilbertTap(k);
            table.at(static_cast<std::size_t>(256 + k)) = -hilbertTap(k);
        }
        return table;
    }();
    line_.pop_front();
    line_.push_back(x / 1.570483967);
    double acc = 0.0;
    const auto add = [&](bool asFloats) {
        for (std::size_t j = 0; j < 513; ++j) {
            const double tap =
                asFloats ? static_cast<double>(static_cast<float>(taps[j])) : taps[j];
            acc = acc + tap * line_[j];
        }
    };
    if (rate == 44100.0) {
        add(false);
    } else if (rate == 48000.0) {
        add(true);
    } else if (rate == 88200.0) {
        add(true);
        add(true);
    }
    return acc;
}

Sound singleSideband(Sound x, bool upper, float cf, float index, double rate, Hilbert& hilbert) {
    Series s(x.begin(), x.end());
    std::deque<double> dl(257, 0.0);
    double p = 0.0;
    for (double& sample : s) {
        p = p + kTurn * static_cast<double>(cf) / rate;
        dl.pop_front();
        dl.push_back(sample);
        const double i = dl.front();
        const double q = hilbert(sample, rate);
        sample = upper ? i * std::cos(p) - q * std::sin(p) : i * std::cos(p) + q * std::sin(p);
        if (p >= kTurn) {
            p = p - kTurn;
        }
    }
    double peak = 1.0;
    for (const double sample : s) {
        peak = std::fabs(sample) > peak ? std::fabs(sample) : peak;
    }
    if (peak > 1.0) {
        for (double& sample : s) {
            sample /= peak;
        }
    }
    const float m = index > 1.0F ? 1.0F : index;
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = (1.0F - m) * x[i] + m * static_cast<float>(s[i]);
    }
    return x;
}

Envelope envelope(const Sound& x, std::int64_t blockLength) {
    const auto n = static_cast<std::int64_t>(x.size());
    const auto records = static_cast<std::size_t>(n / blockLength + 1);
    Envelope result{std::vector<std::int64_t>(records, 0), Sound(records, 0.0F)};
    std::size_t k = 0;
    for (std::int64_t start = 0; start < n; start += blockLength) {
        float sum = 0.0F;
        for (std::int64_t j = start; j <= start + blockLength - 1; ++j) {
            if (j < n - 1) {
                const float square =
                    x.at(static_cast<std::size_t>(j)) * x[static_cast<std::size_t>(j)];
                sum = sum + square;
            } else {
                sum = 0.0F;
            }
        }
        result.counts.at(k) = start;
        result.levels.at(k) = std::sqrt(sum) / static_cast<float>(blockLength);
        ++k;
    }
    float m = 0.0F;
    for (const float level : result.levels) {
        m = level > m ? level : m;
    }
    for (float& level : result.levels) {
        level = static_cast<float>(static_cast<double>(level) * 0.5 / static_cast<double>(m));
    }
    return result;
}

Sound phaseModulation(Sound x, float cf, float index, float lpf, double rate) {
    const float w = step(cf, rate);
    const auto blockLength = static_cast<std::int64_t>(rate / static_cast<double>(lpf));
    const Envelope points = envelope(x, blockLength);
    Sound env(x.size(), 0.0F);
    for (std::size_t k = 0; k + 1 < points.counts.size(); ++k) {
        const std::int64_t from = points.counts[k];
        const std::int64_t to = points.counts[k + 1];
        for (std::int64_t j = from; j < to; ++j) {
            float rise = points.levels[k + 1] - points.levels[k];
            rise = static_cast<float>(j - from) * rise;
            rise = rise / static_cast<float>(to - from);
            env.at(static_cast<std::size_t>(j)) = points.levels[k] + rise;
        }
    }
    for (std::size_t i = 0; i < x.size(); ++i) {
        const float carrier = static_cast<float>(i) * w;
        const float deviation = index * x[i];
        x[i] = sine(once(carrier + deviation)) * env[i];
    }
    return x;
}

Sound HighPass::operator()(const Sound& in, int set) {
    const float c0 = set == 1 ? -0.8175124034F : -0.9041630409F;
    const float c1 = set == 1 ? 1.7990964095F : 1.8993334201F;
    const float g = set == 1 ? 1.106008476F : 1.051663921F;
    Sound u{0.0F, std::isfinite(lastIn) ? lastIn : 0.0F};
    Sound y{0.0F, std::isfinite(lastOut) ? lastOut : 0.0F};
    for (const float sample : in) {
        const std::size_t n = u.size();
        u.push_back(sample / g);
        const float outer = u[n - 2] + u[n];
        const float twice = 2.0F * u[n - 1];
        float sum = outer - twice;
        sum = sum + c0 * y[n - 2];
        sum = sum + c1 * y[n - 1];
        y.push_back(sum);
    }
    lastIn = u.back();
    lastOut = y.back();
    return {y.begin() + 2, y.end()};
}

Sound harmonics(Sound x, const Hd& hd, HighPass& highPass) {
    float inPeak = 0.0F;
    for (const float sample : x) {
        inPeak = std::fabs(sample) > inPeak ? std::fabs(sample) : inPeak;
    }
    const float over = (inPeak - hd.knee) * hd.comp;
    const float d = hd.knee + over;
    Sound driver;
    for (const float sample : x) {
        float s = sample;
        if (std::fabs(s) > hd.knee && s > 0.0F) {
            s = hd.knee + hd.comp * (s - hd.knee);
        }
        if (std::fabs(sample) > hd.knee && s < 0.0F) {
            s = -hd.knee - hd.comp * (s + hd.knee);
        }
        driver.push_back(s / d);
    }
    if (hd.hpSelect > 0) {
        driver = highPass(x, hd.hpSelect - 1);
    }
    // The DC blocker over both passes as one long signal.
    double prevIn = 0.0;
    double prevOut = 0.0;
    const auto pass = [&](double v, std::size_t i) {
        const double y = v - prevIn + hd.slope * prevOut;
        prevIn = v;
        prevOut = y;
        return static_cast<std::int64_t>(i) < hd.attack
                   ? y * static_cast<double>(i) / static_cast<double>(hd.attack)
                   : y;
    };
    Series second;
    for (std::size_t i = 0; i < x.size(); ++i) {
        second.push_back(0.5 * pass(t2(static_cast<double>(driver[i])), i));
    }
    Series fourth(x.size(), 0.0);
    for (std::size_t i = 0; hd.four && i < x.size(); ++i) {
        fourth[i] = pass(t2(second[i]), i);
    }
    float outPeak = 0.0F;
    for (std::size_t i = 0; i < x.size(); ++i) {
        float wet = static_cast<float>(second[i]) * (hd.two ? 1.0F : 0.0F);
        wet += static_cast<float>(fourth[i]) * (hd.four ? 1.0F : 0.0F);
        x[i] = (1.0F - hd.mix) * x[i] + hd.mix * wet;
        outPeak = x[i] > outPeak ? x[i] : outPeak;
    }
    for (std::size_t i = 0; hd.scale && i < x.size(); ++i) {
        x[i] = x[i] * (inPeak / outPeak);
    }
    return x;
}

Series slopes(const Series& x, const Series& y) {
    struct Row {
        double below, on, above, right;
    };
    const std::size_t n = x.size();
    const auto h = [&](std::size_t i) { return x[i + 1] - x[i]; };
    const auto s = [&](std::size_t i) { return (y[i + 1] - y[i]) / h(i); };
    std::vector<Row> rows;
    {
        const double h0 = h(0);
        const double h1 = h(1);
        rows.push_back({0.0, h1 * (h0 + h1), (h0 + h1) * (h0 + h1),
                        s(0) * (3.0 * h0 * h1 + 2.0 * h0 * h1) + s(1) * (h0 * h0)});
    }
    for (std::size_t i = 1; i + 1 < n; ++i) {
        rows.push_back(
            {h(i), 2.0 * (h(i - 1) + h(i)), h(i - 1), 3.0 * (s(i - 1) * h(i) + s(i) * h(i - 1))});
    }
    {
        const double h0 = h(n - 3);
        const double h1 = h(n - 2);
        rows.push_back({(h0 + h1) * (h0 + h1), h0 * (h0 + h1), 0.0,
                        s(n - 3) * (h1 * h1) + s(n - 2) * (3.0 * h0 * h1 + 2.0 * (h0 * h0))});
    }
    Series pivots{rows[0].on};
    Series factors{0.0};
    Series forward{rows[0].right / rows[0].on};
    for (std::size_t j = 1; j < n; ++j) {
        factors.push_back(rows[j - 1].above / pivots.back());
        pivots.push_back(rows[j].on - rows[j].below * factors.back());
        forward.push_back((rows[j].right - rows[j].below * forward.back()) / pivots.back());
    }
    Series d(n);
    d[n - 1] = forward[n - 1];
    for (std::size_t j = n - 1; j > 0; --j) {
        d[j - 1] = forward[j - 1] - factors[j] * d[j];
    }
    return d;
}

Series spline(const Series& x, const Series& y, const Series& points) {
    const Series d = slopes(x, y);
    Series values;
    std::size_t k = 0;
    for (const double t : points) {
        // The interval that begins at the last knot not beyond t, or the last interval; but one
        // that was chosen serves up to and on its right end.
        if (values.empty() || t > x[k + 1]) {
            const auto knot = std::upper_bound(x.begin(), x.end(), t) - x.begin() - 1;
            k = std::min(static_cast<std::size_t>(knot), x.size() - 2);
        }
        const double w = 1.0 / (x[k + 1] - x[k]);
        const double s = (y[k + 1] - y[k]) * w;
        const double c2 = w * (3.0 * s - 2.0 * d[k] - d[k + 1]);
        const double c3 = (w * w) * (-2.0 * s + d[k] + d[k + 1]);
        const double u = t - x[k];
        double value = c3 * u + c2;
        value = value * u + d[k];
        values.push_back(value * u + y[k]);
    }
    return values;
}

Sound resampled(const Sound& x, std::size_t length, float ratio, double rate) {
    Series x1;
    Series x2;
    for (std::size_t i = 0; i < x.size(); ++i) {
        x1.push_back(static_cast<double>(i) / rate);
    }
    for (std::size_t j = 0; j < length; ++j) {
        x2.push_back(static_cast<double>(j) / (rate * static_cast<double>(ratio)));
    }
    const Series y2 = spline(x1, Series(x.begin(), x.end()), x2);
    Sound result;
    for (const double value : y2) {
        result.push_back(static_cast<float>(value));
    }
    return result;
}

} // namespace zemo::test::plain
