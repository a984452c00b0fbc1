/// @file
/// The faces of a Quake 3 level as indexed triangles in world coordinates, and which of them a camera may see.
#pragma once

#include "level/Q3Bsp.h"
#include "math/Matrix.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace peers::gl {

struct MeshVertex {
  ql::math::Vec3 position;
  std::array<float, 2> texture{}, lightmap{};
};

struct Box {
  ql::math::Vec3 low, high;
};

/// Sky and surfaces that are marked as not drawn have no triangles.
struct MeshFace {
  std::int32_t texture = -1, lightmap = -1;
  std::size_t firstIndex = 0, indexCount = 0;
  Box box;
};

class LevelMesh {
 public:
  LevelMesh() = default;
  /// Takes what it needs from the file.
  explicit LevelMesh(const ql::level::Q3Bsp& file);

  const std::vector<MeshVertex>& vertices() const { return vertices_; }
  const std::vector<MeshFace>& faces() const { return faces_; }
  std::size_t indexCount() const { return indices_.size(); }
  std::span<const std::uint32_t> indices(std::size_t face) const {
    return std::span(indices_).subspan(faces_[face].firstIndex, faces_[face].indexCount);
  }

  /// Names each face once that may be seen from a point of the world: its leaf's cluster is visible from the point's,
  /// and leaf and face reach into the view. @param viewProjection to clip space with depths 0 to w
  void visit(const ql::math::Vec3& eye, const ql::math::Mat4& viewProjection,
             const std::function<void(std::size_t face)>& see);

 private:
  void addFace(const ql::level::Q3Bsp& file, const ql::level::Q3Face& face);
  void addPatch(const ql::level::Q3Bsp& file, const ql::level::Q3Face& face);
  std::int32_t clusterAt(const ql::math::Vec3& point) const;
  bool clusterSeen(std::int32_t from, std::int32_t to) const;

  struct Leaf {
    std::int32_t cluster;
    std::size_t first, count;  ///< leaf faces
    Box box;
  };

  std::vector<MeshVertex> vertices_;
  std::vector<std::uint32_t> indices_;
  std::vector<MeshFace> faces_;
  std::vector<Leaf> leaves_;
  std::vector<std::int32_t> leafFaces_;
  std::vector<ql::level::Q3Node> nodes_;
  std::vector<ql::level::Q3Plane> planes_;
  ql::level::Q3Visibility visibility_;
  std::vector<std::uint32_t> seenIn_;  ///< by face: the last visit that named it
  std::uint32_t visit_ = 0;
};

}  // namespace peers::gl
