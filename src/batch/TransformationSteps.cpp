#include "TransformationSteps.h"

#include <array>

#include "dsp/PhaseModulation.h"
#include "platform/Format.h"

namespace zemo::batch {
namespace {

using StepOrNothing = std::optional<Step>;

/// The number that a step needs next.
bool takeNumber(Words& words, const std::string& name, float& number) {
    const std::string word = words.take();
    if (!parseNumber(word, number)) {
        words.complaint = name + " needs a number" +
                          (word.empty() ? std::string(".") : ", not \"" + word + "\".");
        return false;
    }
    return true;
}

/// The carrier and the index. What the sheet would close on without a word is an error here.
bool takeCarrier(Words& words, const std::string& step, float& frequency, float& index) {
    if (!takeNumber(words, step + ": the frequency", frequency) ||
        !takeNumber(words, step + ": the index", index)) {
        return false;
    }
    if (!(frequency > 0.0F)) {
        words.complaint = step + ": the frequency must be above 0.";
    } else if (!(index >= 0.0F)) {
        words.complaint = step + ": the index must be 0 or more.";
    }
    return words.complaint.empty();
}

StepOrNothing parseModulation(Words& words, const std::string& name, AmStep::Kind kind) {
    AmStep step{.kind = kind};
    return takeCarrier(words, name, step.frequency, step.index) ? StepOrNothing(step)
                                                                : std::nullopt;
}

/// A value inside its range; NaN becomes the lower bound. What was changed is noted.
template <typename Number>
Number clamped(Words& words, const std::string& name, Number value, Number low, Number high) {
    const Number used = !(value >= low) ? low : (value > high ? high : value);
    if (!(used == value)) {
        words.notices.push_back(platform::format(
            "%s is outside %g to %g; %g is used.", name.c_str(), static_cast<double>(low),
            static_cast<double>(high), static_cast<double>(used)));
    }
    return used;
}

/// A setting of hd: its name, and how its text becomes part of the settings.
struct HdSetting {
    const char* name;
    bool (*parse)(Words& words, const std::string& text, HdSettings& settings);
};

template <typename Number>
bool parseClamped(Words& words, const std::string& name, const std::string& text, Number low,
                  Number high, Number& value) {
    if (!parseNumber(text, value)) {
        words.complaint = name + " needs a number, not \"" + text + "\".";
        return false;
    }
    value = clamped(words, name, value, low, high);
    return true;
}

bool parseHarmonics(Words& words, const std::string& text, HdSettings& settings) {
    settings.two = text == "2" || text == "2,4";
    settings.four = text == "4" || text == "2,4";
    if (!settings.two && !settings.four) {
        words.complaint = "hd: harmonics is 2, 4 or 2,4.";
    }
    return words.complaint.empty();
}

bool parseHighPass(Words& words, const std::string& text, HdSettings& settings) {
    settings.hpSelect = text == "500" ? 1 : (text == "1000" ? 2 : 0);
    if (settings.hpSelect == 0 && text != "0") {
        words.complaint = "hd: highpass is 0, 500 or 1000.";
    }
    return words.complaint.empty();
}

bool parseAttack(Words& words, const std::string& text, HdSettings& settings) {
    return parseClamped(words, "hd: attack", text, 100, 1000, settings.attack);
}

constexpr std::array kHdSettings{
    HdSetting{"harmonics", parseHarmonics},
    HdSetting{"highpass", parseHighPass},
    HdSetting{"slope",
              [](Words& words, const std::string& text, HdSettings& settings) {
                  return parseClamped(words, "hd: slope", text, 0.6, 0.998, settings.slope);
              }},
    HdSetting{"attack", parseAttack},
    HdSetting{"mix",
              [](Words& words, const std::string& text, HdSettings& settings) {
                  return parseClamped(words, "hd: mix", text, 0.0F, 1.0F, settings.mix);
              }},
    HdSetting{"scale",
              [](Words& words, const std::string& text, HdSettings& settings) {
                  return parseSwitch(text, "hd: scale", settings.scale, words.complaint);
              }},
    HdSetting{"knee",
              [](Words& words, const std::string& text, HdSettings& settings) {
                  return parseClamped(words, "hd: knee", text, 0.0F, 1.0F, settings.knee);
              }},
    HdSetting{"comp",
              [](Words& words, const std::string& text, HdSettings& settings) {
                  return parseClamped(words, "hd: comp", text, 0.2F, 1.0F, settings.comp);
              }},
};

/// Reads one setting when one stands next. False: none stands there, or it is wrong.
bool takeHdSetting(Words& words, HdSettings& settings) {
    for (const HdSetting& setting : kHdSettings) {
        if (const auto text = words.takeValueOf(setting.name)) {
            return setting.parse(words, *text, settings);
        }
    }
    return false;
}

} // namespace

StepOrNothing parseResample(Words& words) {
    ResampleStep step;
    return takeNumber(words, "resample: the ratio", step.ratio) ? StepOrNothing(step)
                                                                : std::nullopt;
}

StepOrNothing parseAm(Words& words) {
    return parseModulation(words, "am", AmStep::Kind::Am);
}

StepOrNothing parseSsbLower(Words& words) {
    return parseModulation(words, "ssb-lower", AmStep::Kind::SsbLower);
}

StepOrNothing parseSsbUpper(Words& words) {
    return parseModulation(words, "ssb-upper", AmStep::Kind::SsbUpper);
}

StepOrNothing parseFm(Words& words) {
    FmStep step;
    if (!takeCarrier(words, "fm", step.frequency, step.index) ||
        !takeNumber(words, "fm: the envelope's rate", step.envelopeRate)) {
        return std::nullopt;
    }
    step.envelopeRate = clamped(words, "fm: the envelope's rate", step.envelopeRate,
                                dsp::kSlowestEnvelope, dsp::kFastestEnvelope);
    return step;
}

StepOrNothing parseHd(Words& words) {
    HdStep step;
    while (takeHdSetting(words, step.settings)) {
    }
    return words.complaint.empty() ? StepOrNothing(step) : std::nullopt;
}

} // namespace zemo::batch
