#include "mesh/RayIndex.h"

#include "math/Ray.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <span>

namespace ql::mesh {
namespace {

constexpr std::size_t kFewTriples = 64;         // fewer are scanned
constexpr std::size_t kManyTriples = 1u << 20;  // more come from groups that overlap
constexpr std::uint32_t kScansFirst = 16;       // an index costs about as much
constexpr float kLargestCoordinate = 1e15f;     // products stay finite
constexpr float kSlack = 1e-5f;                 // of what rounding may do, per unit of the coordinates
constexpr float kSmallestDirection = 1e-20f;
constexpr std::size_t kDeepestTree = 64, kBins = 16;

math::Vec3 positionOf(const math::NormalVertex& vertex) { return {vertex.x, vertex.y, vertex.z}; }
float component(const math::Vec3& v, std::size_t axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

/// Calls f with the number of the first of three consecutive vertices, for all triangles in their order, until it
/// returns false.
template <class F>
void forEachTriple(const MeshRecord& mesh, F&& f) {
  const std::size_t size = mesh.normalVertices.size();
  for (std::size_t g = 1; g < mesh.groups.size(); ++g) {
    const auto start = static_cast<std::size_t>(std::max<std::int16_t>(mesh.groups[g].start, 0));
    const auto count = static_cast<std::size_t>(std::max<std::int16_t>(mesh.groups[g].count, 0));
    const std::size_t end = std::min(start + count, size);
    for (std::size_t i = start; i + 2 < end; ++i)
      if (!f(i)) return;
  }
}

float largestOf(const math::Vec3& v) { return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}); }

/// Bit i for a lane i that is not 0. The lanes are all ones or 0.
template <class Mask>
unsigned bitsOf(Mask mask) {
  const Mask bits = mask & Mask{1, 2, 4, 8};
  return static_cast<unsigned>(bits[0] | bits[1] | bits[2] | bits[3]);
}

void include(RayIndex::Box& box, const math::Vec3& p) {
  box.minimum = {std::min(box.minimum.x, p.x), std::min(box.minimum.y, p.y), std::min(box.minimum.z, p.z)};
  box.maximum = {std::max(box.maximum.x, p.x), std::max(box.maximum.y, p.y), std::max(box.maximum.z, p.z)};
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr RayIndex::Box kEmpty{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};

float halfArea(const RayIndex::Box& box) {
  const math::Vec3 size = math::subtract(box.maximum, box.minimum);
  return size.x < 0 ? 0 : size.x * size.y + size.y * size.z + size.z * size.x;
}

}  // namespace

struct RayIndex::Triple {
  Box box = kEmpty;
  math::Vec3 middle;
  std::int32_t order = 0;
  std::uint32_t vertex = 0;
};

/// Cuts ranges of triangles in two where the boxes' areas promise the fewest tests, and makes nodes of four ranges.
struct RayIndex::Builder {
  using Range = std::span<Triple>;

  RayIndex& index;
  const MeshRecord& mesh;

  static Box boxOfRange(Range range) {
    Box box = kEmpty;
    for (const Triple& triple : range) {
      include(box, triple.box.minimum);
      include(box, triple.box.maximum);
    }
    return box;
  }

  /// @return how many triangles of the range, put in front, belong to the first half
  static std::size_t cut(Range range, bool evenly) {
    Box middles = kEmpty;
    for (const Triple& triple : range) include(middles, triple.middle);
    const math::Vec3 size = math::subtract(middles.maximum, middles.minimum);
    const std::size_t axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
    const float low = component(middles.minimum, axis), width = component(size, axis);
    const auto half = range.begin() + static_cast<std::ptrdiff_t>(range.size() / 2);
    const auto cutEvenly = [&] {
      std::nth_element(range.begin(), half, range.end(), [axis](const Triple& a, const Triple& b) {
        return component(a.middle, axis) < component(b.middle, axis);
      });
      return range.size() / 2;
    };
    if (evenly || !(width > 0)) return cutEvenly();

    const auto binOf = [&](const Triple& triple) {
      const float place = (component(triple.middle, axis) - low) / width * static_cast<float>(kBins);
      return std::min(static_cast<std::size_t>(place), kBins - 1);
    };
    std::array<Box, kBins> boxes;
    boxes.fill(kEmpty);
    std::array<std::size_t, kBins> counts{};
    for (const Triple& triple : range) {
      const std::size_t bin = binOf(triple);
      ++counts[bin];
      include(boxes[bin], triple.box.minimum);
      include(boxes[bin], triple.box.maximum);
    }
    // What lies right of each cut, then the left sides against it.
    std::array<float, kBins> right{};
    Box box = kEmpty;
    std::size_t count = 0;
    for (std::size_t bin = kBins; bin-- > 1;) {
      include(box, boxes[bin].minimum);
      include(box, boxes[bin].maximum);
      count += counts[bin];
      right[bin] = halfArea(box) * static_cast<float>(count);
    }
    box = kEmpty;
    count = 0;
    float best = kInfinity;
    std::size_t cutBin = 0;
    for (std::size_t bin = 1; bin < kBins; ++bin) {
      include(box, boxes[bin - 1].minimum);
      include(box, boxes[bin - 1].maximum);
      count += counts[bin - 1];
      const float cost = halfArea(box) * static_cast<float>(count) + right[bin];
      if (count > 0 && count < range.size() && cost < best) {
        best = cost;
        cutBin = bin;
      }
    }
    if (cutBin == 0) return cutEvenly();
    const auto first =
        std::partition(range.begin(), range.end(), [&](const Triple& triple) { return binOf(triple) < cutBin; });
    return static_cast<std::size_t>(first - range.begin());
  }

