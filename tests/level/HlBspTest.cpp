#include "level/HlBsp.h"
#include "level/HlFaces.h"
#include "level/Visibility.h"
#include "platform/host/Fault.h"
#include "platform/host/Files.h"
#include "support/SharedData.h"
#include "support/TinyHlLevel.h"
#include "support/TinyQ3Level.h"

#include <cmath>
#include <fstream>
#include <functional>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ql::level {
namespace {

using test::mipTexture;
using test::TinyHlLevel;
using testing::ElementsAre;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(HlBsp, ReadsEveryTableOfAGoodLevel) {
  const TinyHlLevel tiny;
  const std::vector<std::byte> file = tiny.bytes();
  const HlBsp level = parseHlBsp(file);
  EXPECT_EQ(level.repairs.count, 0U) << level.repairs.first;
  EXPECT_EQ(level.entities, tiny.entities);
  EXPECT_EQ(level.faces.size(), std::size_t{TinyHlLevel::kFaces});
  EXPECT_EQ(level.textures.size(), 5U);
  EXPECT_EQ(level.leaves.size(), 3U);
  EXPECT_EQ(level.lighting.size(), 9U * 9 * 3);
  EXPECT_EQ(level.nodes[0].children, (std::array<std::int16_t, 2>{1, ~0}));
  const auto image = decodeMipTexture(textureBytes(file, level, level.textures[0]));
  EXPECT_EQ(image.pixels, std::vector<std::uint32_t>(16 * 16, 0xFF0AF507));
}

TEST(HlFaces, PlacesVerticesTexturesAndLight) {
  const TinyHlLevel tiny;
  const std::vector<std::byte> file = tiny.bytes();
  const HlFaces built = buildHlFaces(parseHlBsp(file));
  const FaceRecord& floor = built.records[TinyHlLevel::kWestFloor];
  EXPECT_EQ(floor.triangleCount, 2U);
  const HlVertex& corner = built.vertices[floor.firstVertex + 1];  // (-128, 128, 0): the edge runs backwards
  EXPECT_EQ(corner.x, 128);
  EXPECT_EQ(corner.y, 128);
  EXPECT_EQ(corner.nz, 1);
  EXPECT_EQ(corner.tu, -8) << "texels by the texture's width";
  EXPECT_FLOAT_EQ(corner.tu1, 0.5f / 9) << "the middle of the first luxel, from the file's own x";
  EXPECT_FLOAT_EQ(corner.tv1, 8.5f / 9);
  EXPECT_EQ(floor.lightmap, 0);
  EXPECT_EQ(built.lightmaps[0].width, 9U);
  EXPECT_EQ(built.records[TinyHlLevel::kEastFloor].lightmap, -1) << "no light";
  EXPECT_TRUE(built.looks[TinyHlLevel::kSky].sky);
  EXPECT_TRUE(built.looks[TinyHlLevel::kFence].cutOut);
  EXPECT_EQ(built.looks[TinyHlLevel::kPane].mode, RenderMode::Texture);
  EXPECT_EQ(built.looks[TinyHlLevel::kPane].amount, 100);
  ASSERT_EQ(built.brushModels.size(), 2U);
  EXPECT_EQ(built.brushModels[0].sphere.center, (math::Vec3{-32, 64, 32}));

  const auto size = [](float low, float high) { return lightmapExtent(low, high, 0, 0).width; };
  EXPECT_EQ(size(0, 100), 8U);
  EXPECT_EQ(size(0, 0), 1U);
  EXPECT_EQ(size(-1, 1), 3U);
  EXPECT_EQ(size(16, 32), 2U);
}

TEST(HlFaces, ReadsWhatEntitiesSayOfTheirModels) {
  struct Case {
    const char* entity;
    RenderMode mode;
    int amount;
    bool translucent, hidden;
    float x;  ///< of the pane's first corner, the level's space
  };
  for (const Case& c : {
           Case{"\"classname\" \"func_wall\"\n\"rendermode\" \"0\"", RenderMode::Normal, 0, false, false, -32},
           Case{"\"rendermode\" \"4\"\n\"renderamt\" \"255\"", RenderMode::Solid, 255, false, false, -32},
           Case{"\"rendermode\" \"5\"\n\"renderamt\" \"999\"", RenderMode::Additive, 255, true, false, -32},
           Case{"\"rendermode\" \"-1\"\n\"renderamt\" \"-4\"", RenderMode::Normal, 0, false, false, -32},
           Case{"\"rendermode\" \"1e99\"", RenderMode::Normal, 0, false, false, -32},
           Case{"\"classname\" \"trigger_once\"", RenderMode::Normal, 0, false, true, -32},
           Case{"\"classname\" \"func_ladder\"", RenderMode::Normal, 0, false, true, -32},
           Case{"\"origin\" \"100 0 0\"", RenderMode::Normal, 0, false, false, -132},
       }) {
    TinyHlLevel tiny;
    tiny.entities = "{\n\"model\" \"*1\"\n" + std::string(c.entity) + "\n}\n{\n\"model\" \"*77\"\n}\n";
    const std::vector<std::byte> file = tiny.bytes();
    const HlFaces built = buildHlFaces(parseHlBsp(file));
    const FaceLook& look = built.looks[TinyHlLevel::kPane];
    EXPECT_EQ(look.mode, c.mode) << c.entity;
    EXPECT_EQ(look.amount, c.amount) << c.entity;
    EXPECT_EQ(look.translucent(), c.translucent) << c.entity;
    EXPECT_EQ(look.hidden, c.hidden) << c.entity;
    EXPECT_EQ(built.vertices[built.records[TinyHlLevel::kPane].firstVertex].x, c.x) << c.entity;
    EXPECT_EQ(built.brushModels[0].sphere.center.x, c.x) << c.entity;
  }
}

TEST(HlVisibility, UnpacksRowsOfBits) {
  LevelData level;
  level.leaves.resize(1 + 30);
  level.visibilityOffsets.assign(level.leaves.size(), 0);
  const auto visible = [&](std::vector<std::byte> packed, std::int32_t offset = 0) {
    level.packedVisibility = std::move(packed);
    level.visibilityOffsets[1] = offset;
    std::vector<int> leaves;
    const std::vector<std::uint8_t> row = unpackVisibility(level, 1);
    for (std::size_t i = 0; i < row.size(); ++i)
      if (row[i] != 0) leaves.push_back(static_cast<int>(i) + 1);
    return leaves;
  };
  const auto bytes = [](std::initializer_list<int> values) {
    std::vector<std::byte> out;
    for (const int v : values) out.push_back(static_cast<std::byte>(v));
    return out;
  };
  EXPECT_THAT(visible(bytes({0b101})), ElementsAre(1, 3));
  EXPECT_THAT(visible(bytes({1, 0, 2, 0b10000001})), ElementsAre(1, 25)) << "the bit beyond the leaves is none";
  EXPECT_THAT(visible(bytes({9, 9, 2}), 2), ElementsAre(2));
  EXPECT_THAT(visible(bytes({0})), ElementsAre()) << "a count that is not there";
  EXPECT_THAT(visible(bytes({0, 0, 0, 0, 1})), ElementsAre(1)) << "runs of none";
  EXPECT_TRUE(unpackVisibility(level, 1).size() == 30);
  level.visibilityOffsets[1] = -1;
  EXPECT_TRUE(unpackVisibility(level, 1).empty()) << "all";
}

// One row per damage: what the file says, what must be left of it.
struct HlDamage {
  const char* name;
  std::function<void(TinyHlLevel&)> damage;
  std::function<bool(const HlBsp&)> neutralised;
};
void PrintTo(const HlDamage& damage, std::ostream* out) { *out << damage.name; }

class HlBspDamage : public testing::TestWithParam<HlDamage> {};

TEST_P(HlBspDamage, IsNeutralised) {
  TinyHlLevel tiny;
  GetParam().damage(tiny);
  const std::vector<std::byte> file = tiny.bytes();
  const HlBsp level = parseHlBsp(file);
  EXPECT_TRUE(GetParam().neutralised(level));
  EXPECT_GT(level.repairs.count, 0U);
  for (const HlVertex& vertex : buildHlFaces(level).vertices)
    EXPECT_TRUE(std::isfinite(vertex.x + vertex.tu + vertex.tv1));
}

bool emptyFloor(const HlBsp& level) { return buildHlFaces(level).records[0].triangleCount == 0; }

INSTANTIATE_TEST_SUITE_P(
    Tables, HlBspDamage,
    testing::Values(
        HlDamage{"vertex is no number", [](TinyHlLevel& tiny) { tiny.vertices[0][1] = kNan; },
                 [](const HlBsp& l) { return l.vertices[0][1] == 0; }},
        HlDamage{"plane is no number", [](TinyHlLevel& tiny) { tiny.planes[2].distance = kNan; },
                 [](const HlBsp& l) { return l.planes[2].normal[2] == 0; }},
        HlDamage{"edge of a face past the end", [](TinyHlLevel& tiny) { tiny.faces[0].firstEdge = 21; }, emptyFloor},
        HlDamage{"first edge negative", [](TinyHlLevel& tiny) { tiny.faces[0].firstEdge = -1; }, emptyFloor},
        HlDamage{"surface edge past the end", [](TinyHlLevel& tiny) { tiny.surfaceEdges[1] = -1000; }, emptyFloor},
        HlDamage{"lowest surface edge",
                 [](TinyHlLevel& tiny) { tiny.surfaceEdges[0] = std::numeric_limits<std::int32_t>::min(); },
                 emptyFloor},
        HlDamage{"vertex of an edge past the end", [](TinyHlLevel& tiny) { tiny.edges[1].vertices[0] = 9999; },
                 emptyFloor},
        HlDamage{"texture info past the end", [](TinyHlLevel& tiny) { tiny.faces[0].textureInfo = 99; }, emptyFloor},
        HlDamage{"plane of a face past the end", [](TinyHlLevel& tiny) { tiny.faces[0].plane = 99; }, emptyFloor},
        HlDamage{"texels beyond counting", [](TinyHlLevel& tiny) { tiny.infos[0].s[0] = 1e30f; }, emptyFloor},
        HlDamage{"texture past the end", [](TinyHlLevel& tiny) { tiny.infos[0].texture = 5; },
                 [](const HlBsp& l) { return l.textureInfos[0].texture == -1; }},
        HlDamage{"leaf's faces past the end", [](TinyHlLevel& tiny) { tiny.leaves[1].firstMarkSurface = 60000; },
                 [](const HlBsp& l) { return l.leaves[1].markSurfaceCount == 0; }},
        HlDamage{"face of a mark past the end", [](TinyHlLevel& tiny) { tiny.marks[0] = 60000; },
                 [](const HlBsp& l) { return l.repairs.count == 1; }},
        HlDamage{"model's faces past the end", [](TinyHlLevel& tiny) { tiny.models[1].faceCount = 99; },
                 [](const HlBsp& l) { return l.models[1].faceCount == 0; }},
        HlDamage{"node plane", [](TinyHlLevel& tiny) { tiny.nodes[1].plane = -7; },
                 [](const HlBsp& l) { return l.nodes[1].children[0] == kNoHlChild; }},
        HlDamage{"node child past the end", [](TinyHlLevel& tiny) { tiny.nodes[0].children[0] = 2; },
                 [](const HlBsp& l) { return l.nodes[0].children[0] == kNoHlChild; }},
        HlDamage{"leaf child past the end", [](TinyHlLevel& tiny) { tiny.nodes[0].children[1] = ~3; },
                 [](const HlBsp& l) { return l.nodes[0].children[1] == kNoHlChild; }},
        HlDamage{"circle", [](TinyHlLevel& tiny) { tiny.nodes[1].children[0] = 0; },
                 [](const HlBsp& l) { return l.nodes[1].children[0] == kNoHlChild; }}));

TEST(HlBsp, CountsLightThatIsNotThereAsNone) {
  struct Case {
    const char* name;
    std::function<void(TinyHlLevel&)> damage;
  };
  for (const Case& c : {Case{"offset past the end", [](TinyHlLevel& t) { t.faces[0].lightOffset = 999; }},
                        Case{"one byte too few", [](TinyHlLevel& t) { t.lighting.pop_back(); }},
                        Case{"no style", [](TinyHlLevel& t) { t.faces[0].styles[0] = 255; }},
                        Case{"none at all", [](TinyHlLevel& t) { t.lighting.clear(); }}}) {
    TinyHlLevel tiny;
    c.damage(tiny);
    const std::vector<std::byte> file = tiny.bytes();
    EXPECT_EQ(buildHlFaces(parseHlBsp(file)).records[0].lightmap, -1) << c.name;
  }
}

TEST(HlBsp, RefusesTruncatedFiles) {
  const std::vector<std::byte> good = TinyHlLevel().bytes();
  int refused = 0;
  for (std::size_t size = 0; size < good.size(); ++size) {
    const std::vector<std::byte> prefix(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
    try {
      parseHlBsp(prefix);
    } catch (const host::FileFault& fault) {
      refused += fault.id == host::Fault::Truncated;
    }
  }
  EXPECT_EQ(refused, static_cast<int>(good.size())) << "the models' lump ends the file";
}

TEST(HlBsp, LimitsWhatLumpsMayCopy) {
  const std::vector<std::byte> good = TinyHlLevel().bytes();
  std::vector<std::byte> file = good;
  file.resize(4 << 20);
  for (const HlLump lump : {HlLump::Vertices, HlLump::Planes, HlLump::Faces}) {
    file = test::poked(std::move(file), test::directoryAt(lump), 0);
    file = test::poked(std::move(file), test::directoryAt(lump) + 4, 4 << 20);
  }
  EXPECT_THROW(parseHlBsp(file), host::FileFault);
  EXPECT_THROW(parseHlBsp(test::poked(good, test::directoryAt(HlLump::Nodes), ~0U)), host::FileFault);
  EXPECT_THROW(parseHlBsp(test::poked(good, test::directoryAt(HlLump::Nodes) + 4, ~0U)), host::FileFault);
}

// Packages.

TEST(Wad3, DecodesTextures) {
  const std::vector<std::byte> file = test::wadFile(
      {{"Wall", mipTexture("Wall", 16, 1)}, {"{hole", mipTexture("{hole", 8, 255)}, {"blue", mipTexture("b", 8, 255)}});
  const std::vector<WadEntry> entries = parseWad3(file);
  ASSERT_EQ(entries.size(), 3U);
  const auto colorOf = [&](const char* name) {
    const WadEntry* entry = findWadEntry(entries, name);
    return entry == nullptr ? 1U : decodeMipTexture(std::span(file).subspan(entry->offset, entry->size)).pixels.back();
  };
  EXPECT_EQ(colorOf("WALL"), 0xFF01FE07) << "names ignore case";
  EXPECT_EQ(colorOf("{hole"), 0U) << "the last colour is a hole";
  EXPECT_EQ(colorOf("blue"), 0xFF0000FF);
  EXPECT_EQ(colorOf("none"), 1U);
}

TEST(Wad3, RefusesDamage) {
  using host::Fault;
  const std::vector<std::byte> texture = mipTexture("t", 8, 3), good = test::wadFile({{"t", texture}});
  const auto fault = [](const std::function<void()>& read) {
    try {
      read();
    } catch (const host::FileFault& f) {
      return static_cast<int>(f.id);
    }
    return -1;
  };
  struct Case {
    const char* name;
    std::vector<std::byte> file;
    Fault expected;
  };
  for (const Case& c : {Case{"another kind", test::poked(good, 0, 0x32444157), Fault::BadIdentifier},
                        Case{"count past the end", test::poked(good, 4, 2), Fault::Truncated},
                        Case{"endless count", test::poked(good, 4, ~0U), Fault::Truncated},
                        Case{"directory past the end", test::poked(good, 8, ~0U), Fault::Truncated}})
    EXPECT_EQ(fault([&] { parseWad3(c.file); }), static_cast<int>(c.expected)) << c.name;
  constexpr std::uint32_t kWidth = 16, kHeight = 20, kLevel0 = 24, kLevel3 = 36;
  for (const Case& c : {Case{"no width", test::poked(texture, kWidth, 0), Fault::BadSize},
                        Case{"endless height", test::poked(texture, kHeight, ~0U), Fault::BadSize},
                        Case{"larger than its bytes", test::poked(texture, kWidth, 64), Fault::Truncated},
                        Case{"pixels past the end", test::poked(texture, kLevel0, ~0U), Fault::Truncated},
                        Case{"palette past the end", test::poked(texture, kLevel3, ~0U), Fault::Truncated},
                        Case{"pixels elsewhere", test::poked(texture, kLevel0, 0), Fault::Unsupported}})
    EXPECT_EQ(fault([&] { decodeMipTexture(c.file); }), static_cast<int>(c.expected)) << c.name;
  const std::size_t entry = good.size() - 32;
  EXPECT_TRUE(parseWad3(test::poked(good, entry, ~0U)).empty()) << "an entry past the end";
  EXPECT_TRUE(parseWad3(test::poked(good, entry + 4, ~0U)).empty()) << "one larger than the file";
  for (std::size_t size = 0; size < good.size(); ++size) {
    const std::vector<std::byte> prefix(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_GE(fault([&] { parseWad3(prefix); }), 0);
  }
  for (std::size_t size = 0; size + 2 < texture.size(); ++size) {
    const std::vector<std::byte> prefix(texture.begin(), texture.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_GE(fault([&] { decodeMipTexture(prefix); }), 0) << size;
  }
}

// Files from elsewhere.

TEST(RealHlLevels, HoldWhatOthersFoundInThem) {
  QL_NEED_SHARED_DATA();
  int levels = 0, packages = 0;
  const auto files = nlohmann::json::parse(std::ifstream(test::sharedData() / "MANIFEST.json"))["files"];
  for (const auto& entry : files) {
    const std::string name = entry["file"];
    if (!name.starts_with("hlbsp/") && !name.starts_with("wad3/")) continue;
    SCOPED_TRACE(name);
    const auto& facts = entry["facts"];
    if (facts["format"] == "wad" && facts["magic"] == "WAD3") {
      const std::vector<std::byte> file = host::readFile((test::sharedData() / name).string());
      const std::vector<WadEntry> entries = parseWad3(file);
      ASSERT_EQ(entries.size(), facts["entries"]);
      for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto& item = facts["items"][i];
        EXPECT_EQ(entries[i].name, item[0]);
        const images::Image image = decodeMipTexture(std::span(file).subspan(entries[i].offset, entries[i].size));
        EXPECT_EQ(image.width, item[4]);
        EXPECT_EQ(image.height, item[5]);
      }
      ++packages;
    }
    if (facts["format"] != "hlbsp") continue;
    const std::vector<std::byte> file = host::readFile((test::sharedData() / name).string());
    const HlBsp level = parseHlBsp(file);
    EXPECT_EQ(level.repairs.count, 0U) << level.repairs.first;
    const auto& lumps = facts["lumps"];
    EXPECT_EQ(level.entities.size(), lumps["entities"]);
    EXPECT_EQ(level.planes.size(), lumps["planes"]);
    EXPECT_EQ(level.vertices.size(), lumps["vertices"]);
    EXPECT_EQ(level.visibility.size(), lumps["visdata"]);
    EXPECT_EQ(level.nodes.size(), lumps["nodes"]);
    EXPECT_EQ(level.textureInfos.size(), lumps["texinfo"]);
    EXPECT_EQ(level.faces.size(), lumps["faces"]);
    EXPECT_EQ(level.lighting.size(), lumps["lighting"]);
    EXPECT_EQ(level.leaves.size(), lumps["leafs"]);
    EXPECT_EQ(level.markSurfaces.size(), lumps["marksurfaces"]);
    EXPECT_EQ(level.edges.size(), lumps["edges"]);
    EXPECT_EQ(level.surfaceEdges.size(), lumps["surfedges"]);
    EXPECT_EQ(level.models.size(), lumps["models"]);
    std::size_t embedded = 0;
    for (std::size_t i = 0; i < level.textures.size(); ++i) {
      const HlTexture& texture = level.textures[i];
      EXPECT_EQ(texture.header.width, facts["textures"][i][1]);
      if (texture.header.levels[0] == 0) continue;
      EXPECT_EQ(decodeMipTexture(textureBytes(file, level, texture)).height, facts["textures"][i][2]);
      ++embedded;
    }
    EXPECT_EQ(embedded, facts["embedded"]);
    const HlFaces built = buildHlFaces(level);
    std::uint32_t largest = 0;
    std::size_t lit = 0;
    for (const HlLightmap& light : built.lightmaps) {
      largest = std::max({largest, light.width, light.height});
      lit += std::size_t{light.width} * light.height * 3;
    }
    // The other reader counts a luxel more where a texel falls on a luxel's border but for rounding.
    const auto& light = facts["lightmap"];
    if (level.lighting.size() > 1) {
      EXPECT_NEAR(largest, std::max(light["max_size"][0].get<double>(), light["max_size"][1].get<double>()), 1);
      EXPECT_LE(lit, level.lighting.size());
    }
    ++levels;
  }
  EXPECT_GE(levels, 10);
  EXPECT_GE(packages, 8);
}

}  // namespace
}  // namespace ql::level
