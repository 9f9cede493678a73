#include <cstring>

#include "Faults.h"
#include "ForeignSounds.h"
#include "Sounds.h"
#include "files/AudioFileReader.h"
#include "files/AudioFileWriter.h"
#include "files/RawFileReader.h"
#include "files/RefusalReason.h"
#include "files/SoundLoader.h"
#include "files_test/SoundChecks.h"
#include "interchange/Export.h"
#include "interchange/Import.h"
#include "playback/SharedState.h"

/// Every request for memory of whatever reads or writes a file.
namespace zemo::test {
namespace {

constexpr const char* kTooLarge = "The sound is too large for this computer's memory.\n";
constexpr const char* kCannotSave = "There is not enough memory to save the sound.\n";
constexpr const char* kCannotWrite = "The file cannot be written: Cannot allocate memory.\n";

class EveryAllocationOfFiles : public EveryAllocation {
protected:
    /// As the window and zemo-batch open a file; the path is made before.
    void failOpening(const std::string& name, const Bytes& content, bool swap, bool normalize) {
        keep(name, content);
        const FileUrl url(path(name));
        failEach(
            [&] {
                float peak = 0.0F;
                const OpenResult result = openByExtension(url, swap);
                return finishOpening(url.path(), &peak, normalize) && result.loaded;
            },
            {kTooLarge}, normalize ? halfWay(url, swap) : std::vector<State>());
    }

    /// Opened and not scaled; and, as a sound is also scaled after a file was refused, not opened
    /// and scaled.
    std::vector<State> halfWay(const FileUrl& url, bool swap) {
        float peak = 0.0F;
        prepare();
        static_cast<void>(openByExtension(url, swap));
        std::vector<State> states{state()};
        prepare();
        static_cast<void>(finishOpening(url.path(), &peak, true));
        states.push_back(state());
        return states;
    }

    void failSaving(const std::string& name, bool (*save)(const FileUrl&)) {
        keep(name, counting(77));
        const FileUrl url(path(name));
        failEach([&] { return save(url); }, {kCannotSave});
    }
};

const std::vector<float> kLoud = noise(3000, 3, 4.0F);

CafDescription cafAt44100(std::uint32_t flags) {
    return {.rate = 44100.0, .flags = flags};
}

Bytes aiffAt44100() {
    return aiffFile({.frames = static_cast<std::uint32_t>(kLoud.size()),
                     .rate = extended(0x400E, 0xAC44000000000000)},
                    bigFloats(kLoud));
}

TEST_F(EveryAllocationOfFiles, OpeningACaf) {
    failOpening("x.caf", cafFile(cafAt44100(3), littleFloats(kLoud)), false, false);
}

TEST_F(EveryAllocationOfFiles, OpeningACafOfTheOtherByteOrderAndScalingIt) {
    failOpening("x.caf", cafFile(cafAt44100(1), bigFloats(kLoud)), false, true);
}

TEST_F(EveryAllocationOfFiles, OpeningAnAiffC) {
    failOpening("x.aif", aiffAt44100(), false, false);
}

TEST_F(EveryAllocationOfFiles, OpeningRawData) {
    failOpening("x.raw", littleFloats(kLoud), false, false);
}

TEST_F(EveryAllocationOfFiles, OpeningRawDataOfTheOtherByteOrderAndScalingIt) {
    failOpening("x", bigFloats(kLoud), true, true);
}

TEST_F(EveryAllocationOfFiles, OpeningATextAsRawDataWithTheLongestFirstLine) {
    failOpening("x.txt", Bytes(4000, 'A'), false, false);
}

TEST_F(EveryAllocationOfFiles, OpeningBesideTheWindow) {
    WorkOnAnotherThread work;
    platform::services().longWork = &work;
    failOpening("x.caf", cafFile(cafAt44100(3), littleFloats(kLoud)), false, true);
    failOpening("x.raw", littleFloats(kLoud), false, true);
    platform::services().longWork = nullptr;
}

TEST_F(EveryAllocationOfFiles, ScalingASoundThatASaveHolds) {
    HeldSound held;
    const std::string none;
    prepare();
    failEach(
        [&] {
            held = HeldSound::take();
            float peak = 0.0F;
            const bool done = finishOpening(none, &peak, true);
            held = {};
            return done;
        },
        {kTooLarge});
}

TEST_F(EveryAllocationOfFiles, TheReasonOfARefusalIsThatOrNone) {
    keep("x.caf", cafFile(cafAt44100(3), littleFloats(kLoud)));
    const FileUrl url(path("x.caf"));
    R = 48000.0;
    failEach(
        [&] {
            const RefusalReason reason = refusalReason(url);
            EXPECT_TRUE(reason.kind == RefusalReason::Kind::Rate ||
                        reason.kind == RefusalReason::Kind::None);
            return true;
        },
        {});
}

TEST_F(EveryAllocationOfFiles, SavingACaf) {
    failSaving("x.caf", saveSound);
}

TEST_F(EveryAllocationOfFiles, SavingAnAiffC) {
    failSaving("x.aif", saveSound);
}

TEST_F(EveryAllocationOfFiles, SavingInTheOlderWay) {
    failSaving("x.caf", classicsaveAsAudioFile);
}

TEST_F(EveryAllocationOfFiles, SavingBesideTheWindow) {
    WorkOnAnotherThread work;
    platform::services().longWork = &work;
    failSaving("x.caf", saveSound);
    failSaving("x.aif", saveSound);
    platform::services().longWork = nullptr;
}

// Foreign files ---------------------------------------------------------------------------------

/// The libraries do not look whether they get their memory, so theirs is granted: that they are not
/// called where there may be none is asked about before each call, and that question fails here.
class EveryAllocationOfInterchange : public EveryAllocation {
protected:
    EveryAllocationOfInterchange() { sparing_ = kForeignLibraries; }

