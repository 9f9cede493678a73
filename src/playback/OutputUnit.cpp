#include "playback/OutputUnit.h"

#include <cstdlib>
#include <string>

#include "platform/Format.h"
#include "platform/OutOfMemory.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/CheckError.h"
#include "playback/Delegate.h"
#include "playback/RenderCallback.h"

namespace zemo {
namespace {

using platform::format;

platform::TraceLog& trace() {
    return *platform::services().trace;
}

platform::AudioOutputComponent* findOutputComponent() {
    const platform::AudioComponentDescription wanted{
        .componentType = platform::kAudioUnitType_Output,
        .componentSubType = platform::kAudioUnitSubType_HALOutput,
        .componentManufacturer = platform::kAudioUnitManufacturer_Apple,
        .componentFlags = 0,
        .componentFlagsMask = 0,
    };
    return platform::services().audioOutput->findNext(wanted);
}

platform::AudioStreamBasicDescription monoFloatAt(double rate) {
    return {.mSampleRate = rate,
            .mFormatID = platform::kLinearPCM,
            .mFormatFlags = platform::kIsFloat | platform::kIsPacked | platform::kIsNonInterleaved,
            .mBytesPerPacket = 4,
            .mFramesPerPacket = 1,
            .mBytesPerFrame = 4,
            .mChannelsPerFrame = 1,
            .mBitsPerChannel = 32,
            .mReserved = 0};
}

/// No render call may be running: the messages come from this thread.
void restPlayer() {
    bufferPlayer.rampState.store(Silent);
    bufferPlayer.isPlaying.store(0);
    bufferPlayer.idleCycles.store(0);
    value.store(0.0F);
    if (RenderDelegate* const delegate = renderDelegate.load()) {
        delegate->resetPlayTitle();
        delegate->resetMeter();
    }
}

void startOutputUnit() {
    CheckError(bufferPlayer.outputUnit->start(), "Couldn't start output unit");
}

/// With the unit stopped, its last call perhaps still under way. A play or a stop may have been
/// asked for in the very moment in which the callback ended the play before: then the two threads'
/// marks do not fit together. If the sound went before such a play could go on, there is nothing to
/// play: a call without a sound would never end.
void settlePlayer(bool isCallUnderWay) {
    const std::uint32_t state = bufferPlayer.rampState.load();
    const bool isPlayAsked = bufferPlayer.isPlaying.load() != 0 || state == FadeIn;
    if (isPlayAsked && fBuffer.load() == nullptr) {
        if (!isCallUnderWay) {
            restPlayer();
        }
    } else if (isPlayAsked) {
        bufferPlayer.isPlaying.store(1);
        startOutputUnit();
    } else if (state != Silent) {
        bufferPlayer.rampState.store(Silent);
    }
}

} // namespace

void createOutputUnit(BufferPlayer* player) {
    platform::AudioOutputComponent* const component = findOutputComponent();
    if (component == nullptr) {
        trace().print("can't get output unit");
        std::exit(-1); // NOLINT(concurrency-mt-unsafe): no other thread runs at launch
    }
    CheckError(component->newInstance(player->outputUnit),
               "Couldn't open component for outputUnit");
    platform::AudioOutputUnit& unit = *player->outputUnit;
    CheckError(unit.setRenderCallback(FloatBufferRenderProc, player),
               "AudioUnitSetProperty failed");
    CheckError(unit.sampleRate(R), "AudioUnitGetProperty failed");
    streamFormat = monoFloatAt(R);
    CheckError(unit.setStreamFormat(streamFormat),
               "Couldn't set StreamFormat on input scope / bus 0");
    CheckError(unit.initialize(), "Couldn't initialize output unit");
}

std::int32_t bufferPlay0(std::int64_t /*ignored*/) {
    if (bufferPlayer.isPlaying.load(std::memory_order_acquire) != 0) {
        return 0;
    }
    N = 2000.0F;
    platform::unlessOutOfMemory([] { trace().print(format("%ld frames\n", fBuffersize.load())); },
                                [] {}); // the play is worth more than the line
    float* const samples = fBuffer.load();
    if (samples == nullptr) {
        trace().print("NULL Buffer!\n");
        return 0;
    }
    totalFrames.store(0);
    bufferPlayer.buffer.store(samples);
    bufferPlayer.readPosition.store(0.0);
    bufferPlayer.idleCycles.store(2);
    startOutputUnit();
    // Only now: a call that runs in between sees Silent and spends one of the idle calls.
    bufferPlayer.isPlaying.store(1);
    bufferPlayer.rampState.store(FadeIn, std::memory_order_release);
    trace().print("_____________________________________________\n\n");
    return 0;
}

std::int32_t bufferStop0() {
    if (bufferPlayer.outputUnit != nullptr && bufferPlayer.isPlaying.load() != 0) {
        bufferPlayer.rampState.store(FadeOut, std::memory_order_release);
    }
    return 0;
}

bool superviseOutputUnit() {
    platform::AudioOutputUnit* const unit = bufferPlayer.outputUnit;
    if (unit == nullptr) {
        return false;
    }
    const bool more = unit->attend();
    if (unit->takeFailure()) {
        restPlayer();
    } else if (!unit->isRunning()) {
        settlePlayer(more);
    }
    return more || unit->isRunning();
}

void haltOutputUnit() {
    CheckError(bufferPlayer.outputUnit->stop(), "Couldn't stop output unit");
    restPlayer();
}

float kramp(float x) {
    if (x >= 1000.0F) {
        return 1.0F;
    }
    return x <= 0.0F ? 0.0F : static_cast<float>(0.001 * static_cast<double>(x));
}

} // namespace zemo
