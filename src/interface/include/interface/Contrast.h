#pragma once

#include <QColor>

namespace zemo {

/// [any] How bright a colour is, from 0 to 1, as the guidelines on accessible contrast define it.
double relativeLuminance(const QColor& colour);

/// [any] From 1 (the same) to 21 (black and white).
double contrast(const QColor& one, const QColor& other);

} // namespace zemo
