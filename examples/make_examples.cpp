// Writes the example sounds as CAF files into the folder that is named.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "ExampleSounds.h"
#include "files/CafChunks.h"

namespace {

std::vector<std::uint8_t> cafHeader(double rate, std::size_t samples) {
    using namespace zemo::caf;
    zemo::ByteWriter out;
    FileHeader{}.write(out);
    ChunkHeader{kAudioDescriptionType, AudioDescription::kBytes}.write(out);
    AudioDescription{.sampleRate = rate,
                     .formatID = zemo::platform::kLinearPCM,
                     .formatFlags =
                         AudioDescription::kFormatIsFloat | AudioDescription::kFormatIsLittleEndian,
                     .bytesPerPacket = 4,
                     .framesPerPacket = 1,
                     .channelsPerFrame = 1,
                     .bitsPerChannel = 32}
        .write(out);
    ChunkHeader{kAudioDataType, static_cast<std::int64_t>(AudioData::kBytes + 4 * samples)}.write(
        out);
    AudioData{}.write(out);
    return out.bytes();
}

bool write(const std::filesystem::path& path, double rate, const std::vector<float>& sound) {
    std::ofstream file(path, std::ios::binary);
    const auto header = cafHeader(rate, sound.size());
    file.write(reinterpret_cast<const char*>(header.data()),
               static_cast<std::streamsize>(header.size()));
    file.write(reinterpret_cast<const char*>(sound.data()),
               static_cast<std::streamsize>(sound.size() * sizeof(float)));
    file.close();
    return !file.fail();
}

} // namespace

int main(int argc, char** argv) {
    using namespace zemo::examples;
    if (argc != 2) {
        std::fputs("make-examples FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    const bool written = write(folder / "bell-44100.caf", kBellRate, bell()) &&
                         write(folder / "harp-48000.caf", kHarpRate, harp());
    if (!written) {
        std::fputs("make-examples: a file cannot be written.\n", stderr);
    }
    return written ? 0 : 1;
}
