#include "math/TriangleTree.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ql::math {
namespace {

constexpr float kSlack = 1e-5f;               // of what rounding may do, per unit of the coordinates
constexpr float kSmallestDirection = 1e-20f;  // less would give products of 0 and infinity
constexpr std::size_t kStack = 256;           // room for the children that wait at every level of the deepest tree

float largestOf(const Vec3& v) { return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}); }

/// Bit i for a lane i that is not 0. The lanes are all ones or 0.
template <class Mask>
unsigned bitsOf(Mask mask) {
#if defined(__SSE2__)
  return static_cast<unsigned>(_mm_movemask_ps(std::bit_cast<__m128>(mask)));
#else
  const Mask bits = mask & Mask{1, 2, 4, 8};
  return static_cast<unsigned>(bits[0] | bits[1] | bits[2] | bits[3]);
#endif
}

}  // namespace

/// A ray in the form that the tests need.
struct TriangleTree::Ray {
  Ray(const Vec3& origin, const Vec3& direction, Range range, float extent)
      : from{all(origin.x), all(origin.y), all(origin.z)},
        along{all(direction.x), all(direction.y), all(direction.z)},
        least(all(range.least)) {
    const float slack = kSlack * (largestOf(origin) + extent);
    enter = all(-slack);
    reach = slack;
    setLimit(range.limit);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const float d = along[axis][0];
      const float one = 1 / (std::abs(d) < kSmallestDirection ? std::copysign(kSmallestDirection, d) : d);
      const bool upwards = one >= 0;
      inverse[axis] = all(one);
      nearBound[axis] = upwards ? axis : axis + 3;
      farBound[axis] = upwards ? axis + 3 : axis;
      nearFrom[axis] = from[axis] + (upwards ? slack : -slack);
      farFrom[axis] = from[axis] - (upwards ? slack : -slack);
    }
  }
  static Lanes all(float value) { return Lanes{value, value, value, value}; }
  void setLimit(float value) {
    limit = all(value);
    leave = all(value + reach);
  }

  Lanes from[3], along[3], inverse[3];
  /// Of each axis: which bound the ray meets first, and both bounds moved outwards by the slack (put on the origin).
  std::size_t nearBound[3], farBound[3];
  Lanes nearFrom[3], farFrom[3];
  Lanes least, limit, enter, leave;
  float reach;
};

/// Which triangles of a packet are met, and where.
struct TriangleTree::Meeting {
  unsigned met;
  Lanes t;
};

/// One bit for each child whose box the ray meets.
inline unsigned TriangleTree::meetBoxes(const Node& node, const Ray& ray) {
  Lanes enter = ray.enter, leave = ray.leave;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const Lanes nearest = (node.bounds[ray.nearBound[axis]] - ray.nearFrom[axis]) * ray.inverse[axis];
    const Lanes farthest = (node.bounds[ray.farBound[axis]] - ray.farFrom[axis]) * ray.inverse[axis];
    enter = nearest > enter ? nearest : enter;
    leave = farthest < leave ? farthest : leave;
  }
  return bitsOf(enter <= leave);
}

/// As intersectTriangle computes it, for four triangles: the same operations, the same bits.
inline TriangleTree::Meeting TriangleTree::meetTriangles(const Packet& packet, const Ray& ray) {
  const auto& [cx, cy, cz] = packet.corner;
  const auto& [ax, ay, az] = packet.edge1;
  const auto& [bx, by, bz] = packet.edge2;
  const auto& [dx, dy, dz] = ray.along;
  const Lanes px = dy * bz - dz * by, py = dz * bx - dx * bz, pz = dx * by - dy * bx;
  const Lanes over = 1 / (ax * px + ay * py + az * pz);  // of 0: infinite, and what follows misses
  const Lanes tx = ray.from[0] - cx, ty = ray.from[1] - cy, tz = ray.from[2] - cz;
  const Lanes u = (tx * px + ty * py + tz * pz) * over;
  const Lanes qx = ty * az - tz * ay, qy = tz * ax - tx * az, qz = tx * ay - ty * ax;
  const Lanes v = (dx * qx + dy * qy + dz * qz) * over;
  const Lanes t = (bx * qx + by * qy + bz * qz) * over;
  const Lanes sum = u + v;
  return {bitsOf((u >= 0) & (u <= 1) & (v >= 0) & (sum <= 1) & (t >= ray.least) & (t < ray.limit)), t};
}

