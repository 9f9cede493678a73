#pragma once

#include "rescue/RescueKeeper.h"

namespace zemo::rescue {

/// While it lives, no end of the process takes a copy with it that is being made: exit() waits for
/// the keeper, on whatever thread it is called, and so does a crash (an access out of bounds, an
/// abort), which then goes on as it would have. One at a time. [main]
class FatalEnd {
public:
    explicit FatalEnd(RescueKeeper& keeper);
    FatalEnd(const FatalEnd&) = delete;
    FatalEnd& operator=(const FatalEnd&) = delete;
    ~FatalEnd();
};

} // namespace zemo::rescue
