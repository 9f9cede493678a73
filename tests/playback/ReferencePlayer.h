#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "playback/Delegate.h"

namespace zemo::test {

/// One message of the render callback, its number bit for bit (any NaN counts as any other).
struct Sent {
    enum Kind { UpdateValue, ResetMeter, ResetPlayTitle, IdleCycle, MissingBuffer };
    Kind kind = UpdateValue;
    float level = 0.0F;
    int count = 0;

    bool operator==(const Sent& other) const;
    std::string text() const;
};

/// Keeps the messages as they come.
class SentRecorder final : public RenderDelegate {
public:
    std::vector<Sent> sent;
    std::function<void()> duringUpdateValue; ///< runs inside the message, on the callback's thread

    void updateValue(float level) override;
    void resetMeter() override;
    void resetPlayTitle() override;
    void traceIdleCycle(std::int32_t left) override;
    void traceMissingBuffer() override;
};

std::string texts(const std::vector<Sent>& messages);

/// Same bits, or both not a number.
bool sameNumber(float a, float b);
/// Same bits in every place.
bool sameBits(const std::vector<float>& a, const std::vector<float>& b);

/// A play as the rules put it, step by step on plain variables; shares nothing with the program.
struct ReferencePlayer {
    bool loaded = false;
    std::vector<float> sound;

    double readPosition = 0.0;
    unsigned rampState = 0;
    int isPlaying = 0;
    int rmsMode = 0;
    int idleCycles = 0;
    long long totalFrames = 0;
    float value = 0.0F;

    std::vector<Sent> sent;
    int starts = 0;
    int stops = 0;

    void play(const std::function<void()>& whileStarting = {});
    void stop();
    void call(std::vector<float>& output);
};

} // namespace zemo::test
