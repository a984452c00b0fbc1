#include "Build.h"

#include "Light.h"
#include "level/HlFaces.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace ql::hl_maker {
namespace {

/// The largest side of a face, so that its lightmap stays within what players of such levels allow.
constexpr int kLargestCells = 15;
constexpr double kTooBright = 255;

/// The two axes of a face across an axis: along its texture's rows, and down its columns.
struct FaceAxes {
  std::size_t row, column;
};
constexpr std::array<FaceAxes, 3> kAxes{{{1, 2}, {0, 2}, {0, 1}}};

struct Rectangle {
  std::size_t axis = 0;  ///< across it
  double at = 0;
  bool up = true;                       ///< it faces along the axis
  std::array<double, 2> low{}, high{};  ///< along kAxes
  std::string texture;
};

class Builder {
 public:
  explicit Builder(const Description& description) : description_(description), cells_(description.digs) {}

  LevelTables run(const std::string& package) {
    const Tree tree = makeTree(cells_);
    out_.edges.emplace_back();  // edge 0 has no direction, so nothing uses it
    addWorld(tree);
    const std::size_t worldLeaves = out_.leaves.size() - 1;
    for (const Model& model : description_.models) addModel(model);
    out_.models[0].visibleLeaves = static_cast<std::int32_t>(worldLeaves);
    addVisibility(tree);
    addEntities(package);
    return std::move(out_);
  }

 private:
  std::uint16_t plane(std::size_t axis, double at) {
    for (std::size_t i = 0; i < out_.planes.size(); ++i)
      if (out_.planes[i].type == static_cast<std::int32_t>(axis) && out_.planes[i].distance == static_cast<float>(at))
        return static_cast<std::uint16_t>(i);
    level::HlPlane made;
    made.normal[axis] = 1;
    made.distance = static_cast<float>(at);
    made.type = static_cast<std::int32_t>(axis);
    out_.planes.push_back(made);
    return static_cast<std::uint16_t>(out_.planes.size() - 1);
  }

  std::uint16_t textureInfo(const std::string& texture, std::size_t axis) {
    auto found = std::find(out_.textures.begin(), out_.textures.end(), texture);
    if (found == out_.textures.end()) found = out_.textures.insert(found, texture);
    level::HlTextureInfo info;
    info.texture = static_cast<std::int32_t>(found - out_.textures.begin());
    info.s[kAxes[axis].row] = 1;
    info.t[kAxes[axis].column] = -1;
    for (std::size_t i = 0; i < out_.infos.size(); ++i)
      if (out_.infos[i].texture == info.texture && out_.infos[i].s == info.s && out_.infos[i].t == info.t)
        return static_cast<std::uint16_t>(i);
    out_.infos.push_back(info);
    return static_cast<std::uint16_t>(out_.infos.size() - 1);
  }

  std::uint16_t vertex(const std::array<float, 3>& at) {
    const auto [place, fresh] = vertexPlaces_.emplace(at, static_cast<std::uint16_t>(out_.vertices.size()));
    if (fresh) out_.vertices.push_back(at);
    return place->second;
  }

  void addFace(const Rectangle& r, bool lit) {
    const FaceAxes axes = kAxes[r.axis];
    std::array<std::array<float, 3>, 4> corners;
    for (std::size_t i = 0; i < 4; ++i) {
      corners[i][r.axis] = static_cast<float>(r.at);
      corners[i][axes.row] = static_cast<float>(i == 1 || i == 2 ? r.high[0] : r.low[0]);
      corners[i][axes.column] = static_cast<float>(i >= 2 ? r.high[1] : r.low[1]);
    }
    // Corners go clockwise for who looks at the face.
    const bool mirrored = r.axis == 1;
    if (r.up != mirrored) std::reverse(corners.begin(), corners.end());
    level::HlFace face;
    face.plane = plane(r.axis, r.at);
    face.side = r.up ? 0 : 1;
    face.firstEdge = static_cast<std::int32_t>(out_.surfaceEdges.size());
    face.edgeCount = 4;
    face.textureInfo = textureInfo(r.texture, r.axis);
    face.styles = {level::kNoLightStyle, level::kNoLightStyle, level::kNoLightStyle, level::kNoLightStyle};
    face.lightOffset = -1;
    for (std::size_t i = 0; i < 4; ++i) {
      out_.surfaceEdges.push_back(static_cast<std::int32_t>(out_.edges.size()));
      out_.edges.push_back({{vertex(corners[i]), vertex(corners[(i + 1) % 4])}});
    }
    if (lit && r.texture != "sky") {
      face.styles[0] = 0;
      face.lightOffset = static_cast<std::int32_t>(out_.lighting.size());
      addLight(r);
    }
    out_.faces.push_back(face);
  }

