#include "playback/SharedState.h"

#include <cstddef>
#include <type_traits>

#include "playback/Delegate.h"

namespace zemo {

constinit std::atomic<float*> fBuffer{nullptr};
constinit std::atomic<std::int64_t> fBuffersize{0};
constinit std::atomic<std::int64_t> totalFrames{0};
constinit double R = 0.0;
constinit platform::AudioStreamBasicDescription streamFormat{};
constinit BufferPlayer bufferPlayer{};
constinit std::atomic<float> value{0.0F};

constinit bool doResampling = false;
constinit bool doAM = false;
constinit bool doSSB = false;
constinit bool doFM = false;
constinit float rvalue = 0.0F;
constinit float amcfvalue = 0.0F;
constinit float amindexvalue = 0.0F;
constinit float fmcfvalue = 0.0F;
constinit float fmindexvalue = 0.0F;
constinit bool dbp = false;
constinit std::int32_t versionMinor = 0;

constinit std::atomic<bool> omni{false};
constinit std::atomic<std::uint8_t> channel{0};

constinit float N = 1000.0F;

constinit std::atomic<RenderDelegate*> renderDelegate{nullptr};

static_assert(std::is_standard_layout_v<BufferPlayer>);
static_assert(offsetof(BufferPlayer, outputUnit) < offsetof(BufferPlayer, readPosition));
static_assert(offsetof(BufferPlayer, readPosition) < offsetof(BufferPlayer, rampState));
static_assert(offsetof(BufferPlayer, rampState) < offsetof(BufferPlayer, isPlaying));
static_assert(offsetof(BufferPlayer, isPlaying) < offsetof(BufferPlayer, buffer));
static_assert(offsetof(BufferPlayer, buffer) < offsetof(BufferPlayer, rmsMode));
static_assert(offsetof(BufferPlayer, rmsMode) < offsetof(BufferPlayer, idleCycles));
static_assert(offsetof(BufferPlayer, idleCycles) < offsetof(BufferPlayer, midiClient));
static_assert(offsetof(BufferPlayer, midiClient) < offsetof(BufferPlayer, midiInPort));
static_assert(std::atomic<double>::is_always_lock_free);
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

void redraw() {}

} // namespace zemo
