#include "interface/SoundRuler.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <array>
#include <cmath>

namespace zemo {
namespace {

/// For its translations.
struct Ruler {
    Q_DECLARE_TR_FUNCTIONS(SoundRuler)
};

/// The least of the round steps that is not below `least` seconds.
double roundStep(double least) {
    constexpr std::array<double, 12> kLong{10.0,  15.0,  30.0,   60.0,   120.0,  300.0,
                                           600.0, 900.0, 1800.0, 3600.0, 7200.0, 14400.0};
    if (least > kLong.back()) {
        return std::ceil(least / kLong.back()) * kLong.back();
    }
    if (least > 5.0) {
        return *std::lower_bound(kLong.begin(), kLong.end(), least);
    }
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * 0.999999) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

} // namespace

QVector<Tick> timeTicks(double seconds, double pixels, double spacing) {
    QVector<Tick> ticks;
    if (!(seconds > 0.0) || !(pixels >= spacing) || !std::isfinite(seconds)) {
        return ticks;
    }
    const double step = roundStep(std::max(seconds * spacing / pixels, 1e-9));
    const int decimals = step < 1.0 ? static_cast<int>(std::ceil(-std::log10(step) - 1e-9)) : 0;
    for (int i = 0; i * step <= seconds; ++i) {
        ticks.push_back({i * step, timeText(i * step, decimals)});
    }
    return ticks;
}

QVector<Tick> frequencyTicks(double lowest, double highest) {
    QVector<Tick> ticks;
    for (int power = -3; power <= 9; ++power) {
        for (const double factor : {1.0, 2.0, 5.0}) {
            const double hertz = factor * std::pow(10.0, power);
            if (hertz < lowest || hertz > highest) {
                continue;
            }
            const QLocale locale;
            ticks.push_back(
                {hertz, hertz < 1000.0
                            ? Ruler::tr("%1 Hz").arg(locale.toString(hertz, 'g', 3))
                            : Ruler::tr("%1 kHz").arg(locale.toString(hertz / 1000.0, 'g', 4))});
        }
    }
    return ticks;
}

QString timeText(double seconds, int decimals) {
    if (seconds < 60.0) {
        return Ruler::tr("%1 s").arg(QLocale().toString(seconds, 'f', decimals));
    }
    const auto whole = static_cast<qint64>(seconds);
    const QString rest = QString("%1").arg(whole % 60, 2, 10, QChar('0'));
    const QString fraction =
        decimals > 0
            ? QLocale().toString(seconds - static_cast<double>(whole), 'f', decimals).mid(1)
            : QString();
    if (whole < 3600) {
        return QString("%1:%2%3").arg(whole / 60).arg(rest, fraction);
    }
    return QString("%1:%2:%3%4")
        .arg(whole / 3600)
        .arg(whole / 60 % 60, 2, 10, QChar('0'))
        .arg(rest, fraction);
}

QString decibelText(float magnitude) {
    if (!(magnitude > 0.0F)) {
        return Ruler::tr("−∞ dBFS");
    }
    const double tenths = std::round(200.0 * std::log10(static_cast<double>(magnitude)));
    const QString sign = tenths < 0.0 ? QString("−") : tenths > 0.0 ? QString("+") : QString();
    return Ruler::tr("%1 dBFS").arg(sign + QLocale().toString(std::fabs(tenths) / 10.0, 'f', 1));
}

QString countsText(qint64 beyond, qint64 notFinite) {
    QStringList parts;
    if (beyond > 0) {
        parts += Ruler::tr("%1 beyond full scale").arg(QLocale().toString(beyond));
    }
    if (notFinite > 0) {
        parts += Ruler::tr("%1 not finite").arg(QLocale().toString(notFinite));
    }
    return parts.join(" · ");
}

} // namespace zemo
