#include "platform/software/Vertices.h"

namespace ql::software {

float planeDistance(const Pipeline& p, const ClipVertex& v, std::uint32_t bit) {
  switch (bit) {
    case outcode::kNear:
      return v.z;
    case outcode::kFar:
      return v.w - v.z;
    case outcode::kBehind:
      return v.w - kSmallestW;
    case outcode::kGuardLeft:
      return v.x - p.screen.guardLeft * v.w;
    case outcode::kGuardTop:
      return v.y - p.screen.guardTop * v.w;
    case outcode::kGuardRight:
      return p.screen.guardRight * v.w - v.x;
    default:
      return p.screen.guardBottom * v.w - v.y;
  }
}

}  // namespace ql::software
