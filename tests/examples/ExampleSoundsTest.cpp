#include <gtest/gtest.h>

#include <cmath>

#include "ExampleSounds.h"
#include "files/AudioFileReader.h"
#include "platform/Services.h"
#include "platform_linux/LinuxServices.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"

namespace zemo::test {
namespace {

/// The largest difference between the example in the folder and the sound as it is made now. Not
/// compared bit by bit: another C library may round a sine another way.
float differenceFromFile(const char* name, double rate, const std::vector<float>& made) {
    FakePlatform platform;
    platform::PosixFileSystem realFiles;
    platform::services().fileSystem = &realFiles;
    platform.launch(rate);
    EXPECT_STREQ(openSoundFile(FileUrl(std::string(EXAMPLES_FOLDER) + "/" + name)), "OK");
    const std::vector<float> stored = currentSound();
    EXPECT_EQ(stored.size(), made.size());
    float largest = 0.0F;
    for (std::size_t i = 0; i < std::min(stored.size(), made.size()); ++i) {
        largest = std::max(largest, std::fabs(stored[i] - made[i]));
    }
    return largest;
}

float peakOf(const std::vector<float>& sound) {
    float peak = 0.0F;
    for (const float sample : sound) {
        peak = std::max(peak, std::fabs(sample));
    }
    return peak;
}

TEST(Examples, TheBellIsWhatItsProgramMakes) {
    EXPECT_LT(differenceFromFile("bell-44100.caf", 44100.0, examples::bell()), 1e-6F);
}

TEST(Examples, TheHarpIsWhatItsProgramMakes) {
    EXPECT_LT(differenceFromFile("harp-48000.caf", 48000.0, examples::harp()), 1e-6F);
}

TEST(Examples, NeitherReachesFullScale) {
    EXPECT_FLOAT_EQ(peakOf(examples::bell()), 0.8F);
    EXPECT_FLOAT_EQ(peakOf(examples::harp()), 0.8F);
}

} // namespace
} // namespace zemo::test
