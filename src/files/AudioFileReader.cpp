#include "files/AudioFileReader.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <string>

#include "files/AudioFile.h"
#include "files/CAByteOrder.h"
#include "files/PostError.h"
#include "files/SoundLoader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "platform/Progress.h"
#include "platform/Services.h"
#include "platform/TraceLog.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

using platform::format;

constexpr std::size_t kMessageBytes = 512; ///< terminating zero included

void log(const std::string& text) {
    platform::services().trace->log(text);
}

/// What the service says of a file; all zero for one that cannot be opened.
struct Properties {
    platform::AudioStreamBasicDescription format;
    std::int32_t sourceBitDepth = 0;
    std::uint64_t packetCount = 0;
};

struct Checks {
    bool linearPCM = false;
    bool mono = false;
    bool nativeEndian = false;
    bool isFloat = false;
    bool is32Bit = false;
    bool rateMatches = false;

    bool readable() const { return isReadable(linearPCM, mono, isFloat, is32Bit, rateMatches); }
};

/// Logs `text` when the check holds.
bool check(bool holds, const std::string& text) {
    if (holds) {
        log(text);
    }
    return holds;
}

Checks checkFormat(const Properties& file) {
    const auto& dataFormat = file.format;
    const std::uint32_t flags = dataFormat.mFormatFlags;
    const bool isLinearPCM = dataFormat.mFormatID == platform::kLinearPCM;
    Checks result;
    result.linearPCM = check(isLinearPCM, "\nLinearPCM : OK\n");
    check(dataFormat.mFramesPerPacket == 1, "\nOne Frame/Packet: OK\n");
    result.mono = check(dataFormat.mChannelsPerFrame == 1, "\nMono : OK\n");
    result.nativeEndian =
        check(isLinearPCM && (flags & platform::kIsBigEndian) == 0, "\nNativeEndian : OK\n");
    result.isFloat = check(file.sourceBitDepth == -32, "\nFloat : OK\n");
    result.is32Bit = check(dataFormat.mBitsPerChannel == 32, "\n32-bit : OK\n");
    result.rateMatches = check(dataFormat.mSampleRate == R, format("\nR = %lf : OK\n", R));
    check((flags & platform::kIsPacked) != 0, "\n!!!IS PACKED!!!\n");
    check((flags & platform::kIsAlignedHigh) != 0, "\n!!!IS ALIGNED HIGH!!!\n");
    return result;
}

void logConfirmation(const Properties& file, std::uint64_t byteCount) {
    const std::uint64_t expected = std::uint64_t{streamFormat.mFramesPerPacket} *
                                   streamFormat.mBytesPerFrame * file.packetCount;
    if (byteCount == expected) {
        log(format("\nFormat Confirmed\nPackets: %llu\n Bytes: %llu\n",
                   static_cast<unsigned long long>(file.packetCount),
                   static_cast<unsigned long long>(byteCount)));
    }
}

void logCounts(std::uint64_t packets, std::uint64_t bytes, std::int64_t samples) {
    log(format("\nNUM_PACKETS: %llu\nNUM_BYTES: %llu\nBUF_SIZE: %ld",
               static_cast<unsigned long long>(packets), static_cast<unsigned long long>(bytes),
               samples));
    log(format("\nSIZE OF FLOAT32 = %d\n", 4));
}

/// What came of a read: the counts as the service leaves them.
struct ReadCounts {
    std::uint64_t packets = 0;
    std::uint64_t bytes = 0;
    std::uint64_t storedBytes = 0;
};

/// Reads the data straight into the block, and zeros what it does not fill. Packets of more than
/// four bytes hold more than the block: only its words are stored, and the slack behind them stays
/// zero.
ReadCounts readData(AudioFile& audio, const Properties& file, float* samples) {
    const std::uint64_t byteCount = file.packetCount * file.format.mBytesPerPacket;
    const std::uint64_t wanted = std::min(byteCount, file.packetCount * sizeof(float));
    const std::uint64_t stored = audio.readBytes(0, wanted, samples);
    if (platform::isStopRequested()) {
        return {};
    }
    std::memset(reinterpret_cast<std::byte*>(samples) + stored, 0,
                file.packetCount * sizeof(float) - stored);
    if (stored == wanted) {
        return {file.packetCount, byteCount, stored};
    }
    return {stored / file.format.mBytesPerPacket, stored, stored};
}

const char* load(AudioFile& audio, const Properties& file, bool nativeEndian) {
    log("\nFILE IS READABLE\n");
    logConfirmation(file, file.packetCount * file.format.mBytesPerPacket);
    const auto count = static_cast<std::int64_t>(file.packetCount);
    SampleBlock samples = allocateUnsetSamples(count);
    if (samples == nullptr) {
        postTooLarge();
        return "KO";
    }
    ReadCounts read;
    const bool done = platform::runLongWork([&] {
        platform::expectStages(nativeEndian ? 1 : 2);
        read = readData(audio, file, samples.get());
        if (!nativeEndian) {
            // Whole words up to the last byte read, whatever the data's format is.
            const std::uint64_t words = (read.storedBytes + sizeof(float) - 1) / sizeof(float);
            swapSamples(std::span(samples.get(), words));
        }
    });
    if (!done) {
        return kReadingCancelled;
    }
    logCounts(nativeEndian ? read.packets : file.packetCount, read.bytes, count);
    replaceBuffer(std::move(samples), count);
    return "OK";
}

const char* refuse(const FileUrl& url) {
    log("\nFILE NOT READABLE\n");
    std::string message = "ZEMO CAN'T READ THE FILE:\n" + url.lastPathComponent();
    message.resize(std::min(message.size(), kMessageBytes - 1));
    PostError(message);
    return "KO";
}

const char* openOrRefuse(const FileUrl& url) {
    log("\nthePath = " + url.path() + "\n");
    log("\nURL = " + FileUrl(url.path()).absoluteString() + "\n");
    // A file that cannot be opened goes on with a format of zeros, which the checks refuse.
    auto audio = AudioFile::open(url.path());
    Properties file;
    if (audio) {
        static_cast<void>(audio.value().fileFormatInfo()); // asked for as well, and not used
        file = {audio.value().dataFormat(), audio.value().sourceBitDepth(),
                audio.value().packetCount()};
    }
    const Checks checks = checkFormat(file);
    return audio && checks.readable() ? load(audio.value(), file, checks.nativeEndian)
                                      : refuse(url);
}

} // namespace

const char* openSoundFile(const FileUrl& url) {
    return platform::unlessOutOfMemory([&] { return openOrRefuse(url); },
                                       [] {
                                           postTooLarge();
                                           return "KO";
                                       });
}

} // namespace zemo
