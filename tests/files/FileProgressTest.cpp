#include <algorithm>

#include <gtest/gtest.h>

#include "files/AudioFileWriter.h"
#include "files/SoundLoader.h"
#include "files_test/SoundFiles.h"
#include "platform/Progress.h"
#include "platform/Workers.h"
#include "support/FakePlatform.h"

/// What the window can show while a file is read or saved.
namespace zemo::test {
namespace {

constexpr std::size_t kSamples = 2'500'000; ///< more than two of the pieces of any work

/// Tells before every read of many bytes from a file.
class WatchedFiles final : public platform::FileSystem {
public:
    WatchedFiles(platform::FileSystem& files, std::function<void()> beforeReading)
        : files_(files), beforeReading_(std::move(beforeReading)) {}

    std::unique_ptr<platform::FileStream> openForReading(const std::string& path,
                                                         int& error) override {
        return std::make_unique<Stream>(files_.openForReading(path, error), beforeReading_);
    }

private:
    class Stream final : public platform::FileStream {
    public:
        Stream(std::unique_ptr<platform::FileStream> stream, std::function<void()>& beforeReading)
            : stream_(std::move(stream)), beforeReading_(beforeReading) {}
        std::uint64_t size() const override { return stream_->size(); }
        std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
            if (count > 4096) {
                beforeReading_();
            }
            return stream_->readAt(offset, destination, count);
        }

    private:
        std::unique_ptr<platform::FileStream> stream_;
        std::function<void()>& beforeReading_;
    };

    platform::FileSystem& files_;
    std::function<void()> beforeReading_;
};

/// Tells when the pieces of a stage have been done; one thread does them all.
class WatchedWorkers final : public platform::Workers {
public:
    explicit WatchedWorkers(std::function<void()> afterStage)
        : afterStage_(std::move(afterStage)) {}
    unsigned count() const override { return 2; }
    void run(unsigned /*most*/, const Work& work) override {
        work(0);
        afterStage_();
    }

private:
    std::function<void()> afterStage_;
};

/// The work of a file: it has some stages, and in one of them (from 0 on) the file is read or
/// written.
struct Stages {
    unsigned count = 1;
    unsigned ofTheFile = 0;
};

class FileProgress : public testing::Test {
protected:
    FileProgress() {
        platform.launch(48000.0);
        platform::services().fileSystem = &files;
        platform::services().workers = &workers;
        platform.operations.inject = [this](const std::string& call, std::size_t) {
            if (call == "write") {
                look();
            }
            return 0L;
        };
    }

    void look() {
        seen.push_back(platform::currentProgress()->fraction());
        all.push_back(seen.back());
    }

    /// Nothing is told to be done before it is, and in the end all of it.
    template <typename Work> void expect(Stages stages, const Work& work) {
        platform::Progress progress;
        const platform::ProgressScope scope(&progress);
        seen.clear();
        all.clear();
        work();
        const double first = static_cast<double>(stages.ofTheFile) / stages.count;
        EXPECT_EQ(seen.front(), first);
        EXPECT_GT(seen.back(), first);
        EXPECT_LE(seen.back(), first + 1.0 / stages.count);
        EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
        EXPECT_EQ(progress.fraction(), 1.0);
    }

    void expectOfReading(const std::string& name, const Bytes& content, bool swap, Stages stages) {
        platform.files.files[name] = content;
        expect(stages, [&] { EXPECT_TRUE(openByExtension(FileUrl(name), swap).loaded); });
        EXPECT_LT(seen.back(), 1.0 / stages.count) << "the last piece is not read yet";
    }

    FakePlatform platform;
    WatchedFiles files{platform.files, [this] { look(); }};
    WatchedWorkers workers{[this] { all.push_back(platform::currentProgress()->fraction()); }};
    std::vector<double> seen; ///< before each read or write of the file
    std::vector<double> all;  ///< and after the stages in memory
};

TEST_F(FileProgress, OfReadingGoesOnWithEveryPieceAndLeavesHalfForTheSwapping) {
    const Bytes samples(kSamples * sizeof(float));
    expectOfReading("/x.raw", samples, false, {});
    expectOfReading("/x.raw", samples, true, {.count = 2});
    expectOfReading("/x.caf", cafFile({}, samples), false, {});
    expectOfReading("/x.caf", cafFile({.flags = 1}, samples), false, {.count = 2});
}

TEST_F(FileProgress, OfSavingGoesOnWithEveryBlockAfterTheStagesThatPutItInOrder) {
    loadSound(std::vector<float>(kSamples, 0.5F));
    expect({}, [] { EXPECT_TRUE(saveSound(FileUrl("/x.caf"))); });
    expect({.count = 3, .ofTheFile = 2}, [] { EXPECT_TRUE(saveSound(FileUrl("/x.aif"))); });
    SoundCopy copy = SoundCopy::take();
    expect({}, [&] { EXPECT_TRUE(saveAsAudioFile(FileUrl("/x.caf"), copy.bytes())); });
    expect({.count = 2, .ofTheFile = 1},
           [&] { EXPECT_TRUE(saveAsAudioFile(FileUrl("/x.aif"), copy.bytes())); });
}

} // namespace
} // namespace zemo::test
