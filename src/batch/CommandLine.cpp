#include "batch/CommandLine.h"

#include <charconv>
#include <cmath>
#include <functional>
#include <map>

namespace zemo::batch {
namespace {

/// The words still to be read, and what was wrong with one of them.
class Words {
public:
    explicit Words(const std::vector<std::string>& words) : words_(words) {}

    bool empty() const { return next_ == words_.size(); }
    const std::string& peek() const { return words_[next_]; }
    std::string take() { return words_[next_++]; }
    bool takeIf(const std::string& word) {
        const bool found = !empty() && peek() == word;
        next_ += found ? 1 : 0;
        return found;
    }

private:
    const std::vector<std::string>& words_;
    std::size_t next_ = 0;
};

using StepOrNothing = std::optional<Step>;
using StepParser = std::function<StepOrNothing(Words&, std::string&)>;

StepOrNothing parseOpen(Words& words, std::string& complaint) {
    if (words.empty()) {
        complaint = "open needs a file.";
        return std::nullopt;
    }
    OpenStep step{.file = words.take()};
    step.swap = words.takeIf("swap");
    step.normalize = words.takeIf("normalize");
    return step;
}

const std::map<std::string, StepParser>& stepParsers() {
    static const std::map<std::string, StepParser> parsers{
        {"open", parseOpen},
        {"play", [](Words&, std::string&) -> StepOrNothing { return PlayStep{}; }},
        {"info", [](Words&, std::string&) -> StepOrNothing { return InfoStep{}; }},
    };
    return parsers;
}

bool parseRate(Words& words, std::optional<double>& rate, std::string& complaint) {
    const std::string text = words.empty() ? std::string() : words.take();
    double hertz = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), hertz);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(hertz) ||
        hertz < 1.0 || hertz > 1e6) {
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
  play                          play it through the default output, until it ends
  info                          print what is known of it
zemo-batch --help | --version

Steps run in order on the one sound. --rate is the rate of the output that is
not there: by default that of the first audio file opened, else 44100 Hz.
Exit status: 0 done, 1 a step failed, 2 wrong command line.
)";
}

} // namespace zemo::batch
