#include "ReferencePlayer.h"

#include <cmath>
#include <cstring>

namespace zemo::test {

bool sameNumber(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

bool Sent::operator==(const Sent& other) const {
    return kind == other.kind && count == other.count && sameNumber(level, other.level);
}

std::string Sent::text() const {
    switch (kind) {
    case UpdateValue:
        return "updateValue " + std::to_string(level);
    case ResetMeter:
        return "resetMeter";
    case ResetPlayTitle:
        return "resetPlayTitle";
    case IdleCycle:
        return "IdleCycle " + std::to_string(count);
    case MissingBuffer:
        return "missing buffer";
    }
    return {};
}

std::string texts(const std::vector<Sent>& messages) {
    std::string all;
    for (const Sent& message : messages) {
        all += (all.empty() ? "" : ", ") + message.text();
    }
    return all;
}

void SentRecorder::updateValue(float level) {
    sent.push_back({.kind = Sent::UpdateValue, .level = level});
    if (duringUpdateValue) {
        duringUpdateValue();
    }
}

void SentRecorder::resetMeter() {
    sent.push_back({.kind = Sent::ResetMeter});
}

void SentRecorder::resetPlayTitle() {
    sent.push_back({.kind = Sent::ResetPlayTitle});
}

void SentRecorder::traceIdleCycle(std::int32_t left) {
    sent.push_back({.kind = Sent::IdleCycle, .count = left});
}

void SentRecorder::traceMissingBuffer() {
    sent.push_back({.kind = Sent::MissingBuffer});
}

void ReferencePlayer::play(const std::function<void()>& whileStarting) {
    if (isPlaying == 1 || !loaded) {
        return;
    }
    totalFrames = 0;
    readPosition = 0.0;
    idleCycles = 2;
    ++starts;
    if (whileStarting) {
        whileStarting();
    }
    isPlaying = 1;
    rampState = 1;
}

void ReferencePlayer::stop() {
    if (isPlaying == 1) {
        rampState = 3;
    }
}

void ReferencePlayer::call(std::vector<float>& output) {
    if (!loaded) {
        sent.push_back({.kind = Sent::MissingBuffer});
        return;
    }
    const auto n = static_cast<unsigned>(output.size());
    const auto size = static_cast<long long>(sound.size());
    auto p = static_cast<long long>(readPosition);
    double d = readPosition;
    const auto nf = static_cast<float>(n);
    float peak = 0.0F;
    float sum = 0.0F;

    for (unsigned i = 0; i < n; ++i) {
        float& frame = output[i];
        if (totalFrames < size) {
            if (rampState == 0) {
                frame = 0.0F;
            }
            if (rampState == 1) {
                const float raised = sound[static_cast<std::size_t>(p)] * static_cast<float>(i);
                frame = raised / nf;
            }
            if (rampState == 2) {
                frame = sound[static_cast<std::size_t>(p)];
            }
            if (rampState == 3) {
                const float left = sound[static_cast<std::size_t>(p)] * static_cast<float>(n - i);
                frame = left / nf;
            }
            const float magnitude = frame < 0.0F ? -frame : frame;
            const float record = peak < 0.0F ? -peak : peak;
            if (magnitude >= record) {
                peak = frame;
            }
            const float square = frame * frame;
            sum = sum + square;
        } else {
            frame = 0.0F;
            value = 0.0F;
            sent.push_back({.kind = Sent::UpdateValue, .level = value});
            rampState = 0;
            isPlaying = 0;
            ++stops;
        }
        d += 1.0;
        totalFrames = static_cast<long long>(static_cast<double>(totalFrames) + 1.0);
        p += 1;
    }

    const float rms = std::sqrt(sum / nf);
    value = rmsMode == 1 ? static_cast<float>(1.414 * static_cast<double>(rms)) : peak;
    sent.push_back({.kind = Sent::UpdateValue, .level = value});
    readPosition = d;

    if (rampState == 0) {
        value = 0.0F;
        if (idleCycles > 0) {
            --idleCycles;
            sent.push_back({.kind = Sent::IdleCycle, .count = idleCycles});
        } else {
            isPlaying = 0;
            ++stops;
        }
        sent.push_back({.kind = Sent::ResetMeter});
        value = 0.0F;
        sent.push_back({.kind = Sent::UpdateValue, .level = value});
    } else if (rampState == 1) {
        rampState = 2;
    } else if (rampState == 2) {
        if (size - totalFrames < static_cast<long long>(2U * n)) {
            rampState = 3;
        }
    } else if (rampState == 3) {
        rampState = 0;
        isPlaying = 0;
        sent.push_back({.kind = Sent::ResetPlayTitle});
        sent.push_back({.kind = Sent::ResetMeter});
    }
}

} // namespace zemo::test
