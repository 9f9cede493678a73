#include "app/SheetSession.h"

#include <utility>

namespace zemo {

void SheetSession::begin(SheetPanel* panel, Session session) {
    sessions_.insert_or_assign(panel, std::move(session));
    panel->openAsSheet();
}

void SheetSession::beginForApplication(SheetPanel* panel, std::function<void()> didEnd) {
    begin(panel, {.didEnd = std::move(didEnd), .completion = nullptr});
}

void SheetSession::beginForWindow(SheetPanel* panel, std::function<void(int)> completion) {
    begin(panel, {.didEnd = nullptr, .completion = std::move(completion)});
}

void SheetSession::endForWindow(SheetPanel* panel, int returnCode) {
    auto ended = sessions_.extract(panel);
    if (ended.empty()) {
        return;
    }
    panel->hide();
    if (const auto& completion = ended.mapped().completion) {
        completion(returnCode);
    }
    if (auto& didEnd = ended.mapped().didEnd) {
        ++awaitedEnds_;
        const auto tell = [this, didEnd = std::move(didEnd)] {
            --awaitedEnds_;
            didEnd();
        };
        QMetaObject::invokeMethod(this, tell, Qt::QueuedConnection);
    }
}

} // namespace zemo
