#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "dsp/Transformation.h"

namespace zemo {

/// A point of the amplitude envelope.
struct EnvelopePoint {
    std::int64_t count = 0;  ///< index of the block's first sample
    float val = 0.0F;        ///< the block's level; 0.5 for the loudest after normalizing
    std::int64_t length = 0; ///< the block's length plus one; never read
};

namespace dsp {

/// The range of the envelope's rate, in hertz.
inline constexpr float kSlowestEnvelope = 4.0F;
inline constexpr float kFastestEnvelope = 32.0F;

/// [any] The length of the envelope's blocks in samples: the rate over `lpf` (above 0), truncated.
std::int64_t envelopeBlockLength(float lpf, double rate);

/// [any] The envelope of `input` in blocks of `blockLength` samples: the square root of each
/// block's sum of squares, divided by its length, scaled so that the loudest has 0.5. The block
/// that holds the last sample has 0. A silent input gives NaN throughout: 0 is divided by 0, and
/// that stays.
std::vector<EnvelopePoint> blockEnvelope(std::span<const float> input, std::int64_t blockLength);

/// [any] A sine carrier of `frequency` hertz, its phase moved by `index` radians a unit of the
/// input, under an envelope that is interpolated from point to point and 0 from the last one on.
/// `output` has the input's length and may be the input.
void phaseModulate(std::span<const float> input, std::span<float> output,
                   std::span<const EnvelopePoint> envelope, float frequency, float index,
                   double rate);

} // namespace dsp

/// [any] The envelope rate that is used for `lpf`: the nearer bound outside 4..32 Hz, 4 for NaN.
float clampedEnvelopeRate(float lpf);

/// [any] Why an envelope of `lpf` hertz cannot be had at this output rate.
Refusal pmRefusal(float lpf);

/// [main] Replaces the sound by a carrier of `cf` hertz that it modulates in phase.
Refusal pmBuffer(float cf, float index, float lpf, undo_struct* undo = nullptr);

} // namespace zemo
