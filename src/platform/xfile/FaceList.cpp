#include "platform/xfile/FaceList.h"

#include <algorithm>
#include <span>

namespace ql::xfile {
namespace {

std::span<const std::uint32_t> cornersOf(const FaceList& faces, std::size_t face) {
  return std::span(faces.corners).subspan(faces.first[face], faces.cornersOf(face));
}

bool allBelow(std::span<const std::uint32_t> numbers, std::size_t limit) {
  return std::all_of(numbers.begin(), numbers.end(), [&](std::uint32_t number) { return number < limit; });
}

/// Normals belong to corners: as many faces, each with as many corners.
bool normalsFit(const MeshObject& mesh, const FaceList& faces, const FaceList& normals) {
  if (mesh.normals.empty() || normals.size() != faces.size()) return false;
  for (std::size_t f = 0; f < faces.size(); ++f)
    if (normals.cornersOf(f) != faces.cornersOf(f)) return false;
  return allBelow(normals.corners, mesh.normals.size());
}

}  // namespace

std::size_t triangleCount(const FaceList& faces) {
  std::size_t count = 0;
  for (std::size_t f = 0; f < faces.size(); ++f) count += std::max<std::size_t>(faces.cornersOf(f), 2) - 2;
  return count;
}

std::uint32_t buildTriangles(MeshObject& mesh, const FaceList& faces, const FaceList& normals,
                             const std::vector<std::uint32_t>& materials) {
  if (!normalsFit(mesh, faces, normals)) mesh.normals.clear();
  std::uint32_t dropped = 0;
  mesh.triangles.reserve(triangleCount(faces));
  for (std::size_t f = 0; f < faces.size(); ++f) {
    const std::span<const std::uint32_t> corners = cornersOf(faces, f);
    if (corners.size() < 3 || !allBelow(corners, mesh.positions.size())) {
      ++dropped;
      continue;
    }
    Triangle triangle;
    if (!materials.empty()) triangle.material = materials[std::min(f, materials.size() - 1)];
    if (triangle.material >= mesh.materials.size()) triangle.material = 0;
    const std::size_t start = faces.first[f];
    for (std::size_t k = 2; k < corners.size(); ++k) {
      triangle.positions = {corners[0], corners[k - 1], corners[k]};
      if (!mesh.normals.empty())
        triangle.normals = {normals.corners[start], normals.corners[start + k - 1], normals.corners[start + k]};
      mesh.triangles.push_back(triangle);
    }
  }
  return dropped;
}

}  // namespace ql::xfile
