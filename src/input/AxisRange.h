/// @file
/// From what an axis of a controller says to what the host reads.
#pragma once

#include <cstdint>

namespace ql::input {

/// How an axis is read. Dead zone and saturation are in 10000ths of the way from the middle to an end.
struct AxisRange {
  std::int32_t deadZone = 0;         ///< up to here the axis reads as the middle
  std::int32_t saturation = 10'000;  ///< from here on it reads as the end
  std::int32_t minimum = 0, maximum = 65'535;

  /// @param raw -32768 to 32767
  std::int32_t value(std::int16_t raw) const;
};

}  // namespace ql::input
