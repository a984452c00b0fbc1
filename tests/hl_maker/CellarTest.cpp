#include "Build.h"
#include "level/Collision.h"
#include "level/HlFaces.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <set>
#include <span>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::hl_maker {
namespace {

std::string cellar() {
  std::ifstream file(QL_CELLAR_DESCRIPTION, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Description, SaysWhichLineIsWrong) {
  for (const auto& [text, message] : {std::pair{"", "a level without room"},
                                      {"open 0 0 0 16 16", "line 1: something is missing"},
                                      {"\nopen 0 0 0 16 16 x a b c", "line 2: 'x' is no number"},
                                      {"open 0 0 0 16 16 5 a b c", "multiple of 16"},
                                      {"open 0 0 0 0 16 16 a b c", "without extent"},
                                      {"open 0 0 0 16 16 16 a b c d", "'d' is too much"},
                                      {"light 0 0 0 1 1 1 1e9", "is no number up to 4096"},
                                      {"entity classname", "is not KEY=VALUE"},
                                      {"dig 0", "'dig' is nothing that a level has"}}) {
    try {
      parseDescription(text);
      ADD_FAILURE() << text;
    } catch (const DescriptionFault& fault) {
      EXPECT_THAT(fault.what(), testing::HasSubstr(message)) << text;
    }
  }
}

TEST(Cellar, IsAGoodLevel) {
  const LevelTables tables = buildLevel(parseDescription(cellar()), "cellar.wad");
  std::map<std::string, std::pair<int, int>> sizes;
  for (const std::string& texture : tables.textures) sizes[texture] = {128, 128};
  const Bytes bytes = encodeLevel(tables, sizes);
  const level::HlBsp file = level::parseHlBsp(std::as_bytes(std::span(bytes)));
  EXPECT_EQ(file.repairs.count, 0U) << file.repairs.first;
  const level::HlFaces built = level::buildHlFaces(file);
  std::size_t dark = 0;
  for (std::size_t i = 0; i < built.records.size(); ++i) dark += built.records[i].lightmap < 0 && !built.looks[i].sky;
  EXPECT_EQ(dark, 6U) << "the trigger's sides alone";
  std::set<level::RenderMode> modes;
  for (const level::FaceLook& look : built.looks) modes.insert(look.mode);
  EXPECT_GE(modes.size(), 4U);
  // Every face lies between its leaf, which is open, and the solid behind it.
  const Description description = parseDescription(cellar());
  const Cells cells(description.digs);
  for (std::int32_t i = 0; i < file.models[0].faceCount; ++i) {
    const level::HlFace& face = file.faces[static_cast<std::size_t>(i)];
    const level::HlPlane& plane = file.planes[face.plane];
    Point before{}, behind{};
    for (std::int32_t k = 0; k < 4; ++k) {
      const auto edge = static_cast<std::size_t>(file.surfaceEdges[static_cast<std::size_t>(face.firstEdge + k)]);
      for (std::size_t axis = 0; axis < 3; ++axis)
        before[axis] += file.vertices[file.edges[edge].vertices[0]][axis] / 4.0;
    }
    behind = before;
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double step = plane.normal[axis] * (face.side == 0 ? 1.0 : -1.0);
      before[axis] += step;
      behind[axis] -= step;
    }
    EXPECT_TRUE(cells.openAt(before)) << i;
    EXPECT_FALSE(cells.openAt(behind)) << i;
  }
}

TEST(Package, ReadsBackAsItWasPainted) {
  const IndexedTexture grate = makeTexture("{grate"), brick = makeTexture("brick");
  const Bytes bytes = encodePackage({grate, brick});
  const std::span<const std::byte> file = std::as_bytes(std::span(bytes));
  const std::vector<level::WadEntry> entries = level::parseWad3(file);
  ASSERT_EQ(entries.size(), 2U);
  const auto decoded = [&](std::size_t i) {
    return level::decodeMipTexture(file.subspan(entries[i].offset, entries[i].size));
  };
  const images::Image holes = decoded(0);
  const auto open = std::count(holes.pixels.begin(), holes.pixels.end(), 0U);
  EXPECT_GT(open, holes.width * holes.height / 2);
  EXPECT_LT(open, holes.width * holes.height * 9 / 10);
  const images::Image wall = decoded(1);
  EXPECT_EQ(wall.width, 128U);
  EXPECT_GT(std::set<std::uint32_t>(wall.pixels.begin(), wall.pixels.end()).size(), 100U);
  EXPECT_THROW(makeTexture("no such"), std::runtime_error);
}

}  // namespace
}  // namespace ql::hl_maker
