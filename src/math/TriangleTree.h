/// @file
/// An index over triangles that answers rays as a scan of all of them in order would.
#pragma once

#include "math/Vector.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace ql::math {

using Triangle = std::array<Vec3, 3>;

/// A triangle that a ray meets.
struct TriangleMet {
  std::uint32_t triangle = 0;  ///< its number
  float t = 0;                 ///< distance in multiples of the direction
  Vec3 normal;                 ///< (second corner - first) x (third - first)
};

/// A hierarchy of boxes, four children wide, over triangles in packets of four. Each child knows the first triangle
/// below it that counts, so that a search for the first hit in order leaves out what comes later.
///
/// The triangles are tested with the very arithmetic of intersectTriangle. Boxes are a little larger than their
/// triangles, since rounding lets that test find hits beside a triangle; what rounding reports far beside it, of rays
/// that lie in its plane, or of a triangle with two equal corners, is not found.
class TriangleTree {
 public:
  /// The distances that count, from the least to below the limit.
  struct Range {
    float least = 0, limit = 0;
  };

  TriangleTree() = default;
  /// Large trees are made on several threads; the tree is the same however many there are.
  /// @param triangles numbered in the order of the scan, fewer than 2^30
  explicit TriangleTree(std::span<const Triangle> triangles);

  /// Which triangles count from now on, by number; all of them at first.
  void setCandidates(const std::vector<std::uint8_t>& counts);
  /// The lowest triangle that counts and that the ray meets.
  std::optional<TriangleMet> first(const Vec3& origin, const Vec3& direction, Range range) const;
  /// Every triangle that the ray meets, in no order, whether it counts or not. The visitor returns the limit from then
  /// on.
  void visit(const Vec3& origin, const Vec3& direction, Range range,
             const std::function<float(const TriangleMet&)>& visitor) const;

 private:
  static constexpr std::size_t kWide = 4;
  using Lanes [[gnu::vector_size(16)]] = float;
  using Numbers [[gnu::vector_size(16)]] = std::int32_t;
  /// No triangle; more than every number with kIgnored, which marks what does not count.
  static constexpr std::int32_t kNone = std::numeric_limits<std::int32_t>::max(), kIgnored = 1 << 30;

  struct Child {
    std::int32_t place = 0;       ///< of a node, or ~ of a packet
    std::int32_t lowest = kNone;  ///< the first number below it; kNone without a child
  };
  /// Four boxes and what is in them, the child with the lowest number last.
  struct alignas(64) Node {
    Lanes bounds[6];  ///< lowest x, y, z, highest x, y, z; inverted where there is no child
    std::array<Child, kWide> children;
  };
  /// Four triangles: first corner and the edges from it.
  struct Packet {
    Lanes corner[3], edge1[3], edge2[3];
    Numbers number;  ///< with kIgnored when it does not count; kNone: an unused place

    Vec3 normal(std::size_t lane) const {
      return cross({edge1[0][lane], edge1[1][lane], edge1[2][lane]}, {edge2[0][lane], edge2[1][lane], edge2[2][lane]});
    }
  };
  struct Ray;
  struct Meeting;
  struct Builder;

  static unsigned meetBoxes(const Node& node, const Ray& ray);
  static Meeting meetTriangles(const Packet& packet, const Ray& ray);
  void updateLowest();

  std::vector<Node> nodes_;  ///< parents before their children
  std::unique_ptr<Packet[]> packets_;
  std::size_t packetCount_ = 0;
  float extent_ = 0;  ///< the largest coordinate
};

}  // namespace ql::math
