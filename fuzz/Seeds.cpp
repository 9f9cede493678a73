#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "files_test/SoundFiles.h"

/// fuzz_seeds CORPUS writes the seeds into the corpus's folders; fuzz_seeds --check CORPUS says
/// whether they are there as they would be written. Other files are left alone: what a fuzzer
/// found is kept beside the seeds.
namespace {

namespace fs = std::filesystem;
using namespace zemo::test;
using Seeds = std::map<std::string, Bytes>;

Bytes packetTable(std::uint64_t packets, const Bytes& entries) {
    return cafChunk("pakt", join({big(packets, 8), zeros(16), entries}));
}

Seeds cafSeeds() {
    const CafDescription aac{
        .formatID = "aac ", .flags = 0, .bytesPerPacket = 0, .framesPerPacket = 1024, .bits = 0};
    const CafDescription ulaw{
        .rate = 44100.0, .formatID = "ulaw", .flags = 0, .bytesPerPacket = 1, .bits = 8};
    return {
        {"caf-float-little", cafFile({}, littleFloats({0.5F, -0.25F, 1.0F}))},
        {"caf-float-big", cafFile({.flags = 1}, bigFloats({0.5F, -0.25F, 1.0F}))},
        {"caf-float64-stereo",
         cafFile({.rate = 44100.0, .bytesPerPacket = 16, .channels = 2, .bits = 64}, counting(32))},
        {"caf-int16", cafFile({.flags = 2, .bytesPerPacket = 2, .bits = 16}, counting(10))},
        {"caf-int24-big", cafFile({.flags = 0, .bytesPerPacket = 3, .bits = 24}, counting(10))},
        {"caf-ulaw", cafFile(ulaw, counting(7))},
        {"caf-variable", join({cafHeader(), cafDescriptionChunk(aac), packetTable(3, counting(3)),
                               cafDataChunk(counting(9))})},
        {"caf-open-end", join({cafHeader(), cafDescriptionChunk({}),
                               cafChunk("data", -1, join({zeros(4), counting(10)}))})},
        {"caf-data-first", join({cafHeader(), cafDataChunk(counting(9)),
                                 cafChunk("free", counting(5)), cafDescriptionChunk({})})},
        {"caf-past-the-end",
         join({cafHeader(), cafDescriptionChunk({}), cafChunk("data", INT64_MAX, counting(20))})},
        {"caf-header-only", cafHeader()},
    };
}

Seeds aiffSeeds() {
    return {
        {"aifc-float", aiffFile({.frames = 3}, bigFloats({0.5F, -0.25F, 1.0F}))},
        {"aifc-float64", aiffFile({.frames = 2, .bits = 64, .compression = "fl64"}, counting(16))},
        {"aifc-sowt", aiffFile({.frames = 5, .bits = 16, .compression = "sowt"}, counting(10))},
        {"aifc-ima4", aiffFile({.frames = 2, .bits = 16, .compression = "ima4"}, counting(68))},
        {"aiff-int8", aiffFile({.frames = 5, .bits = 8, .compression = ""}, counting(5))},
        {"aiff-int12-stereo",
         aiffFile({.channels = 2, .frames = 2, .bits = 12, .compression = ""}, counting(8))},
        {"aiff-odd-chunks",
         aiffForm("AIFF", {aiffChunk("NAME", counting(3)), aiffDataChunk(counting(7), 1),
                           aiffCommonChunk({.frames = 9, .bits = 16, .compression = ""})})},
        {"aifc-past-the-end", aiffForm("AIFC", {aiffCommonChunk({.frames = 0xFFFFFFFF}),
                                                aiffChunk("SSND", 0xFFFFFFFF, zeros(20))})},
        {"aifc-no-frames", aiffForm("AIFC", {aiffCommonChunk({.frames = 0})})},
        {"aifc-no-number", aiffFile({.frames = 1, .rate = extended(0x7FFF, UINT64_MAX)}, zeros(4))},
    };
}

/// Command lines, a word a line.
Seeds commandLineSeeds() {
    return {
        {"help", text("--help")},
        {"version", text("--version")},
        {"open", text("--rate\n48000\nopen\na.caf\nswap\nnormalize\ninfo")},
        {"render", text("open\nx\nrender\ny.caf\nframes=512\nrms=on\nlevels=l.txt\nplay")},
        {"transform", text("resample\n0.5\nam\n440\n1\nssb-lower\n1e3\n0.5\nssb-upper\n20\n2")},
        {"fm", text("fm\n440\n2\n50\nrevert\nsave\nx.AIF\ndump\nx")},
        {"hd", text("hd\nharmonics=2,4\nhighpass=1000\nslope=0.5\nattack=50\nmix=nan\n"
                    "scale=off\nknee=-0.3\ncomp=0.1")},
        {"interchange", text("import\nx.mp3\nexport\nx.flac\nexport\nx.WAV")},
        {"wrong", text("hd\nharmonics=3")},
    };
}

Seeds rawSeeds() {
    const Bytes plain = big(0, 1);
    const Bytes swapped = big(1, 1);
    const Bytes failing = big(2, 1);
    return {
        {"floats", join({plain, littleFloats({0.5F, -0.25F, 1.0F})})},
        {"floats-swapped", join({swapped, bigFloats({0.5F, -0.25F, 1.0F})})},
        {"floats-cut-off", join({failing, counting(22)})},
        {"nan-payloads", join({plain, littleWords({0x7FC00001, 0xFFA00002, 0x7F800001})})},
        {"text", join({plain, text("first line\nsecond line\n")})},
        {"text-format", join({plain, text("%s%n%%\n")})},
        {"text-long", join({plain, Bytes(1005, 'x'), text("\n")})},
        {"text-999", join({plain, Bytes(998, 'x'), text("\nmore")})},
        {"zero-first", join({plain, zeros(9)})},
        {"three-bytes", join({plain, counting(3)})},
    };
}

void write(const fs::path& file, const Bytes& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    for (const std::uint8_t byte : bytes) {
        out.put(static_cast<char>(byte));
    }
}

bool isAsWritten(const fs::path& file, const Bytes& bytes) {
    std::ifstream in(file, std::ios::binary);
    const Bytes found{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (found != bytes) {
        std::fprintf(stderr, "%s is not as it would be written.\n", file.c_str());
    }
    return found == bytes;
}

} // namespace

int main(int argc, char** argv) {
    const bool check = argc == 3 && std::string(argv[1]) == "--check";
    if (argc != 2 && !check) {
        std::fprintf(stderr, "usage: fuzz_seeds [--check] CORPUS\n");
        return 2;
    }
    const fs::path corpus = argv[argc - 1];
    Seeds container = cafSeeds();
    container.merge(aiffSeeds());
    bool same = true;
    for (const auto& [target, seeds] : std::map<std::string, Seeds>{
             {"container", container}, {"raw", rawSeeds()}, {"command_line", commandLineSeeds()}}) {
        for (const auto& [name, bytes] : seeds) {
            const fs::path file = corpus / target / name;
            if (check) {
                same = isAsWritten(file, bytes) && same;
            } else {
                write(file, bytes);
            }
        }
    }
    return same ? 0 : 1;
}
