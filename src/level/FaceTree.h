/// @file
/// An index over a level's triangles that answers as a scan of all of them in order would.
#pragma once

#include "math/Ray.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace ql::level {

struct FaceTriangle {
  std::array<math::Vec3, 3> corners{};
  std::uint32_t face = 0;
};

/// A triangle that a ray meets.
struct FaceHit {
  std::uint32_t triangle = 0;  ///< its place in the order of the scan
  std::uint32_t face = 0;
  math::TriangleHit hit;
};

/// A hierarchy of boxes, four children wide, over triangles in packets of four. Each child knows the first triangle
/// below it that counts, so that a search for the first hit in order leaves out what comes later.
///
/// The triangles are tested with the very arithmetic of math::intersectTriangle. Boxes are a little larger than their
/// triangles, since rounding lets that test find hits beside a triangle; what rounding reports of rays that lie in a
/// triangle's plane, far beside it, is not found.
class FaceTree {
 public:
  /// @param triangles in the order of the scan
  explicit FaceTree(std::vector<FaceTriangle> triangles);

  /// Which faces count from now on; all of them at first.
  void setCandidates(const std::function<bool(std::uint32_t face)>& counts);
  /// The first triangle in order that the ray meets at a distance above 0 and below a limit.
  std::optional<FaceHit> firstHit(const math::Vec3& origin, const math::Vec3& direction, float limit) const;
  /// Every triangle that the ray meets at a distance from 0 to below a limit, in no order, whether its face counts or
  /// not. The visitor returns the limit from then on.
  void visitHits(const math::Vec3& origin, const math::Vec3& direction, float limit,
                 const std::function<float(const FaceHit&)>& visit) const;
  const std::array<math::Vec3, 3>& corners(std::uint32_t triangle) const { return triangles_[triangle].corners; }

 private:
  static constexpr std::size_t kWide = 4;
  static constexpr std::uint32_t kNone = ~0U, kPacketBit = 1U << 31;
  struct alignas(16) Node {
    std::array<std::array<float, kWide>, 3> low, high;
    std::array<std::uint32_t, kWide> child;  ///< a node, or a packet with kPacketBit, or kNone
    std::array<std::uint32_t, kWide> first;  ///< below the child: the first triangle that counts; kNone without one
  };
  struct alignas(16) Packet {
    std::array<std::array<float, kWide>, 3> corner, edge1, edge2;
    std::array<std::uint32_t, kWide> triangle;  ///< kNone: an unused place
    std::array<std::uint32_t, kWide> counted;   ///< its triangle when that counts, else kNone
  };
  struct Ray;
  struct Builder;

  template <class Meet>
  void meetBoxes(const Node& node, const Ray& ray, Meet&& meet) const;
  std::uint32_t meetTriangles(const Packet& packet, const Ray& ray, bool fromZero) const;
  FaceHit hitOf(std::uint32_t triangle, const math::Vec3& origin, const math::Vec3& direction) const;

  std::vector<FaceTriangle> triangles_;
  std::vector<Node> nodes_;  ///< parents before their children
  std::vector<Packet> packets_;
  float margin_ = 0;
};

}  // namespace ql::level
