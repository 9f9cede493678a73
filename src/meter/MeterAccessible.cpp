#include "MeterAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "meter/SpokenLevel.h"
#include "meter/levelOpenGLView.h"
#include "playback/SharedState.h"

namespace zemo {
namespace {

constexpr double kTenth = 0.1;

/// A progress bar: of the roles with a value that nobody sets it is the one that screen readers let
/// their users silence, slow down or turn into tones.
class MeterAccessible final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit MeterAccessible(levelOpenGLView* view)
        : QAccessibleWidget(view, QAccessible::ProgressBar) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override {
        const bool isLevel = kind == QAccessible::Value || kind == QAccessible::Description;
        return isLevel ? view()->levelText() : QAccessibleWidget::text(kind);
    }

    QVariant currentValue() const override {
        return spokenDecibels(value.load(std::memory_order_relaxed));
    }
    void setCurrentValue(const QVariant& /*value*/) override {}
    QVariant maximumValue() const override { return kSpokenCeiling; }
    QVariant minimumValue() const override { return kSpokenFloor; }
    QVariant minimumStepSize() const override { return kTenth; }

private:
    levelOpenGLView* view() const { return static_cast<levelOpenGLView*>(object()); }
};

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const view = qobject_cast<levelOpenGLView*>(object);
    return view != nullptr ? new MeterAccessible(view) : nullptr;
}

} // namespace

void installMeterAccessible() {
    QAccessible::installFactory(makeAccessible); // the same one is taken once
}

} // namespace zemo
