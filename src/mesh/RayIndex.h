/// @file
/// Finds the first triangle of a mesh that a ray meets.
#pragma once

#include "math/TriangleTree.h"
#include "mesh/MeshRecord.h"

#include <cstdint>
#include <optional>

namespace ql::mesh {

/// Answers which triangle of three consecutive vertices comes first, in order of groups and vertices, of those that a
/// ray meets at 0 <= t < reach. The first questions are answered by going through all triangles, which costs less than
/// making an index; a mesh that is asked again and again gets a tree of boxes. Both give the same answer; only where
/// rounding alone decides whether a sliver of a triangle is met, the tree may pass it by.
class RayIndex {
 public:
  explicit RayIndex(const MeshRecord& mesh) : vertexCount_(mesh.vertexCount), groupCount_(mesh.groupCount) {}

  /// Whether it was made for as many vertices and groups.
  bool fits(const MeshRecord& mesh) const { return vertexCount_ == mesh.vertexCount && groupCount_ == mesh.groupCount; }
  /// @param mesh the one that it was made for, unchanged
  std::optional<math::TriangleMet> firstHit(const MeshRecord& mesh, const math::Vec3& origin,
                                            const math::Vec3& direction, float reach);

  /// The box of all triangles; empty (minimum above maximum) when there are none.
  struct Box {
    math::Vec3 minimum, maximum;
  };
  static Box boxOf(const MeshRecord& mesh);

  /// The answer without an index.
  static std::optional<math::TriangleMet> scan(const MeshRecord& mesh, const math::Vec3& origin,
                                               const math::Vec3& direction, float reach);

 private:
  void build(const MeshRecord& mesh);

  std::int32_t vertexCount_;
  std::int16_t groupCount_;
  std::uint32_t asked_ = 0;
  bool useless_ = false;
  std::optional<math::TriangleTree> tree_;
};

}  // namespace ql::mesh
