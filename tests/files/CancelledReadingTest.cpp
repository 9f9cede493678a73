#include <string>

#include <gtest/gtest.h>

#include "files/AudioFileReader.h"
#include "files/RawFileReader.h"
#include "files/SoundLoader.h"
#include "files_test/SoundFiles.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"
#include "support/CancellingWork.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

const std::vector<float> kOld{2.0F, -0.5F}; // normalizing would change it

class CancelledReading : public testing::Test {
protected:
    CancelledReading() {
        platform.launch(48000.0);
        loadSound(kOld);
        platform.files.files["/new.caf"] = cafFile({}, littleFloats({0.5F, 0.25F}));
        platform.files.files["/new.raw"] = littleFloats({0.5F, 0.25F});
    }

    FakePlatform platform;
};

TEST_F(CancelledReading, LeavesTheSoundAndIsToldFromOtherResults) {
    const CancellingWork work(0.0);
    for (const char* const path : {"/new.caf", "/new.raw"}) {
        for (const bool swap : {false, true}) {
            const OpenResult result = openByExtension(FileUrl(path), swap);
            EXPECT_TRUE(result.cancelled) << path;
            EXPECT_FALSE(result.loaded);
            EXPECT_EQ(currentSound(), kOld);
        }
    }
    EXPECT_EQ(work.cancelled, 4);
    EXPECT_TRUE(platform.alert.shown.empty());
}

TEST_F(CancelledReading, ByANameThatReadsLikeItIsNone) {
    platform.files.files["/line.raw"] = {'C', 'a', 'n', 'c', 'e', 'l', 'l', 'e', 'd', 0, 0, 0};
    const OpenResult result = openByExtension(FileUrl("/line.raw"), false);
    EXPECT_FALSE(result.cancelled);
    EXPECT_TRUE(result.loaded);
}

TEST_F(CancelledReading, IsNoneOnceTheFileIsRead) {
    const CancellingWork work(2.0);
    EXPECT_TRUE(openByExtension(FileUrl("/new.caf"), false).loaded);
    EXPECT_EQ(currentSound(), (std::vector<float>{0.5F, 0.25F}));
}

TEST_F(CancelledReading, NeverCutsNormalizingShort) {
    const CancellingWork work(0.0);
    float peak = 0.0F;
    finishOpening("/new.caf", &peak, false);
    EXPECT_EQ(peak, 2.0F);
    EXPECT_EQ(currentSound(), (std::vector<float>{2.0F / 2.2F, -0.5F / 2.2F}));
}

/// A save that waits for its name holds the sound as it was when it was asked for.
TEST_F(CancelledReading, NormalizingLeavesASoundThatIsHeldElsewhere) {
    const SampleBlock held = heldSound();
    float peak = 0.0F;
    finishOpening("/new.caf", &peak, false);
    EXPECT_EQ(held.get()[0], 2.0F);
    EXPECT_EQ(held.get()[1], -0.5F);
    EXPECT_EQ(currentSound(), (std::vector<float>{2.0F / 2.2F, -0.5F / 2.2F}));
}

} // namespace
} // namespace zemo::test
