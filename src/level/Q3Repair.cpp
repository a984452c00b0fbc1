#include "level/Q3Bsp.h"
#include "platform/host/Fault.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ql::level {
namespace {

/// Texture indices are kept in 16 bits.
constexpr std::size_t kMaxTextures = 32768;
/// Some compilers leave wild numbers in coordinates that nothing uses; they do no harm while sums of a few stay finite.
constexpr float kLargestNumber = std::numeric_limits<float>::max() / 4;
/// Good files list each leaf face once; more than this many times the list's length is refused, since every rebuild of
/// the visible faces walks all of it.
constexpr std::int64_t kLeafFaceRepeats = 4;

class Repairer {
 public:
  explicit Repairer(Q3Bsp& level) : level_(level) {}

  void run() {
    vertices();
    planes();
    faces();
    leafFaces();
    leaves();
    models();
    nodes();
  }

 private:
  /// Notes damage in a record. @param index of the record in its lump
  void note(host::Fault fault, const char* what, Lump lump, std::size_t index, std::size_t recordSize, std::int64_t got,
            std::size_t limit) {
    if (level_.repairs.count++ != 0) return;
    const std::uint64_t offset = level_.header.lump(lump).offset + std::uint64_t{index} * recordSize;
    level_.repairs.first = host::FileFault(fault, what, offset, static_cast<std::uint64_t>(got), limit).what();
  }
  template <class T>
  void badReference(const char* what, Lump lump, const std::vector<T>& records, const T& record, std::int64_t got,
                    std::size_t limit) {
    note(host::Fault::BadReference, what, lump, static_cast<std::size_t>(&record - records.data()), sizeof(T), got,
         limit);
  }

  /// Whether first .. first + count - 1 lies in a table of a size; the empty range always does.
  static bool inside(std::int64_t first, std::int64_t count, std::size_t size) {
    return count == 0 || (first >= 0 && count > 0 && first + count <= static_cast<std::int64_t>(size));
  }
  static bool index(std::int64_t value, std::size_t size) {
    return value >= 0 && value < static_cast<std::int64_t>(size);
  }
  template <std::size_t N>
  static bool makeUsable(std::array<float, N>& values) {
    bool usable = true;
    for (float& value : values)
      if (!(std::abs(value) <= kLargestNumber)) value = 0, usable = false;
    return usable;
  }

  void vertices() {
    for (Q3Vertex& vertex : level_.vertices) {
      const bool position = makeUsable(vertex.position), texture = makeUsable(vertex.texture),
                 lightmap = makeUsable(vertex.lightmap), normal = makeUsable(vertex.normal);
      if (!(position && texture && lightmap && normal))
        note(host::Fault::BadEncoding, "vertex", Lump::Vertices,
             static_cast<std::size_t>(&vertex - level_.vertices.data()), sizeof vertex, 0, 0);
    }
  }

  void planes() {
    for (Q3Plane& plane : level_.planes) {
      std::array<float, 4> all{plane.normal[0], plane.normal[1], plane.normal[2], plane.distance};
      if (makeUsable(all)) continue;
      plane = {};
      note(host::Fault::BadEncoding, "plane", Lump::Planes, static_cast<std::size_t>(&plane - level_.planes.data()),
           sizeof plane, 0, 0);
    }
  }

  void faces() {
    const std::size_t textures = std::min(level_.textures.size(), kMaxTextures);
    const auto lightmaps = static_cast<std::size_t>(level_.lightmapCount());
    std::size_t expanded = 0;
    for (Q3Face& face : level_.faces) {
      if (!index(face.texture, textures)) {
        badReference("face texture", Lump::Faces, level_.faces, face, face.texture, textures);
        face.texture = -1;
      }
      if (face.lightmap >= 0 && !index(face.lightmap, lightmaps))
        badReference("face lightmap", Lump::Faces, level_.faces, face, face.lightmap, lightmaps);
      if (!index(face.lightmap, lightmaps)) face.lightmap = -1;
      meshVertices(face, expanded);
      patch(face);
    }
  }

  /// Many faces may name the same mesh vertices: what they expand to is counted before they are looked at.
  void meshVertices(Q3Face& face, std::size_t& expanded) {
    if (face.meshVertexCount == 0) return;
    // A face that loses its mesh vertices must not turn into a patch.
    const auto drop = [&](const char* what, std::int64_t got, std::size_t limit) {
      badReference(what, Lump::Faces, level_.faces, face, got, limit);
      face.meshVertexCount = 0;
      face.type = 0;
    };
    if (!inside(face.firstMeshVertex, face.meshVertexCount, level_.meshVertices.size()))
      return drop("face's mesh vertices", std::int64_t{face.firstMeshVertex} + face.meshVertexCount,
                  level_.meshVertices.size());
    const auto count = static_cast<std::size_t>(face.meshVertexCount);
    if (count > level_.vertexLimit - expanded)
      return drop("face's place in the level's vertices", static_cast<std::int64_t>(expanded + count),
                  level_.vertexLimit);
    expanded += count;
    const std::int32_t* first = level_.meshVertices.data() + face.firstMeshVertex;
    const auto [low, high] = std::minmax_element(first, first + count);
    if (!index(std::int64_t{face.firstVertex} + *low, level_.vertices.size()))
      return drop("mesh vertex", std::int64_t{face.firstVertex} + *low, level_.vertices.size());
    if (!index(std::int64_t{face.firstVertex} + *high, level_.vertices.size()))
      return drop("mesh vertex", std::int64_t{face.firstVertex} + *high, level_.vertices.size());
  }