  void addLight(const Rectangle& r) {
    const FaceAxes axes = kAxes[r.axis];
    // Down a texture's columns the axis runs backwards.
    const level::LightmapExtent extent =
        level::lightmapExtent(static_cast<float>(r.low[0]), static_cast<float>(r.high[0]),
                              static_cast<float>(-r.high[1]), static_cast<float>(-r.low[1]));
    Point normal{};
    normal[r.axis] = r.up ? 1 : -1;
    for (std::uint32_t v = 0; v < extent.height; ++v)
      for (std::uint32_t u = 0; u < extent.width; ++u) {
        Point at{};
        at[r.axis] = r.at;
        at[axes.row] = std::clamp(16.0 * (extent.low[0] + static_cast<int>(u)), r.low[0] + 1, r.high[0] - 1);
        at[axes.column] = std::clamp(-16.0 * (extent.low[1] + static_cast<int>(v)), r.low[1] + 1, r.high[1] - 1);
        for (const double light : lightAt(cells_, description_.lamps, at, normal))
          out_.lighting.push_back(static_cast<std::uint8_t>(std::min(light, kTooBright) + 0.5));
      }
  }

  /// The texture of the side of an open cell towards a solid one.
  std::string sideTexture(const Index& open, const Index& solid, std::size_t axis, bool up) const {
    const Cell filled = cells_.at(solid);
    if (filled.look >= 0) return cells_.looks()[static_cast<std::size_t>(filled.look)][0];
    const auto& look = cells_.looks()[static_cast<std::size_t>(cells_.at(open).look)];
    return axis != 2 ? look[0] : up ? look[1] : look[2];
  }

  /// The faces around an open box: on each side the largest rectangles of one texture, one after another.
  void addLeafFaces(const CellBox& box) {
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (const bool up : {true, false}) addSide(box, axis, up);
  }

