#include "BspFile.h"

#include <array>
#include <bit>
#include <cstdlib>
#include <map>

namespace ql::maker {
namespace {

enum Lump {
  kEntities,
  kTextures,
  kPlanes,
  kNodes,
  kLeafs,
  kLeafFaces,
  kLeafBrushes,
  kModels,
  kBrushes,
  kBrushSides,
  kVertices,
  kMeshVertices,
  kEffects,
  kFaces,
  kLightmaps,
  kLightGrid,
  kVisibility,
  kLumpCount
};

constexpr std::int32_t kVersion = 46;
constexpr std::int32_t kPolygon = 1;
constexpr std::int32_t kPatch = 2;
constexpr std::int32_t kMesh = 3;
constexpr std::int32_t kContentsSolid = 1;
constexpr std::int32_t kContentsWater = 32;
constexpr std::int32_t kSurfaceSky = 0x4;

/// Little-endian values one after another.
class Bytes {
 public:
  void i32(std::int32_t v) {
    const auto u = static_cast<std::uint32_t>(v);
    for (unsigned s = 0; s < 32; s += 8) data.push_back(static_cast<std::uint8_t>(u >> s));
  }
  void i32(std::size_t v) { i32(static_cast<std::int32_t>(v)); }
  void f32(double v) { i32(std::bit_cast<std::int32_t>(static_cast<float>(v == 0.0 ? 0.0 : v))); }  // no negative zeros
  void vec(Vec3 v) {
    f32(v.x);
    f32(v.y);
    f32(v.z);
  }
  void text(std::string_view s, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) data.push_back(i < s.size() ? static_cast<std::uint8_t>(s[i]) : 0);
  }
  std::vector<std::uint8_t> data;
};

class Writer {
 public:
  explicit Writer(const BspContents& c) : c_(c) {}

  std::vector<std::uint8_t> write() {
    entities();
    for (const Material& m : c_.level.materials) {
      lump(kTextures).text(kTextureFolder + m.texture, 64);
      lump(kTextures).i32(m.sky ? kSurfaceSky : 0);
      lump(kTextures).i32(m.liquid ? kContentsWater : kContentsSolid);
    }
    leafFaces_.resize(c_.tree.leaves.size());
    faces();
    brushes();
    treeLumps();
    lump(kLightmaps).data.assign(c_.lightmaps.begin(), c_.lightmaps.end());
    lump(kVisibility).i32(c_.visibility.clusters);
    lump(kVisibility).i32(c_.visibility.bytesPerCluster);
    auto& rows = lump(kVisibility).data;
    rows.insert(rows.end(), c_.visibility.rows.begin(), c_.visibility.rows.end());
    Bytes file;
    file.text("IBSP", 4);
    file.i32(kVersion);
    std::size_t at = 8 + kLumpCount * 8;
    for (const Bytes& l : lumps_) {
      file.i32(at);
      file.i32(l.data.size());
      at += (l.data.size() + 3) / 4 * 4;
    }
    for (const Bytes& l : lumps_) {
      file.data.insert(file.data.end(), l.data.begin(), l.data.end());
      file.data.resize((file.data.size() + 3) / 4 * 4);
    }
    return std::move(file.data);
  }

 private:
  Bytes& lump(Lump l) { return lumps_[static_cast<std::size_t>(l)]; }

  static std::string number(double v) {
    const long thousandths = static_cast<long>(std::floor(v * 1000.0 + 0.5));
    std::string text = std::to_string(thousandths / 1000);
    std::string rest = std::to_string(1000 + std::abs(thousandths % 1000)).substr(1);
    while (!rest.empty() && rest.back() == '0') rest.pop_back();
    if (thousandths < 0 && thousandths > -1000) text = "-0";
    return rest.empty() ? text : text + "." + rest;
  }

