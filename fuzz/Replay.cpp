#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::uint8_t> contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// The input, every beginning of it, and every input that differs from it in one byte's top bit.
void replay(std::vector<std::uint8_t> input) {
    for (std::size_t length = 0; length <= input.size(); ++length) {
        // A block of its own, so that a read past the end is one past the block.
        const std::vector<std::uint8_t> cut(input.begin(),
                                            input.begin() + static_cast<std::ptrdiff_t>(length));
        LLVMFuzzerTestOneInput(cut.data(), cut.size());
    }
    for (std::uint8_t& byte : input) {
        byte ^= 0x80;
        LLVMFuzzerTestOneInput(input.data(), input.size());
        byte ^= 0x80;
    }
}

} // namespace

/// Replays every file of the folders named. A folder without files is an error.
int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const auto files = filesIn(argv[i]);
        if (files.empty()) {
            std::fprintf(stderr, "There is nothing to replay in %s.\n", argv[i]);
            return 1;
        }
        for (const auto& file : files) {
            std::printf("%s\n", file.filename().c_str());
            std::fflush(stdout); // so that the last name is the one that failed
            replay(contentOf(file));
        }
    }
    return argc > 1 ? 0 : 1;
}
