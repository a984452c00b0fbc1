/// @file
/// Finds the first triangle of a mesh that a ray meets.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace ql::mesh {

/// A triangle of three consecutive vertices that a ray meets.
struct TripleHit {
  bool hit = false;
  float t = 0;        ///< along the direction
  math::Vec3 normal;  ///< (second - first) x (third - first)
};

/// Answers which triangle comes first, in order of groups and vertices, of those that a ray meets at 0 <= t < reach.
/// The first questions are answered by going through all triangles, which costs less than making an index; a mesh that
/// is asked again and again gets a tree of boxes, four to a node. Both give the same answer; only where rounding alone
/// decides whether a sliver of a triangle is met, the tree may pass it by.
class RayIndex {
 public:
  explicit RayIndex(const MeshRecord& mesh) : vertexCount_(mesh.vertexCount), groupCount_(mesh.groupCount) {}

  /// Whether it was made for as many vertices and groups.
  bool fits(const MeshRecord& mesh) const { return vertexCount_ == mesh.vertexCount && groupCount_ == mesh.groupCount; }
  /// @param mesh the one that it was made for, unchanged
  TripleHit firstHit(const MeshRecord& mesh, const math::Vec3& origin, const math::Vec3& direction, float reach);

  /// The box of all triangles; empty (minimum above maximum) when there are none.
  struct Box {
    math::Vec3 minimum, maximum;
  };
  static Box boxOf(const MeshRecord& mesh);

  /// The answer without an index.
  static TripleHit scan(const MeshRecord& mesh, const math::Vec3& origin, const math::Vec3& direction, float reach);

 private:
  static constexpr std::size_t kWide = 4;
  using Lanes [[gnu::vector_size(16)]] = float;
  using Numbers [[gnu::vector_size(16)]] = std::int32_t;
  static constexpr std::int32_t kNone = std::numeric_limits<std::int32_t>::max();

  /// Four boxes and what is in them.
  struct Node {
    Lanes bounds[6];       ///< lowest x, y, z, highest x, y, z
    Numbers child{};       ///< a node, or ~ a leaf
    Numbers firstOrder{};  ///< of the child's triangles; kNone: no child
  };
  /// Four triangles: first corner and edges from it.
  struct Leaf {
    Lanes corner[3]{}, edge1[3]{}, edge2[3]{};
    Numbers order{};
  };
  struct Triple;
  struct Builder;

  void build(const MeshRecord& mesh);
  TripleHit search(const math::Vec3& origin, const math::Vec3& direction, float reach) const;

  std::int32_t vertexCount_;
  std::int16_t groupCount_;
  std::uint32_t asked_ = 0;
  bool built_ = false, useless_ = false;
  float extent_ = 0;  ///< the largest coordinate
  std::vector<Node> nodes_;
  std::vector<Leaf> leaves_;
};

}  // namespace ql::mesh