  void entities() {
    std::string text;
    const auto begin = [&] { text += "{\n"; };
    const auto pair = [&](const std::string& key, const std::string& value) {
      text += "\"" + key + "\" \"" + value + "\"\n";
    };
    for (const Entity& e : c_.level.entities) {
      begin();
      for (const auto& [key, value] : e) pair(key, value);
      text += "}\n";
    }
    for (const Light& l : c_.level.lights) {
      begin();
      pair("classname", "light");
      pair("origin", number(l.origin.x) + " " + number(l.origin.y) + " " + number(l.origin.z));
      pair("light", number(l.power * 3.0));
      pair("_color", number(l.colour.x) + " " + number(l.colour.y) + " " + number(l.colour.z));
      text += "}\n";
    }
    lump(kEntities).text(text, text.size() + 1);
  }

  /// Index of a plane; its opposite stands beside it (even and odd).
  std::int32_t planeIndex(const Plane& plane) {
    for (std::size_t i = 0; i < planes_.size(); ++i)
      if (samePlane(planes_[i], plane)) return static_cast<std::int32_t>(i);
    Plane first = plane;
    if (plane.normal.x + plane.normal.y + plane.normal.z < 0.0) first = plane.flipped();
    for (const Plane& p : {first, first.flipped()}) {
      planes_.push_back(p);
      lump(kPlanes).vec(p.normal);
      lump(kPlanes).f32(p.distance);
    }
    return planeIndex(plane);
  }

  void vertex(Vec3 p, double u, double v, const Chart* chart, std::pair<double, double> sample, Vec3 normal) {
    Bytes& out = lump(kVertices);
    out.vec(p);
    out.f32(u);
    out.f32(v);
    out.f32(chart != nullptr ? (sample.first + 0.5) / kPageSize : 0.0);
    out.f32(chart != nullptr ? (sample.second + 0.5) / kPageSize : 0.0);
    out.vec(normal);
    out.i32(-1);  // white, opaque
    ++vertexCount_;
    bounds_.add(p);
  }

  struct FaceHead {
    int material = 0;
    std::int32_t type = kPolygon;
    std::size_t firstVertex = 0;
    std::size_t firstMeshVertex = 0;
    const Chart* chart = nullptr;
    Vec3 normal;
    int width = 0;
    int height = 0;
  };

  void face(const FaceHead& f) {
    Bytes& out = lump(kFaces);
    const Chart* chart = f.chart != nullptr && f.chart->block.page >= 0 ? f.chart : nullptr;
    out.i32(f.material);
    out.i32(-1);
    out.i32(f.type);
    out.i32(f.firstVertex);
    out.i32(vertexCount_ - f.firstVertex);
    out.i32(f.firstMeshVertex);
    out.i32(meshVertexCount_ - f.firstMeshVertex);
    out.i32(chart != nullptr ? chart->block.page : -1);
    for (const int v : {chart != nullptr ? chart->block.x : 0, chart != nullptr ? chart->block.y : 0,
                        chart != nullptr ? chart->block.width : 0, chart != nullptr ? chart->block.height : 0})
      out.i32(v);
    const bool flat = chart != nullptr && f.type == kPolygon;
    out.vec(flat ? chart->axes.across * chart->low0 + chart->axes.down * chart->low1 + f.normal * flatDistance_
                 : Vec3{});
    out.vec(flat ? chart->axes.across * chart->step0 : Vec3{});
    out.vec(flat ? chart->axes.down * chart->step1 : Vec3{});
    out.vec(f.normal);
    out.i32(f.width);
    out.i32(f.height);
    ++faceCount_;
  }

  void toLeaf(int leaf) {
    auto& list = leafFaces_[static_cast<std::size_t>(leaf)];
    if (std::find(list.rbegin(), list.rend(), faceCount_) == list.rend()) list.push_back(faceCount_);
  }

