#include "level/FaceBuilder.h"
#include "level/Q3Bsp.h"
#include "platform/host/Files.h"
#include "support/SharedData.h"

#include <algorithm>
#include <fstream>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ql::level {
namespace {

nlohmann::json manifest() { return nlohmann::json::parse(std::ifstream(test::sharedData() / "MANIFEST.json")); }

TEST(RealLevels, HoldWhatOthersFoundInThem) {
  QL_NEED_SHARED_DATA();
  int levels = 0;
  const nlohmann::json files = manifest()["files"];
  for (const auto& entry : files) {
    const std::string name = entry["file"];
    if (!name.starts_with("q3bsp/") || !name.ends_with(".bsp")) continue;
    SCOPED_TRACE(name);
    const auto& facts = entry["facts"];
    const std::vector<std::byte> file = host::readFile((test::sharedData() / name).string());
    const Q3Bsp level = parseQ3Bsp(file);
    EXPECT_EQ(level.repairs.count, 0U) << level.repairs.first;

    const auto& lumps = facts["lumps"];
    EXPECT_EQ(level.entities.size(), lumps["entities"]);
    EXPECT_EQ(level.textures.size(), lumps["textures"]);
    EXPECT_EQ(level.planes.size(), lumps["planes"]);
    EXPECT_EQ(level.nodes.size(), lumps["nodes"]);
    EXPECT_EQ(level.leaves.size(), lumps["leafs"]);
    EXPECT_EQ(level.leafFaces.size(), lumps["leaffaces"]);
    EXPECT_EQ(level.models.size(), lumps["models"]);
    EXPECT_EQ(level.vertices.size(), lumps["vertices"]);
    EXPECT_EQ(level.meshVertices.size(), lumps["meshverts"]);
    EXPECT_EQ(level.faces.size(), lumps["faces"]);
    EXPECT_EQ(level.lightmapCount(), lumps["lightmaps"]);

    std::set<std::string> textures;
    for (const Q3Texture& texture : level.textures) textures.insert(texture.name.data());
    EXPECT_EQ(nlohmann::json(textures), facts["textures"]);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const auto [low, high] = std::minmax_element(
          level.vertices.begin(), level.vertices.end(),
          [axis](const Q3Vertex& a, const Q3Vertex& b) { return a.position[axis] < b.position[axis]; });
      const float sign = axis == 0 ? -1.0f : 1.0f;
      const auto& box = facts["vertex_bbox"];
      EXPECT_EQ(sign * (axis == 0 ? *high : *low).position[axis], box[0][axis]);
      EXPECT_EQ(sign * (axis == 0 ? *low : *high).position[axis], box[1][axis]);
    }

    const Q3Visibility& visibility = level.visibility;
    EXPECT_EQ(visibility.clusterCount, facts["vis"]["clusters"]);
    EXPECT_EQ(visibility.bytesPerCluster, facts["vis"]["row_bytes"]);
    int pairs = 0;
    for (std::int32_t a = 0; a < visibility.clusterCount; ++a)
      for (std::int32_t b = 0; b < visibility.clusterCount; ++b)
        pairs += std::to_integer<int>(
                     visibility.rows[static_cast<std::size_t>(a * visibility.bytesPerCluster + b / 8)] >> (b % 8)) &
                 1;
    EXPECT_EQ(pairs, facts["vis"]["visible_pairs"]);

    for (std::int32_t precision = 0; precision <= 2; ++precision) {
      const BuiltFaces built = buildFaces(level, precision);
      EXPECT_EQ(built.patches, facts["face_types"]["patch"]);
      EXPECT_EQ(built.crowdedFaces, 0U);
      const std::size_t perPiece = std::size_t{8} << (2 * precision);
      const std::size_t pieces = facts["bezier_3x3_pieces"];
      std::size_t meshVertices = 0;
      for (const Q3Face& face : level.faces) meshVertices += static_cast<std::size_t>(face.meshVertexCount);
      EXPECT_EQ(built.vertices.size(), meshVertices + 3 * perPiece * pieces);
    }
    ++levels;
  }
  EXPECT_GE(levels, 5);
}

}  // namespace
}  // namespace ql::level
