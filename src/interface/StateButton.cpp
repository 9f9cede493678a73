#include "interface/StateButton.h"

namespace zemo {

StateButton::StateButton(QWidget* parent) : TitledButton(parent) {}

void StateButton::nextCheckState() {
    state_ = state_ == On ? Off : On;
}

} // namespace zemo
