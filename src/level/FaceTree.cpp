#include "level/FaceTree.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ql::level {
namespace {

/// Four numbers at once; every operation is that of the single numbers, bit by bit.
using Lanes = float __attribute__((vector_size(16)));
using Mask = std::int32_t __attribute__((vector_size(16)));
struct Lanes3 {
  Lanes x, y, z;
};

/// Boxes reach this part of the largest coordinate beyond their triangles, and further around thin triangles, in whose
/// planes rounding moves a hit farther.
constexpr float kMarginPart = 1.0f / 16384;
constexpr float kThinnest = 1.0f / 256;
/// Splits are spatial down to this depth, then by halves, so that a hostile level's tree is never deep.
constexpr int kSpatialDepth = 40;
constexpr std::size_t kBins = 12;
/// Room for the children that wait at every level of the deepest tree.
constexpr std::size_t kStack = 256;
/// A direction's component of 0 would give products of 0 and infinity.
constexpr float kSteepest = 1e30f;

float component(const math::Vec3& v, std::size_t axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

struct Box {
  math::Vec3 low{kSteepest, kSteepest, kSteepest}, high{-kSteepest, -kSteepest, -kSteepest};
  void add(const Box& other) {
    low = {std::min(low.x, other.low.x), std::min(low.y, other.low.y), std::min(low.z, other.low.z)};
    high = {std::max(high.x, other.high.x), std::max(high.y, other.high.y), std::max(high.z, other.high.z)};
  }
  math::Vec3 size() const { return math::subtract(high, low); }
  double area() const {
    const math::Vec3 s = size();
    return double{s.x} * s.y + double{s.y} * s.z + double{s.z} * s.x;
  }
};

Lanes all(float value) { return Lanes{value, value, value, value}; }
Lanes load(const std::array<float, 4>& values) { return std::bit_cast<Lanes>(values); }
Lanes3 load(const std::array<std::array<float, 4>, 3>& values) {
  return {load(values[0]), load(values[1]), load(values[2])};
}
Lanes3 subtract(const Lanes3& a, const Lanes3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
/// In the order of math::dot and math::cross, without fused operations: the same bits.
Lanes dot(const Lanes3& a, const Lanes3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Lanes3 cross(const Lanes3& a, const Lanes3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Lanes least(const Lanes& a, const Lanes& b) { return a < b ? a : b; }
Lanes greatest(const Lanes& a, const Lanes& b) { return a > b ? a : b; }
/// One bit for each lane that is set.
unsigned bitsOf(const Mask& mask) {
#if defined(__SSE2__)
  return static_cast<unsigned>(_mm_movemask_ps(std::bit_cast<__m128>(mask)));
#else
  return (mask[0] & 1U) | (mask[1] & 2U) | (mask[2] & 4U) | (mask[3] & 8U);
#endif
}

}  // namespace

struct FaceTree::Ray {
  Ray(const math::Vec3& o, const math::Vec3& d, float reach, float boxMargin)
      : origin(lanes(o)), direction(lanes(d)), inverse(lanes(inverseOf(d))), limit(reach), margin(boxMargin) {}

  static Lanes3 lanes(const math::Vec3& v) { return {all(v.x), all(v.y), all(v.z)}; }
  static math::Vec3 inverseOf(const math::Vec3& d) {
    const auto one = [](float along) {
      return std::abs(along) > 1 / kSteepest ? 1 / along : std::copysign(kSteepest, along);
    };
    return {one(d.x), one(d.y), one(d.z)};
  }

  Lanes3 origin, direction, inverse;
  float limit, margin;
};

/// Builds the nodes from the top down.
struct FaceTree::Builder {
  explicit Builder(FaceTree& out) : tree(out) {
    float largest = 0;
    for (const FaceTriangle& triangle : tree.triangles_)
      for (const math::Vec3& corner : triangle.corners)
        largest = std::max({largest, std::abs(corner.x), std::abs(corner.y), std::abs(corner.z)});
    tree.margin_ = largest * kMarginPart;
    boxes.reserve(tree.triangles_.size());
    for (const FaceTriangle& triangle : tree.triangles_) boxes.push_back(boxOf(triangle));
    order.resize(boxes.size());
    std::iota(order.begin(), order.end(), 0U);
  }

  Box boxOf(const FaceTriangle& triangle) const {
    const auto& [a, b, c] = triangle.corners;
    Box box;
    for (const math::Vec3& corner : triangle.corners) box.add({corner, corner});
    const math::Vec3 edge1 = math::subtract(b, a), edge2 = math::subtract(c, a);
    const float sides = math::length(edge1) * math::length(edge2);
    const float sine = sides > 0 ? math::length(math::cross(edge1, edge2)) / sides : 1.0f;
    const float margin = tree.margin_ / std::max(sine, kThinnest);
    box.low = math::subtract(box.low, {margin, margin, margin});
    box.high = math::add(box.high, {margin, margin, margin});
    return box;
  }

  using Range = std::pair<std::size_t, std::size_t>;

  void run() {
    if (!order.empty()) node({0, order.size()}, 0);
  }

  std::uint32_t node(Range range, int depth) {
    const auto index = tree.nodes_.size();
    tree.nodes_.emplace_back();
    std::vector<Range> parts{range};
    // Two rounds of halving make four children, fewer where a part fits a packet.
    for (int round = 0; round < 2; ++round) {
      std::vector<Range> next;
      for (const Range& part : parts) {
        if (part.second - part.first <= kWide) {
          next.push_back(part);
          continue;
        }
        const std::size_t middle = split(part, depth + round);
        next.push_back({part.first, middle});
        next.push_back({middle, part.second});
      }
      parts = std::move(next);
    }
    Node made{};
    for (std::size_t i = 0; i < kWide; ++i) {
      const Box box = i < parts.size() ? boundsOf(parts[i]) : Box();
      for (std::size_t axis = 0; axis < 3; ++axis) {
        made.low[axis][i] = component(box.low, axis);
        made.high[axis][i] = component(box.high, axis);
      }
      made.child[i] = kNone;
      made.first[i] = kNone;
      if (i < parts.size())
        made.child[i] = parts[i].second - parts[i].first <= kWide ? packet(parts[i]) : node(parts[i], depth + 2);
    }
    tree.nodes_[index] = made;
    return static_cast<std::uint32_t>(index);
  }

  Box boundsOf(const Range& range) const {
    Box box;
    for (std::size_t i = range.first; i < range.second; ++i) box.add(boxes[order[i]]);
    return box;
  }
  math::Vec3 centerOf(std::uint32_t triangle) const {
    return math::midpoint(boxes[triangle].low, boxes[triangle].high);
  }

  /// Where to part a range, after reordering it: at the cheapest of a few planes by the surface area rule.
  std::size_t split(const Range& range, int depth) {
    const std::size_t middle = range.first + (range.second - range.first) / 2;
    Box centers;
    for (std::size_t i = range.first; i < range.second; ++i) centers.add({centerOf(order[i]), centerOf(order[i])});
    const math::Vec3 size = centers.size();
    const std::size_t axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
    const float low = component(centers.low, axis), extent = component(size, axis);
    const auto begin = order.begin() + static_cast<std::ptrdiff_t>(range.first),
               end = order.begin() + static_cast<std::ptrdiff_t>(range.second);
    if (depth < kSpatialDepth && extent > 0) {
      const auto bin = [&](std::uint32_t triangle) {
        const float at = (component(centerOf(triangle), axis) - low) / extent * static_cast<float>(kBins);
        return std::min(static_cast<std::size_t>(at), kBins - 1);
      };
      const std::size_t plane = cheapestPlane(range, bin);
      const auto cut = std::partition(begin, end, [&](std::uint32_t triangle) { return bin(triangle) < plane; });
      if (cut != begin && cut != end) return static_cast<std::size_t>(cut - order.begin());
    }
    std::nth_element(begin, order.begin() + static_cast<std::ptrdiff_t>(middle), end,
                     [&](std::uint32_t a, std::uint32_t b) {
                       return std::pair(component(centerOf(a), axis), a) < std::pair(component(centerOf(b), axis), b);
                     });
    return middle;
  }

  template <class Bin>
  std::size_t cheapestPlane(const Range& range, const Bin& bin) const {
    std::array<Box, kBins> bins;
    std::array<std::size_t, kBins> counts{};
    for (std::size_t i = range.first; i < range.second; ++i) {
      const std::size_t at = bin(order[i]);
      bins[at].add(boxes[order[i]]);
      ++counts[at];
    }
    std::array<double, kBins> above{};  // cost of all bins from one on
    Box box;
    std::size_t count = 0;
    for (std::size_t i = kBins; i-- > 1;) {
      box.add(bins[i]);
      count += counts[i];
      above[i] = count == 0 ? 0 : box.area() * static_cast<double>(count);
    }
    box = {};
    count = 0;
    std::size_t best = kBins / 2;
    double cheapest = -1;
    for (std::size_t i = 1; i < kBins; ++i) {
      box.add(bins[i - 1]);
      count += counts[i - 1];
      if (count == 0) continue;
      const double cost = box.area() * static_cast<double>(count) + above[i];
      if (cheapest < 0 || cost < cheapest) cheapest = cost, best = i;
    }
    return best;
  }

  std::uint32_t packet(const Range& range) {
    Packet made{};
    made.triangle.fill(kNone);
    made.counted.fill(kNone);
    // In order within the packet, so that its first hit is the first lane's.
    std::sort(order.begin() + static_cast<std::ptrdiff_t>(range.first),
              order.begin() + static_cast<std::ptrdiff_t>(range.second));
    for (std::size_t lane = 0; lane < range.second - range.first; ++lane) {
      const std::uint32_t triangle = order[range.first + lane];
      const auto& [a, b, c] = tree.triangles_[triangle].corners;
      const math::Vec3 edge1 = math::subtract(b, a), edge2 = math::subtract(c, a);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        made.corner[axis][lane] = component(a, axis);
        made.edge1[axis][lane] = component(edge1, axis);
        made.edge2[axis][lane] = component(edge2, axis);
      }
      made.triangle[lane] = triangle;
    }
    tree.packets_.push_back(made);
    return static_cast<std::uint32_t>(tree.packets_.size() - 1) | kPacketBit;
  }

  FaceTree& tree;
  std::vector<Box> boxes;
  std::vector<std::uint32_t> order;
};

FaceTree::FaceTree(std::vector<FaceTriangle> triangles) : triangles_(std::move(triangles)) {
  Builder(*this).run();
  setCandidates([](std::uint32_t) { return true; });
}

void FaceTree::setCandidates(const std::function<bool(std::uint32_t)>& counts) {
  std::vector<std::uint32_t> firstOfPacket(packets_.size(), kNone);
  std::uint32_t lastFace = kNone;
  std::vector<std::uint8_t> counted(triangles_.size());
  for (std::size_t i = 0; i < triangles_.size(); ++i) {  // once for each face, whose triangles follow each other
    const bool same = triangles_[i].face == lastFace;
    counted[i] = same ? counted[i - 1] : static_cast<std::uint8_t>(counts(triangles_[i].face));
    lastFace = triangles_[i].face;
  }
  for (std::size_t p = 0; p < packets_.size(); ++p) {
    Packet& packet = packets_[p];
    for (std::size_t lane = 0; lane < kWide; ++lane) {
      const std::uint32_t triangle = packet.triangle[lane];
      packet.counted[lane] = triangle != kNone && counted[triangle] != 0 ? triangle : kNone;
      firstOfPacket[p] = std::min(firstOfPacket[p], packet.counted[lane]);
    }
  }
  for (std::size_t n = nodes_.size(); n-- > 0;) {
    Node& node = nodes_[n];
    for (std::size_t i = 0; i < kWide; ++i) {
      const std::uint32_t child = node.child[i];
      if (child == kNone) continue;
      node.first[i] = (child & kPacketBit) != 0
                          ? firstOfPacket[child & ~kPacketBit]
                          : *std::min_element(nodes_[child].first.begin(), nodes_[child].first.end());
    }
  }
}

/// Calls meet for every child whose box the ray meets.
template <class Meet>
void FaceTree::meetBoxes(const Node& node, const Ray& ray, Meet&& meet) const {
  const Lanes3 low = subtract(load(node.low), ray.origin), high = subtract(load(node.high), ray.origin);
  const Lanes ax = low.x * ray.inverse.x, bx = high.x * ray.inverse.x;
  const Lanes ay = low.y * ray.inverse.y, by = high.y * ray.inverse.y;
  const Lanes az = low.z * ray.inverse.z, bz = high.z * ray.inverse.z;
  const Lanes enter = greatest(greatest(least(ax, bx), least(ay, by)), greatest(least(az, bz), all(-ray.margin)));
  const Lanes leave =
      least(least(greatest(ax, bx), greatest(ay, by)), least(greatest(az, bz), all(ray.limit + ray.margin)));
  for (unsigned mask = bitsOf(enter <= leave); mask != 0; mask &= mask - 1)
    meet(static_cast<std::size_t>(std::countr_zero(mask)));
}

/// One bit for each triangle of a packet that the ray meets at a distance that counts.
std::uint32_t FaceTree::meetTriangles(const Packet& packet, const Ray& ray, bool fromZero) const {
  const Lanes3 edge1 = load(packet.edge1), edge2 = load(packet.edge2);
  const Lanes3 p = cross(ray.direction, edge2);
  const Lanes inverse = all(1) / dot(edge1, p);  // of 0: infinite, and what follows misses
  const Lanes3 t = subtract(ray.origin, load(packet.corner));
  const Lanes u = dot(t, p) * inverse;
  const Lanes3 q = cross(t, edge1);
  const Lanes v = dot(ray.direction, q) * inverse;
  const Lanes distance = dot(edge2, q) * inverse;
  const Mask inside = (u >= 0.0f) & (u <= 1.0f) & (v >= 0.0f) & (u + v <= 1.0f);
  const Mask beyond = fromZero ? distance >= 0.0f : distance > 0.0f;
  return bitsOf(inside & beyond & (distance < ray.limit));
}

FaceHit FaceTree::hitOf(std::uint32_t triangle, const math::Vec3& origin, const math::Vec3& direction) const {
  const FaceTriangle& found = triangles_[triangle];
  return {triangle, found.face,
          math::intersectTriangle(origin, direction, found.corners[0], found.corners[1], found.corners[2])};
}

std::optional<FaceHit> FaceTree::firstHit(const math::Vec3& origin, const math::Vec3& direction, float limit) const {
  if (nodes_.empty()) return std::nullopt;
  const Ray ray(origin, direction, limit, margin_);
  struct Waiting {
    std::uint32_t child, first;
  };
  std::array<Waiting, kStack> stack;
  std::size_t depth = 0;
  std::uint32_t best = kNone;
  stack[depth++] = {0, 0};
  while (depth != 0) {
    const Waiting next = stack[--depth];
    if (next.first >= best) continue;
    if ((next.child & kPacketBit) != 0) {
      const Packet& packet = packets_[next.child & ~kPacketBit];
      for (std::uint32_t hits = meetTriangles(packet, ray, false); hits != 0; hits &= hits - 1)
        best = std::min(best, packet.counted[static_cast<std::size_t>(std::countr_zero(hits))]);
      continue;
    }
    const Node& node = nodes_[next.child];
    const std::size_t bottom = depth;
    // The child with the earliest triangle is looked at first: it stands on top.
    meetBoxes(node, ray, [&](std::size_t i) {
      if (node.first[i] >= best) return;
      std::size_t at = depth++;
      for (; at > bottom && stack[at - 1].first < node.first[i]; --at) stack[at] = stack[at - 1];
      stack[at] = {node.child[i], node.first[i]};
    });
  }
  if (best == kNone) return std::nullopt;
  return hitOf(best, origin, direction);
}

void FaceTree::visitHits(const math::Vec3& origin, const math::Vec3& direction, float limit,
                         const std::function<float(const FaceHit&)>& visit) const {
  if (nodes_.empty()) return;
  Ray ray(origin, direction, limit, margin_);
  std::array<std::uint32_t, kStack> stack;
  std::size_t depth = 0;
  stack[depth++] = 0;
  while (depth != 0) {
    const std::uint32_t child = stack[--depth];
    if ((child & kPacketBit) == 0) {
      const Node& node = nodes_[child];
      meetBoxes(node, ray, [&](std::size_t i) {
        if (node.child[i] != kNone) stack[depth++] = node.child[i];
      });
      continue;
    }
    const Packet& packet = packets_[child & ~kPacketBit];
    for (std::uint32_t hits = meetTriangles(packet, ray, true); hits != 0; hits &= hits - 1)
      ray.limit = visit(hitOf(packet.triangle[static_cast<std::size_t>(std::countr_zero(hits))], origin, direction));
  }
}

}  // namespace ql::level
