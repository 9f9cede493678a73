#pragma once

#include <atomic>
#include <cstdint>

#include "platform/AudioOutput.h"
#include "platform/StreamDescription.h"

/// The one sound and everything that the interface, audio and MIDI threads share about it.
/// Plain global data, zeroed at start, never freed at exit; nothing is locked.
namespace zemo {

// The sound ---------------------------------------------------------------------------------

/// The loaded sound: mono samples, nominally in -1..1; null when nothing was ever loaded.
/// Written by the main thread only, through playback/SoundExchange.h.
extern std::atomic<float*> fBuffer;
/// Number of valid samples in fBuffer; 0: nothing is loaded.
extern std::atomic<std::int64_t> fBuffersize;
/// Frames rendered since the current play started.
extern std::atomic<std::int64_t> totalFrames;
/// The output's sample rate in hertz, read at launch. [main], [worker]
extern double R;
/// The output's input format, filled at launch. [main], [worker]
extern platform::AudioStreamBasicDescription streamFormat;

/// Zeroed floats past the end of a loaded sound.
inline constexpr std::int64_t kSlackSamples = 1024;

// The player --------------------------------------------------------------------------------

enum RampState : std::uint32_t { Silent = 0, FadeIn = 1, Steady = 2, FadeOut = 3 };

/// The record that the output gets as its callback's context. The order of the fields is fixed.
struct BufferPlayer {
    platform::AudioOutputUnit* outputUnit; ///< set once by createOutputUnit
    std::atomic<double> readPosition;      ///< index of the next sample to play
    std::atomic<std::uint32_t> rampState;  ///< a RampState
    std::atomic<std::uint8_t> isPlaying;   ///< 1 while a play is under way
    std::atomic<float*> buffer;            ///< fBuffer as it was when the play started; unread
    std::atomic<std::uint8_t> rmsMode;     ///< 1: the meter shows 1.414 x RMS, 0: the peak
    std::atomic<std::int32_t> idleCycles;  ///< silent calls to run before the unit is stopped
    std::uint32_t midiClient;
    std::uint32_t midiInPort;
};

extern BufferPlayer bufferPlayer;

/// The level that the meter shows: linear amplitude, signed.
extern std::atomic<float> value;

// Processing parameters ---------------------------------------------------------------------

extern bool doResampling;
extern bool doAM;
extern bool doSSB; ///< cleared at launch, never read
extern bool doFM;
extern float rvalue;       ///< resampling ratio
extern float amcfvalue;    ///< AM carrier frequency, hertz
extern float amindexvalue; ///< AM index
extern float fmcfvalue;    ///< FM carrier frequency, hertz
extern float fmindexvalue; ///< FM index
extern bool dbp;           ///< debug prints of the FM envelope
/// The operating system's minor version; it chooses how the sheets are presented.
extern std::int32_t versionMinor;

// MIDI --------------------------------------------------------------------------------------

extern std::atomic<bool> omni;            ///< accept notes on every channel
extern std::atomic<std::uint8_t> channel; ///< the one channel (0..15) when omni is off

// Kept so that the set is complete; nothing reads it ----------------------------------------

extern float N; ///< 1000 at start, 2000 from the first play on

/// [any] Does nothing.
void redraw();

} // namespace zemo
