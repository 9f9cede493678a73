#include <cmath>
#include <string>
#include <variant>
#include <vector>

#include "Target.h"
#include "batch/CommandLine.h"

using namespace zemo::batch;
using zemo::fuzz::require;

namespace {

/// The input's lines as the words of a command line.
std::vector<std::string> wordsOf(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> words(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == '\n') {
            words.emplace_back();
        } else {
            words.back() += static_cast<char>(data[i]);
        }
    }
    return words;
}

/// What a step may hold once it was accepted.
struct StepInBounds {
    bool operator()(const OpenStep& step) const { return !step.file.empty(); }
    bool operator()(const ResampleStep& /*step*/) const { return true; }
    bool operator()(const AmStep& step) const { return step.frequency > 0 && step.index >= 0; }
    bool operator()(const FmStep& step) const {
        return step.frequency > 0 && step.index >= 0 && step.envelopeRate >= 4 &&
               step.envelopeRate <= 32;
    }
    bool operator()(const HdStep& step) const {
        const zemo::HdSettings& s = step.settings;
        return (s.two || s.four) && !s.six && s.attack >= 100 && s.attack <= 1000 &&
               s.hpSelect >= 0 && s.hpSelect <= 2 && s.slope >= 0.6 && s.slope <= 0.998 &&
               s.mix >= 0 && s.mix <= 1 && s.knee >= 0 && s.knee <= 1 && s.comp >= 0.2F &&
               s.comp <= 1;
    }
    bool operator()(const RevertStep& /*step*/) const { return true; }
    bool operator()(const SaveStep& step) const { return step.file.size() >= 4; }
    bool operator()(const ImportStep& step) const { return !step.file.empty(); }
    bool operator()(const ExportStep& step) const { return step.file.size() >= 4; }
    bool operator()(const DumpStep& step) const { return !step.file.empty(); }
    bool operator()(const RenderStep& step) const {
        return !step.file.empty() && step.frames >= 1 && step.frames <= RenderStep::kMostFrames;
    }
    bool operator()(const PlayStep& /*step*/) const { return true; }
    bool operator()(const InfoStep& /*step*/) const { return true; }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto words = wordsOf(data, size);
    std::string complaint;
    const auto line = parseCommandLine(words, complaint);
    require(line.has_value() == complaint.empty(), "a refusal, and nothing else, says why");
    if (!line) {
        return 0;
    }
    require(line->help || line->version || !line->steps.empty(), "there is something to do");
    require(line->steps.size() <= words.size(), "every step has a word of its own");
    require(!line->rate || (*line->rate >= 1 && *line->rate <= 1e6), "the rate is in its range");
    for (const Step& step : line->steps) {
        require(std::visit(StepInBounds{}, step), "every step is within its bounds");
    }
    return 0;
}
