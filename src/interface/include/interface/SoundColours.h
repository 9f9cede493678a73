#pragma once

#include <QColor>

/// The colours of the sound's picture. Texts differ from what lies behind them by at least 4.5 to
/// 1, lines and marks by at least 3 to 1.
namespace zemo::colours {

inline constexpr QColor kCard{0x26, 0x24, 0x30};
inline constexpr QColor kPlot{0x1b, 0x19, 0x23}; ///< behind the wave
inline constexpr QColor kText{0xb6, 0xb1, 0xcc};
inline constexpr QColor kLine{0x7d, 0x77, 0x9c}; ///< the middle, full scale, the rulers' ticks
inline constexpr QColor kPeak{0x7c, 0x70, 0xc4}; ///< the wave from its least to its greatest sample
inline constexpr QColor kRms{0xc4, 0xba, 0xff};  ///< its body
inline constexpr QColor kBeyond{0xff, 0xa9, 0x40};
inline constexpr QColor kNotFinite{0xff, 0x6f, 0xb5};
inline constexpr QColor kPlayhead{0xff, 0xff, 0xff};
inline constexpr QColor kFocus{0xb9, 0xb2, 0xe0};

} // namespace zemo::colours
