#include "app/SheetSession.h"

#include <utility>

namespace zemo {

void SheetSession::begin(SheetPanel* panel) {
    panel_ = panel;
    didEnd_ = nullptr;
    completion_ = nullptr;
    panel->openAsSheet();
}

void SheetSession::beginForApplication(SheetPanel* panel, std::function<void()> didEnd) {
    begin(panel);
    didEnd_ = std::move(didEnd);
}

void SheetSession::beginForWindow(SheetPanel* panel, std::function<void(int)> completion) {
    begin(panel);
    completion_ = std::move(completion);
}

void SheetSession::endForWindow(SheetPanel* panel, int returnCode) {
    if (panel != panel_) {
        return;
    }
    panel_ = nullptr;
    panel->hide();
    if (const auto completion = std::exchange(completion_, nullptr)) {
        completion(returnCode);
    }
    if (const auto didEnd = std::exchange(didEnd_, nullptr)) {
        QMetaObject::invokeMethod(this, didEnd, Qt::QueuedConnection);
    }
}

} // namespace zemo
