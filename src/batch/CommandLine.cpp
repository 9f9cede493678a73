#include "batch/CommandLine.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <map>

#include "TransformationSteps.h"
#include "Words.h"
#include "files/AudioFileWriter.h"
#include "interchange/Export.h"

namespace zemo::batch {
namespace {

using StepOrNothing = std::optional<Step>;
using StepParser = StepOrNothing (*)(Words&);

/// The file that every step of that name needs.
bool takeFile(Words& words, const char* step, std::string& file) {
    file = words.take();
    if (file.empty()) {
        words.complaint = std::string(step) + " needs a file.";
    }
    return !file.empty();
}

/// The kind of file that is said where the name does not say it.
bool takeKind(Words& words, const char* step, std::initializer_list<const char*> kinds,
              std::string& kind) {
    const auto said = words.takeValueOf("as");
    if (!said) {
        return true;
    }
    kind = *said;
    const bool known = std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
    if (!known) {
        words.complaint =
            std::string(step) + ": as is " + *kinds.begin() + " or " + *std::rbegin(kinds) + ".";
    }
    return known;
}

StepOrNothing parseOpen(Words& words) {
    OpenStep step;
    if (!takeFile(words, "open", step.file)) {
        return std::nullopt;
    }
    step.swap = words.takeIf("swap");
    step.normalize = words.takeIf("normalize");
    return takeKind(words, "open", {"caf", "aif"}, step.as) ? StepOrNothing(step) : std::nullopt;
}

/// What is saved and exported alike: a file of a kind that its name or the command line says.
template <typename SavingStep>
StepOrNothing parseSaving(Words& words, const char* name, std::initializer_list<const char*> kinds,
                          bool (*isExtension)(const std::string&), const char* extensions) {
    SavingStep step;
    if (!takeFile(words, name, step.file) || !takeKind(words, name, kinds, step.as)) {
        return std::nullopt;
    }
    if (step.as.empty() && step.file == kStandardStream) {
        step.as = *kinds.begin();
    }
    if (!isExtension(FileUrl(step.file, step.as).pathExtension())) {
        words.complaint = std::string(name) + " " + step.file + ": the file's name must end in " +
                          extensions + ".";
        return std::nullopt;
    }
    return step;
}

StepOrNothing parseSave(Words& words) {
    return parseSaving<SaveStep>(words, "save", {"caf", "aif"}, isSavedExtension,
                                 ".caf, .CAF, .aif or .AIF");
}

StepOrNothing parseImport(Words& words) {
    ImportStep step;
    return takeFile(words, "import", step.file) ? StepOrNothing(step) : std::nullopt;
}

StepOrNothing parseExport(Words& words) {
    return parseSaving<ExportStep>(words, "export", {"wav", "flac"}, isExportedExtension,
                                   ".wav, .WAV, .flac or .FLAC");
}

StepOrNothing parseDump(Words& words) {
    DumpStep step;
    return takeFile(words, "dump", step.file) ? StepOrNothing(step) : std::nullopt;
}

bool parseFrames(const std::string& text, std::uint32_t& frames, std::string& complaint) {
    if (parseNumber(text, frames) && frames > 0 && frames <= RenderStep::kMostFrames) {
        return true;
    }
    complaint = "render: frames needs a whole number from 1 to " +
                std::to_string(RenderStep::kMostFrames) + ".";
    return false;
}

StepOrNothing parseRender(Words& words) {
    RenderStep step;
    if (!takeFile(words, "render", step.file)) {
        return std::nullopt;
    }
    while (true) {
        if (const auto frames = words.takeValueOf("frames")) {
            if (!parseFrames(*frames, step.frames, words.complaint)) {
                return std::nullopt;
            }
        } else if (const auto rms = words.takeValueOf("rms")) {
            if (!parseSwitch(*rms, "render: rms", step.rms, words.complaint)) {
                return std::nullopt;
            }
        } else if (const auto levels = words.takeValueOf("levels")) {
            step.levels = *levels;
        } else {
            return step;
        }
    }
}

template <typename Plain> StepOrNothing parsePlain(Words& /*words*/) {
    return Plain{};
}

const std::map<std::string, StepParser>& stepParsers() {
    static const std::map<std::string, StepParser> parsers{
        {"open", parseOpen},
        {"resample", parseResample},
        {"am", parseAm},
        {"ssb-lower", parseSsbLower},
        {"ssb-upper", parseSsbUpper},
        {"fm", parseFm},
        {"hd", parseHd},
        {"revert", parsePlain<RevertStep>},
        {"save", parseSave},
        {"import", parseImport},
        {"export", parseExport},
        {"dump", parseDump},
        {"render", parseRender},
        {"play", parsePlain<PlayStep>},
        {"info", parsePlain<InfoStep>},
    };
    return parsers;
}

bool parseRate(Words& words, std::optional<double>& rate) {
    double hertz = 0.0;
    if (!parseNumber(words.take(), hertz) || !(hertz >= kLowestRate && hertz <= kHighestRate)) {
        words.complaint = "--rate needs a number of hertz from 1 to 1000000.";
        return false;
    }
    rate = hertz;
    return true;
}

bool parseSteps(Words& words, std::vector<Step>& steps) {
    while (!words.empty()) {
        const std::string name = words.take();
        const auto parser = stepParsers().find(name);
        if (parser == stepParsers().end()) {
            words.complaint = "There is no step named \"" + name + "\".";
            return false;
        }
        const StepOrNothing step = parser->second(words);
        if (!step) {
            return false;
        }
        steps.push_back(*step);
    }
    if (steps.empty()) {
        words.complaint = "There is nothing to do.";
    }
    return !steps.empty();
}

bool isStandardOutput(const std::string& file) {
    constexpr std::array kNames{kStandardStream, "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"};
    return std::find(kNames.begin(), kNames.end(), file) != kNames.end();
}

/// Whether the step writes a file there.
struct WritesToStandardOutput {
    bool operator()(const SaveStep& step) const { return isStandardOutput(step.file); }
    bool operator()(const ExportStep& step) const { return isStandardOutput(step.file); }
    bool operator()(const DumpStep& step) const { return isStandardOutput(step.file); }
    bool operator()(const RenderStep& step) const {
        return isStandardOutput(step.file) || isStandardOutput(step.levels);
    }
    template <typename Other> bool operator()(const Other& /*step*/) const { return false; }
};

} // namespace

bool writesToStandardOutput(const std::vector<Step>& steps) {
    return std::any_of(steps.begin(), steps.end(),
                       [](const Step& step) { return std::visit(WritesToStandardOutput{}, step); });
}

std::optional<CommandLine> parseCommandLine(const std::vector<std::string>& arguments,
                                            std::string& complaint) {
    Words words(arguments);
    CommandLine line;
    line.help = words.takeIf("--help");
    line.version = !line.help && words.takeIf("--version");
    bool good = false;
    if (line.help || line.version) {
        good = words.empty();
        words.complaint = "--help and --version stand alone.";
    } else {
        good = (!words.takeIf("--rate") || parseRate(words, line.rate)) &&
               parseSteps(words, line.steps);
    }
    line.notices = words.notices;
    complaint = good ? std::string() : words.complaint;
    return good ? std::optional(line) : std::nullopt;
}

std::string usage() {
    return R"(zemo-batch [--rate HZ] STEP...
  open FILE [swap] [normalize] [as=caf|aif]
                                read a sound, as the window's open panel does
  resample RATIO                change its number of samples, the rate as it is
  am FREQ INDEX                 modulate its amplitude by a sine
  ssb-lower FREQ INDEX          shift it below a carrier
  ssb-upper FREQ INDEX          shift it above a carrier
  fm FREQ INDEX LPF             modulate the phase of a carrier by it
  hd [harmonics=2|4|2,4] [highpass=0|500|1000] [slope=S] [attack=A] [mix=M]
     [scale=on|off] [knee=K] [comp=C]
                                add even harmonics to it
  revert                        exchange the sound and the copy of the last one
  save FILE [as=caf|aif]        write it as FILE: .caf .CAF .aif .AIF
  import FILE                   read a sound file of any known kind, converted to
                                one channel at the output's rate
  export FILE [as=wav|flac]     write it for other programs: .wav .WAV .flac .FLAC
  dump FILE                     write its samples alone, little-endian floats
  render FILE [frames=N] [rms=on|off] [levels=FILE]
                                write what one press of Play delivers, as a CAF
  play                          play it through the default output to its end
  info                          print what is known of it
zemo-batch --help | --version

FILE may be -, which is standard input or standard output. as= says what kind of
file it is, where its name does not; without it save - writes CAF, export - WAV.

Steps run in order on the one sound. --rate is the rate of the output that is
not there: by default that of the first audio file opened or file imported,
else 44100 Hz.
Exit status: 0 done, 1 a step failed, 2 wrong command line.
)";
}

} // namespace zemo::batch
