#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>
#include <memory>

#include "meter/LevelMeterGeometry.h"
#include "meter/MeterCanvas.h"
#include "meter/SpokenLevel.h"

namespace zemo {

/// The level meter: one vertical bar for the live level `value`, with a ghost of the bar of the
/// frame before. It draws when it is asked to (update()) and never schedules itself. What it shows
/// it tells assistive technology, at a civil rate. [main]
class levelOpenGLView : public QWidget {
    Q_OBJECT
public:
    explicit levelOpenGLView(QWidget* parent = nullptr);
    ~levelOpenGLView() override;

    /// One frame into the canvas: blending, a transparent ground, the level.
    void drawRect();
    /// Draws the live level `value`; the argument is ignored.
    void drawValue(float ignored);
    /// No ghost in the next frame.
    void resetPrevious();
    /// Does nothing.
    void updateView(QObject* sender);

    float prev_v() const { return memory_.prev_v; }
    void setPrev_v(float top) { memory_.prev_v = top; }
    float prev_cv() const { return memory_.prev_cv; }
    void setPrev_cv(float magnitude) { memory_.prev_cv = magnitude; }
    float testVal() const { return testVal_; }
    void setTestVal(float level) { testVal_ = level; }

    /// The picture of the last frame.
    const QImage& picture() const { return picture_; }

    /// The live level in words: "−12.3 dBFS".
    QString levelText() const;

    QSize sizeHint() const override { return {96, 320}; }

signals:
    /// Assistive technology has been told of this level, in dBFS.
    void levelTold(double decibels);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void tellLevel();

    MeterMemory memory_;
    float testVal_ = 0.0F;
    std::unique_ptr<MeterCanvas> canvas_;
    QImage picture_;
    SpokenLevel speech_;
    QTimer speechTimer_; ///< until a level that came too soon is due
    QElapsedTimer speechClock_;
};

} // namespace zemo
