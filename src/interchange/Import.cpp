#include "interchange/Import.h"

#include <cmath>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "RateConverter.h"
#include "SampleChain.h"
#include "SoundFileReader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "platform/Progress.h"
#include "playback/SharedState.h"
#include "playback/SoundExchange.h"

namespace zemo {
namespace {

using platform::Error;
using platform::ErrorCategory;
using platform::format;

constexpr std::size_t kBlock = std::size_t{1} << 14; ///< values that are decoded at a time
constexpr std::size_t kSteps = 1000;                 ///< of the progress

Error failure(ErrorCategory category, platform::Sentence sentence) {
    return {category, std::nullopt, std::move(sentence)};
}

Error cancelled() {
    return failure(ErrorCategory::Cancelled, "The import was cancelled.");
}

Error tooLarge() {
    return failure(ErrorCategory::OutOfMemory,
                   "The sound is too large for this computer's memory.");
}

std::optional<Error> refusalOf(const SoundFileDescription& file, double rate) {
    if (file.channels < 1 || file.channels > kMostImportedChannels) {
        return failure(ErrorCategory::NotSupported,
                       format("The sound file has %d channels: 1 to %d can be imported.",
                              file.channels, kMostImportedChannels));
    }
    const bool known = file.rate >= kLowestImportedRate && file.rate <= kHighestImportedRate;
    if (!known || file.rate > rate * kMostRateChange || rate > file.rate * kMostRateChange) {
        return failure(ErrorCategory::NotSupported,
                       format("The sound file's rate of %.15g Hz cannot be converted to %.15g Hz.",
                              file.rate, rate));
    }
    return std::nullopt;
}

/// The mean of each frame's channels, in the place of the frames.
void mixDown(std::span<double> values, std::size_t frames, std::size_t channels) {
    for (std::size_t frame = 0; frame < frames && channels > 1; ++frame) {
        double sum = 0.0;
        for (const double value : values.subspan(frame * channels, channels)) {
            sum += value;
        }
        values[frame] = sum / static_cast<double>(channels);
    }
}

/// One that is no number would spread over its neighbours in the conversion.
void zeroNonFinite(std::span<double> samples) {
    for (double& sample : samples) {
        sample = std::isfinite(sample) ? sample : 0.0;
    }
}

/// What is done beside the sound that is there.
class Decoding {
public:
    Decoding(std::string path, double rate) : path_(std::move(path)), rate_(rate) {}

    void run() { error_ = decode(); } // [worker]

    // Taken and not copied: what follows the exchange of the sound must not ask for memory.
    std::optional<Error> takeError() noexcept { return std::move(error_); }
    Imported takeImported() noexcept { return std::move(imported_); }
    std::int64_t count() const noexcept { return count_; }
    SampleBlock takeSamples() noexcept { return std::move(samples_); }

private:
    std::optional<Error> decode();
    /// Each of them decodes to the end; false: there is no memory.
    bool copy(SoundFileReader& reader);
    bool mix(SoundFileReader& reader);
    bool convert(SoundFileReader& reader);
    /// The next frames, mixed; empty at the end.
    std::span<double> nextFrames(SoundFileReader& reader);
    void tellProgress(const SoundFileReader& reader, std::size_t frames);
    std::optional<Error> verdict(const SoundFileReader& reader) const;

