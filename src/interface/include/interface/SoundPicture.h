#pragma once

#include <QImage>
#include <QPainter>

#include "overview/Spectrogram.h"
#include "overview/WavePyramid.h"

/// How the pictures of a sound are painted. All [main]; the cost goes with the picture's size.
namespace zemo {

/// The greatest magnitude that the wave's plot shows: a little more than full scale, and up to
/// twice that when the sound goes beyond it.
double shownMagnitude(const overview::WavePyramid& wave);

/// Where a sample's value stands in the plot.
double heightInPlot(const QRectF& plot, double magnitude, double value);

/// The wave, with what is beyond full scale in its own colour. `scale` is device pixels in a pixel.
void paintWave(QPainter& painter, const QRectF& plot, const overview::WavePyramid& wave,
               double scale);

/// A mark at the plot's upper edge wherever there are samples beyond full scale, and one at its
/// lower edge wherever some are not finite.
void paintMarks(QPainter& painter, const QRectF& plot, const overview::WavePyramid& wave,
                double scale);

/// One pixel for each of its values, the highest frequency at the top. Null without memory.
QImage imageOf(const overview::Spectrogram& spectrogram);

} // namespace zemo