  void surfacePiece(const Surface& surface, const Chart& chart, const Winding& piece, std::size_t firstVertex) {
    const Material& material = c_.level.materials[static_cast<std::size_t>(surface.material)];
    const std::size_t base = vertexCount_ - firstVertex;
    for (const Vec3& p : piece) {
      const auto [u, v] = textureAt(surface, material, p);
      const bool lit = chart.block.page >= 0;
      vertex(p, u, v, lit ? &chart : nullptr, lit ? samplePosition(chart, p) : std::pair{0.0, 0.0},
             surface.plane.normal);
    }
    for (const int i : triangulated(piece)) {
      lump(kMeshVertices).i32(base + static_cast<std::size_t>(i));
      ++meshVertexCount_;
    }
    for (const LeafPiece& part : distribute(c_.tree, piece, surface.plane))
      if (!c_.tree.leaves[static_cast<std::size_t>(part.leaf)].solid) toLeaf(part.leaf);
  }

  void faces() {
    std::map<std::pair<int, int>, std::vector<std::size_t>> groups;  // by group and lightmap page
    for (std::size_t s = 0; s < c_.surfaces.size(); ++s) {
      const Surface& surface = c_.surfaces[s];
      const Chart& chart = c_.surfaceCharts[s];
      if (chart.block.group != 0) {
        groups[{chart.block.group, chart.block.page}].push_back(s);
        continue;
      }
      flatDistance_ = surface.plane.distance;
      for (const Winding& piece : surface.pieces) {
        const FaceHead head{
            surface.material, kPolygon, vertexCount_, meshVertexCount_, &chart, surface.plane.normal, 0, 0};
        surfacePiece(surface, chart, piece, head.firstVertex);
        face(head);
      }
    }
    for (const auto& [key, members] : groups) {
      const FaceHead head{c_.surfaces[members.front()].material,
                          kMesh,
                          vertexCount_,
                          meshVertexCount_,
                          &c_.surfaceCharts[members.front()],
                          {},
                          0,
                          0};
      for (const std::size_t s : members)
        for (const Winding& piece : c_.surfaces[s].pieces)
          surfacePiece(c_.surfaces[s], c_.surfaceCharts[s], piece, head.firstVertex);
      face(head);
    }
    for (std::size_t i = 0; i < c_.level.patches.size(); ++i) patch(c_.level.patches[i], c_.patchCharts[i]);
    for (const Mesh& m : c_.level.meshes) mesh(m);
  }

  void patch(const Patch& patch, const Chart& chart) {
    FaceHead head{patch.material, kPatch, vertexCount_, meshVertexCount_, &chart, {}, patch.width, patch.height};
    Bounds box;
    const Block& b = chart.block;
    for (int row = 0; row < patch.height; ++row)
      for (int column = 0; column < patch.width; ++column) {
        const ControlPoint& p = patch.at(column, row);
        const double s = static_cast<double>(column) / (patch.width - 1);
        const double t = static_cast<double>(row) / (patch.height - 1);
        vertex(p.position, p.u, p.v, b.page >= 0 ? &chart : nullptr,
               {b.x + s * (b.width - 1), b.y + t * (b.height - 1)}, evaluatePatch(patch, s, t).normal);
        box.add(p.position);
      }
    intoTouchedLeaves(box);
    face(head);
  }

  void mesh(const Mesh& mesh) {
    FaceHead head{mesh.material, kMesh, vertexCount_, meshVertexCount_, nullptr, {}, 0, 0};
    Bounds box;
    Vec3 middle;
    for (const ControlPoint& p : mesh.points) box.add(p.position);
    middle = (box.mins + box.maxs) * 0.5;
    for (const ControlPoint& p : mesh.points)
      vertex(p.position, p.u, p.v, nullptr, {}, normalized(p.position - middle));
    for (const int i : mesh.indices) {
      lump(kMeshVertices).i32(i);
      ++meshVertexCount_;
    }
    intoTouchedLeaves(box);
    face(head);
  }

  void intoTouchedLeaves(const Bounds& box) {
    for (std::size_t leaf = 0; leaf < c_.tree.leaves.size(); ++leaf)
      if (!c_.tree.leaves[leaf].solid && c_.tree.leaves[leaf].bounds.touches(box, -0.01))
        toLeaf(static_cast<int>(leaf));
  }

