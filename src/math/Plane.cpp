#include "math/Vector.h"

namespace ql::math {

Plane normalize(const Plane& plane) {
  const float l = std::sqrt(plane.a * plane.a + plane.b * plane.b + plane.c * plane.c);
  if (!(l > 0)) return {};
  return {plane.a / l, plane.b / l, plane.c / l, plane.d / l};
}

}  // namespace ql::math
