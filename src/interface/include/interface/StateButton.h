#pragma once

#include "interface/TitledButton.h"

namespace zemo {

/// A button that is off, on, or in between; a click changes between off and on. [main]
class StateButton : public TitledButton {
    Q_OBJECT
public:
    enum State : int { Mixed = -1, Off = 0, On = 1 };

    explicit StateButton(QWidget* parent = nullptr);

    int state() const { return state_; }
    void setState(int state) { state_ = state; }

protected:
    void nextCheckState() override;

private:
    int state_ = Off;
};

} // namespace zemo
