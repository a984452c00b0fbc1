#include "Maker.h"

#include "BspFile.h"
#include "Description.h"
#include "Numbers.h"
#include "Parallel.h"
#include "Scripts.h"
#include "Textures.h"

namespace ql::maker {
namespace {

constexpr int kJpegQuality = 88;
constexpr std::uint64_t kSightSteps = 20000;

std::vector<Vec3> startsOf(const Level& level) {
  std::vector<Vec3> starts;
  for (const Entity& e : level.entities) {
    bool start = false;
    Vec3 at;
    for (const auto& [key, value] : e) {
      if (key == "classname") start = value.starts_with("info_player");
      if (key == "origin") {
        std::size_t from = 0;
        for (int a = 0; a < 3; ++a) {
          at[a] = std::stod(value.substr(from));
          from = value.find(' ', from) + 1;
        }
      }
    }
    if (start) starts.push_back(at);
  }
  return starts;
}

std::string show(Vec3 p) {
  const auto text = [](double v) { return std::to_string(static_cast<long>(std::floor(v + 0.5))); };
  std::string shown = "(";
  shown.append(text(p.x)).append(" ").append(text(p.y)).append(" ").append(text(p.z)).append(")");
  return shown;
}

std::vector<Cutter> cuttersOf(std::span<const Surface> surfaces) {
  std::vector<Cutter> cutters;
  for (const Surface& s : surfaces)
    for (const Winding& w : s.pieces) cutters.push_back({s.plane, w});
  return cutters;
}

bool insideStructure(const Level& level, Vec3 p) {
  return std::any_of(level.brushes.begin(), level.brushes.end(),
                     [&](const Brush& b) { return !b.detail && b.contains(p); });
}

/// Finds the openings of a tree whose solid leaves are marked, and seals what cannot be reached.
void seal(MadeLevel& made, std::span<const Vec3> starts) {
  made.portals = findPortals(made.tree);
  const std::vector<int> leak = sealLeaves(made.tree, made.portals, starts);
  if (leak.empty()) return;
  std::string text = "the level leaks:";
  for (const int leaf : leak) text.append(" ").append(show(made.tree.leaves[static_cast<std::size_t>(leaf)].middle));
  throw LeakFault(text);
}

}  // namespace

MadeLevel makeStructure(Level level, const MakeOptions& options) {
  MadeLevel made;
  made.level = std::move(level);
  const std::vector<Vec3> starts = startsOf(made.level);
  if (starts.empty()) throw LeakFault("the level has no player start to tell inside from outside");
  Bounds world;
  for (const Brush& b : made.level.brushes) world.add(b.bounds);
  world.mins = world.mins - Vec3{16, 16, 16};
  world.maxs = world.maxs + Vec3{16, 16, 16};

  // A first tree finds what is inside; the second one is cut only by faces that inside can see.
  std::vector<Surface> border = structureSurfaces(made.level);
  made.tree = buildTree(cuttersOf(border), world);
  for (TreeLeaf& leaf : made.tree.leaves) leaf.solid = insideStructure(made.level, leaf.middle);
  if (std::all_of(starts.begin(), starts.end(), [&](Vec3 s) { return insideStructure(made.level, s); }))
    throw LeakFault("every player start lies inside a wall");
  seal(made, starts);
  dropOutside(border, made.tree);
  Tree final = buildTree(cuttersOf(border), world);
  for (TreeLeaf& leaf : final.leaves)
    leaf.solid = made.tree.leaves[static_cast<std::size_t>(made.tree.leafAt(leaf.middle))].solid;
  made.tree = std::move(final);
  seal(made, starts);
  made.clusterOfLeaf = numberClusters(made.tree);
  made.visibility = computeVisibility(made.tree, made.portals, made.clusterOfLeaf, options.threads, kSightSteps);
  made.surfaces = visibleSurfaces(made.level);
  dropOutside(made.surfaces, made.tree);
  closeCracks(made.surfaces);
  std::size_t pieces = 0;
  for (const Surface& s : made.surfaces) pieces += s.pieces.size();
  std::size_t seen = 0;
  for (const std::uint8_t row : made.visibility.rows)
    for (unsigned bit = 0; bit < 8; ++bit) seen += row >> bit & 1U;
  options.report(std::to_string(made.level.brushes.size()) + " brushes, " + std::to_string(pieces) + " polygons, " +
                 std::to_string(made.level.patches.size()) + " patches, " + std::to_string(made.level.meshes.size()) +
                 " meshes, " + std::to_string(made.level.lights.size()) + " lights");
  options.report(
      std::to_string(made.tree.nodes.size()) + " nodes, " + std::to_string(made.visibility.clusters) + " clusters, " +
      std::to_string(made.portals.size()) + " portals, " +
      std::to_string(100 * seen /
                     static_cast<std::size_t>(std::max(1, made.visibility.clusters * made.visibility.clusters))) +
      " % visible");
  return made;
}

namespace {

void layOutLightmaps(MadeLevel& made) {
  std::vector<Block> blocks;
  const auto densityOf = [&](const Material& m) { return m.density > 0 ? m.density : made.level.density; };
  const auto chartFor = [&](const auto& shape, int group) {
    const Material& m = made.level.materials[static_cast<std::size_t>(shape.material)];
    Chart chart = m.lit ? chartOf(shape, densityOf(m)) : Chart{};
    chart.block.group = group;
    blocks.push_back(chart.block);
    return chart;
  };
  for (const Surface& s : made.surfaces) made.surfaceCharts.push_back(chartFor(s, groupOf(made.level, s)));
  for (const Patch& p : made.level.patches) made.patchCharts.push_back(chartFor(p, 0));
  made.pages = packBlocks(blocks);
  for (std::size_t i = 0; i < made.surfaceCharts.size(); ++i) made.surfaceCharts[i].block = blocks[i];
  for (std::size_t i = 0; i < made.patchCharts.size(); ++i)
    made.patchCharts[i].block = blocks[made.surfaceCharts.size() + i];
}

/// Straight pieces that a curve of some 3 x 3 pieces is cut into for shadows: few enough to be quick, enough for the
/// straight pieces to stay within the height above the surface at which its light is measured.
int segmentsFor(double extent, int pieces) {
  const double each = extent / pieces;
  return pieces * (each < 60.0 ? 4 : each < 120.0 ? 8 : 16);
}

/// Everything that stops light: lit surfaces and patches (the sky and glowing things do not).
void collectTriangles(MadeLevel& made) {
  for (std::size_t i = 0; i < made.surfaces.size(); ++i) {
    const Surface& s = made.surfaces[i];
    const Chart& chart = made.surfaceCharts[i];
    if (chart.block.page < 0) continue;
    for (const Winding& piece : s.pieces) {
      const std::vector<int> indices = triangulated(piece);
      for (std::size_t k = 0; k + 2 < indices.size(); k += 3) {
        Triangle t;
        t.page = chart.block.page;
        t.material = s.material;
        for (std::size_t c = 0; c < 3; ++c) {
          t.corners[c] = piece[static_cast<std::size_t>(indices[k + c])];
          t.lightmap[c] = samplePosition(chart, t.corners[c]);
        }
        made.triangles.push_back(t);
      }
    }
  }
  for (std::size_t i = 0; i < made.level.patches.size(); ++i) {
    const Patch& patch = made.level.patches[i];
    const Block& b = made.patchCharts[i].block;
    if (b.page < 0) continue;
    const auto [across, along] = patchExtent(patch);
    const int columns = segmentsFor(across, (patch.width - 1) / 2);
    const int rows = segmentsFor(along, (patch.height - 1) / 2);
    const auto corner = [&](Triangle& t, std::size_t c, int column, int row) {
      const double u = static_cast<double>(column) / columns;
      const double v = static_cast<double>(row) / rows;
      t.corners[c] = evaluatePatch(patch, u, v).position;
      t.lightmap[c] = {b.x + u * (b.width - 1), b.y + v * (b.height - 1)};
    };
    for (int row = 0; row < rows; ++row)
      for (int column = 0; column < columns; ++column)
        for (const bool second : {false, true}) {
          Triangle t;
          t.page = b.page;
          t.material = patch.material;
          corner(t, 0, column + (second ? 1 : 0), row);
          corner(t, 1, column, row + 1);
          corner(t, 2, column + 1, row + (second ? 1 : 0));
          made.triangles.push_back(t);
        }
  }
}

}  // namespace

void makeLight(MadeLevel& made, std::span<const Vec3> albedo, const MakeOptions& options) {
  layOutLightmaps(made);
  collectTriangles(made);
  const RayTree rays(made.triangles);
  LightingOptions lighting;
  lighting.threads = options.threads;
  if (options.quality == Quality::Draft) {
    lighting.subSamples = 1;
    lighting.lampRays = 1;
    lighting.gatherRays = 8;
  }
  const LitScene scene{made.level, made.surfaces, made.surfaceCharts, made.level.patches, made.patchCharts,
                       rays,       albedo};
  made.light = computeLight(scene, made.pages, lighting);
  options.report(std::to_string(made.triangles.size()) + " triangles, " + std::to_string(made.pages) +
                 " lightmap pages");
  const std::vector<std::uint8_t> lightmaps = toBytes(made.light, made.level.exposure);
  made.bsp = writeBsp({made.level, made.tree, made.clusterOfLeaf, made.visibility, made.surfaces, made.surfaceCharts,
                       made.patchCharts, lightmaps});
}

Files makeFiles(std::string_view description, const MakeOptions& options) {
  MadeLevel made = makeStructure(parseDescription(description), options);
  Files files;
  const std::vector<TextureRecipe>& recipes = textureRecipes();
  std::vector<Picture> pictures(recipes.size());
  std::vector<std::pair<std::string, std::vector<std::uint8_t>>> encoded(recipes.size());
  parallelFor(recipes.size(), options.threads, [&](std::size_t i) {
    const TextureRecipe& r = recipes[i];
    pictures[i] = paintTexture(r);
    const std::string path = kTextureFolder + std::string(r.name);
    if (r.file == TextureFile::Jpeg)
      encoded[i] = {path + ".jpg", encodeJpeg(pictures[i], kJpegQuality)};
    else
      encoded[i] = {path + ".tga", encodeTarga(pictures[i], r.file == TextureFile::Targa32 ? TargaKind::RunLength32
                                                                                           : TargaKind::Plain24)};
  });
  for (auto& e : encoded) files.insert(std::move(e));
  options.report(std::to_string(recipes.size()) + " textures");
  std::vector<Vec3> albedo;
  for (const Material& m : made.level.materials) {
    const TextureRecipe* recipe = findRecipe(m.texture);
    if (recipe == nullptr) throw DescriptionFault(1, "no texture is called \"" + m.texture + "\"");
    albedo.push_back(albedoOf(pictures[static_cast<std::size_t>(recipe - recipes.data())]));
  }
  makeLight(made, albedo, options);
  const auto bytes = [](const std::string& text) { return std::vector<std::uint8_t>(text.begin(), text.end()); };
  const std::string& name = made.level.name;
  files["maps/" + name + "-path.json"] = bytes(posesAsJson(made.level.pathKeys));
  files["maps/" + name + "-poses.json"] = bytes(posesAsJson(made.level.poses));
  files["scripts/" + name + ".shader"] = bytes(shaderScript());
  files["maps/" + name + ".bsp"] = std::move(made.bsp);
  return files;
}

}  // namespace ql::maker
