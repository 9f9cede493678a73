#pragma once

#include <QButtonGroup>
#include <QStringList>
#include <QWidget>

namespace zemo {

/// A row of buttons of which one is on, or, when not exclusive, any number. [main]
class SegmentedControl : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QStringList titles READ titles WRITE setTitles)
    Q_PROPERTY(bool exclusive READ isExclusive WRITE setExclusive)
    Q_PROPERTY(int selectedSegment READ selectedSegment WRITE setSelectedSegment)
public:
    explicit SegmentedControl(QWidget* parent = nullptr);

    QStringList titles() const;
    void setTitles(const QStringList& titles);

    bool isExclusive() const { return group_.exclusive(); }
    void setExclusive(bool exclusive) { group_.setExclusive(exclusive); }

    /// The segment that was turned on last and still is; -1: none is on.
    int selectedSegment() const;
    void setSelectedSegment(int segment);

    bool isSelectedForSegment(int segment) const;
    void setSelectedForSegment(bool selected, int segment);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QButtonGroup group_;
    int lastSelected_ = -1;
};

} // namespace zemo
