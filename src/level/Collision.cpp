#include "level/Collision.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>

namespace ql::level {
namespace {

constexpr float kOnPlane = 0.001f;       // file units
constexpr float kFarthestHit = 9999.0f;  // no sphere's hit lies beyond

/// The signed distance of a point from a plane.
float planeDistance(const math::Vec3& point, const Q3Plane& plane) {
  return math::dot({plane.normal[0], plane.normal[1], plane.normal[2]}, point) - plane.distance;
}
Side sideOf(float distance) { return distance > kOnPlane ? Side::Front : distance < -kOnPlane ? Side::Back : Side::On; }

bool isLeaf(std::int32_t child) { return child < 0; }
/// A child that leads nowhere is no solid leaf.
bool isSolid(const LevelData& level, std::int32_t child) {
  return isLeaf(child) && child != kNoChild && level.leaves[static_cast<std::size_t>(~child)].solid;
}

}  // namespace

Side classifyPoint(const math::Vec3& point, const Q3Plane& plane) { return sideOf(planeDistance(point, plane)); }
float planeSpan(const math::Vec3& point, const Q3Plane& plane) {
  return std::sqrt(std::abs(planeDistance(point, plane)));
}

bool lineSight(const LevelData& level, const math::Vec3& start, const math::Vec3& end, std::int32_t node) {
  struct Part {
    math::Vec3 start, end;
    std::int32_t node;
  };
  // Parts that wait; every part must be free, in whatever order they are looked at.
  std::vector<Part> waiting;
  Part part{start, end, node};
  const auto next = [&] {
    if (waiting.empty()) return false;
    part = waiting.back();
    waiting.pop_back();
    return true;
  };
  do {
    for (;;) {
      if (isLeaf(part.node)) {
        if (isSolid(level, part.node)) return false;
        break;
      }
      const Q3Node& at = level.nodes[static_cast<std::size_t>(part.node)];
      const Q3Plane& plane = level.planes[static_cast<std::size_t>(at.plane)];
      const auto [front, back] = at.children;
      const float startDistance = planeDistance(part.start, plane), endDistance = planeDistance(part.end, plane);
      const Side a = sideOf(startDistance), b = sideOf(endDistance);
      const bool crosses = (a == Side::Front && b == Side::Back) || (a == Side::Back && b == Side::Front);
      if (crosses) {
        if (isSolid(level, back)) return false;
        const math::Vec3 middle = math::lerp(part.start, part.end, startDistance / (startDistance - endDistance));
        const bool startsInFront = a == Side::Front;
        const Part inFront{startsInFront ? part.start : part.end, middle, front},
            behind{startsInFront ? part.end : part.start, middle, back};
        if (isLeaf(front)) {
          part = behind;
        } else {
          // Where the segment starts is looked at first: something solid is likelier to be near.
          waiting.push_back(startsInFront ? behind : inFront);
          part = startsInFront ? inFront : behind;
        }
      } else if (a == Side::On && b == Side::On) {
        part.node = front;
      } else if (a != Side::Front && b != Side::Front) {
        part.node = back;
      } else {
        if (isLeaf(front)) break;  // in front of a plane before a leaf, everything is seen
        part.node = front;
      }
    }
  } while (next());
  return true;
}

void descendSphere(const LevelData& level, const math::Vec3& position, float radius, bool passSolid,
                   SphereDescent& out) {
  out.solid = false;
  out.touched.clear();
  if (level.nodes.empty()) return;
  std::vector<std::int32_t> waiting;
  std::int32_t child = 0;
  for (;;) {
    if (isLeaf(child)) {
      if (isSolid(level, child)) {
        if (!passSolid) {
          out.solid = true;
          return;
        }
      } else if (child != kNoChild) {
        out.touched.push_back(~child);
      }
      if (waiting.empty()) return;
      child = waiting.back();
      waiting.pop_back();
      continue;
    }
    const Q3Node& node = level.nodes[static_cast<std::size_t>(child)];
    const float distance = planeDistance(position, level.planes[static_cast<std::size_t>(node.plane)]);
    const std::size_t near = sideOf(distance) == Side::Back ? 1 : 0;
    // The near side's leaves all come before the far side's.
    if (radius > std::sqrt(std::abs(distance))) waiting.push_back(node.children[1 - near]);
    child = node.children[near];
  }
}

std::array<math::Vec3, 3> triangleCorners(const LevelData& level, const FaceRecord& face, std::uint32_t triangle) {
  const std::size_t first = face.firstVertex;
  if (level.isHalfLife)
    return {level.positions[first], level.positions[first + triangle + 1], level.positions[first + triangle + 2]};
  const std::size_t at = first + std::size_t{triangle} * 3;
  return {level.positions[at], level.positions[at + 1], level.positions[at + 2]};
}

bool isCandidate(const LevelData& level, const VisibleFaces& visible, std::size_t face) {
  if (visible.contains(face)) return true;
  return level.models.size() > 1 && level.faces[face].texture != -1 &&
         static_cast<std::int64_t>(face) > level.models[1].firstFace;
}

void FaceCollision::makeTree(const LevelData& level) {
  std::vector<math::Triangle> triangles;
  faceOf_.clear();
  if (!level.positions.empty()) {
    for (std::size_t face = 0; face < level.faces.size(); ++face) {
      const std::uint32_t count = level.faces[face].triangleCount;
      faceOf_.resize(faceOf_.size() + count, static_cast<std::uint32_t>(face));
      for (std::uint32_t k = 0; k < count; ++k) triangles.push_back(triangleCorners(level, level.faces[face], k));
    }
  }
  tree_.emplace(triangles);
  candidates_.reset();
}

std::optional<FaceHit> FaceCollision::firstHit(const LevelData& level, const VisibleFaces& visible,
                                               const math::Vec3& origin, const math::Vec3& direction, float limit) {
  if (!tree_) makeTree(level);
  if (candidates_ != visible.version()) {
    std::vector<std::uint8_t> counts(faceOf_.size());
    for (std::size_t i = 0; i < counts.size(); ++i)
      counts[i] = i > 0 && faceOf_[i] == faceOf_[i - 1] ? counts[i - 1] : isCandidate(level, visible, faceOf_[i]);
    tree_->setCandidates(counts);
    candidates_ = visible.version();
  }
  const auto met = tree_->first(origin, direction, {std::numeric_limits<float>::denorm_min(), limit});
  if (!met) return std::nullopt;
  return FaceHit{met->triangle, faceOf_[met->triangle], met->t, met->normal};
}

void FaceCollision::makePlaces(const LevelData& level) {
  firstPlace_.assign(level.faces.size() + 1, 0);
  for (const Leaf& leaf : level.leaves)
    for (std::int32_t k = 0; k < leaf.leafFaceCount; ++k)
      ++firstPlace_[static_cast<std::size_t>(level.leafFaces[static_cast<std::size_t>(leaf.firstLeafFace + k)]) + 1];
  for (std::size_t i = 1; i < firstPlace_.size(); ++i) firstPlace_[i] += firstPlace_[i - 1];
  places_.resize(firstPlace_.back());
  std::vector<std::uint32_t> next = firstPlace_;
  for (std::size_t i = 0; i < level.leaves.size(); ++i)
    for (std::int32_t k = 0; k < level.leaves[i].leafFaceCount; ++k) {
      const auto face =
          static_cast<std::size_t>(level.leafFaces[static_cast<std::size_t>(level.leaves[i].firstLeafFace + k)]);
      places_[next[face]++] = {static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(k)};
    }
  rank_.assign(level.leaves.size(), 0);
}

std::optional<SphereHit> FaceCollision::nearestHit(const LevelData& level, std::span<const std::int32_t> leaves,
                                                   const math::Vec3& origin, const math::Vec3& direction, float limit) {
  if (!tree_) makeTree(level);
  if (rank_.size() != level.leaves.size()) makePlaces(level);
  std::uint32_t rank = 0;
  for (const std::int32_t leaf : leaves) rank_[static_cast<std::size_t>(leaf)] = ++rank;

  using Order = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>;  // leaf, place in it, triangle
  constexpr Order kNowhere{~0U, ~0U, ~0U};
  const auto orderOf = [&](const math::TriangleMet& found) {
    Order first = kNowhere;
    const std::uint32_t face = faceOf_[found.triangle];
    for (std::uint32_t i = firstPlace_[face]; i < firstPlace_[face + 1]; ++i)
      if (const std::uint32_t touched = rank_[places_[i].leaf]; touched != 0)
        first = std::min(first, {touched, places_[i].position, found.triangle});
    return first;
  };
  std::optional<math::TriangleMet> best;
  Order bestOrder = kNowhere;
  float reach = std::min(limit, kFarthestHit);
  const auto look = [&](const math::TriangleMet& found) {
    const Order order = orderOf(found);
    if (order == kNowhere) return reach;
    if (best && (found.t > best->t || (found.t == best->t && order > bestOrder))) return reach;
    best = found;
    bestOrder = order;
    // Equally near hits are still to be seen.
    reach = std::min(reach, std::nextafter(found.t, std::numeric_limits<float>::infinity()));
    return reach;
  };
  tree_->visit(origin, direction, {0, reach}, std::ref(look));
  for (const std::int32_t leaf : leaves) rank_[static_cast<std::size_t>(leaf)] = 0;
  if (!best) return std::nullopt;
  return SphereHit{best->t, math::add(origin, math::scale(direction, best->t)), best->normal};
}

}  // namespace ql::level