  std::int32_t leafOf(Range range) const {
    Leaf leaf;
    leaf.order = Numbers{} + kNone;
    for (std::size_t lane = 0; lane < range.size(); ++lane) {
      const std::size_t v = range[lane].vertex;
      const math::Vec3 p = positionOf(mesh.normalVertices[v]);
      const math::Vec3 edge1 = math::subtract(positionOf(mesh.normalVertices[v + 1]), p);
      const math::Vec3 edge2 = math::subtract(positionOf(mesh.normalVertices[v + 2]), p);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        leaf.corner[axis][lane] = component(p, axis);
        leaf.edge1[axis][lane] = component(edge1, axis);
        leaf.edge2[axis][lane] = component(edge2, axis);
      }
      leaf.order[lane] = range[lane].order;
    }
    index.leaves_.push_back(leaf);
    return ~static_cast<std::int32_t>(index.leaves_.size() - 1);
  }

  /// @return the child's number: a node, or ~ a leaf
  std::int32_t make(Range range, std::size_t depth) {
    if (range.size() <= kWide) return leafOf(range);
    std::array<Range, kWide> parts{range};
    std::size_t count = 1;
    while (count < kWide) {
      const auto largest = std::max_element(parts.begin(), parts.begin() + static_cast<std::ptrdiff_t>(count),
                                            [](Range a, Range b) { return a.size() < b.size(); });
      if (largest->size() <= kWide) break;
      const std::size_t first = cut(*largest, depth > kDeepestTree / 2);
      parts[count++] = largest->subspan(first);
      *largest = largest->first(first);
    }
    const std::size_t number = index.nodes_.size();
    index.nodes_.emplace_back();
    Node node;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      node.bounds[axis] = Lanes{} + kInfinity;
      node.bounds[axis + 3] = Lanes{} - kInfinity;
    }
    node.firstOrder = Numbers{} + kNone;
    for (std::size_t lane = 0; lane < count; ++lane) {
      const Box box = boxOfRange(parts[lane]);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        node.bounds[axis][lane] = component(box.minimum, axis);
        node.bounds[axis + 3][lane] = component(box.maximum, axis);
      }
      std::int32_t first = kNone;
      for (const Triple& triple : parts[lane]) first = std::min(first, triple.order);
      node.firstOrder[lane] = first;
      node.child[lane] = make(parts[lane], depth + 1);
    }
    index.nodes_[number] = node;
    return static_cast<std::int32_t>(number);
  }
};

RayIndex::Box RayIndex::boxOf(const MeshRecord& mesh) {
  Box box = kEmpty;
  forEachTriple(mesh, [&](std::size_t v) {
    for (std::size_t k = 0; k < 3; ++k) include(box, positionOf(mesh.normalVertices[v + k]));
    return true;
  });
  return box;
}

TripleHit RayIndex::scan(const MeshRecord& mesh, const math::Vec3& origin, const math::Vec3& direction, float reach) {
  TripleHit first;
  forEachTriple(mesh, [&](std::size_t v) {
    const math::Vec3 a = positionOf(mesh.normalVertices[v]), b = positionOf(mesh.normalVertices[v + 1]),
                     c = positionOf(mesh.normalVertices[v + 2]);
    const math::TriangleHit met = math::intersectTriangle(origin, direction, a, b, c);
    if (!met.hit || !(met.t >= 0 && met.t < reach)) return true;
    first = {true, met.t, math::cross(math::subtract(b, a), math::subtract(c, a))};
    return false;
  });
  return first;
}

void RayIndex::build(const MeshRecord& mesh) {
  std::vector<Triple> triples;
  std::int32_t order = 0;
  forEachTriple(mesh, [&](std::size_t v) {
    Triple triple;
    triple.order = order++;
    triple.vertex = static_cast<std::uint32_t>(v);
    for (std::size_t k = 0; k < 3; ++k) {
      const math::Vec3 p = positionOf(mesh.normalVertices[v + k]);
      include(triple.box, p);
      useless_ |= !(largestOf(p) < kLargestCoordinate);
      extent_ = std::max(extent_, largestOf(p));
    }
    triple.middle = math::midpoint(triple.box.minimum, triple.box.maximum);
    triples.push_back(triple);
    return triples.size() <= kManyTriples && !useless_;
  });
  useless_ |= triples.size() < kFewTriples || triples.size() > kManyTriples;
  if (useless_) return;
  leaves_.reserve(triples.size() / 2);
  nodes_.reserve(triples.size() / 4);
  Builder{*this, mesh}.make(triples, 0);
  leaves_.shrink_to_fit();
  nodes_.shrink_to_fit();
  built_ = true;
}

