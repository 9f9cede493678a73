#include "batch/CommandLine.h"

#include <charconv>
#include <cmath>
#include <map>

#include "files/AudioFileWriter.h"

namespace zemo::batch {
namespace {

/// The words still to be read.
class Words {
public:
    explicit Words(const std::vector<std::string>& words) : words_(words) {}

    bool empty() const { return next_ == words_.size(); }
    std::string take() { return empty() ? std::string() : words_[next_++]; }
    bool takeIf(const std::string& word) {
        const bool found = !empty() && words_[next_] == word;
        next_ += found ? 1 : 0;
        return found;
    }
    /// The value of a word `name=value` that stands next.
    std::optional<std::string> takeValueOf(const std::string& name) {
        const std::string start = name + "=";
        if (empty() || words_[next_].compare(0, start.size(), start) != 0) {
            return std::nullopt;
        }
        return words_[next_++].substr(start.size());
    }

private:
    const std::vector<std::string>& words_;
    std::size_t next_ = 0;
};

/// The whole text as a number, in the notation of C.
template <typename Number> bool parseNumber(const std::string& text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stopped == end;
}

using StepOrNothing = std::optional<Step>;
using StepParser = StepOrNothing (*)(Words&, std::string&);

/// The file that every step of that name needs.
bool takeFile(Words& words, const char* step, std::string& file, std::string& complaint) {
    file = words.take();
    if (file.empty()) {
        complaint = std::string(step) + " needs a file.";
    }
    return !file.empty();
}

StepOrNothing parseOpen(Words& words, std::string& complaint) {
    OpenStep step;
    if (!takeFile(words, "open", step.file, complaint)) {
        return std::nullopt;
    }
    step.swap = words.takeIf("swap");
    step.normalize = words.takeIf("normalize");
    return step;
}

StepOrNothing parseSave(Words& words, std::string& complaint) {
    SaveStep step;
    if (!takeFile(words, "save", step.file, complaint)) {
        return std::nullopt;
    }
    if (!isSavedExtension(FileUrl(step.file).pathExtension())) {
        complaint = "save " + step.file + ": the file's name must end in .caf, .CAF, .aif or .AIF.";
        return std::nullopt;
    }
    return step;
}

StepOrNothing parseDump(Words& words, std::string& complaint) {
    DumpStep step;
    return takeFile(words, "dump", step.file, complaint) ? StepOrNothing(step) : std::nullopt;
}

bool parseFrames(const std::string& text, std::uint32_t& frames, std::string& complaint) {
    if (parseNumber(text, frames) && frames > 0 && frames <= RenderStep::kMostFrames) {
        return true;
    }
    complaint = "render: frames needs a whole number from 1 to " +
                std::to_string(RenderStep::kMostFrames) + ".";
    return false;
}

bool parseSwitch(const std::string& text, const char* name, bool& isOn, std::string& complaint) {
    isOn = text == "on";
    if (!isOn && text != "off") {
        complaint = std::string(name) + " is on or off.";
        return false;
    }
    return true;
}

StepOrNothing parseRender(Words& words, std::string& complaint) {
    RenderStep step;
    if (!takeFile(words, "render", step.file, complaint)) {
        return std::nullopt;
    }
    while (true) {
        if (const auto frames = words.takeValueOf("frames")) {
            if (!parseFrames(*frames, step.frames, complaint)) {
                return std::nullopt;
            }
        } else if (const auto rms = words.takeValueOf("rms")) {
            if (!parseSwitch(*rms, "render: rms", step.rms, complaint)) {
                return std::nullopt;
            }
        } else if (const auto levels = words.takeValueOf("levels")) {
            step.levels = *levels;
        } else {
            return step;
        }
    }
}

template <typename Plain> StepOrNothing parsePlain(Words& /*words*/, std::string& /*complaint*/) {
    return Plain{};
}

const std::map<std::string, StepParser>& stepParsers() {
    static const std::map<std::string, StepParser> parsers{
        {"open", parseOpen},
        {"revert", parsePlain<RevertStep>},
        {"save", parseSave},
        {"dump", parseDump},
        {"render", parseRender},
        {"play", parsePlain<PlayStep>},
        {"info", parsePlain<InfoStep>},
    };
    return parsers;
}

bool parseRate(Words& words, std::optional<double>& rate, std::string& complaint) {
    double hertz = 0.0;
    if (!parseNumber(words.take(), hertz) || !std::isfinite(hertz) || hertz < 1.0 || hertz > 1e6) {
        complaint = "--rate needs a number of hertz from 1 to 1000000.";
        return false;
    }
    rate = hertz;
    return true;
}

bool parseSteps(Words& words, std::vector<Step>& steps, std::string& complaint) {
    while (!words.empty()) {
        const std::string name = words.take();
        const auto parser = stepParsers().find(name);
        if (parser == stepParsers().end()) {
            complaint = "There is no step named \"" + name + "\".";
            return false;
        }
        const StepOrNothing step = parser->second(words, complaint);
        if (!step) {
            return false;
        }
        steps.push_back(*step);
    }
    if (steps.empty()) {
        complaint = "There is nothing to do.";
    }
    return !steps.empty();
}

} // namespace

std::optional<CommandLine> parseCommandLine(const std::vector<std::string>& arguments,
                                            std::string& complaint) {
    Words words(arguments);
    CommandLine line;
    line.help = words.takeIf("--help");
    line.version = !line.help && words.takeIf("--version");
    if (line.help || line.version) {
        if (words.empty()) {
            return line;
        }
        complaint = "--help and --version stand alone.";
        return std::nullopt;
    }
    if (words.takeIf("--rate") && !parseRate(words, line.rate, complaint)) {
        return std::nullopt;
    }
    return parseSteps(words, line.steps, complaint) ? std::optional(line) : std::nullopt;
}

std::string usage() {
    return R"(zemo-batch [--rate HZ] STEP...
  open FILE [swap] [normalize]  read a sound, as the window's open panel does
  revert                        exchange the sound and the copy of the last one
  save FILE                     write it as FILE: .caf .CAF .aif .AIF
  dump FILE                     write its samples alone, little-endian floats
  render FILE [frames=N] [rms=on|off] [levels=FILE]
                                write what one press of Play delivers, as a CAF
  play                          play it through the default output to its end
  info                          print what is known of it
zemo-batch --help | --version

Steps run in order on the one sound. --rate is the rate of the output that is
not there: by default that of the first audio file opened, else 44100 Hz.
Exit status: 0 done, 1 a step failed, 2 wrong command line.
)";
}

} // namespace zemo::batch
