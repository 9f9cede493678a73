// Writes the example sounds as CAF files into the folder that is named.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "ExampleSounds.h"
#include "files/AudioFileLayout.h"
#include "files/FixFlags.h"

namespace {

bool write(const std::filesystem::path& path, double rate, const std::vector<float>& sound) {
    zemo::platform::AudioStreamBasicDescription format;
    std::uint32_t fileType = 0;
    zemo::setFormat(&format, &fileType, "caf", rate);
    const auto header = zemo::cafHeader(format, sound.size() * sizeof(float));
    std::ofstream file(path, std::ios::binary);
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