  void brushes() {
    leafBrushes_.resize(c_.tree.leaves.size());
    std::size_t firstSide = 0;
    for (std::size_t b = 0; b < c_.level.brushes.size(); ++b) {
      const Brush& brush = c_.level.brushes[b];
      for (const BrushSide& side : brush.sides) {
        lump(kBrushSides).i32(planeIndex(side.plane));
        lump(kBrushSides).i32(side.material);
      }
      lump(kBrushes).i32(firstSide);
      lump(kBrushes).i32(brush.sides.size());
      lump(kBrushes).i32(brush.sides.front().material);
      firstSide += brush.sides.size();
      for (std::size_t leaf = 0; leaf < c_.tree.leaves.size(); ++leaf)
        if (!c_.tree.leaves[leaf].solid && c_.tree.leaves[leaf].bounds.touches(brush.bounds, 0.125))
          leafBrushes_[leaf].push_back(static_cast<std::int32_t>(b));
    }
  }

  void leafRecord(std::int32_t cluster, std::int32_t area, const Bounds& box, std::size_t firstFace,
                  std::size_t faceCount, std::size_t firstBrush, std::size_t brushCount) {
    Bytes& out = lump(kLeafs);
    out.i32(cluster);
    out.i32(area);
    integerBox(out, box);
    out.i32(firstFace);
    out.i32(faceCount);
    out.i32(firstBrush);
    out.i32(brushCount);
  }

  static void integerBox(Bytes& out, const Bounds& box) {
    for (int a = 0; a < 3; ++a) out.i32(static_cast<std::int32_t>(std::floor(box.mins[a] + 0.01)));
    for (int a = 0; a < 3; ++a) out.i32(static_cast<std::int32_t>(std::ceil(box.maxs[a] - 0.01)));
  }

  void treeLumps() {
    leafRecord(-1, -1, Bounds{{0, 0, 0}, {0, 0, 0}}, 0, 0, 0, 0);
    std::vector<std::int32_t> fileLeaf(c_.tree.leaves.size(), 0);
    std::int32_t next = 1;
    std::size_t faceAt = 0;
    std::size_t brushAt = 0;
    for (std::size_t i = 0; i < c_.tree.leaves.size(); ++i) {
      const TreeLeaf& leaf = c_.tree.leaves[i];
      if (leaf.solid) continue;
      fileLeaf[i] = next++;
      leafRecord(c_.clusterOfLeaf[i], 0, leaf.bounds, faceAt, leafFaces_[i].size(), brushAt, leafBrushes_[i].size());
      for (const std::size_t f : leafFaces_[i]) lump(kLeafFaces).i32(f);
      for (const std::int32_t b : leafBrushes_[i]) lump(kLeafBrushes).i32(b);
      faceAt += leafFaces_[i].size();
      brushAt += leafBrushes_[i].size();
    }
    for (const TreeNode& node : c_.tree.nodes) {
      Bytes& out = lump(kNodes);
      out.i32(planeIndex(node.plane));
      for (const int child : node.children)
        out.i32(child >= 0 ? child : -(fileLeaf[static_cast<std::size_t>(~child)] + 1));
      integerBox(out, node.bounds);
    }
    Bytes& model = lump(kModels);
    model.vec(bounds_.mins);
    model.vec(bounds_.maxs);
    model.i32(0);
    model.i32(faceCount_);
    model.i32(0);
    model.i32(c_.level.brushes.size());
  }

  const BspContents& c_;
  std::array<Bytes, kLumpCount> lumps_;
  std::vector<Plane> planes_;
  std::vector<std::vector<std::size_t>> leafFaces_;
  std::vector<std::vector<std::int32_t>> leafBrushes_;
  std::size_t vertexCount_ = 0;
  std::size_t meshVertexCount_ = 0;
  std::size_t faceCount_ = 0;
  double flatDistance_ = 0.0;
  Bounds bounds_;
};

}  // namespace

std::vector<std::uint8_t> writeBsp(const BspContents& contents) { return Writer(contents).write(); }

}  // namespace ql::maker
