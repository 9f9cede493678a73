#pragma once

#include <chrono>
#include <optional>

/// What the meter tells those who do not see it, and how often.
namespace zemo {

/// The ends of the scale that is told, in dBFS. Less is silence.
inline constexpr double kSpokenFloor = -60.0;
inline constexpr double kSpokenCeiling = 0.0;

/// [any] A level (linear amplitude, sign ignored) in dBFS, to a tenth. Minus infinity for 0 and for
/// what is not a number.
double levelInDecibels(float level);
/// [any] The same, held to the scale.
double spokenDecibels(float level);

/// Says when a level is worth a word: when it is another than the one that was told last, and not
/// sooner than kInterval after that. Whoever shows a level sixty times a second thus speaks of it
/// twice a second at most, and of a level that stays not at all. [main]
class SpokenLevel {
public:
    using Time = std::chrono::milliseconds; ///< since any moment that stays
    static constexpr Time kInterval{500};

    /// Whether `level` is to be told now; then it is taken as told.
    bool offer(float level, Time now);
    /// How long after `now` the level that was offered last is due. Nothing when it has been told.
    std::optional<Time> due(Time now) const;

private:
    double told_ = kSpokenFloor;
    double offered_ = kSpokenFloor;
    std::optional<Time> lastTime_;
};

} // namespace zemo
