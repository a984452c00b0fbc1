#include "Light.h"

#include <algorithm>
#include <cmath>

namespace ql::hl_maker {
namespace {

constexpr double kAmbient = 14;
constexpr double kAway = 2;  // units that a point is moved off its face
constexpr double kLampSize = 6;

}  // namespace

Point lightAt(const Cells& cells, const std::vector<Lamp>& lamps, const Point& at, const Point& normal) {
  Point out{kAmbient, kAmbient, kAmbient * 1.15};
  Point from{};
  for (std::size_t axis = 0; axis < 3; ++axis) from[axis] = at[axis] + normal[axis] * kAway;
  for (const Lamp& lamp : lamps) {
    Point way{};
    double squared = 0, along = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      way[axis] = lamp.position[axis] - from[axis];
      squared += way[axis] * way[axis];
      along += way[axis] * normal[axis];
    }
    const double distance = std::sqrt(squared);
    if (distance >= lamp.reach || along <= 0) continue;
    // A lamp has a size, which softens the edges of its shadows.
    int seen = 0;
    constexpr int kCorners = 4;
    for (int i = 0; i < kCorners; ++i) {
      const double dx = (i & 1) != 0 ? kLampSize : -kLampSize, dy = (i & 2) != 0 ? kLampSize : -kLampSize;
      seen += cells.sees(from, {lamp.position[0] + dx, lamp.position[1] + dy, lamp.position[2]});
    }
    const double fade = 1 - distance / lamp.reach;
    const double strength = fade * fade * (0.25 + 0.75 * along / std::max(distance, 1.0)) * seen / kCorners;
    for (std::size_t c = 0; c < 3; ++c) out[c] += lamp.color[c] * strength;
  }
  return out;
}

}  // namespace ql::hl_maker