    static constexpr const char* kForeignLibraries =
        "libsndfile libsoxr libogg libvorbis libFLAC libopus libmpg123 libmp3lame";

    bool import(const FileUrl& url) {
        const auto imported = importSound(url);
        if (!imported) {
            EXPECT_EQ(imported.error().category, platform::ErrorCategory::OutOfMemory);
            sentences_.add(imported.error().sentence);
        }
        return static_cast<bool>(imported);
    }

    void failImporting(const Bytes& content) {
        keep("x", content);
        const FileUrl url(path("x"));
        failEach([&] { return import(url); }, {kTooLarge});
    }

    void failExporting(const std::string& name) {
        keep(name, counting(77));
        const FileUrl url(path(name));
        failEach(
            [&] {
                const auto exported = exportSound(url);
                if (!exported) {
                    sentences_.add(exported.error().sentence);
                }
                return static_cast<bool>(exported);
            },
            {kCannotWrite});
    }
};

TEST_F(EveryAllocationOfInterchange, ImportingEveryKindOfFile) {
    for (const auto& [name, content] : foreignFiles()) {
        SCOPED_TRACE(name);
        failImporting(content);
        ASSERT_FALSE(HasFailure());
    }
}

TEST_F(EveryAllocationOfInterchange, ImportingAtTheSameRate) {
    failImporting(wavOf(44100, wordsOf(sine(44100, 440.0, 100'000))));
}

TEST_F(EveryAllocationOfInterchange, ImportingAtTheSameRateWithTwoChannels) {
    failImporting(wavOfZeros(2, 44100, 50'000));
}

TEST_F(EveryAllocationOfInterchange, ImportingWithConversionOfTheRate) {
    failImporting(wavOf(48000, wordsOf(sine(48000, 440.0, 100'000))));
}

TEST_F(EveryAllocationOfInterchange, ImportingBesideTheWindow) {
    WorkOnAnotherThread work;
    platform::services().longWork = &work;
    failImporting(wavOf(48000, wordsOf(sine(48000, 440.0, 20'000))));
    platform::services().longWork = nullptr;
}

TEST_F(EveryAllocationOfInterchange, LookingAtAFile) {
    keep("x", wavOfZeros(1, 44100, 100));
    const std::string file = path("x");
    failEach(
        [&] {
            const auto found = describeSoundFile(file);
            if (!found) {
                sentences_.add(found.error().sentence);
            }
            return static_cast<bool>(found);
        },
        {kTooLarge});
    failEach([&] { return isKnownSoundFile(file); }, {});
}

TEST_F(EveryAllocationOfInterchange, ExportingAWav) {
    failExporting("x.wav");
}

TEST_F(EveryAllocationOfInterchange, ExportingAFlac) {
    failExporting("x.flac");
}

TEST_F(EveryAllocationOfInterchange, ExportingBesideTheWindow) {
    WorkOnAnotherThread work;
    platform::services().longWork = &work;
    failExporting("x.flac");
    platform::services().longWork = nullptr;
}

} // namespace
} // namespace zemo::test
