#include "SoundFileReader.h"

#include <algorithm>
#include <cstdio>
#include <system_error>

#include <sndfile.h>

#include "LibraryMemory.h"
#include "platform/Format.h"
#include "platform/Progress.h"
#include "platform/Services.h"

namespace zemo {

using platform::Error;
using platform::ErrorCategory;

/// The file as libsndfile sees it. Once a read has failed or the work was asked to stop the library
/// is at the file's end wherever it looks, so that it comes to its own end whatever it is at: for
/// bytes that are said to be there and do not come it would ask for ever.
struct SourceCalls {
    using Source = SoundFileReader::Source;

    static Source& of(void* user) { return *static_cast<Source*>(user); }

    static bool isOver(const Source& source) {
        return source.failed || platform::isStopRequested();
    }

    static sf_count_t length(void* user) {
        return static_cast<sf_count_t>(
            std::min<std::uint64_t>(of(user).stream->size(), SF_COUNT_MAX));
    }

    static sf_count_t tell(void* user) {
        return isOver(of(user)) ? length(user) : static_cast<sf_count_t>(of(user).position);
    }

    static sf_count_t seek(sf_count_t offset, int from, void* user) {
        constexpr sf_count_t kFarthest = SF_COUNT_MAX / 4;
        sf_count_t base = 0;
        if (from != SEEK_SET) {
            base = from == SEEK_CUR ? tell(user) : length(user);
        }
        const sf_count_t target =
            std::min(base, kFarthest) + std::clamp(offset, -kFarthest, kFarthest);
        of(user).position = static_cast<std::uint64_t>(std::max<sf_count_t>(target, 0));
        return tell(user);
    }

    static sf_count_t read(void* destination, sf_count_t count, void* user) {
        Source& source = of(user);
        const std::uint64_t size = source.stream->size();
        if (count <= 0 || source.position >= size || isOver(source)) {
            return 0;
        }
        const auto wanted = static_cast<std::size_t>(
            std::min(static_cast<std::uint64_t>(count), size - source.position));
        const std::size_t got = source.stream->readAt(source.position, destination, wanted);
        source.position += got;
        source.failed = got < wanted;
        return static_cast<sf_count_t>(got);
    }

    static sf_count_t write(const void* /*bytes*/, sf_count_t /*count*/, void* /*user*/) {
        return 0;
    }
};

namespace {

std::string nameOf(int code) {
    SF_FORMAT_INFO info{code, nullptr, nullptr};
    const bool found = ::sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0;
    return found && info.name != nullptr ? info.name : "unknown";
}

std::string formatName(int format) {
    return nameOf(format & SF_FORMAT_TYPEMASK) + ", " + nameOf(format & SF_FORMAT_SUBMASK);
}

} // namespace

SoundFileReader::SoundFileReader(std::unique_ptr<platform::FileStream> stream) {
    source_.stream = std::move(stream);
}

SoundFileReader::~SoundFileReader() {
    if (file_ != nullptr) {
        static_cast<void>(::sf_close(file_));
    }
}

platform::Result<std::unique_ptr<SoundFileReader>> SoundFileReader::open(const std::string& path) {
    int error = 0;
    auto stream = platform::services().fileSystem->openForReading(path, error);
    if (stream == nullptr) {
        return Error{ErrorCategory::CannotOpen, std::nullopt,
                     "The file cannot be opened: " + std::generic_category().message(error) + "."};
    }
    std::unique_ptr<SoundFileReader> reader(new SoundFileReader(std::move(stream)));
    if (!reader->begin()) {
        return reader->refusal();
    }
    return reader;
}

bool SoundFileReader::begin() {
    requireRoomForLibraries();
    SF_VIRTUAL_IO calls{SourceCalls::length, SourceCalls::seek, SourceCalls::read,
                        SourceCalls::write, SourceCalls::tell};
    SF_INFO info{};
    file_ = ::sf_open_virtual(&calls, SFM_READ, &info, &source_);
    if (file_ == nullptr) {
        return false;
    }
    description_ = {.channels = info.channels,
                    .rate = static_cast<double>(info.samplerate),
                    .frames = info.frames < SF_COUNT_MAX ? info.frames : 0,
                    .format = formatName(info.format)};
    return !source_.failed;
}

Error SoundFileReader::refusal() const {
    if (source_.failed) {
        return {ErrorCategory::DeviceFailed, source_.position, "The file cannot be read."};
    }
    switch (::sf_error(nullptr)) {
    case SF_ERR_UNRECOGNISED_FORMAT:
        return {ErrorCategory::NotSupported, std::nullopt,
                "The file is not of a kind of sound file that is known."};
    case SF_ERR_UNSUPPORTED_ENCODING:
        return {ErrorCategory::NotSupported, std::nullopt, "The sound file's coding is not known."};
    default:
        return {ErrorCategory::Malformed, std::nullopt,
                "The sound file is damaged, or of a kind that is not known."};
    }
}

std::size_t SoundFileReader::read(std::span<float> values) {
    requireRoomForLibraries();
    const auto frames = static_cast<sf_count_t>(values.size()) / description_.channels;
    return static_cast<std::size_t>(
        std::max<sf_count_t>(::sf_readf_float(file_, values.data(), frames), 0));
}

std::size_t SoundFileReader::read(std::span<double> values) {
    requireRoomForLibraries();
    const auto frames = static_cast<sf_count_t>(values.size()) / description_.channels;
    return static_cast<std::size_t>(
        std::max<sf_count_t>(::sf_readf_double(file_, values.data(), frames), 0));
}

double SoundFileReader::fractionRead() const noexcept {
    const auto size = static_cast<double>(source_.stream->size());
    return size > 0.0 ? std::min(static_cast<double>(source_.position) / size, 1.0) : 1.0;
}

bool SoundFileReader::isDamaged() const {
    return ::sf_error(file_) != SF_ERR_NO_ERROR;
}

} // namespace zemo
