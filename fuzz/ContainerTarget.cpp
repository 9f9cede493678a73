#include <algorithm>
#include <string>
#include <vector>

#include "Target.h"
#include "files/AudioFile.h"
#include "files/AudioFileReader.h"
#include "files/AudioFileWriter.h"
#include "files_test/SoundChecks.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

using zemo::fuzz::require;

namespace {

/// All that one opening leaves behind.
struct Outcome {
    std::string result;
    std::vector<std::uint32_t> sound;
    std::vector<std::string> trace;
    std::size_t alerts = 0;

    bool operator==(const Outcome&) const = default;
};

void requireDescriptionInsideFile(zemo::test::MemoryFileSystem& files, std::size_t size) {
    int error = 0;
    const auto described = zemo::describeContainer(*files.openForReading("/x", error));
    if (!described) {
        require(!described.error().sentence.empty(), "a refusal says why");
        return;
    }
    const zemo::ContainerDescription& found = described.value();
    require(found.dataOffset <= size && found.dataBytes <= size - found.dataOffset,
            "the audio bytes lie inside the file");
    require(found.packetCount <= found.dataBytes, "every packet has at least one byte");
    const std::uint64_t bytesPerPacket = found.format.mBytesPerPacket;
    require(bytesPerPacket == 0 || found.packetCount <= found.dataBytes / bytesPerPacket,
            "all packets are really there");
}

/// The sound that is there now comes back from a file that it is saved in, two zeros longer.
void requireRoundTrip(const char* path) {
    std::vector<std::uint32_t> expected = zemo::test::soundWords();
    expected.insert(expected.end(), 2, 0);
    zemo::SoundCopy copy = zemo::SoundCopy::take();
    require(zemo::saveAsAudioFile(zemo::FileUrl(path), copy.bytes()), "an opened sound is saved");
    require(zemo::openSoundFile(zemo::FileUrl(path)) == std::string("OK"), "and opened again");
    require(zemo::test::soundWords() == expected, "with the same samples");
}

Outcome opened(const std::uint8_t* data, std::size_t size) {
    zemo::test::FakePlatform platform;
    platform.launch(48000.0);
    platform.files.files["/x"].assign(data, data + size);
    requireDescriptionInsideFile(platform.files, size);

    const std::vector<float> old{0.5F, -0.25F};
    zemo::test::loadSound(old);
    const std::string result = zemo::openSoundFile(zemo::FileUrl("/x"));
    require(result == "OK" || result == "KO", "there are two results");
    require(zemo::fBuffersize.load() <= static_cast<std::int64_t>(std::max<std::size_t>(size, 2)),
            "a sound has no more samples than its file has bytes");
    require(zemo::test::slackIsZero(), "the slack is zero");
    require(result == "OK" || zemo::test::currentSound() == old, "a refusal keeps the old sound");
    require(platform.alert.shown.size() == (result == "OK" ? 0U : 1U),
            "a refusal, and nothing else, is one alert");
    const Outcome outcome{result, zemo::test::soundWords(), platform.trace.all,
                          platform.alert.shown.size()};
    if (result == "OK" && zemo::fBuffersize.load() > 0) {
        requireRoundTrip("/saved.caf");
        requireRoundTrip("/saved.aif");
    }
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zemo::test::dirtyFreshMemory();
    require(opened(data, size) == opened(data, size), "the same file opens in the same way");
    return 0;
}
