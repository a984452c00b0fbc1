#include "level/HlBsp.h"
#include "platform/host/Fault.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ql::level {
namespace {

/// Texture indices are kept in 16 bits.
constexpr std::size_t kMaxTextures = 32768;
constexpr float kLargestNumber = std::numeric_limits<float>::max() / 4;
/// A face's texels may lie this far from the origin, so that luxels are counted in 32 bits.
constexpr float kLargestTexel = 1e8f;
/// Good files list each mark surface once; see Q3Repair.cpp.
constexpr std::uint64_t kMarkRepeats = 4;
/// Good files use each surface edge once.
constexpr std::uint64_t kEdgeRepeats = 4;

class Repairer {
 public:
  explicit Repairer(HlBsp& level) : level_(level) {}

  void run() {
    numbers();
    textureInfos();
    faces();
    marks();
    leaves();
    models();
    nodes();
  }

 private:
  template <class T>
  void note(host::Fault fault, const char* what, HlLump lump, const std::vector<T>& records, const T& record,
            std::int64_t got, std::size_t limit) {
    if (level_.repairs.count++ != 0) return;
    const auto index = static_cast<std::uint64_t>(&record - records.data());
    const std::uint64_t offset = level_.header.lump(lump).offset + index * sizeof(T);
    level_.repairs.first = host::FileFault(fault, what, offset, static_cast<std::uint64_t>(got), limit).what();
  }
  static bool index(std::int64_t value, std::size_t size) {
    return value >= 0 && value < static_cast<std::int64_t>(size);
  }
  static bool inside(std::int64_t first, std::int64_t count, std::size_t size) {
    return count == 0 || (first >= 0 && count > 0 && first + count <= static_cast<std::int64_t>(size));
  }
  template <std::size_t N>
  static bool makeUsable(std::array<float, N>& values) {
    bool usable = true;
    for (float& value : values)
      if (!(std::abs(value) <= kLargestNumber)) value = 0, usable = false;
    return usable;
  }

  void numbers() {
    for (auto& vertex : level_.vertices)
      if (!makeUsable(vertex))
        note(host::Fault::BadEncoding, "vertex", HlLump::Vertices, level_.vertices, vertex, 0, 0);
    for (HlPlane& plane : level_.planes) {
      std::array<float, 4> all{plane.normal[0], plane.normal[1], plane.normal[2], plane.distance};
      if (makeUsable(all)) continue;
      plane = {};
      note(host::Fault::BadEncoding, "plane", HlLump::Planes, level_.planes, plane, 0, 0);
    }
  }

  void textureInfos() {
    const std::size_t textures = std::min(level_.textures.size(), kMaxTextures);
    for (HlTextureInfo& info : level_.textureInfos) {
      const bool s = makeUsable(info.s), t = makeUsable(info.t);
      if (!s || !t)
        note(host::Fault::BadEncoding, "texture info", HlLump::TextureInfo, level_.textureInfos, info, 0, 0);
      if (index(info.texture, textures)) continue;
      note(host::Fault::BadReference, "texture", HlLump::TextureInfo, level_.textureInfos, info, info.texture,
           textures);
      info.texture = -1;
    }
  }

  void faces() {
    const std::uint64_t limit = level_.surfaceEdges.size() * kEdgeRepeats;
    std::uint64_t used = 0;
    for (HlFace& face : level_.faces) {
      const auto drop = [&](const char* what, std::int64_t got, std::size_t allowed) {
        note(host::Fault::BadReference, what, HlLump::Faces, level_.faces, face, got, allowed);
        face.edgeCount = 0;
      };
      if (!index(face.textureInfo, level_.textureInfos.size())) {
        drop("face's texture info", face.textureInfo, level_.textureInfos.size());
      } else if (!index(face.plane, level_.planes.size())) {
        drop("face's plane", face.plane, level_.planes.size());
      } else if (!inside(face.firstEdge, face.edgeCount, level_.surfaceEdges.size())) {
        drop("face's edges", std::int64_t{face.firstEdge} + face.edgeCount, level_.surfaceEdges.size());
      } else if (used + face.edgeCount > limit) {
        drop("face's edges, counted over all faces,", static_cast<std::int64_t>(used + face.edgeCount),
             static_cast<std::size_t>(limit));
      } else if (!edgesUsable(face)) {
        drop("face's corners", face.firstEdge, level_.vertices.size());
      }
      used += face.edgeCount;
      if (face.lightOffset < 0 || static_cast<std::size_t>(face.lightOffset) >= level_.lighting.size())
        face.lightOffset = -1;
    }
  }

