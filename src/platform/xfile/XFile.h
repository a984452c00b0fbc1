/// @file
/// DirectX X files as plain records: bytes in, checked records out.
///
/// A file is text, binary tokens, or either of them compressed. It is a tree of data objects, each of a template; what
/// is read are frames with their matrices, meshes with normals, texture coordinates and material lists, materials and
/// their textures. A template that a file declares under another name is known by its identifier; objects of any other
/// template are skipped.
#pragma once

#include "math/Vector.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ql::xfile {

struct Material {
  std::string name;
  math::Color4 diffuse{1, 1, 1, 1};
  float power = 0;
  math::Color4 specular{0, 0, 0, 1}, emissive{0, 0, 0, 1};  ///< files keep no alpha of these
  std::string texture;                                      ///< file name as written; "": none
};

/// A triangle's corners: numbers of positions and of normals.
struct Triangle {
  std::array<std::uint32_t, 3> positions{}, normals{};
  std::uint32_t material = 0;  ///< of the mesh's own list
};

/// One mesh object. Faces of more than three corners are cut into fans; every number is in its range.
struct MeshObject {
  std::string name;
  std::vector<math::Vec3> positions, normals;   ///< no normals: the triangles' numbers of them mean nothing
  std::vector<std::array<float, 2>> texCoords;  ///< one a position, or none at all
  std::vector<Triangle> triangles;
  std::vector<Material> materials;  ///< at least one
};

/// A mesh where a frame puts it.
struct Placement {
  std::size_t mesh = 0;
  math::Mat4 matrix;
};

struct Scene {
  std::vector<MeshObject> meshes;
  std::vector<Placement> placements;  ///< in the order of the file
  std::uint32_t droppedFaces = 0;     ///< too few corners, or a number out of range
};

/// Vertices and triangles that one loaded mesh may have: what its 16-bit indices reach.
inline constexpr std::size_t kMostVertices = 65535, kMostTriangles = 65535;

/// A corner shared by triangles.
struct Vertex {
  math::Vec3 position, normal;
  float tu = 0, tv = 0;
};
/// All meshes of a scene as one, each with its frame's matrix applied; materials stand one mesh's after another's.
/// Meshes without normals get smooth ones.
struct FlatMesh {
  std::vector<Vertex> vertices;
  std::vector<std::uint32_t> indices;     ///< three a triangle
  std::vector<std::uint32_t> attributes;  ///< the material of each triangle
  std::vector<Material> materials;
};

/// Whether a file begins as X files do.
bool isXFile(std::span<const std::byte> bytes);
/// @throws host::FileFault BadIdentifier, BadVersion, BadEncoding, Truncated, BadSize, TooLarge
Scene parseXFile(std::span<const std::byte> bytes);
/// @throws host::FileFault TooLarge above kMostVertices or kMostTriangles
FlatMesh flatten(const Scene& scene);

}  // namespace ql::xfile
