/// @file
/// Faces as files list them, and the triangles that they make.
#pragma once

#include "platform/xfile/XFile.h"

#include <cstdint>
#include <vector>

namespace ql::xfile {

/// Faces of any number of corners: face f has the corners first[f] to first[f + 1] - 1.
struct FaceList {
  std::vector<std::uint32_t> first, corners;
  std::size_t size() const { return first.empty() ? 0 : first.size() - 1; }
  std::size_t cornersOf(std::size_t face) const { return first[face + 1] - first[face]; }
};

/// Triangles that all faces make.
std::size_t triangleCount(const FaceList& faces);
/// Fills a mesh's triangles, and drops its normals when they do not fit its faces. A face whose material is not listed
/// takes the last one that is; one out of range the first.
/// @param normals the numbers of the corners' normals @return faces that were dropped
std::uint32_t buildTriangles(MeshObject& mesh, const FaceList& faces, const FaceList& normals,
                             const std::vector<std::uint32_t>& materials);

}  // namespace ql::xfile
