#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "dsp/HarmonicProcessor.h"
#include "platform/AudioOutput.h"

/// The words that zemo-batch understands.
namespace zemo::batch {

/// A FILE that is read or written: `-` is standard input or standard output, whichever way the step
/// goes.
inline constexpr const char* kStandardStream = "-";

/// `open FILE [swap] [normalize] [as=caf|aif]`: as the open panel with its two boxes.
struct OpenStep {
    std::string file;
    bool swap = false;
    bool normalize = false;
    std::string as{}; ///< counts as the name's extension, unless it is empty. So below
};

/// `resample RATIO`: changes the number of samples, the rate as it is.
struct ResampleStep {
    float ratio = 1.0F;
};

/// `am FREQ INDEX`, `ssb-lower FREQ INDEX`, `ssb-upper FREQ INDEX`: the three segments of one
/// sheet.
struct AmStep {
    enum class Kind : std::uint8_t { Am, SsbLower, SsbUpper };
    Kind kind = Kind::Am;
    float frequency = 0.0F; ///< hertz, above 0
    float index = 0.0F;     ///< 0 or more
};

/// `fm FREQ INDEX LPF`.
struct FmStep {
    float frequency = 0.0F;    ///< hertz, above 0
    float index = 0.0F;        ///< radians a unit, 0 or more
    float envelopeRate = 0.0F; ///< hertz, clamped to 4..32
};

/// `hd [harmonics=2|4|2,4] [highpass=0|500|1000] [slope=S] [attack=A] [mix=M] [scale=on|off]
/// [knee=K] [comp=C]`: unnamed settings have the sheet's first values.
struct HdStep {
    HdSettings settings{.two = true,
                        .attack = 500,
                        .scale = true,
                        .slope = 0.995,
                        .mix = 0.5F,
                        .knee = 0.5F,
                        .comp = 0.5F};
};

/// `revert`: exchanges the sound and the copy that the last transformation kept.
struct RevertStep {};

/// `save FILE [as=caf|aif]`: as the save panel.
struct SaveStep {
    std::string file;
    std::string as{}; ///< caf for standard output, where it is not given
};

/// `import FILE`: a sound file of any known kind, converted to one channel at the output's rate.
struct ImportStep {
    std::string file;
};

/// `export FILE [as=wav|flac]`: the sound as WAV or FLAC.
struct ExportStep {
    std::string file;
    std::string as{}; ///< wav for standard output, where it is not given
};

/// `dump FILE`: the samples alone, little-endian 32-bit floats.
struct DumpStep {
    std::string file;
};

/// `render FILE [frames=N] [rms=on|off] [levels=FILE]`: what one press of Play delivers.
struct RenderStep {
    static constexpr std::uint32_t kDefaultFrames = platform::kFramesPerRenderCall;
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

using Step = std::variant<OpenStep, ResampleStep, AmStep, FmStep, HdStep, RevertStep, SaveStep,
                          ImportStep, ExportStep, DumpStep, RenderStep, PlayStep, InfoStep>;

/// The rates that an output may have, in hertz.
inline constexpr double kLowestRate = 1.0;
inline constexpr double kHighestRate = 1e6;

struct CommandLine {
    bool help = false;
    bool version = false;
    std::optional<double> rate; ///< hertz
    std::vector<Step> steps;
    std::vector<std::string> notices; ///< one sentence for every value that was clamped
};

/// [any] Reads the whole command line, the program's name left out. What is wrong with it is put
/// into `complaint` as one sentence.
std::optional<CommandLine> parseCommandLine(const std::vector<std::string>& words,
                                            std::string& complaint);

/// [any] Whether a step writes a file to standard output, by whichever of its names: then nothing
/// else may go there.
bool writesToStandardOutput(const std::vector<Step>& steps);

/// [any] What --help prints.
std::string usage();

} // namespace zemo::batch
