#pragma once

namespace zemo {

/// From now on assistive technology finds in a levelOpenGLView a value in dBFS. Any number of
/// times. [main]
void installMeterAccessible();

} // namespace zemo
