#include "mesh/Build.h"
#include "platform/utility/SubsetMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace ql::mesh {
namespace {

/// Three vertex numbers per triangle of every group, of vertices that are there; strips become lists.
std::vector<std::uint32_t> triangles(const MeshRecord& record) {
  std::vector<std::uint32_t> corners;
  const bool strip = record.primitiveType == kTriangleStrip;
  for (std::size_t g = 1; g < record.groups.size(); ++g) {
    const MeshGroup& group = record.groups[g];
    const auto there = std::min<std::ptrdiff_t>(group.count, std::ssize(record.normalVertices) - group.start);
    for (std::int32_t i = 0; i + 2 < there; i += strip ? 1 : 3) {
      const auto first = static_cast<std::uint32_t>(group.start + i);
      const bool turned = strip && i % 2 == 1;  // every second triangle of a strip runs the other way
      corners.insert(corners.end(), {first, first + (turned ? 2 : 1), first + (turned ? 1 : 2)});
    }
  }
  return corners;
}

}  // namespace

void optimize(engine::EngineContext& context, const MeshHandle& mesh) {
  context.requireDevice();
  const MeshRecord& record = meshRecord(context, mesh.slot);
  if (record.usesSubsets) return;  // indexed already
  std::vector<utility::SubsetVertex> vertices;
  vertices.reserve(record.normalVertices.size());
  for (const math::NormalVertex& v : record.normalVertices)
    vertices.push_back({{v.x, v.y, v.z}, {v.nx, v.ny, v.nz}, v.tu, v.tv});
  utility::SubsetMesh(std::move(vertices), triangles(record));
}

}  // namespace ql::mesh
