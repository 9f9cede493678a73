#pragma once

#include <deque>

#include "Sounds.h"

/// Every transformation once more, in the plainest form: shift registers, whole arrays, one step
/// after the other, no regard for time or memory. Nothing is shared with what is tested.
namespace zemo::test::plain {

/// The largest error of one sine is half a unit in the last place; this one is rounded from 64
/// bits.
float sine(float phase);

Sound amplitudeModulation(Sound x, float cf, float index, double rate);

/// The coefficient at offset `k` before the centre, through its ten decimals.
double hilbertTap(int k);

/// The delay line goes from run to run, as the program's own does.
class Hilbert {
public:
    double operator()(double x, double rate);

private:
    std::deque<double> line_ = std::deque<double>(513, 0.0);
};

Sound singleSideband(Sound x, bool upper, float cf, float index, double rate, Hilbert& hilbert);

struct Envelope {
    std::vector<std::int64_t> counts;
    Sound levels;
};
Envelope envelope(const Sound& x, std::int64_t blockLength);
Sound phaseModulation(Sound x, float cf, float index, float lpf, double rate);

/// The high-pass over growing arrays. `lastIn` and `lastOut` are the end of the run before.
struct HighPass {
    float lastIn = 0.0F;
    float lastOut = 0.0F;
    Sound operator()(const Sound& in, int set);
};

struct Hd {
    bool two = true;
    bool four = false;
    std::int32_t attack = 100;
    bool scale = false;
    std::int32_t hpSelect = 0;
    double slope = 0.9;
    float mix = 1.0F;
    float knee = 1.0F;
    float comp = 1.0F;
};
Sound harmonics(Sound x, const Hd& hd, HighPass& highPass);

/// The spline's slopes, and its values, with a record kept of every row of the elimination.
Series slopes(const Series& x, const Series& y);
Series spline(const Series& x, const Series& y, const Series& points);
Sound resampled(const Sound& x, std::size_t length, float ratio, double rate);

} // namespace zemo::test::plain
