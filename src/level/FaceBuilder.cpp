#include "level/FaceBuilder.h"

namespace ql::level {
namespace {

LevelVertex levelVertex(const math::Vec3& position, const std::array<float, 2>& texture,
                        const std::array<float, 2>& lightmap) {
  constexpr std::int32_t kWhite = -1, kNoSpecular = 0;
  return {position.x, position.y, position.z, kWhite, kNoSpecular, texture[0], texture[1], lightmap[0], lightmap[1]};
}
math::Vec3 positionOf(const Q3Vertex& vertex) { return {vertex.position[0], vertex.position[1], vertex.position[2]}; }

bool isPatch(const Q3Face& face) { return face.patchSize[0] != 0; }

/// Builds in two steps, counting first, so that the vertex list is allocated once and never beyond the limit.
class Builder {
 public:
  Builder(const Q3Bsp& level, std::int32_t curvePrecision) : level_(level), precision_(curvePrecision) {}

  BuiltFaces run() {
    std::size_t meshVertices = 0;
    for (const Q3Face& face : level_.faces) meshVertices += static_cast<std::size_t>(face.meshVertexCount);
    // Mesh vertices were counted when the references were checked; curves share what is left.
    std::uint64_t room = level_.vertexLimit > meshVertices ? level_.vertexLimit - meshVertices : 0;
    std::vector<bool> built(level_.faces.size(), false);
    std::size_t total = meshVertices;
    for (std::size_t i = 0; i < level_.faces.size(); ++i) {
      const Q3Face& face = level_.faces[i];
      if (!isPatch(face)) continue;
      const std::uint64_t count = patchIndexCount(face.patchSize[0], face.patchSize[1], precision_);
      if (count > room) {
        ++out_.crowdedFaces;
        continue;
      }
      room -= count;
      total += static_cast<std::size_t>(count);
      built[i] = true;
    }
    out_.vertices.reserve(total);
    out_.records.reserve(level_.faces.size());
    for (std::size_t i = 0; i < level_.faces.size(); ++i) add(level_.faces[i], built[i]);
    return std::move(out_);
  }

 private:
  void add(const Q3Face& face, bool patchFits) {
    FaceRecord record;
    record.texture = static_cast<std::int16_t>(face.texture);
    record.key = face.texture;
    record.lightmap = face.lightmap;
    const std::size_t before = out_.vertices.size();
    record.firstVertex = static_cast<std::uint32_t>(before);
    if (face.meshVertexCount > 0) {
      addMesh(face);
    } else if (patchFits) {
      record.patch = out_.patches++;
      addPatch(face);
    }
    record.triangleCount = static_cast<std::uint32_t>((out_.vertices.size() - before) / 3);
    out_.records.push_back(record);
  }

  void addMesh(const Q3Face& face) {
    for (std::int32_t k = 0; k < face.meshVertexCount; ++k) {
      const std::int32_t offset = level_.meshVertices[static_cast<std::size_t>(face.firstMeshVertex + k)];
      const Q3Vertex& vertex =
          level_.vertices[static_cast<std::size_t>(face.firstVertex) + static_cast<std::size_t>(offset)];
      out_.vertices.push_back(levelVertex(positionOf(vertex), vertex.texture, vertex.lightmap));
    }
  }

  void addPatch(const Q3Face& face) {
    const auto width = static_cast<std::size_t>(face.patchSize[0]),
               height = static_cast<std::size_t>(face.patchSize[1]);
    std::vector<PatchPoint> controls;
    controls.reserve(width * height);
    for (std::size_t i = 0; i < width * height; ++i) {
      const Q3Vertex& vertex = level_.vertices[static_cast<std::size_t>(face.firstVertex) + i];
      controls.push_back({positionOf(vertex), vertex.texture, vertex.lightmap});
    }
    if (!controlPointsSpanArea(controls, width, height)) ++out_.badPatches;
    const CurvePatch patch = tessellatePatch(controls, width, height, precision_);
    for (const std::uint32_t index : gridIndices(patch.columns, patch.rows)) {
      const PatchPoint& point = patch.points[index];
      out_.vertices.push_back(levelVertex(point.position, point.texture, point.lightmap));
    }
  }

  const Q3Bsp& level_;
  std::int32_t precision_;
  BuiltFaces out_;
};

}  // namespace

BuiltFaces buildFaces(const Q3Bsp& level, std::int32_t curvePrecision) {
  return Builder(level, usableCurvePrecision(curvePrecision)).run();
}

LeafSphere leafSphere(const Leaf& leaf) {
  std::array<float, 3> center{}, size{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const auto low = static_cast<float>(leaf.mins[axis]), high = static_cast<float>(leaf.maxs[axis]);
    center[axis] = (low + high) * 0.5f;
    size[axis] = high - low;
  }
  return {{-center[0], center[1], center[2]}, 0.5f * math::length({size[0], size[1], size[2]})};
}

}  // namespace ql::level
