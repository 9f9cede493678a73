#include "interchange/Export.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <optional>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

#include "FlacWriter.h"
#include "files/AtomicFile.h"
#include "files/FixFlags.h"
#include "interchange/WavHeader.h"
#include "platform/Format.h"
#include "platform/LongWork.h"
#include "platform/OutOfMemory.h"
#include "platform/Progress.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

using platform::Error;
using platform::ErrorCategory;
using platform::format;

constexpr std::size_t kBlock = std::size_t{1} << 15; ///< samples that are written at a time

/// Made when the program starts: where it is said there may be no memory to make it.
const std::string kOutOfMemory =
    "The file cannot be written: " + std::generic_category().message(ENOMEM) + ".";

Error failure(ErrorCategory category, platform::Sentence sentence) {
    return {category, std::nullopt, std::move(sentence)};
}

Error outOfMemory() {
    return failure(ErrorCategory::DeviceFailed, platform::Sentence::lasting(kOutOfMemory));
}

Error cancelled() {
    return failure(ErrorCategory::Cancelled, "The export was cancelled.");
}

bool isFlac(const std::string& extension) {
    return extension == "flac" || extension == "FLAC";
}

std::optional<Error> refusalOfRate(bool flac, double rate) {
    const double most = flac ? double{FlacWriter::kHighestRate} : double{UINT32_MAX};
    const bool whole = rate >= 1.0 && rate <= most && std::floor(rate) == rate;
    if (!whole || (flac && !FlacWriter::canHold(static_cast<std::uint32_t>(rate)))) {
        return failure(
            ErrorCategory::NotSupported,
            format("%s, and the sound's is %.15g Hz.",
                   flac ? "FLAC holds whole rates up to 65535 Hz, and tens up to 655350 Hz"
                        : "WAV holds whole rates up to 4294967295 Hz",
                   rate));
    }
    return std::nullopt;
}

std::optional<Error> refusalOf(const std::string& extension, std::int64_t count, double rate) {
    if (!isExportedExtension(extension)) {
        return failure(ErrorCategory::NotSupported,
                       "ZEMO exports .wav and .flac files: choose one of these extensions.");
    }
    if (count <= 0) {
        return failure(ErrorCategory::NotSupported, "There is no sound to export.");
    }
    if (isFlac(extension) && count > FlacWriter::kMostSamples) {
        return failure(ErrorCategory::NotSupported,
                       "The sound is too long for FLAC: export it as .wav instead.");
    }
    return refusalOfRate(isFlac(extension), rate);
}

/// Hands all samples in blocks to `write`, no NaN among them. Stops at its first error, and when
/// the work is asked to stop.
template <typename Write> int writeBlocks(std::span<const float> samples, const Write& write) {
    platform::beginStage((samples.size() + kBlock - 1) / kBlock);
    std::vector<float> block;
    int error = 0;
    while (!samples.empty() && error == 0 && !platform::isStopRequested()) {
        const std::size_t count = std::min(samples.size(), kBlock);
        block.resize(count);
        std::transform(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count),
                       block.begin(), stripeNaN);
        error = write(std::span<const float>(block));
        samples = samples.subspan(count);
        platform::pieceDone();
    }
    return error;
}

int writeWav(AtomicFile& file, std::uint32_t rate, std::span<const float> samples) {
    const auto header = wavHeader(rate, samples.size());
    const int error = file.write(header.data(), header.size());
    return error != 0 ? error : writeBlocks(samples, [&](std::span<const float> block) {
        return file.write(block.data(), block.size_bytes());
    });
}

int writeFlac(AtomicFile& file, std::uint32_t rate, std::span<const float> samples,
              std::int64_t& clipped) {
    FlacWriter writer(file, rate);
    const int error =
        writeBlocks(samples, [&](std::span<const float> block) { return writer.write(block); });
    clipped = writer.clipped();
    return error != 0 ? error : writer.finish();
}

/// The file is written and on the disk when this is done, but not yet in its target's place.
class Writing {
public:
    Writing(const FileUrl& url, std::uint32_t rate, std::span<const float> samples)
        : path_(url.path()),
          flac_(isFlac(url.pathExtension())),
          rate_(rate),
          samples_(samples),
          exported_{.format = flac_ ? "FLAC, 24-bit" : "WAV, 32-bit float"} {}

    void run() { error_ = write(); } // [worker]

    /// Puts it there. What a disk may take its time for, too.
    void finish() { // [worker]
        if (error_ == 0) {
            error_ = file_.close();
        }
        if (error_ == 0) {
            error_ = file_.replaceTarget();
        }
    }

    std::optional<Error> error() const {
        return error_ == 0
                   ? std::nullopt
                   : std::optional(failure(ErrorCategory::DeviceFailed,
                                           "The file cannot be written: " +
                                               std::generic_category().message(error_) + "."));
    }

    /// Taken and not copied: once the file is new nothing must ask for memory.
    Exported takeExported() noexcept { return std::move(exported_); }

private:
    int write() {
        // libsndfile goes back to complete the head of a FLAC file.
        int error =
            file_.create(path_, flac_ ? AtomicFile::Order::Any : AtomicFile::Order::Sequential);
        if (error == 0) {
            error = flac_ ? writeFlac(file_, rate_, samples_, exported_.clipped)
                          : writeWav(file_, rate_, samples_);
        }
        return error != 0 || platform::isStopRequested() ? error : file_.flush();
    }

    std::string path_;
    bool flac_;
    std::uint32_t rate_;
    std::span<const float> samples_;
    AtomicFile file_;
    Exported exported_;
    int error_ = 0;
};

platform::Result<Exported> writeSound(const FileUrl& url) {
    const std::int64_t count = fBuffersize.load();
    if (auto refusal = refusalOf(url.pathExtension(), count, R)) {
        return *refusal;
    }
    Writing writing(url, static_cast<std::uint32_t>(R),
                    {fBuffer.load(), static_cast<std::size_t>(count)});
    const bool wanted = platform::runLongWork([&] { writing.run(); });
    if (!wanted || platform::isStopRequested()) {
        return cancelled();
    }
    // Not to be cancelled: once the file is new there is no way back.
    platform::runLongWork([&] { writing.finish(); }, platform::Cancel::NotAllowed);
    if (auto error = writing.error()) {
        return *error;
    }
    return writing.takeExported();
}

} // namespace

bool isExportedExtension(const std::string& extension) {
    return extension == "wav" || extension == "WAV" || isFlac(extension);
}

platform::Result<Exported> exportSound(const FileUrl& url) {
    return platform::unlessOutOfMemory([&] { return writeSound(url); },
                                       [] { return platform::Result<Exported>(outOfMemory()); });
}

} // namespace zemo
