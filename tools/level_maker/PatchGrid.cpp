#include "PatchGrid.h"

#include <array>

namespace ql::maker {
namespace {

struct Weights {
  int first = 0;
  std::array<double, 3> value{};
  std::array<double, 3> slope{};
};

Weights weightsAt(double s, int points) {
  const int pieces = (points - 1) / 2;
  const double scaled = std::clamp(s, 0.0, 1.0) * pieces;
  const int piece = std::min(static_cast<int>(scaled), pieces - 1);
  const double f = scaled - piece;
  return {2 * piece, {(1 - f) * (1 - f), 2 * f * (1 - f), f * f}, {-2 * (1 - f), 2 - 4 * f, 2 * f}};
}

}  // namespace

SurfacePoint evaluatePatch(const Patch& patch, double s, double t) {
  SurfacePoint result;
  // Where the surface shrinks to a point (the top of a dome) the derivatives vanish; the normal is then taken a little
  // further in.
  for (const double inset : {0.0, 0.01}) {
    const Weights across = weightsAt(s + (0.5 - s) * inset, patch.width);
    const Weights along = weightsAt(t + (0.5 - t) * inset, patch.height);
    Vec3 ds;
    Vec3 dt;
    SurfacePoint at;
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) {
        const ControlPoint& p = patch.at(across.first + c, along.first + r);
        const auto i = static_cast<std::size_t>(c);
        const auto j = static_cast<std::size_t>(r);
        at.position += p.position * (across.value[i] * along.value[j]);
        at.u += p.u * across.value[i] * along.value[j];
        at.v += p.v * across.value[i] * along.value[j];
        ds += p.position * (across.slope[i] * along.value[j]);
        dt += p.position * (across.value[i] * along.slope[j]);
      }
    if (inset == 0.0) result = at;
    const Vec3 n = cross(ds, dt);
    if (length(n) > 1e-6 * (1.0 + length(ds) * length(dt))) {
      result.normal = normalized(n);
      break;
    }
  }
  return result;
}

std::pair<double, double> patchExtent(const Patch& patch) {
  constexpr int kSteps = 16;
  const auto measure = [&](auto pointAt) {
    double longest = 0.0;
    for (const double other : {0.0, 0.5, 1.0}) {
      double sum = 0.0;
      for (int i = 0; i < kSteps; ++i)
        sum += length(pointAt(static_cast<double>(i + 1) / kSteps, other) -
                      pointAt(static_cast<double>(i) / kSteps, other));
      longest = std::max(longest, sum);
    }
    return longest;
  };
  return {measure([&](double s, double t) { return evaluatePatch(patch, s, t).position; }),
          measure([&](double t, double s) { return evaluatePatch(patch, s, t).position; })};
}

}  // namespace ql::maker
