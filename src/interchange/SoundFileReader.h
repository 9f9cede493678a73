#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "interchange/Import.h"
#include "platform/Error.h"
#include "platform/FileStream.h"

struct sf_private_tag;

namespace zemo {

/// A sound file opened for decoding from its first frame to its last. Opening and reading throw
/// std::bad_alloc. [main], [worker]
class SoundFileReader {
public:
    static platform::Result<std::unique_ptr<SoundFileReader>> open(const std::string& path);

    SoundFileReader(const SoundFileReader&) = delete;
    SoundFileReader& operator=(const SoundFileReader&) = delete;
    ~SoundFileReader();

    const SoundFileDescription& description() const noexcept { return description_; }

    /// Whole frames, interleaved, nominally in -1..1. Returns how many; 0 at the end, after an
    /// error, and when the work was asked to stop.
    std::size_t read(std::span<float> values);
    std::size_t read(std::span<double> values);

    /// How much of the file has gone through the decoder: 0 to 1.
    double fractionRead() const noexcept;
    bool diskFailed() const noexcept {
        return source_.failed;
    }                       ///< bytes that are there did not come
    bool isDamaged() const; ///< the decoder says so

private:
    friend struct SourceCalls;
    struct Source {
        std::unique_ptr<platform::FileStream> stream;
        std::uint64_t position = 0;
        bool failed = false;
    };

    explicit SoundFileReader(std::unique_ptr<platform::FileStream> stream);
    bool begin(); ///< False: no sound file that is known
    platform::Error refusal() const;

    Source source_;
    sf_private_tag* file_ = nullptr;
    SoundFileDescription description_;
};

} // namespace zemo