std::optional<TriangleMet> TriangleTree::first(const Vec3& origin, const Vec3& direction, Range range) const {
  if (nodes_.empty()) return std::nullopt;
  const Ray ray(origin, direction, range, extent_);
  std::array<Child, kStack> waiting;
  std::size_t count = 0;
  std::int32_t best = kIgnored;
  const Packet* bestPacket = nullptr;
  std::size_t bestLane = 0;
  float bestT = 0;
  waiting[count++] = {0, 0};
  while (count > 0) {
    const Child next = waiting[--count];
    if (next.lowest >= best) continue;
    if (next.place < 0) {
      const Packet& packet = packets_[static_cast<std::size_t>(~next.place)];
      const Meeting meeting = meetTriangles(packet, ray);
      for (unsigned met = meeting.met; met != 0; met &= met - 1) {
        const auto lane = static_cast<std::size_t>(std::countr_zero(met));
        if (packet.number[lane] >= best) continue;
        best = packet.number[lane];
        bestPacket = &packet;
        bestLane = lane;
        bestT = meeting.t[lane];
      }
      continue;
    }
    const Node& node = nodes_[static_cast<std::size_t>(next.place)];
    for (unsigned met = meetBoxes(node, ray); met != 0; met &= met - 1) {
      const Child& child = node.children[static_cast<std::size_t>(std::countr_zero(met))];
      if (child.lowest < best) waiting[count++] = child;
    }
  }
  if (bestPacket == nullptr) return std::nullopt;
  return TriangleMet{static_cast<std::uint32_t>(best), bestT, bestPacket->normal(bestLane)};
}

void TriangleTree::visit(const Vec3& origin, const Vec3& direction, Range range,
                         const std::function<float(const TriangleMet&)>& visitor) const {
  if (nodes_.empty()) return;
  Ray ray(origin, direction, range, extent_);
  std::array<std::int32_t, kStack> waiting;
  std::size_t count = 0;
  waiting[count++] = 0;
  while (count > 0) {
    const std::int32_t next = waiting[--count];
    if (next >= 0) {
      const Node& node = nodes_[static_cast<std::size_t>(next)];
      for (unsigned met = meetBoxes(node, ray); met != 0; met &= met - 1)
        waiting[count++] = node.children[static_cast<std::size_t>(std::countr_zero(met))].place;
      continue;
    }
    const Packet& packet = packets_[static_cast<std::size_t>(~next)];
    const Meeting meeting = meetTriangles(packet, ray);
    for (unsigned met = meeting.met; met != 0; met &= met - 1) {
      const auto lane = static_cast<std::size_t>(std::countr_zero(met));
      const auto number = static_cast<std::uint32_t>(packet.number[lane] & ~kIgnored);
      ray.setLimit(visitor({number, meeting.t[lane], packet.normal(lane)}));
    }
  }
}

void TriangleTree::setCandidates(const std::vector<std::uint8_t>& counts) {
  for (Packet& packet : std::span(packets_.get(), packetCount_))
    for (std::size_t lane = 0; lane < kWide && packet.number[lane] != kNone; ++lane) {
      const std::int32_t number = packet.number[lane] & ~kIgnored;
      packet.number[lane] = counts[static_cast<std::size_t>(number)] != 0 ? number : number | kIgnored;
    }
  updateLowest();
}

void TriangleTree::updateLowest() {
  const auto lowestOf = [](const Numbers& n) { return std::min(std::min(n[0], n[1]), std::min(n[2], n[3])); };
  for (std::size_t n = nodes_.size(); n-- > 0;) {
    Node& node = nodes_[n];
    for (Child& child : node.children) {
      if (child.lowest == kNone) continue;
      child.lowest = child.place < 0 ? lowestOf(packets_[static_cast<std::size_t>(~child.place)].number)
                                     : nodes_[static_cast<std::size_t>(child.place)].children.back().lowest;
    }
    // In descending order, so that what a search puts aside is in order.
    constexpr std::array<std::pair<std::size_t, std::size_t>, 5> kPairs{{{0, 1}, {2, 3}, {0, 2}, {1, 3}, {1, 2}}};
    for (const auto& [a, b] : kPairs) {
      if (node.children[a].lowest >= node.children[b].lowest) continue;
      std::swap(node.children[a], node.children[b]);
      for (Lanes& bound : node.bounds) {
        const float kept = bound[a];
        bound[a] = bound[b];
        bound[b] = kept;
      }
    }
  }
}

}  // namespace ql::math
