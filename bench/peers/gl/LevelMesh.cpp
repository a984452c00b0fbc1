#include "LevelMesh.h"

#include "level/CurvePatch.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace peers::gl {
namespace {

using namespace ql;
using math::Vec3;

constexpr std::int32_t kSky = 4, kNotDrawn = 128;  // flags of a level's textures

/// From the parsed file, whose x is negated, to the world.
Vec3 worldOf(const Vec3& p) { return {p.x, p.z, -p.y}; }
Vec3 worldOf(const std::array<float, 3>& p) { return worldOf(Vec3{p[0], p[1], p[2]}); }

void extend(Box& box, const Vec3& p) {
  box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y), std::min(box.low.z, p.z)};
  box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y), std::max(box.high.z, p.z)};
}

Box leafBox(const level::Q3Leaf& leaf) {
  const auto at = [](std::int32_t value) { return static_cast<float>(value); };
  return {{-at(leaf.maxs[0]), at(leaf.mins[2]), -at(leaf.maxs[1])},
          {-at(leaf.mins[0]), at(leaf.maxs[2]), -at(leaf.mins[1])}};
}

struct ClipPlane {
  Vec3 normal;  ///< to the inside
  float distance;
};

/// Left, right, bottom, top and near plane of what a matrix maps into clip space.
std::array<ClipPlane, 5> clipPlanes(const math::Mat4& matrix) {
  const auto m = std::bit_cast<std::array<std::array<float, 4>, 4>>(matrix);
  const auto plane = [&](std::size_t column, float sign, float w) {
    const auto part = [&](std::size_t row) { return w * m[row][3] + sign * m[row][column]; };
    return ClipPlane{{part(0), part(1), part(2)}, part(3)};
  };
  return {plane(0, 1, 1), plane(0, -1, 1), plane(1, 1, 1), plane(1, -1, 1), plane(2, 1, 0)};
}

bool reaches(const Box& box, const std::array<ClipPlane, 5>& planes) {
  return std::all_of(planes.begin(), planes.end(), [&](const ClipPlane& plane) {
    const Vec3& n = plane.normal;
    const Vec3 corner{n.x > 0 ? box.high.x : box.low.x, n.y > 0 ? box.high.y : box.low.y,
                      n.z > 0 ? box.high.z : box.low.z};
    return math::dot(n, corner) + plane.distance >= 0;
  });
}

}  // namespace

LevelMesh::LevelMesh(const level::Q3Bsp& file)
    : leafFaces_(file.leafFaces), nodes_(file.nodes), planes_(file.planes), visibility_(file.visibility) {
  vertices_.reserve(file.vertices.size());
  for (const level::Q3Vertex& vertex : file.vertices)
    vertices_.push_back({worldOf(vertex.position), vertex.texture, vertex.lightmap});
  for (const level::Q3Face& face : file.faces) addFace(file, face);
  for (const level::Q3Leaf& leaf : file.leaves)
    leaves_.push_back({leaf.cluster, static_cast<std::size_t>(leaf.firstLeafFace),
                       static_cast<std::size_t>(leaf.leafFaceCount), leafBox(leaf)});
  seenIn_.assign(faces_.size(), 0);
}

void LevelMesh::addFace(const level::Q3Bsp& file, const level::Q3Face& face) {
  MeshFace added{face.texture, face.lightmap, indices_.size(), 0, {}};
  const std::int32_t flags = face.texture < 0 ? 0 : file.textures[static_cast<std::size_t>(face.texture)].flags;
  if ((flags & (kSky | kNotDrawn)) == 0) {
    if (face.patchSize[0] != 0) {
      addPatch(file, face);
    } else {
      for (std::int32_t i = 0; i < face.meshVertexCount; ++i)
        indices_.push_back(static_cast<std::uint32_t>(
            face.firstVertex + file.meshVertices[static_cast<std::size_t>(face.firstMeshVertex + i)]));
    }
  }
  added.indexCount = indices_.size() - added.firstIndex;
  constexpr float kFar = std::numeric_limits<float>::max();
  added.box = {{kFar, kFar, kFar}, {-kFar, -kFar, -kFar}};
  for (std::size_t i = added.firstIndex; i < indices_.size(); ++i) extend(added.box, vertices_[indices_[i]].position);
  faces_.push_back(added);
}

void LevelMesh::addPatch(const level::Q3Bsp& file, const level::Q3Face& face) {
  const auto width = static_cast<std::size_t>(face.patchSize[0]), height = static_cast<std::size_t>(face.patchSize[1]);
  std::vector<level::PatchPoint> controls;
  for (std::size_t i = 0; i < width * height; ++i) {
    const level::Q3Vertex& vertex = file.vertices[static_cast<std::size_t>(face.firstVertex) + i];
    controls.push_back({{vertex.position[0], vertex.position[1], vertex.position[2]}, vertex.texture, vertex.lightmap});
  }
  const level::CurvePatch patch = level::tessellatePatch(controls, width, height, level::kCurveHigh);
  const auto first = static_cast<std::uint32_t>(vertices_.size());
  for (const level::PatchPoint& point : patch.points)
    vertices_.push_back({worldOf(point.position), point.texture, point.lightmap});
  for (const std::uint32_t index : level::gridIndices(patch.columns, patch.rows)) indices_.push_back(first + index);
}

std::int32_t LevelMesh::clusterAt(const Vec3& point) const {
  const std::array<float, 3> inFile{-point.x, -point.z, point.y};
  std::int32_t node = nodes_.empty() ? level::kNoChild : 0;
  while (node >= 0) {
    const level::Q3Node& at = nodes_[static_cast<std::size_t>(node)];
    const level::Q3Plane& plane = planes_[static_cast<std::size_t>(at.plane)];
    float distance = -plane.distance;
    for (std::size_t axis = 0; axis < 3; ++axis) distance += plane.normal[axis] * inFile[axis];
    node = at.children[distance < 0 ? 1 : 0];
  }
  return node == level::kNoChild ? -1 : leaves_[static_cast<std::size_t>(~node)].cluster;
}

bool LevelMesh::clusterSeen(std::int32_t from, std::int32_t to) const {
  if (to < 0) return false;
  if (from < 0 || from >= visibility_.clusterCount || to >= visibility_.clusterCount) return true;
  const auto row = static_cast<std::size_t>(from) * static_cast<std::size_t>(visibility_.bytesPerCluster);
  const auto byte = std::to_integer<unsigned>(visibility_.rows[row + static_cast<std::size_t>(to) / 8]);
  return (byte >> (to % 8) & 1) != 0;
}

void LevelMesh::visit(const Vec3& eye, const math::Mat4& viewProjection,
                      const std::function<void(std::size_t face)>& see) {
  const std::array<ClipPlane, 5> planes = clipPlanes(viewProjection);
  const std::int32_t from = clusterAt(eye);
  ++visit_;
  for (const Leaf& leaf : leaves_) {
    if (!clusterSeen(from, leaf.cluster) || !reaches(leaf.box, planes)) continue;
    for (std::size_t i = leaf.first; i < leaf.first + leaf.count; ++i) {
      const auto face = static_cast<std::size_t>(leafFaces_[i]);
      if (seenIn_[face] == visit_ || faces_[face].indexCount == 0) continue;
      seenIn_[face] = visit_;
      if (reaches(faces_[face].box, planes)) see(face);
    }
  }
}

}  // namespace peers::gl
