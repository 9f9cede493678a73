#include <string>
#include <vector>

#include "Target.h"
#include "files_test/SoundChecks.h"
#include "interchange/Import.h"
#include "platform/Memory.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

using zemo::fuzz::require;

namespace {

/// So little memory that a small file cannot become a sound of gigabytes.
class LittleMemory final : public zemo::platform::Memory {
    void preferLargePages(void* /*block*/, std::size_t /*bytes*/) override {}
    std::uint64_t availableBytes() override { return 0; }
};

/// All that one import leaves behind.
struct Outcome {
    std::string sentence; ///< empty: it was done
    std::string format;
    std::vector<std::uint32_t> sound;

    bool operator==(const Outcome&) const = default;
};

Outcome imported(const std::uint8_t* data, std::size_t size) {
    LittleMemory memory;
    zemo::test::FakePlatform platform;
    zemo::platform::services().memory = &memory;
    platform.launch(48000.0);
    platform.files.files["/x"].assign(data, data + size);
    const std::vector<float> old{0.5F, -0.25F};
    zemo::test::loadSound(old);
    const auto result = zemo::importSound(zemo::FileUrl("/x"));
    require(zemo::test::slackIsZero(), "the slack is zero");
    require(platform.alert.shown.empty(), "no alert");
    if (!result) {
        require(!result.error().sentence.empty(), "a refusal says why");
        require(zemo::test::currentSound() == old, "a refusal keeps the old sound");
        return {result.error().sentence, {}, {}};
    }
    const zemo::Imported& done = result.value();
    require(done.source.channels >= 1 && done.source.channels <= zemo::kMostImportedChannels,
            "the channels are within their bounds");
    require(done.source.rate >= zemo::kLowestImportedRate &&
                done.source.rate <= zemo::kHighestImportedRate,
            "the rate is within its bounds");
    require(zemo::fBuffersize.load() > 0 && done.frames > 0, "an import is not empty");
    return {{}, done.source.format, zemo::test::soundWords()};
}

} // namespace

/// libsndfile 1.2.0 forgets this block of an Ogg file that breaks off in its headers.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:vorbis_info_init";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zemo::test::dirtyFreshMemory();
    const Outcome first = imported(data, size);
    require(first == imported(data, size), "the same file comes out the same");
    return 0;
}
