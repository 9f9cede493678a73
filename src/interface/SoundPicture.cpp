#include "interface/SoundPicture.h"

#include <QPainterPath>
#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <vector>

#include "interface/SoundColours.h"
#include "overview/ColourMap.h"

namespace zemo {
namespace {

using overview::WaveColumn;
using overview::WavePyramid;

constexpr double kRoom = 1.06; ///< above full scale
constexpr double kMostShown = 2.0;
constexpr double kMarkWidth = 2.0; ///< pixels, at least
constexpr double kMarkHeight = 6.0;

/// One column for a device pixel, but not more than there are samples.
std::vector<WaveColumn> columnsFor(const QRectF& plot, const WavePyramid& wave, double scale) {
    const auto count = static_cast<double>(wave.count());
    const double columns = std::clamp(std::round(plot.width() * scale), 1.0, count);
    return wave.columns(0.0, count / columns, static_cast<std::size_t>(columns));
}

/// A run of columns between their upper and their lower ends.
class Band {
public:
    void add(double x, double upper, double lower) {
        upper_ << QPointF(x, upper);
        lower_ << QPointF(x, lower);
    }

    /// With a fine edge, so that it is seen where it has no height.
    void paint(QPainter& painter, const QColor& colour, double edge) {
        if (upper_.isEmpty()) {
            return;
        }
        QPolygonF outline = upper_;
        std::for_each(lower_.rbegin(), lower_.rend(), [&](const QPointF& p) { outline << p; });
        painter.setPen(QPen(colour, edge, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(colour);
        painter.drawPolygon(outline);
        upper_.clear();
        lower_.clear();
    }

private:
    QPolygonF upper_;
    QPolygonF lower_;
};

/// All runs of columns with finite samples, `ends` giving each its upper and lower value.
template <typename Ends>
void paintBands(QPainter& painter, const QRectF& plot, const std::vector<WaveColumn>& columns,
                double magnitude, const QColor& colour, const Ends& ends) {
    const double width = plot.width() / static_cast<double>(columns.size());
    const double edge = 0.8;
    Band band;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (!columns[i].hasFinite()) {
            band.paint(painter, colour, edge);
            continue;
        }
        const auto [high, low] = ends(columns[i]);
        const double upper = heightInPlot(plot, magnitude, high);
        const double lower = heightInPlot(plot, magnitude, low);
        const double left = plot.left() + static_cast<double>(i) * width;
        if (width > 4.0) { // a sample wide enough to be seen is a step
            band.add(left, upper, lower);
            band.add(left + width, upper, lower);
        } else {
            band.add(left + width / 2.0, upper, lower);
        }
    }
    band.paint(painter, colour, edge);
}

std::pair<double, double> extremes(const WaveColumn& column) {
    return {static_cast<double>(column.high), static_cast<double>(column.low)};
}

/// The RMS about the middle, inside what the samples reach.
std::pair<double, double> body(const WaveColumn& column) {
    const auto rms = static_cast<double>(column.rms);
    const auto [high, low] = extremes(column);
    return {std::clamp(rms, low, high), std::clamp(-rms, low, high)};
}

void paintMark(QPainter& painter, double middle, double width, double top, const QColor& colour) {
    const double shown = std::max(width, kMarkWidth);
    painter.fillRect(QRectF(middle - shown / 2.0, top, shown, kMarkHeight), colour);
}

} // namespace

double shownMagnitude(const overview::WavePyramid& wave) {
    return kRoom * std::clamp(static_cast<double>(wave.peak()), 1.0, kMostShown);
}

double heightInPlot(const QRectF& plot, double magnitude, double value) {
    const double part = std::clamp(value / magnitude, -1.0, 1.0);
    return plot.center().y() - part * plot.height() / 2.0;
}

void paintWave(QPainter& painter, const QRectF& plot, const overview::WavePyramid& wave,
               double scale) {
    const std::vector<WaveColumn> columns = columnsFor(plot, wave, scale);
    const double magnitude = shownMagnitude(wave);
    paintBands(painter, plot, columns, magnitude, colours::kPeak, extremes);
    paintBands(painter, plot, columns, magnitude, colours::kRms, body);
    if (wave.beyondCount() > 0) {
        const double full = heightInPlot(plot, magnitude, 1.0);
        const double height = full - plot.top();
        QPainterPath outside;
        outside.addRect(QRectF(plot.left(), plot.top(), plot.width(), height));
        outside.addRect(QRectF(plot.left(), plot.bottom() - height, plot.width(), height));
        painter.save();
        painter.setClipPath(outside, Qt::IntersectClip);
        paintBands(painter, plot, columns, magnitude, colours::kBeyond, extremes);
        painter.restore();
    }
}

void paintMarks(QPainter& painter, const QRectF& plot, const overview::WavePyramid& wave,
                double scale) {
    if (wave.beyondCount() + wave.notFiniteCount() == 0) {
        return;
    }
    const std::vector<WaveColumn> columns = columnsFor(plot, wave, scale);
    const double width = plot.width() / static_cast<double>(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double middle = plot.left() + (static_cast<double>(i) + 0.5) * width;
        if (columns[i].beyond) {
            paintMark(painter, middle, width, plot.top(), colours::kBeyond);
        }
        if (columns[i].notFinite) {
            paintMark(painter, middle, width, plot.bottom() - kMarkHeight, colours::kNotFinite);
        }
    }
}

QImage imageOf(const overview::Spectrogram& spectrogram) {
    const auto columns = static_cast<int>(spectrogram.columns());
    const auto rows = static_cast<int>(spectrogram.rows());
    QImage image(columns, rows, QImage::Format_RGB32);
    if (image.isNull()) {
        return image;
    }
    const auto& map = overview::colourMap();
    for (int y = 0; y < rows; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(rows - 1 - y));
        for (int x = 0; x < columns; ++x) {
            const float level =
                spectrogram.decibels(static_cast<std::size_t>(x), static_cast<std::size_t>(y));
            const float part = std::clamp(1.0F - level / overview::kFloorDecibels, 0.0F, 1.0F);
            const auto& colour = map[static_cast<std::size_t>(part * 255.0F)];
            line[x] = qRgb(colour.red, colour.green, colour.blue);
        }
    }
    return image;
}

} // namespace zemo