  /// Whether all of a face's corners exist and lie where texels can be counted.
  bool edgesUsable(const HlFace& face) const {
    const HlTextureInfo& info = level_.textureInfos[face.textureInfo];
    for (std::int32_t k = 0; k < face.edgeCount; ++k) {
      const std::int64_t edge = level_.surfaceEdges[static_cast<std::size_t>(face.firstEdge + k)];
      if (!index(edge < 0 ? -edge : edge, level_.edges.size())) return false;
      const std::uint16_t corner = level_.edges[static_cast<std::size_t>(edge < 0 ? -edge : edge)].vertices[edge < 0];
      if (corner >= level_.vertices.size()) return false;
      const std::array<float, 3>& at = level_.vertices[corner];
      for (const std::array<float, 4>& axis : {info.s, info.t}) {
        const float texel = at[0] * axis[0] + at[1] * axis[1] + at[2] * axis[2] + axis[3];
        if (!(std::abs(texel) <= kLargestTexel)) return false;
      }
    }
    return true;
  }

  /// Marks that name no face stay, since leaves count from their places; who builds the leaves leaves them out.
  void marks() {
    for (HlLeaf& leaf : level_.leaves) {
      if (inside(leaf.firstMarkSurface, leaf.markSurfaceCount, level_.markSurfaces.size())) continue;
      note(host::Fault::BadReference, "leaf's faces", HlLump::Leaves, level_.leaves, leaf,
           std::int64_t{leaf.firstMarkSurface} + leaf.markSurfaceCount, level_.markSurfaces.size());
      leaf.markSurfaceCount = 0;
    }
    const std::size_t faces = level_.faces.size();
    for (const std::uint16_t& mark : level_.markSurfaces) {
      if (mark < faces) continue;
      note(host::Fault::BadReference, "mark surface", HlLump::MarkSurfaces, level_.markSurfaces, mark, mark, faces);
    }
  }

  void leaves() {
    const std::uint64_t limit = level_.markSurfaces.size() * kMarkRepeats;
    std::uint64_t listed = 0;
    for (HlLeaf& leaf : level_.leaves) {
      if (listed + leaf.markSurfaceCount > limit) {
        note(host::Fault::BadReference, "leaf's faces, counted over all leaves,", HlLump::Leaves, level_.leaves, leaf,
             static_cast<std::int64_t>(listed + leaf.markSurfaceCount), static_cast<std::size_t>(limit));
        leaf.markSurfaceCount = 0;
      }
      listed += leaf.markSurfaceCount;
      if (leaf.visibilityOffset < 0 || static_cast<std::size_t>(leaf.visibilityOffset) >= level_.visibility.size())
        leaf.visibilityOffset = -1;
    }
  }

  void models() {
    for (HlModel& model : level_.models) {
      makeUsable(model.mins);
      makeUsable(model.maxs);
      makeUsable(model.origin);
      if (inside(model.firstFace, model.faceCount, level_.faces.size())) continue;
      note(host::Fault::BadReference, "model's faces", HlLump::Models, level_.models, model,
           std::int64_t{model.firstFace} + model.faceCount, level_.faces.size());
      model.firstFace = model.faceCount = 0;
    }
  }

  /// Walks each model's tree from its root; a child that was reached before would make a circle and is cut off.
  void nodes() {
    std::vector<HlNode>& nodes = level_.nodes;
    std::vector<bool> reached(nodes.size(), false);
    std::vector<std::size_t> open;
    const auto walk = [&](std::size_t root) {
      if (reached[root]) return;
      reached[root] = true;
      open.push_back(root);
      while (!open.empty()) {
        HlNode& node = nodes[open.back()];
        open.pop_back();
        if (!index(node.plane, level_.planes.size())) {
          note(host::Fault::BadReference, "node plane", HlLump::Nodes, nodes, node, node.plane, level_.planes.size());
          node.plane = 0;
          node.children = {kNoHlChild, kNoHlChild};
        }
        for (std::int16_t& child : node.children) {
          if (child == kNoHlChild || (child < 0 && index(~std::int64_t{child}, level_.leaves.size()))) continue;
          if (index(child, nodes.size()) && !reached[static_cast<std::size_t>(child)]) {
            reached[static_cast<std::size_t>(child)] = true;
            open.push_back(static_cast<std::size_t>(child));
            continue;
          }
          note(host::Fault::BadReference, "node child", HlLump::Nodes, nodes, node, child, nodes.size());
          child = kNoHlChild;
        }
      }
    };
    if (level_.planes.empty()) nodes.clear();
    if (!nodes.empty()) walk(0);
    for (const HlModel& model : level_.models)
      if (index(model.headNodes[0], nodes.size())) walk(static_cast<std::size_t>(model.headNodes[0]));
    for (std::size_t i = 0; i < nodes.size(); ++i)
      if (!reached[i]) nodes[i].plane = 0, nodes[i].children = {kNoHlChild, kNoHlChild};
  }

  HlBsp& level_;
};

}  // namespace

void repairReferences(HlBsp& level) { Repairer(level).run(); }

}  // namespace ql::level