    std::string path_;
    double rate_;
    std::vector<double> values_;
    SampleChain chain_;
    SampleBlock samples_;
    std::int64_t count_ = 0;
    std::size_t stepsDone_ = 0;
    Imported imported_;
    std::optional<Error> error_;
};

std::optional<Error> Decoding::decode() {
    const auto opened = SoundFileReader::open(path_);
    if (platform::isStopRequested()) {
        return cancelled();
    }
    if (!opened) {
        return opened.error();
    }
    SoundFileReader& reader = *opened.value();
    imported_.source = reader.description();
    if (auto refusal = refusalOf(imported_.source, rate_)) {
        return refusal;
    }
    platform::beginStage(kSteps);
    const bool same = imported_.source.rate == rate_;
    const bool plain = same && imported_.source.channels == 1;
    if (!(plain ? copy(reader) : (same ? mix(reader) : convert(reader)))) {
        return tooLarge();
    }
    if (auto broken = verdict(reader)) {
        return broken;
    }
    imported_.incomplete = reader.isDamaged() || imported_.frames < imported_.source.frames;
    count_ = chain_.count();
    samples_ = chain_.join();
    if (platform::isStopRequested()) {
        return cancelled();
    }
    return samples_ != nullptr ? std::nullopt : std::optional(tooLarge());
}

bool Decoding::copy(SoundFileReader& reader) {
    std::size_t frames = 1;
    while (frames > 0 && !platform::isStopRequested()) {
        const std::span<float> room = chain_.room();
        if (room.empty()) {
            return false;
        }
        frames = reader.read(room.first(std::min(room.size(), kBlock)));
        chain_.advance(frames);
        tellProgress(reader, frames);
    }
    return true;
}

std::span<double> Decoding::nextFrames(SoundFileReader& reader) {
    const auto channels = static_cast<std::size_t>(imported_.source.channels);
    values_.resize(kBlock / channels * channels);
    const std::size_t frames =
        platform::isStopRequested() ? 0 : reader.read(std::span<double>(values_));
    mixDown(values_, frames, channels);
    tellProgress(reader, frames);
    return std::span(values_).first(frames);
}

bool Decoding::mix(SoundFileReader& reader) {
    auto frames = nextFrames(reader);
    while (!frames.empty()) {
        const std::span<float> room = chain_.room();
        if (room.empty()) {
            return false;
        }
        const std::size_t count = std::min(room.size(), frames.size());
        for (std::size_t i = 0; i < count; ++i) {
            room[i] = static_cast<float>(frames[i]);
        }
        chain_.advance(count);
        frames = frames.subspan(count);
        if (frames.empty()) {
            frames = nextFrames(reader);
        }
    }
    return true;
}

bool Decoding::convert(SoundFileReader& reader) {
    RateConverter converter(imported_.source.rate, rate_);
    if (!converter.isReady()) {
        return false;
    }
    for (auto frames = nextFrames(reader); !frames.empty(); frames = nextFrames(reader)) {
        zeroNonFinite(frames);
        if (!converter.convert(frames, chain_)) {
            return false;
        }
    }
    return imported_.frames == 0 || platform::isStopRequested() || converter.finish(chain_);
}

void Decoding::tellProgress(const SoundFileReader& reader, std::size_t frames) {
    imported_.frames += static_cast<std::int64_t>(frames);
    const auto steps = static_cast<std::size_t>(reader.fractionRead() * kSteps);
    for (; stepsDone_ < steps; ++stepsDone_) {
        platform::pieceDone();
    }
}

std::optional<Error> Decoding::verdict(const SoundFileReader& reader) const {
    if (platform::isStopRequested()) {
        return cancelled();
    }
    if (reader.diskFailed()) {
        return failure(ErrorCategory::DeviceFailed, "The file cannot be read to its end.");
    }
    if (chain_.count() == 0 && reader.isDamaged()) {
        return failure(ErrorCategory::Malformed,
                       "The sound file is damaged: nothing in it can be decoded.");
    }
    if (chain_.count() == 0) {
        return failure(ErrorCategory::Malformed, "There is no sound in the file.");
    }
    return std::nullopt;
}

platform::Result<Imported> decodeAndExchange(const FileUrl& url) {
    Decoding decoding(url.path(), R);
    if (!platform::runLongWork([&] { decoding.run(); })) {
        return cancelled();
    }
    if (auto error = decoding.takeError()) {
        return std::move(*error);
    }
    replaceBuffer(decoding.takeSamples(), decoding.count());
    return decoding.takeImported();
}

platform::Result<SoundFileDescription> describe(const std::string& path) {
    const auto opened = SoundFileReader::open(path);
    if (!opened) {
        return opened.error();
    }
    return opened.value()->description();
}

} // namespace

platform::Result<Imported> importSound(const FileUrl& url) {
    return platform::unlessOutOfMemory([&] { return decodeAndExchange(url); },
                                       [] { return platform::Result<Imported>(tooLarge()); });
}

platform::Result<SoundFileDescription> describeSoundFile(const std::string& path) {
    return platform::unlessOutOfMemory(
        [&] { return describe(path); },
        [] { return platform::Result<SoundFileDescription>(tooLarge()); });
}

bool isKnownSoundFile(const std::string& path) {
    return platform::unlessOutOfMemory(
        [&] { return static_cast<bool>(SoundFileReader::open(path)); },
        [] { return true; }); // importSound will say what is amiss
}

} // namespace zemo
