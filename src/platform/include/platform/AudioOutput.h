#pragma once

#include <cstdint>
#include <string>

#include "platform/FourCharCode.h"
#include "platform/RealTime.h"
#include "platform/StreamDescription.h"

namespace zemo::platform {

/// Result of a platform call: 0 is success, anything else says what failed.
using Status = std::int32_t;
inline constexpr Status kNoError = 0;

struct AudioBuffer {
    std::uint32_t mNumberChannels = 1;
    std::uint32_t mDataByteSize = 0;
    void* mData = nullptr;
};

struct AudioBufferList {
    std::uint32_t mNumberBuffers = 1;
    AudioBuffer mBuffers[1];
};

struct AudioTimeStamp {
    double mSampleTime = 0.0; ///< frames since the device was started
};

using RenderActionFlags = std::uint32_t;

/// What every output of this program asks of its callback, one call after the other, however many
/// frames its device wants at a time. So a play is the same everywhere, its fades included.
inline constexpr std::uint32_t kFramesPerRenderCall = 512;

/// Fills `frames` frames of `data`. Called on the audio thread: [audio][rt].
using RenderCallback = Status (*)(void* context, RenderActionFlags* flags,
                                  const AudioTimeStamp* time, std::uint32_t bus,
                                  std::uint32_t frames, AudioBufferList* data) ZEMO_NONBLOCKING;

/// What kind of component is looked for.
struct AudioComponentDescription {
    std::uint32_t componentType = 0;
    std::uint32_t componentSubType = 0;
    std::uint32_t componentManufacturer = 0;
    std::uint32_t componentFlags = 0;
    std::uint32_t componentFlagsMask = 0;
};

inline constexpr std::uint32_t kAudioUnitType_Output = fourCharCode("auou");
inline constexpr std::uint32_t kAudioUnitSubType_HALOutput = fourCharCode("ahal");
inline constexpr std::uint32_t kAudioUnitManufacturer_Apple = fourCharCode("appl");

/// One output, configured in the order of the declarations below.
class AudioOutputUnit {
public:
    AudioOutputUnit() = default;
    AudioOutputUnit(const AudioOutputUnit&) = delete;
    AudioOutputUnit& operator=(const AudioOutputUnit&) = delete;
    virtual ~AudioOutputUnit() = default;

    virtual Status setRenderCallback(RenderCallback callback, void* context) = 0;  ///< [main]
    virtual Status sampleRate(double& hertz) = 0;                                  ///< [main]
    virtual Status setStreamFormat(const AudioStreamBasicDescription& format) = 0; ///< [main]
    virtual Status initialize() = 0;                                               ///< [main]

    /// [main] Readies the device; render calls begin with the next attend(). So what the caller
    /// sets up between the two is there for the first call. Nothing when calls are being made
    /// already.
    virtual Status start() = 0;

    /// [main] Returns when no call is running and none will follow.
    /// [audio][rt] From inside the callback it only raises a flag: no further call follows, the
    /// device gets silence, and attend() puts it to rest.
    virtual Status stop() = 0;

    /// [any][rt] Whether render calls are being made or are still to come.
    virtual bool isRunning() const noexcept = 0;

    /// [main] Does what start() and the audio thread left to be done. True while it is to be called
    /// again, every few milliseconds; false only when no render call is under way.
    virtual bool attend() = 0;

    /// [main] What the server calls the plays that are started from now on: the sound's name.
    virtual void setSoundName(const std::string& /*name*/) {}

    /// [main] Gives the connection to the server up, unless a play is under way there that is still
    /// heard; the next start() makes another one. Waits for that, for a moment at most.
    virtual void disconnect() {}

    /// [main] True once after the device went away under a running unit.
    virtual bool takeFailure() = 0;

    /// [main] What the user should know about this output, empty when all is well.
    virtual std::string notice() const = 0;
};

class AudioOutputComponent {
public:
    AudioOutputComponent() = default;
    AudioOutputComponent(const AudioOutputComponent&) = delete;
    AudioOutputComponent& operator=(const AudioOutputComponent&) = delete;
    virtual ~AudioOutputComponent() = default;

    /// [main] `unit` is owned by the component and lives as long as the program.
    virtual Status newInstance(AudioOutputUnit*& unit) = 0;
};

class AudioOutputService {
public:
    AudioOutputService() = default;
    AudioOutputService(const AudioOutputService&) = delete;
    AudioOutputService& operator=(const AudioOutputService&) = delete;
    virtual ~AudioOutputService() = default;

    /// [main] The first component that matches, null when there is none.
    virtual AudioOutputComponent* findNext(const AudioComponentDescription& wanted) = 0;
};

} // namespace zemo::platform
