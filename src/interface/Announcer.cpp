#include "interface/Announcer.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace zemo {
namespace {

QAccessibleInterface* makeAccessible(const QString& /*className*/, QObject* object) {
    auto* const announcer = qobject_cast<Announcer*>(object);
    return announcer != nullptr ? new QAccessibleWidget(announcer, QAccessible::Notification)
                                : nullptr;
}

void tell(QObject* object, QAccessible::Event kind) {
    QAccessibleEvent event(object, kind);
    QAccessible::updateAccessibility(&event);
}

} // namespace

Announcer::Announcer(QWidget* parent) : QWidget(parent) {
    QAccessible::installFactory(makeAccessible); // the same one is taken once
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setGeometry(0, 0, 1, 1); // one that has no size would count as hidden
}

void Announcer::say(const QString& text) {
    if (text.isEmpty()) {
        return;
    }
    tell(this, QAccessible::ObjectHide);
    setAccessibleName(text);
    tell(this, QAccessible::ObjectShow);
}

} // namespace zemo
