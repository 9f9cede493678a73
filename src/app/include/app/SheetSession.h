#pragma once

#include <QObject>
#include <functional>
#include <map>

#include "interface/SheetPanel.h"

namespace zemo {

/// The two ways in which a panel is a sheet of the window. A panel has at most one session; ending
/// it a second time does nothing. [main]
class SheetSession : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// The older way: when the sheet has ended, and after the action that ended it, `didEnd` runs.
    void beginForApplication(SheetPanel* panel, std::function<void()> didEnd);

    /// The newer way: `completion` gets the return code in the moment in which the sheet ends.
    void beginForWindow(SheetPanel* panel, std::function<void(int)> completion);

    /// Ends the sheet through the application object (return code 0) or through the window.
    void endForApplication(SheetPanel* panel) { endForWindow(panel, 0); }
    void endForWindow(SheetPanel* panel, int returnCode);

    /// Whether a sheet has ended in the older way, and its `didEnd` is yet to run.
    bool isEndAwaited() const noexcept { return awaitedEnds_ > 0; }

private:
    struct Session {
        std::function<void()> didEnd;
        std::function<void(int)> completion;
    };
    void begin(SheetPanel* panel, Session session);

    std::map<SheetPanel*, Session> sessions_;
    int awaitedEnds_ = 0;
};

} // namespace zemo
