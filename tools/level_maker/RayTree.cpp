#include "RayTree.h"

namespace ql::maker {
namespace {

constexpr std::uint32_t kLeafSize = 4;

Bounds boundsOf(const Triangle& t) {
  Bounds b;
  for (const Vec3& p : t.corners) b.add(p);
  return b;
}

double surfaceOf(const Bounds& b) {
  const Vec3 d = b.maxs - b.mins;
  return d.x * d.y + d.y * d.z + d.z * d.x;
}

Vec3 centreOf(const Triangle& t) { return t.corners[0] + t.corners[1] + t.corners[2]; }

}  // namespace

RayTree::RayTree(std::vector<Triangle> triangles) : triangles_(std::move(triangles)) {
  boxes_.reserve(triangles_.size() + 1);
  if (!triangles_.empty()) build(0, static_cast<std::uint32_t>(triangles_.size()));
}

void RayTree::build(std::uint32_t from, std::uint32_t to) {
  const std::size_t index = boxes_.size();
  boxes_.emplace_back();
  Bounds all;
  Bounds centres;
  for (std::uint32_t i = from; i < to; ++i) {
    all.add(boundsOf(triangles_[i]));
    centres.add(centreOf(triangles_[i]));
  }
  boxes_[index] = {all.mins, all.maxs, from, to - from};
  const Vec3 size = centres.maxs - centres.mins;
  const int axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
  if (to - from <= kLeafSize || size[axis] < 1e-6) return;

  constexpr int kBins = 16;
  struct Bin {
    Bounds box;
    std::uint32_t count = 0;
  };
  std::array<Bin, kBins> bins;
  const auto binOf = [&](const Triangle& t) {
    return std::min(kBins - 1, static_cast<int>((centreOf(t)[axis] - centres.mins[axis]) / size[axis] * kBins));
  };
  for (std::uint32_t i = from; i < to; ++i) {
    Bin& bin = bins[static_cast<std::size_t>(binOf(triangles_[i]))];
    bin.box.add(boundsOf(triangles_[i]));
    ++bin.count;
  }
  int best = 1;
  double bestCost = 1e300;
  for (int cut = 1; cut < kBins; ++cut) {
    Bin left;
    Bin right;
    for (int b = 0; b < kBins; ++b) {
      const Bin& bin = bins[static_cast<std::size_t>(b)];
      Bin& side = b < cut ? left : right;
      if (bin.count > 0) side.box.add(bin.box);
      side.count += bin.count;
    }
    if (left.count == 0 || right.count == 0) continue;
    const double cost = surfaceOf(left.box) * left.count + surfaceOf(right.box) * right.count;
    if (cost < bestCost) {
      bestCost = cost;
      best = cut;
    }
  }
  const auto middle = std::stable_partition(triangles_.begin() + from, triangles_.begin() + to,
                                            [&](const Triangle& t) { return binOf(t) < best; });
  const auto at = static_cast<std::uint32_t>(middle - triangles_.begin());
  build(from, at);
  boxes_[index].first = static_cast<std::uint32_t>(boxes_.size());
  boxes_[index].count = 0;
  build(at, to);
}

template <class Visit>  // Visit(triangle index, distance, b1, b2) -> true to stop
void RayTree::walk(Vec3 origin, Vec3 direction, double& limit, Visit visit) const {
  if (boxes_.empty()) return;
  const auto invert = [](double d) { return 1.0 / (std::fabs(d) < 1e-12 ? 1e-12 : d); };
  const Vec3 inverse{invert(direction.x), invert(direction.y), invert(direction.z)};
  const auto entry = [&](const Box& box) {
    double enter = 0.0;
    double leave = limit;
    for (int a = 0; a < 3; ++a) {
      const double t0 = (box.mins[a] - origin[a]) * inverse[a];
      const double t1 = (box.maxs[a] - origin[a]) * inverse[a];
      enter = std::max(enter, std::min(t0, t1));
      leave = std::min(leave, std::max(t0, t1));
    }
    return enter <= leave ? enter : -1.0;
  };
  std::array<std::uint32_t, 96> stack{};
  std::size_t depth = 0;
  stack[depth++] = 0;
  while (depth > 0) {
    const std::uint32_t index = stack[--depth];
    const Box& box = boxes_[index];
    if (entry(box) < 0.0) continue;
    if (box.count == 0) {
      const double first = entry(boxes_[index + 1]);
      const double second = entry(boxes_[box.first]);
      const bool swap = second >= 0.0 && (first < 0.0 || second < first);
      if (depth + 2 > stack.size()) continue;
      stack[depth++] = swap ? index + 1 : box.first;
      stack[depth++] = swap ? box.first : index + 1;
      continue;
    }
    for (std::uint32_t i = box.first; i < box.first + box.count; ++i) {
      const auto& corners = triangles_[i].corners;
      const Vec3 e1 = corners[1] - corners[0];
      const Vec3 e2 = corners[2] - corners[0];
      const Vec3 p = cross(direction, e2);
      const double det = dot(e1, p);
      if (std::fabs(det) < 1e-12) continue;
      const Vec3 o = origin - corners[0];
      const double b1 = dot(o, p) / det;
      if (b1 < 0.0 || b1 > 1.0) continue;
      const Vec3 q = cross(o, e1);
      const double b2 = dot(direction, q) / det;
      if (b2 < 0.0 || b1 + b2 > 1.0) continue;
      const double t = dot(e2, q) / det;
      if (t <= 1e-4 || t >= limit) continue;
      if (visit(i, t, b1, b2)) return;
    }
  }
}

std::optional<Hit> RayTree::nearest(Vec3 origin, Vec3 direction, double limit) const {
  std::optional<Hit> best;
  walk(origin, direction, limit, [&](std::uint32_t i, double t, double b1, double b2) {
    limit = t;
    best = Hit{t, i, b1, b2};
    return false;
  });
  return best;
}

bool RayTree::free(Vec3 origin, Vec3 direction, double limit) const {
  bool blocked = false;
  walk(origin, direction, limit, [&](std::uint32_t, double, double, double) { return blocked = true; });
  return !blocked;
}

}  // namespace ql::maker
