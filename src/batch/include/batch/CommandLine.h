#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zemo::batch {

/// `open FILE [swap] [normalize]`: as the open panel with its two boxes.
struct OpenStep {
    std::string file;
    bool swap = false;
    bool normalize = false;
};
/// `play`: through the default output, until it ends.
struct PlayStep {};
/// `info`: what is known of the sound, on standard output.
struct InfoStep {};

using Step = std::variant<OpenStep, PlayStep, InfoStep>;

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
