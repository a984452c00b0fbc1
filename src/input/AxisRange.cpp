#include "input/AxisRange.h"

#include <algorithm>

namespace ql::input {

std::int32_t AxisRange::value(std::int16_t raw) const {
  constexpr std::int64_t kEnd = 32'767, kWhole = 10'000;
  const std::int64_t way = std::min<std::int64_t>(raw < 0 ? -std::int64_t{raw} : raw, kEnd) * kWhole;
  const std::int64_t dead = deadZone * kEnd, full = std::max(saturation * kEnd, dead + 1);
  const std::int64_t middle = (std::int64_t{minimum} + maximum) / 2;
  const std::int64_t reach = raw < 0 ? middle - minimum : maximum - middle;
  const std::int64_t part = std::clamp<std::int64_t>(way - dead, 0, full - dead);
  const std::int64_t step = (reach * part + (full - dead) / 2) / (full - dead);
  return static_cast<std::int32_t>(raw < 0 ? middle - step : middle + step);
}

}  // namespace ql::input
