#include "math/Matrix.h"
#include "platform/host/Fault.h"
#include "platform/xfile/XFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>

namespace ql::xfile {
namespace {

constexpr std::uint32_t kNone = ~std::uint32_t{0};

/// Takes directions to where a matrix takes surfaces: its inverse, transposed, without translation.
math::Mat4 normalMatrix(const math::Mat4& matrix) {
  math::Mat4 linear = matrix;
  linear.m41 = linear.m42 = linear.m43 = 0;
  linear.m14 = linear.m24 = linear.m34 = 0;
  linear.m44 = 1;
  return math::transpose(math::inverse(linear));
}

float finite(double value) {
  const auto narrow = static_cast<float>(std::clamp(value, -1e30, 1e30));
  return std::isfinite(narrow) ? narrow : 0;
}
/// A point where a frame puts it, always of finite numbers.
math::Vec3 placed(const math::Vec3& p, const math::Mat4& m) {
  const double x = p.x, y = p.y, z = p.z;
  return {finite(x * m.m11 + y * m.m21 + z * m.m31 + m.m41), finite(x * m.m12 + y * m.m22 + z * m.m32 + m.m42),
          finite(x * m.m13 + y * m.m23 + z * m.m33 + m.m43)};
}
math::Vec3 turnedNormal(const math::Vec3& n, const math::Mat4& m) {
  const math::Vec3 turned = math::transformNormal(n, m);
  return math::normalize(math::Vec3{finite(turned.x), finite(turned.y), finite(turned.z)});
}

void limit(const char* what, std::size_t got, std::size_t most) {
  if (got > most) throw host::FileFault(host::Fault::TooLarge, what, 0, got, most);
}

/// Gives the vertices from one on the normals of the triangles that use them, large ones counting more.
void computeNormals(FlatMesh& mesh, std::size_t firstVertex, std::size_t firstIndex) {
  for (std::size_t i = firstIndex; i + 2 < mesh.indices.size(); i += 3) {
    std::array<Vertex*, 3> corners{};
    for (std::size_t k = 0; k < 3; ++k) corners[k] = &mesh.vertices[mesh.indices[i + k]];
    const math::Vec3 across = math::cross(math::subtract(corners[1]->position, corners[0]->position),
                                          math::subtract(corners[2]->position, corners[0]->position));
    for (Vertex* corner : corners) corner->normal = math::add(corner->normal, across);
  }
  for (std::size_t i = firstVertex; i < mesh.vertices.size(); ++i) {
    math::Vec3& n = mesh.vertices[i].normal;
    n = math::normalize(math::Vec3{finite(n.x), finite(n.y), finite(n.z)});
    n = {finite(n.x), finite(n.y), finite(n.z)};
  }
}

/// Appends one mesh. A position whose corners have different normals becomes as many vertices: the first stands in the
/// position's place, the others after all positions.
void append(FlatMesh& out, const MeshObject& mesh, const math::Mat4& matrix, std::uint32_t firstMaterial) {
  limit("triangles of a mesh", out.attributes.size() + mesh.triangles.size(), kMostTriangles);
  limit("vertices of a mesh", out.vertices.size() + mesh.positions.size(), kMostVertices);
  const auto firstVertex = static_cast<std::uint32_t>(out.vertices.size());
  for (std::size_t i = 0; i < mesh.positions.size(); ++i) {
    Vertex& vertex = out.vertices.emplace_back();
    vertex.position = placed(mesh.positions[i], matrix);
    if (!mesh.texCoords.empty()) vertex.tu = mesh.texCoords[i][0], vertex.tv = mesh.texCoords[i][1];
  }
  const math::Mat4 turned = normalMatrix(matrix);
  std::vector<std::uint32_t> normalOf(mesh.positions.size(), kNone);
  std::unordered_map<std::uint64_t, std::uint32_t> split;  // by position and normal
  const auto corner = [&](std::uint32_t position, std::uint32_t normal) {
    const std::uint32_t place = firstVertex + position;
    if (mesh.normals.empty() || normalOf[position] == normal) return place;
    const auto withNormal = [&](Vertex& vertex) { vertex.normal = turnedNormal(mesh.normals[normal], turned); };
    if (normalOf[position] == kNone) {
      normalOf[position] = normal;
      withNormal(out.vertices[place]);
      return place;
    }
    const auto [found, added] =
        split.try_emplace(std::uint64_t{position} << 32 | normal, static_cast<std::uint32_t>(out.vertices.size()));
    if (added) {
      limit("vertices of a mesh", out.vertices.size() + 1, kMostVertices);
      const Vertex copy = out.vertices[place];
      withNormal(out.vertices.emplace_back(copy));
    }
    return found->second;
  };
  for (const Triangle& triangle : mesh.triangles) {
    for (std::size_t k = 0; k < 3; ++k) out.indices.push_back(corner(triangle.positions[k], triangle.normals[k]));
    out.attributes.push_back(firstMaterial + triangle.material);
  }
  if (mesh.normals.empty()) computeNormals(out, firstVertex, out.indices.size() - mesh.triangles.size() * 3);
}

}  // namespace

FlatMesh flatten(const Scene& scene) {
  FlatMesh out;
  std::vector<std::uint32_t> firstMaterial(scene.meshes.size(), kNone);
  for (const Placement& placement : scene.placements) {
    const MeshObject& mesh = scene.meshes[placement.mesh];
    std::uint32_t& first = firstMaterial[placement.mesh];
    if (first == kNone) {
      first = static_cast<std::uint32_t>(out.materials.size());
      limit("materials of a mesh", out.materials.size() + mesh.materials.size(), kMostTriangles);
      out.materials.insert(out.materials.end(), mesh.materials.begin(), mesh.materials.end());
    }
    append(out, mesh, placement.matrix, first);
  }
  return out;
}

}  // namespace ql::xfile
