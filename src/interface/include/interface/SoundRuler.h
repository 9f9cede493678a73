#pragma once

#include <QString>
#include <QVector>

/// Where the marks of the rulers stand, and what is written there. All [any].
namespace zemo {

struct Tick {
    double place = 0.0; ///< seconds or hertz
    QString text;
};

/// Round times from 0 on, at least `spacing` apart on a ruler of that length; both in pixels.
QVector<Tick> timeTicks(double seconds, double pixels, double spacing);

/// 1, 2 and 5 times the powers of ten between the two frequencies.
QVector<Tick> frequencyTicks(double lowest, double highest);

/// A time as the ruler's marks have it, with that many decimals of a second.
QString timeText(double seconds, int decimals);

/// A magnitude relative to full scale: "−0.3 dBFS"; silence is "−∞ dBFS".
QString decibelText(float magnitude);

/// "12 beyond full scale · 3 not finite", or as much of that as there is.
QString countsText(qint64 beyond, qint64 notFinite);

} // namespace zemo
