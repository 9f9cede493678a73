#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "batch/OfflineOutput.h"
#include "batch/StepRunner.h"
#include "files/AudioFileLayout.h"
#include "playback/OutputUnit.h"
#include "playback/RenderCallback.h"
#include "playback/SharedState.h"
#include "support/FakePlatform.h"
#include "support/FeedOutput.h"

namespace zemo::test {
namespace {

constexpr std::uint32_t kTail = 2880;

class RenderSteps : public testing::Test {
protected:
    RenderSteps() {
        platform::services().audioOutput = &output_;
        createOutputUnit(&bufferPlayer);
    }

    void loadNoise(std::size_t count) {
        std::uniform_real_distribution<float> level(0.1F, 0.9F);
        std::vector<float> samples(count);
        for (float& sample : samples) {
            sample = oneIn(2) ? level(random_) : -level(random_);
        }
        loadSound(samples);
    }

    /// What `zemo-batch render FILE levels=FILE` writes.
    void render(bool rms = false) {
        batch::StepRunner runner(output_);
        batch::RenderStep step{.file = "/played.caf", .rms = rms, .levels = "/levels.txt"};
        EXPECT_EQ(step.frames, 512U);
        ASSERT_TRUE(runner.run(step));
        const std::vector<std::uint8_t>& file = platform_.files.files["/played.caf"];
        const std::size_t head = cafHeader(streamFormat, 0).size();
        rendered_.resize((file.size() - head) / sizeof(float));
        std::memcpy(rendered_.data(), file.data() + head, file.size() - head);
        const std::vector<std::uint8_t>& text = platform_.files.files["/levels.txt"];
        levels_.clear();
        for (auto line = text.begin(); line != text.end();) {
            const auto end = std::find(line, text.end(), '\n');
            levels_.push_back(std::stof(std::string(line, end)));
            line = end + 1;
        }
    }

    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(random_() % limit);
    }
    bool oneIn(std::uint32_t times) { return below(times) == 0; }

    FakePlatform platform_;
    batch::OfflineOutput output_{48000.0};
    std::mt19937 random_{16};
    std::vector<float> rendered_;
    std::vector<float> levels_;
};

/// A device that asks for its frames as it likes.
class ADevice : public RenderSteps {
protected:
    ADevice() { device_.feed.setTail(kTail); }

    /// One length for a while, then another.
    std::uint32_t nextRequest() {
        constexpr std::uint32_t kOdd[] = {0, 1, 511, 512, 513, 4096};
        if (oneIn(10)) {
            usual_ = 1 + below(2000);
        }
        return oneIn(4) ? kOdd[below(6)] : usual_;
    }

    /// All that the device gets of one play, the silence behind it included.
    std::vector<float> play() {
        bufferPlayer.outputUnit = &device_;
        bufferPlay0(0);
        std::vector<float> heard;
        std::vector<float> frames(4096);
        while (device_.feed.phase() != platform::RenderFeed::Phase::Drained) {
            const std::uint32_t count = device_.feed.fill(frames.data(), nextRequest());
            heard.insert(heard.end(), frames.begin(), frames.begin() + count);
        }
        device_.feed.end();
        bufferPlayer.outputUnit = &output_;
        return heard;
    }

    FeedOutput device_{FloatBufferRenderProc, &bufferPlayer};
    std::uint32_t usual_ = 1024;
};

TEST_F(ADevice, GetsWhatIsRenderedHoweverItAsks) {
    for (int round = 0; round < 300; ++round) {
        loadNoise(1 + below(round < 100 ? 2000 : 20'000));
        render();
        std::vector<float> heard = play();
        ASSERT_GE(heard.size(), rendered_.size());
        const std::vector<float> behind(heard.begin() + static_cast<long>(rendered_.size()),
                                        heard.end());
        heard.resize(rendered_.size());
        ASSERT_EQ(std::memcmp(heard.data(), rendered_.data(), heard.size() * sizeof(float)), 0)
            << fBuffersize << " samples, round " << round;
        EXPECT_EQ(behind, std::vector<float>(behind.size(), 0.0F));
        EXPECT_GE(behind.size(), kTail - 1);
        EXPECT_LE(behind.size(), kTail);
    }
}

TEST_F(ADevice, HearsAStopAsOneFadeOverTheNextCall) {
    loadNoise(100'000);
    for (int round = 0; round < 100; ++round) {
        bufferPlayer.outputUnit = &device_;
        bufferPlay0(0);
        std::vector<float> heard;
        std::vector<float> frames(4096);
        const auto ask = [&] {
            const std::uint32_t count = device_.feed.fill(frames.data(), nextRequest());
            heard.insert(heard.end(), frames.begin(), frames.begin() + count);
        };
        for (std::uint32_t more = 1 + below(20); more > 0 || totalFrames < 512; --more) {
            ask();
        }
        const auto fade = static_cast<std::size_t>(totalFrames.load());
        bufferStop0();
        while (device_.feed.phase() != platform::RenderFeed::Phase::Drained) {
            ask();
        }
        device_.feed.end();
        const float* const sound = fBuffer.load();
        for (std::size_t i = 512; i < fade; ++i) {
            ASSERT_EQ(heard.at(i), sound[i]) << i;
        }
        for (std::uint32_t i = 0; i < 512; ++i) {
            const float expected = sound[fade + i] * static_cast<float>(512 - i) / 512.0F;
            ASSERT_EQ(heard.at(fade + i), expected) << i;
        }
        for (std::size_t i = fade + 512; i < heard.size(); ++i) {
            ASSERT_EQ(heard[i], 0.0F);
        }
        bufferPlayer.outputUnit = &output_;
    }
}

TEST_F(RenderSteps, TheMeterIsEmptyAfterTheCallOfTheFadeOut) {
    for (const bool rms : {false, true}) {
        loadSound(std::vector<float>(2560, 0.5F));
        render(rms);
        // The fade-in, three steady calls, the fade-out, and the end of the sound.
        ASSERT_EQ(levels_.size(), 6U);
        for (std::size_t call = 0; call < levels_.size(); ++call) {
            EXPECT_EQ(levels_[call] > 0.0F, call < 4) << call;
        }
    }
}

} // namespace
} // namespace zemo::test
