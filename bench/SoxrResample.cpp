/// soxr-resample IN OUT RATE: converts a mono CAF of 32-bit floats to RATE hertz with libsoxr at
/// its default quality, in blocks, into a CAF of the same kind. A peer for bench/peers.

#include <soxr.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "files/AudioFile.h"
#include "files/ByteWriter.h"
#include "files/CafChunks.h"

namespace zemo {
namespace {

constexpr std::size_t kBlock = 65536; ///< samples

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

File openFile(const char* path, const char* mode) {
    File file(std::fopen(path, mode));
    if (!file) {
        throw std::runtime_error(std::string("cannot open ") + path);
    }
    return file;
}

void check(soxr_error_t error) {
    if (error != nullptr) {
        throw std::runtime_error(error);
    }
}

class StdioStream final : public platform::FileStream {
public:
    explicit StdioStream(std::FILE* file) : file_(file) {
        std::fseek(file_, 0, SEEK_END);
        size_ = static_cast<std::uint64_t>(std::ftell(file_));
    }

    std::uint64_t size() const override { return size_; }

    std::size_t readAt(std::uint64_t offset, void* destination, std::size_t count) override {
        std::fseek(file_, static_cast<long>(offset), SEEK_SET);
        return std::fread(destination, 1, count, file_);
    }

private:
    std::FILE* file_;
    std::uint64_t size_ = 0;
};

/// Leaves `in` at its first sample.
double readHeader(std::FILE* in) {
    StdioStream stream(in);
    const auto description = describeContainer(stream);
    if (!description || description.value().format.mBytesPerFrame != sizeof(float)) {
        throw std::runtime_error("not a mono CAF of floats");
    }
    std::fseek(in, static_cast<long>(description.value().dataOffset), SEEK_SET);
    return description.value().format.mSampleRate;
}

void write(std::FILE* out, const void* bytes, std::size_t count) {
    if (std::fwrite(bytes, 1, count, out) != count) {
        throw std::runtime_error("cannot write");
    }
}

void writeHeader(std::FILE* out, double rate, std::size_t samples) {
    const auto bytes = static_cast<std::int64_t>(caf::AudioData::kBytes + samples * sizeof(float));
    ByteWriter header;
    caf::FileHeader{}.write(header);
    caf::ChunkHeader{caf::kAudioDescriptionType, caf::AudioDescription::kBytes}.write(header);
    caf::AudioDescription{rate, platform::kLinearPCM, 3, 4, 1, 1, 32}.write(header);
    caf::ChunkHeader{caf::kAudioDataType, bytes}.write(header);
    caf::AudioData{}.write(header);
    std::rewind(out);
    write(out, header.bytes().data(), header.bytes().size());
}

using Converter = std::unique_ptr<soxr, decltype(&soxr_delete)>;

Converter makeConverter(double from, double to) {
    soxr_error_t error = nullptr;
    Converter converter(soxr_create(from, to, 1, &error, nullptr, nullptr, nullptr), soxr_delete);
    check(error);
    return converter;
}

/// Returns the number of samples written.
std::size_t convert(std::FILE* in, std::FILE* out, soxr_t converter, double ratio) {
    std::vector<float> input(kBlock);
    std::vector<float> output(static_cast<std::size_t>(kBlock * ratio) + 1);
    std::size_t written = 0;
    std::size_t made = 1;
    for (bool more = true; more || made > 0;) {
        const std::size_t read = more ? std::fread(input.data(), sizeof(float), kBlock, in) : 0;
        more = read > 0;
        // No input: what is still in the converter comes out.
        check(soxr_process(converter, more ? input.data() : nullptr, read, nullptr, output.data(),
                           output.size(), &made));
        write(out, output.data(), made * sizeof(float));
        written += made;
    }
    return written;
}

void run(const char* source, const char* target, double rate) {
    const File in = openFile(source, "rb");
    const File out = openFile(target, "wb");
    const double from = readHeader(in.get());
    writeHeader(out.get(), rate, 0);
    const Converter converter = makeConverter(from, rate);
    writeHeader(out.get(), rate, convert(in.get(), out.get(), converter.get(), rate / from));
}

} // namespace
} // namespace zemo

int main(int count, char** words) {
    if (count != 4) {
        std::fputs("usage: soxr-resample IN OUT RATE\n", stderr);
        return 2;
    }
    try {
        zemo::run(words[1], words[2], std::atof(words[3]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soxr-resample: %s\n", error.what());
        return 1;
    }
    return 0;
}