TripleHit RayIndex::firstHit(const MeshRecord& mesh, const math::Vec3& origin, const math::Vec3& direction,
                             float reach) {
  if (!built_ && !useless_ && ++asked_ > kScansFirst) build(mesh);
  return built_ ? search(origin, direction, reach) : scan(mesh, origin, direction, reach);
}

TripleHit RayIndex::search(const math::Vec3& origin, const math::Vec3& direction, float reach) const {
  struct Pending {
    std::int32_t child, firstOrder;
  };
  std::array<Pending, kDeepestTree*(kWide - 1) + kWide> pending;
  const std::array<float, 3> from{origin.x, origin.y, origin.z};
  const std::array<float, 3> along{direction.x, direction.y, direction.z};
  // Of each axis: which bound the ray meets first, and both bounds moved outwards by the slack (put on the origin).
  const float slack = kSlack * (largestOf(origin) + extent_);
  std::array<std::size_t, 3> nearBound{}, farBound{};
  std::array<float, 3> inverse{}, nearFrom{}, farFrom{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    inverse[axis] = 1 / (std::abs(along[axis]) < kSmallestDirection ? kSmallestDirection : along[axis]);
    const bool upwards = inverse[axis] >= 0;
    nearBound[axis] = upwards ? axis : axis + 3;
    farBound[axis] = upwards ? axis + 3 : axis;
    nearFrom[axis] = upwards ? from[axis] + slack : from[axis] - slack;
    farFrom[axis] = upwards ? from[axis] - slack : from[axis] + slack;
  }

  TripleHit first;
  std::int32_t best = kNone;
  std::size_t count = 0;
  pending[count++] = {0, 0};
  while (count > 0) {
    const Pending next = pending[--count];
    if (next.firstOrder >= best) continue;
    if (next.child >= 0) {
      const Node& node = nodes_[static_cast<std::size_t>(next.child)];
      Lanes enter = Lanes{} - slack, leave = Lanes{} + (reach + slack);
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const Lanes nearest = (node.bounds[nearBound[axis]] - nearFrom[axis]) * inverse[axis];
        const Lanes farthest = (node.bounds[farBound[axis]] - farFrom[axis]) * inverse[axis];
        enter = nearest > enter ? nearest : enter;
        leave = farthest < leave ? farthest : leave;
      }
      unsigned met = bitsOf((enter <= leave) & (node.firstOrder < best));
      const std::size_t before = count;
      for (; met != 0; met &= met - 1) {
        const auto lane = static_cast<std::size_t>(std::countr_zero(met));
        // The child with the first triangle comes last, and is looked at next.
        const Pending child{node.child[lane], node.firstOrder[lane]};
        std::size_t place = count++;
        for (; place > before && pending[place - 1].firstOrder < child.firstOrder; --place)
          pending[place] = pending[place - 1];
        pending[place] = child;
      }
      continue;
    }

    // As math::intersectTriangle computes it, for four triangles.
    const Leaf& leaf = leaves_[static_cast<std::size_t>(~next.child)];
    const auto& [cx, cy, cz] = leaf.corner;
    const auto& [ax, ay, az] = leaf.edge1;
    const auto& [bx, by, bz] = leaf.edge2;
    const auto [dx, dy, dz] = along;
    const Lanes px = dy * bz - dz * by, py = dz * bx - dx * bz, pz = dx * by - dy * bx;
    const Lanes determinant = ax * px + ay * py + az * pz;
    const Lanes over = 1 / determinant;
    const Lanes tx = from[0] - cx, ty = from[1] - cy, tz = from[2] - cz;
    const Lanes u = (tx * px + ty * py + tz * pz) * over;
    const Lanes qx = ty * az - tz * ay, qy = tz * ax - tx * az, qz = tx * ay - ty * ax;
    const Lanes v = (dx * qx + dy * qy + dz * qz) * over;
    const Lanes t = (bx * qx + by * qy + bz * qz) * over;
    const Lanes sum = u + v;
    unsigned met = bitsOf((determinant != 0) & (u >= 0) & (u <= 1) & (v >= 0) & (sum <= 1) & (t >= 0) & (t < reach) &
                          (leaf.order < best));
    for (; met != 0; met &= met - 1) {
      const auto lane = static_cast<std::size_t>(std::countr_zero(met));
      if (leaf.order[lane] >= best) continue;
      best = leaf.order[lane];
      first = {true, t[lane], math::cross({ax[lane], ay[lane], az[lane]}, {bx[lane], by[lane], bz[lane]})};
    }
  }
  return first;
}

}  // namespace ql::mesh
