#include "platform/software/ViewSides.h"

#include "math/Matrix.h"

#include <algorithm>
#include <cmath>

namespace ql::software {
namespace {

// Far more than the dozen roundings of single precision on the way from a vertex to its outcode.
constexpr double kRounding = 1e-5;

}  // namespace

// As outcodes of vertices are found: x and y are compared with the outer pixels, z with 0 and w.
ViewSides::ViewSides(const device::State& state, const Target& target) {
  const math::Mat4 m = math::multiply(math::multiply(state.world, state.view), state.projection);
  const Linear x{m.m11, m.m21, m.m31, m.m41}, y{m.m12, m.m22, m.m32, m.m42}, z{m.m13, m.m23, m.m33, m.m43},
      w{m.m14, m.m24, m.m34, m.m44};
  const math::Viewport& v = state.viewport;
  const double halfWidth = v.width * 0.5, halfHeight = v.height * 0.5;
  const double centerX = v.x + halfWidth, centerY = v.y + halfHeight;
  const double left = std::max(v.x, 0), top = std::max(v.y, 0);
  const double right = std::min<double>(static_cast<double>(v.x) + v.width, target.width()) - 1;
  const double bottom = std::min<double>(static_cast<double>(v.y) + v.height, target.height()) - 1;
  // a times factor + w times (at - other).
  const auto side = [&w](const Linear& a, double factor, double at, double other) {
    Side out;
    for (std::size_t i = 0; i < 4; ++i) {
      out.distance[i] = a[i] * factor + w[i] * (at - other);
      out.size[i] = std::fabs(a[i] * factor) + std::fabs(w[i]) * (std::fabs(at) + std::fabs(other));
    }
    return out;
  };
  sides_ = {side(x, halfWidth, centerX, left),
            side(x, -halfWidth, right, centerX),
            side(y, -halfHeight, centerY, top),
            side(y, halfHeight, bottom, centerY),
            side(z, 1, 0, 0),
            side(z, -1, 1, 0)};
}

bool ViewSides::outside(const Bounds& box) const {
  const math::Vec3 &a = box.low, &b = box.high;
  const std::array<double, 4> low{a.x, a.y, a.z, 1}, high{b.x, b.y, b.z, 1};
  return std::any_of(sides_.begin(), sides_.end(), [&](const Side& side) {
    double farthest = 0, size = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      farthest += std::max(side.distance[i] * low[i], side.distance[i] * high[i]);
      size += side.size[i] * std::max(std::fabs(low[i]), std::fabs(high[i]));
    }
    return farthest < -kRounding * size;
  });
}

}  // namespace ql::software