  void patch(Q3Face& face) {
    if (face.type != kPatchFace || face.meshVertexCount != 0) {
      face.patchSize = {};
      return;
    }
    const std::int64_t width = face.patchSize[0], height = face.patchSize[1];
    const bool grid = width >= 3 && height >= 3 && width % 2 == 1 && height % 2 == 1;
    if (grid && inside(face.firstVertex, width * height, level_.vertices.size())) return;
    badReference("patch", Lump::Faces, level_.faces, face, width * height, level_.vertices.size());
    face.patchSize = {};
  }

  /// Entries that name no face are taken out, and the leaves' ranges follow.
  void leafFaces() {
    const std::size_t faces = level_.faces.size(), entries = level_.leafFaces.size();
    for (Q3Leaf& leaf : level_.leaves) {
      if (inside(leaf.firstLeafFace, leaf.leafFaceCount, entries)) continue;
      badReference("leaf's faces", Lump::Leaves, level_.leaves, leaf,
                   std::int64_t{leaf.firstLeafFace} + leaf.leafFaceCount, entries);
      // What lies inside stays.
      const std::int64_t size = static_cast<std::int64_t>(entries);
      const std::int64_t first = std::clamp<std::int64_t>(leaf.firstLeafFace, 0, size);
      const std::int64_t end =
          std::clamp<std::int64_t>(std::int64_t{leaf.firstLeafFace} + std::max(leaf.leafFaceCount, 0), first, size);
      leaf.firstLeafFace = static_cast<std::int32_t>(first);
      leaf.leafFaceCount = static_cast<std::int32_t>(end - first);
    }
    if (std::all_of(level_.leafFaces.begin(), level_.leafFaces.end(), [&](auto face) { return index(face, faces); }))
      return;
    std::vector<std::int32_t> good, newPlace;
    newPlace.reserve(entries + 1);
    for (const std::int32_t& face : level_.leafFaces) {
      newPlace.push_back(static_cast<std::int32_t>(good.size()));
      if (index(face, faces))
        good.push_back(face);
      else
        badReference("leaf face", Lump::LeafFaces, level_.leafFaces, face, face, faces);
    }
    newPlace.push_back(static_cast<std::int32_t>(good.size()));
    for (Q3Leaf& leaf : level_.leaves) {
      if (leaf.leafFaceCount == 0) continue;
      const auto first = static_cast<std::size_t>(leaf.firstLeafFace);
      const auto end = first + static_cast<std::size_t>(leaf.leafFaceCount);
      leaf.firstLeafFace = newPlace[first];
      leaf.leafFaceCount = newPlace[end] - newPlace[first];
    }
    level_.leafFaces = std::move(good);
  }

  void leaves() {
    const std::int64_t limit = static_cast<std::int64_t>(level_.leafFaces.size()) * kLeafFaceRepeats;
    std::int64_t listed = 0;
    for (Q3Leaf& leaf : level_.leaves) {
      const std::int32_t clusters = level_.visibility.clusterCount;
      if (clusters != 0 && leaf.cluster >= clusters) {
        badReference("leaf cluster", Lump::Leaves, level_.leaves, leaf, leaf.cluster,
                     static_cast<std::size_t>(clusters));
        leaf.cluster = -1;
      }
      if (listed + leaf.leafFaceCount > limit) {
        badReference("leaf's faces, counted over all leaves,", Lump::Leaves, level_.leaves, leaf,
                     listed + leaf.leafFaceCount, static_cast<std::size_t>(limit));
        leaf.leafFaceCount = 0;
      }
      listed += leaf.leafFaceCount;
    }
  }

  void models() {
    for (Q3Model& model : level_.models) {
      makeUsable(model.mins);
      makeUsable(model.maxs);
      if (inside(model.firstFace, model.faceCount, level_.faces.size())) continue;
      badReference("model's faces", Lump::Models, level_.models, model, std::int64_t{model.firstFace} + model.faceCount,
                   level_.faces.size());
      model.firstFace = model.faceCount = 0;
    }
  }

  /// Walks the tree from its root; a child that was reached before would make a circle and is cut off.
  void nodes() {
    std::vector<Q3Node>& nodes = level_.nodes;
    if (level_.planes.empty()) nodes.clear();
    if (nodes.empty()) return;
    std::vector<bool> reached(nodes.size(), false);
    std::vector<std::size_t> open{0};
    reached[0] = true;
    while (!open.empty()) {
      Q3Node& node = nodes[open.back()];
      open.pop_back();
      if (!index(node.plane, level_.planes.size())) {
        badReference("node plane", Lump::Nodes, nodes, node, node.plane, level_.planes.size());
        node.plane = 0;
        node.children = {kNoChild, kNoChild};
      }
      for (std::int32_t& child : node.children) {
        if (child == kNoChild || (child < 0 && index(~std::int64_t{child}, level_.leaves.size()))) continue;
        if (index(child, nodes.size()) && !reached[static_cast<std::size_t>(child)]) {
          reached[static_cast<std::size_t>(child)] = true;
          open.push_back(static_cast<std::size_t>(child));
          continue;
        }
        badReference("node child", Lump::Nodes, nodes, node, child, nodes.size());
        child = kNoChild;
      }
    }
    for (std::size_t i = 0; i < nodes.size(); ++i)
      if (!reached[i]) nodes[i].plane = 0, nodes[i].children = {kNoChild, kNoChild};
  }

  Q3Bsp& level_;
};

}  // namespace

void repairReferences(Q3Bsp& level) { Repairer(level).run(); }

}  // namespace ql::level
