#include "files/RefusalReason.h"

#include "files/AudioFile.h"
#include "files/AudioFileReader.h"
#include "platform/OutOfMemory.h"
#include "playback/SharedState.h"

namespace zemo {

namespace {

RefusalReason reasonInHeader(const FileUrl& url) {
    using Kind = RefusalReason::Kind;
    const auto audio = AudioFile::open(url.path());
    if (!audio) {
        return {.kind = Kind::Unreadable, .sentence = audio.error().sentence};
    }
    const auto& format = audio.value().dataFormat();
    RefusalReason reason{.rate = format.mSampleRate, .channels = format.mChannelsPerFrame};
    const bool linearPCM = format.mFormatID == platform::kLinearPCM;
    const bool isFloat = audio.value().sourceBitDepth() == -32;
    const bool is32Bit = format.mBitsPerChannel == 32;
    const bool rateMatches = reason.rate == R;
    const bool mono = reason.channels == 1;
    if (isReadable(linearPCM, mono, isFloat, is32Bit, rateMatches)) {
        return reason;
    }
    if (!rateMatches) {
        reason.kind = Kind::Rate;
    } else {
        reason.kind = mono ? Kind::Format : Kind::Channels;
    }
    return reason;
}

} // namespace

RefusalReason refusalReason(const FileUrl& url) {
    return platform::unlessOutOfMemory([&] { return reasonInHeader(url); },
                                       [] { return RefusalReason{}; });
}

} // namespace zemo