  void addSide(const CellBox& box, std::size_t axis, bool up) {
    const FaceAxes axes = kAxes[axis];
    const int width = box.high[axes.row] - box.low[axes.row], height = box.high[axes.column] - box.low[axes.column];
    std::vector<std::string> textures(static_cast<std::size_t>(width * height));
    const auto at = [&](int x, int y) -> std::string& { return textures[static_cast<std::size_t>(y * width + x)]; };
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        Index open{}, beyond{};
        open[axis] = up ? box.low[axis] : box.high[axis] - 1;
        open[axes.row] = box.low[axes.row] + x;
        open[axes.column] = box.low[axes.column] + y;
        beyond = open;
        beyond[axis] += up ? -1 : 1;
        if (!cells_.at(beyond).open) at(x, y) = sideTexture(open, beyond, axis, up);
      }
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const std::string texture = at(x, y);
        if (texture.empty()) continue;
        int w = 1, h = 1;
        while (w < kLargestCells && x + w < width && at(x + w, y) == texture) ++w;
        const auto same = [&](int row) {
          for (int i = 0; i < w; ++i)
            if (at(x + i, row) != texture) return false;
          return true;
        };
        while (h < kLargestCells && y + h < height && same(y + h)) ++h;
        for (int j = 0; j < h; ++j)
          for (int i = 0; i < w; ++i) at(x + i, y + j).clear();
        Rectangle r;
        r.axis = axis;
        r.at = kCellSide * (up ? box.low[axis] : box.high[axis]);
        r.up = up;
        r.low = {static_cast<double>(kCellSide) * (box.low[axes.row] + x),
                 static_cast<double>(kCellSide) * (box.low[axes.column] + y)};
        r.high = {r.low[0] + kCellSide * w, r.low[1] + kCellSide * h};
        r.texture = texture;
        addFace(r, true);
      }
  }

  static std::array<std::int16_t, 3> shortened(const Index& cells) {
    std::array<std::int16_t, 3> out{};
    for (std::size_t axis = 0; axis < 3; ++axis) out[axis] = static_cast<std::int16_t>(cells[axis] * kCellSide);
    return out;
  }

  level::HlLeaf& addLeaf(std::int32_t contents) {
    level::HlLeaf& leaf = out_.leaves.emplace_back();
    leaf.contents = contents;
    leaf.visibilityOffset = -1;
    leaf.firstMarkSurface = static_cast<std::uint16_t>(out_.marks.size());
    return leaf;
  }

  void markFrom(std::size_t firstFace) {
    for (std::size_t i = firstFace; i < out_.faces.size(); ++i) out_.marks.push_back(static_cast<std::uint16_t>(i));
    out_.leaves.back().markSurfaceCount = static_cast<std::uint16_t>(out_.faces.size() - firstFace);
  }

  void addWorld(const Tree& tree) {
    constexpr std::int32_t kEmpty = -1;
    addLeaf(level::kHlSolid);
    for (std::size_t i = 1; i < tree.leaves.size(); ++i) {
      const std::size_t firstFace = out_.faces.size();
      level::HlLeaf& leaf = addLeaf(kEmpty);
      leaf.mins = shortened(tree.leaves[i].low);
      leaf.maxs = shortened(tree.leaves[i].high);
      addLeafFaces(tree.leaves[i]);
      markFrom(firstFace);
    }
    for (const TreeNode& from : tree.nodes) {
      level::HlNode& node = out_.nodes.emplace_back();
      node.plane = plane(static_cast<std::size_t>(from.axis), static_cast<double>(kCellSide) * from.at);
      for (std::size_t i = 0; i < 2; ++i) node.children[i] = static_cast<std::int16_t>(from.children[i]);
      node.mins = shortened(from.box.low);
      node.maxs = shortened(from.box.high);
    }
    level::HlModel& world = out_.models.emplace_back();
    for (std::size_t axis = 0; axis < 3; ++axis) {
      world.mins[axis] = static_cast<float>(cells_.bounds().low[axis] * kCellSide);
      world.maxs[axis] = static_cast<float>(cells_.bounds().high[axis] * kCellSide);
    }
    world.faceCount = static_cast<std::int32_t>(out_.faces.size());
  }

  /// A box with its own small tree: one node for each side, whose front is empty, and a leaf for what is outside.
  void addModel(const Model& model) {
    level::HlModel made;
    made.firstFace = static_cast<std::int32_t>(out_.faces.size());
    made.faceCount = 6;
    made.headNodes[0] = static_cast<std::int32_t>(out_.nodes.size());
    const std::size_t firstFace = out_.faces.size();
    const auto outside = static_cast<std::int16_t>(~static_cast<int>(out_.leaves.size()));
    level::HlLeaf& leaf = addLeaf(-1);
    std::array<std::int16_t, 3> low{}, high{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      made.mins[axis] = static_cast<float>(model.box.low[axis]);
      made.maxs[axis] = static_cast<float>(model.box.high[axis]);
      low[axis] = static_cast<std::int16_t>(std::floor(model.box.low[axis]));
      high[axis] = static_cast<std::int16_t>(std::ceil(model.box.high[axis]));
    }
    leaf.mins = low;
    leaf.maxs = high;
    const bool seen = model.texture != "aaatrigger";
    for (std::size_t axis = 0; axis < 3; ++axis)
      for (const bool up : {true, false}) {
        const FaceAxes axes = kAxes[axis];
        Rectangle r{axis,
                    up ? model.box.high[axis] : model.box.low[axis],
                    up,
                    {model.box.low[axes.row], model.box.low[axes.column]},
                    {model.box.high[axes.row], model.box.high[axes.column]},
                    model.texture};
        const bool last = axis == 2 && !up;
        const auto next = static_cast<std::int16_t>(last ? ~0 : static_cast<int>(out_.nodes.size() + 1));
        level::HlNode& node = out_.nodes.emplace_back();
        node.plane = plane(axis, r.at);
        node.children = up ? std::array{outside, next} : std::array{next, outside};
        node.mins = low;
        node.maxs = high;
        addFace(r, seen);
      }
    markFrom(firstFace);
    out_.models.push_back(made);
  }

  /// Which leaves see which, by rays between many of their points; their neighbours count as seen, too.
  void addVisibility(const Tree& tree) {
    const std::size_t leaves = tree.leaves.size() - 1;
    std::vector<std::vector<bool>> sees(leaves, std::vector<bool>(leaves, false));
    for (std::size_t a = 0; a < leaves; ++a)
      for (std::size_t b = a; b < leaves; ++b)
        sees[a][b] = sees[b][a] = a == b || seesLeaf(tree.leaves[a + 1], tree.leaves[b + 1]);
    std::vector<std::vector<bool>> wide = sees;
    for (std::size_t b = 0; b < leaves; ++b)
      for (std::size_t c = 0; c < leaves; ++c)
        if (touch(tree.leaves[b + 1], tree.leaves[c + 1]))
          for (std::size_t a = 0; a < leaves; ++a)
            if (sees[a][b]) wide[a][c] = true;
    for (std::size_t a = 0; a < leaves; ++a) {
      out_.leaves[a + 1].visibilityOffset = static_cast<std::int32_t>(out_.visibility.size());
      packRow(wide[a]);
    }
  }

  bool seesLeaf(const CellBox& a, const CellBox& b) const {
    constexpr std::array kParts{0.03, 0.5, 0.97};
    const auto pointIn = [&](const CellBox& box, std::size_t x, std::size_t y, std::size_t z) {
      const std::array<double, 3> parts{kParts[x], kParts[y], kParts[z]};
      Point p{};
      for (std::size_t axis = 0; axis < 3; ++axis)
        p[axis] = kCellSide * (box.low[axis] + (box.high[axis] - box.low[axis]) * parts[axis]);
      return p;
    };
    for (std::size_t i = 0; i < 27; ++i)
      for (std::size_t j = 0; j < 27; ++j)
        if (cells_.sees(pointIn(a, i % 3, i / 3 % 3, i / 9), pointIn(b, j % 3, j / 3 % 3, j / 9))) return true;
    return false;
  }

  static bool touch(const CellBox& a, const CellBox& b) {
    for (std::size_t axis = 0; axis < 3; ++axis)
      if (a.high[axis] < b.low[axis] || b.high[axis] < a.low[axis]) return false;
    return true;
  }

  void packRow(const std::vector<bool>& row) {
    Bytes bytes((row.size() + 7) / 8);
    for (std::size_t i = 0; i < row.size(); ++i)
      if (row[i]) bytes[i / 8] = static_cast<std::uint8_t>(bytes[i / 8] | 1U << i % 8);
    for (std::size_t i = 0; i < bytes.size();) {
      out_.visibility.push_back(bytes[i]);
      if (bytes[i++] != 0) continue;
      std::uint8_t zeros = 1;
      while (i < bytes.size() && bytes[i] == 0 && zeros < 255) ++i, ++zeros;
      out_.visibility.push_back(zeros);
    }
  }

  void addEntities(const std::string& package) {
    const auto entity = [&](const Pairs& pairs) {
      out_.entities += "{\n";
      for (const auto& [key, value] : pairs) out_.entities += '"' + key + "\" \"" + value + "\"\n";
      out_.entities += "}\n";
    };
    entity({{"classname", "worldspawn"}, {"wad", package}});
    for (const Pairs& pairs : description_.entities) entity(pairs);
    for (std::size_t i = 0; i < description_.models.size(); ++i) {
      Pairs pairs = description_.models[i].pairs;
      pairs.emplace_back("model", '*' + std::to_string(i + 1));
      entity(pairs);
    }
    for (const Lamp& lamp : description_.lamps) {
      const auto whole = [](double v) { return std::to_string(static_cast<int>(v)); };
      entity({{"classname", "light"},
              {"origin", whole(lamp.position[0]) + ' ' + whole(lamp.position[1]) + ' ' + whole(lamp.position[2])},
              {"_light", whole(lamp.color[0]) + ' ' + whole(lamp.color[1]) + ' ' + whole(lamp.color[2]) + ' ' +
                             whole(lamp.reach)}});
    }
    out_.entities.push_back('\0');
  }

  const Description& description_;
  Cells cells_;
  LevelTables out_;
  std::map<std::array<float, 3>, std::uint16_t> vertexPlaces_;
};

}  // namespace

LevelTables buildLevel(const Description& description, const std::string& package) {
  return Builder(description).run(package);
}

}  // namespace ql::hl_maker
