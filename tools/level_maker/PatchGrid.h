#pragma once

#include "Level.h"

namespace ql::maker {

/// A point of a curved surface and its unit normal (towards the front).
struct SurfacePoint {
  Vec3 position;
  Vec3 normal;
  double u = 0.0;
  double v = 0.0;
};

/// Evaluates a patch; `s` and `t` run over the whole patch from 0 to 1 (columns, rows).
SurfacePoint evaluatePatch(const Patch& patch, double s, double t);

/// Average length of the surface across and along, in level units.
std::pair<double, double> patchExtent(const Patch& patch);

}  // namespace ql::maker
