#include "mesh/Build.h"
#include "platform/utility/SubsetMesh.h"

#include <cstddef>
#include <span>

namespace ql::mesh {
namespace {

using math::NormalVertex;

math::Vec3 positionOf(const NormalVertex& vertex) { return {vertex.x, vertex.y, vertex.z}; }

/// The normal of a triangle that begins at a vertex.
math::Vec3 faceNormal(std::span<const NormalVertex> vertices, std::size_t first) {
  const math::Vec3 p = positionOf(vertices[first]);
  return math::normalize(math::cross(math::subtract(positionOf(vertices[first + 1]), p),
                                     math::subtract(positionOf(vertices[first + 2]), p)));
}

void setNormals(std::span<NormalVertex> vertices, const math::Vec3& normal) {
  for (NormalVertex& vertex : vertices) vertex.nx = normal.x, vertex.ny = normal.y, vertex.nz = normal.z;
}

}  // namespace

void computeNormals(engine::EngineContext& context, const MeshHandle& mesh) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  if (record.usesSubsets) {
    if (!record.subsets) throw engine::EngineError(engine::kNotSet, "Object variable not set");
    record.subsets->computeNormals();
    return;
  }
  // The spare takes no part.
  const std::span<NormalVertex> all = std::span(record.normalVertices).first(record.normalVertices.size() - 1);
  for (std::size_t g = 1; g < record.groups.size(); ++g) {
    const auto start = static_cast<std::size_t>(record.groups[g].start);
    const auto count = static_cast<std::size_t>(record.groups[g].count);
    if (count == 0 || start + count > all.size()) continue;
    if (record.primitiveType == kTriangleStrip) {
      if (start + 2 < all.size()) setNormals(all.subspan(start, count), faceNormal(all, start));
      continue;
    }
    for (std::size_t i = start; i < start + count && i + 2 < all.size(); i += 3)
      setNormals(all.subspan(i, 3), faceNormal(all, i));
  }
}

void computeBounds(engine::EngineContext& context, const MeshHandle& mesh) {
  MeshRecord& record = meshRecord(context, mesh.slot);
  if (record.vertexCount == 0) return;
  utility::Sphere sphere;
  utility::Box box;
  if (record.usesSubsets) {
    if (!record.subsets) throw engine::EngineError(engine::kNotSet, "Object variable not set");
    sphere = record.subsets->boundingSphere();
    box = record.subsets->boundingBox();
  } else {
    const std::span<const std::byte> bytes = std::as_bytes(std::span(record.normalVertices));
    sphere = utility::boundingSphere(bytes, sizeof(NormalVertex));
    box = utility::boundingBox(bytes, sizeof(NormalVertex));
  }
  record.boxMin = math::multiply(box.minimum, record.scale);
  record.boxMax = math::multiply(box.maximum, record.scale);
  record.sphereCenter = math::multiply(sphere.center, record.scale);
  record.sphereRadius = sphere.radius * math::largest(record.scale);
  record.boundsValid = true;
  noteChange(context, mesh.slot);
}

}  // namespace ql::mesh
