#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// The words that zemo-batch understands.
namespace zemo::batch {

/// `open FILE [swap] [normalize]`: as the open panel with its two boxes.
struct OpenStep {
    std::string file;
    bool swap = false;
    bool normalize = false;
};

/// `revert`: exchanges the sound and the copy that the last transformation kept.
struct RevertStep {};

/// `save FILE`: as the save panel.
struct SaveStep {
    std::string file;
};

/// `dump FILE`: the samples alone, little-endian 32-bit floats.
struct DumpStep {
    std::string file;
};

/// `render FILE [frames=N] [rms=on|off] [levels=FILE]`: what one press of Play delivers.
struct RenderStep {
    static constexpr std::uint32_t kDefaultFrames = 512;
    static constexpr std::uint32_t kMostFrames = 1U << 20;
    std::string file;
    std::uint32_t frames = kDefaultFrames; ///< a call
    bool rms = false;
    std::string levels; ///< file for the meter's value after each call; empty: none
};

/// `play`: through the default output, until it ends.
struct PlayStep {};

/// `info`: what is known of the sound, on standard output.
struct InfoStep {};

using Step = std::variant<OpenStep, RevertStep, SaveStep, DumpStep, RenderStep, PlayStep, InfoStep>;

struct CommandLine {
    bool help = false;
    bool version = false;
    std::optional<double> rate; ///< hertz
    std::vector<Step> steps;
};

/// [any] Reads the whole command line, the program's name left out. What is wrong with it is put
/// into `complaint` as one sentence.
std::optional<CommandLine> parseCommandLine(const std::vector<std::string>& words,
                                            std::string& complaint);

/// [any] What --help prints.
std::string usage();

} // namespace zemo::batch
