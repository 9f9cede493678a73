#include "FlacWriter.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

#include <sndfile.h>

#include "LibraryMemory.h"

namespace zemo {

/// The file as libsndfile sees it. At the end it goes back and mends the head; nothing is read.
struct SinkCalls {
    using Sink = FlacWriter::Sink;

    static Sink& of(void* user) { return *static_cast<Sink*>(user); }

    static sf_count_t length(void* user) { return static_cast<sf_count_t>(of(user).size); }

    static sf_count_t tell(void* user) { return static_cast<sf_count_t>(of(user).position); }

    static sf_count_t seek(sf_count_t offset, int from, void* user) {
        sf_count_t base = 0;
        if (from != SEEK_SET) {
            base = from == SEEK_CUR ? tell(user) : length(user);
        }
        of(user).position =
            static_cast<std::uint64_t>(std::clamp<sf_count_t>(base + offset, 0, length(user)));
        return tell(user);
    }

    static sf_count_t read(void* /*destination*/, sf_count_t /*count*/, void* /*user*/) {
        return 0;
    }

    static sf_count_t write(const void* bytes, sf_count_t count, void* user) {
        Sink& sink = of(user);
        if (sink.error != 0 || count <= 0) {
            return 0;
        }
        const auto all = static_cast<std::size_t>(count);
        const auto old =
            static_cast<std::size_t>(std::min<std::uint64_t>(all, sink.size - sink.position));
        sink.error = sink.file->writeAt(sink.position, bytes, old);
        if (sink.error == 0) {
            sink.error = sink.file->write(static_cast<const char*>(bytes) + old, all - old);
        }
        if (sink.error != 0) {
            return 0;
        }
        sink.position += all;
        sink.size = std::max(sink.size, sink.position);
        return count;
    }
};

namespace {

constexpr int kGreatest = (1 << 23) - 1;
constexpr int kLeast = -(1 << 23);
constexpr int kLowByte = 256; ///< libsndfile takes the upper 24 bits of 32

/// The nearest of the 2^24 steps.
int stepOf(float sample) {
    const double scaled = std::nearbyint(static_cast<double>(sample) * (1 << 23));
    return static_cast<int>(std::clamp(scaled, double{kLeast}, double{kGreatest}));
}

} // namespace

FlacWriter::FlacWriter(AtomicFile& file, std::uint32_t rate) : sink_{&file} {
    requireRoomForLibraries();
    SF_VIRTUAL_IO calls{SinkCalls::length, SinkCalls::seek, SinkCalls::read, SinkCalls::write,
                        SinkCalls::tell};
    SF_INFO info{};
    info.samplerate = static_cast<int>(rate);
    info.channels = 1;
    info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    file_ = ::sf_open_virtual(&calls, SFM_WRITE, &info, &sink_);
}

FlacWriter::~FlacWriter() {
    if (file_ != nullptr) {
        static_cast<void>(::sf_close(file_));
    }
}

int FlacWriter::write(std::span<const float> samples) {
    requireRoomForLibraries();
    steps_.resize(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        clipped_ += std::fabs(samples[i]) > 1.0F ? 1 : 0;
        steps_[i] = stepOf(samples[i]) * kLowByte;
    }
    const auto count = static_cast<sf_count_t>(samples.size());
    const bool taken = file_ != nullptr && ::sf_write_int(file_, steps_.data(), count) == count;
    return sink_.error != 0 || taken ? sink_.error : EIO;
}

int FlacWriter::finish() {
    requireRoomForLibraries();
    const bool closed = file_ != nullptr && ::sf_close(file_) == 0;
    file_ = nullptr;
    return sink_.error != 0 || closed ? sink_.error : EIO;
}

} // namespace zemo
