#pragma once

#include <QBrush>
#include <QImage>
#include <QPixmap>
#include <QVector>
#include <QWidget>
#include <memory>

#include "interface/TitledButton.h"
#include "overview/Spectrogram.h"
#include "overview/WavePyramid.h"

namespace zemo {

/// The picture of a whole sound: its wave or its spectrogram, over a ruler in time, with a line at
/// the place that is played. It draws what it is handed, at a cost that goes with its own size; the
/// line moves over a picture that is kept. [main]
class SoundView : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool spectrogramShown READ isSpectrogramShown WRITE setSpectrogramShown)
public:
    explicit SoundView(QWidget* parent = nullptr);

    /// `rate` in hertz. The spectrogram stays until another is set.
    void setWave(std::shared_ptr<const overview::WavePyramid> wave, double rate);
    /// Null: there is none.
    void setSpectrogram(std::shared_ptr<const overview::Spectrogram> spectrogram);
    /// There is no sound.
    void clear();
    /// There is a sound, but no memory for its picture.
    void clearForWantOfMemory();

    /// The place that is played, in samples from the sound's start; negative: nowhere.
    void setPlayhead(double sample);
    double playhead() const { return playhead_; }

    bool isSpectrogramShown() const { return button_->isChecked(); }
    void setSpectrogramShown(bool shown) { button_->setChecked(shown); }

    /// Where the wave or the spectrogram lies, in this widget's pixels.
    QRectF plot() const;
    /// Where a sample stands in it, and with it the line.
    double xOf(double sample) const;

    QSize sizeHint() const override { return {580, 230}; }
    QSize minimumSizeHint() const override { return {320, 150}; }

signals:
    void spectrogramShownChanged(bool shown);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    struct LegendItem {
        QBrush brush;
        double width = 0.0; ///< of what shows the colour
        QString text;
    };

    void drop(const QString& hint);
    void redraw();
    void describe();
    QPixmap paintPicture() const;
    void paintCard(QPainter& painter) const;
    void paintHint(QPainter& painter, const QString& hint) const;
    void paintWavePlot(QPainter& painter) const;
    void paintSpectrogramPlot(QPainter& painter) const;
    void paintLevelLine(QPainter& painter, double value, const QString& text) const;
    QRectF spectrogramPlot() const;
    void paintFrequencies(QPainter& painter) const;
    void paintTimes(QPainter& painter) const;
    QVector<LegendItem> legend() const;
    void paintLegend(QPainter& painter) const;
    QRect stripAt(double sample) const;

    TitledButton* button_; ///< wave or spectrogram
    std::shared_ptr<const overview::WavePyramid> wave_;
    std::shared_ptr<const overview::Spectrogram> spectrogram_;
    QImage spectrogramImage_;
    double rate_ = 1.0;
    double playhead_ = -1.0;
    QString hint_;    ///< what stands there instead of a picture
    QPixmap picture_; ///< all but the line; null: to be painted anew
};

} // namespace zemo
