// Text files of triangles, and textures laid over groups.
#include "MeshTest.h"
#include "mesh/DxeText.h"
#include "mesh/ProjectTexture.h"
#include "render/TextureTable.h"

#include <string>
#include <string_view>

namespace ql::mesh {
namespace {

using test::engineErrorOf;
using test::put;

struct Dxe : test::MeshTest {};

/// One triangle; its lines end as given.
std::string triangleText(const std::string& end = "\n") {
  std::string text = "a title" + end + " 1" + end;
  for (int i = 0; i < 24; ++i) text += std::to_string(i) + ".5" + end;
  return text;
}

TEST_F(Dxe, TrianglesJoinTheFirstGroup) {
  for (const char* end : {"\n", "\r\n", "\r"}) {
    handle = allocateMesh(context);
    put("Model.DXE", triangleText(end));
    loadDxe(context, *handle, "model.dxe");
    ASSERT_EQ(record().vertexCount, 3);
    EXPECT_EQ(record().groups[1].count, 3);
    EXPECT_EQ(place(1), math::Vec3({8.5f, 9.5f, 10.5f}));
    EXPECT_EQ(normal(1), math::Vec3({11.5f, 12.5f, 13.5f}));
    EXPECT_EQ(record().colorVertices[2].tv1, 23.5f);
    EXPECT_EQ(record().colorVertices[2].diffuse, -1);
  }
}

// What the text says, how many vertices come of it, or the number of the error.
struct TextCase {
  const char* name;
  std::string text;
  std::size_t vertices;
  std::int32_t error;
};
TEST_F(Dxe, Texts) {
  const std::string good = triangleText();
  const TextCase cases[] = {
      {"no triangles", "title\n0\n", 0, 0},
      {"fewer than none", "title\n-5\n", 0, 0},
      {"no last line end", good.substr(0, good.size() - 1), 3, 0},
      {"more lines than announced", good + "1\n2\n", 3, 0},
      {"words for numbers count as 0", "title\n1\n" + std::string(24 * 2, '\n').replace(0, 1, "x\n"), 3, 0},
      {"empty", "", 0, engine::kPastEnd},
      {"a title only", "title\n", 0, engine::kPastEnd},
      {"a vertex short", "title\n2" + good.substr(good.find("1\n") + 1), 0, engine::kPastEnd},
      {"more triangles than a mesh holds", "title\n10923\n", 0, engine::kOverflow},
      {"a count beyond all numbers", "title\n1e300\n", 0, engine::kOverflow},
      {"a coordinate beyond a single", "title\n1\n1e60\n", 0, engine::kOverflow},
  };
  for (const TextCase& row : cases) {
    std::size_t vertices = 0;
    EXPECT_EQ(engineErrorOf([&] { vertices = parseDxe(row.text).size(); }), row.error) << row.name;
    EXPECT_EQ(vertices, row.vertices) << row.name;
  }
  // Every prefix from the count on ends early, until the last number has begun.
  for (std::size_t length = good.find('1') + 1; length < good.size(); ++length)
    EXPECT_EQ(engineErrorOf([&] { parseDxe(std::string(good, 0, length)); }),
              length > good.rfind("23.5") ? 0 : engine::kPastEnd)
        << length;
}

TEST_F(Dxe, AFileThatFailsLeavesTheMeshAsItWas) {
  EXPECT_EQ(engineErrorOf([&] { loadDxe(context, *handle, "none.dxe"); }), engine::kFileNotFound);
  put("good.dxe", triangleText());
  addVertices(kMaxVertices - 2);
  EXPECT_EQ(engineErrorOf([&] { loadDxe(context, *handle, "good.dxe"); }), engine::kOverflow);
  EXPECT_EQ(record().groups[1].count, kMaxVertices - 2);
}

TEST_F(Dxe, TexturesLieFlatOverGroups) {
  picture("tiles.bmp", 64, 32, 0xFF0000);
  std::string name = "tiles.bmp";
  std::int32_t width = -1, height = -1, key = 0;
  const std::int16_t texture = render::loadTexture(context, name, "", width, height, key)->index;
  addWall(context, *handle, 0, {0, 0, 0, 16}, {32, 0, 0, 16}, {});
  addTriangle(context, *handle, 0, std::array<math::Vec3, 3>{{{1, 0, 0}, {2, 0, 0}, {1, 3, 0}}}, {});
  const float before = record().normalVertices[4].tu;

  // The wall's first way goes up, its second along x. Heights divide u, widths v.
  projectTexture(context, *handle, texture, 2, {.scaleU = 2, .shiftV = 16});
  EXPECT_FLOAT_EQ(record().normalVertices[3].tu, 2 * 16 / 32.0f);
  EXPECT_FLOAT_EQ(record().normalVertices[3].tv, (32 + 16) / 64.0f);
  EXPECT_FLOAT_EQ(record().colorVertices[3].tu, record().normalVertices[3].tu);
  EXPECT_FLOAT_EQ(record().normalVertices[3].tu1, 0.98f) << "the second pair stays";
  EXPECT_FLOAT_EQ(record().normalVertices[4].tu, before) << "another group stays";
  projectTexture(context, *handle, texture, -1, {.rotation = 90});
  EXPECT_NEAR(record().normalVertices[3].tu, -32 / 32.0f, 1e-3f);
  EXPECT_NEAR(record().normalVertices[3].tv, 16 / 64.0f, 1e-3f);
  EXPECT_NE(record().normalVertices[5].tu, before);

  EXPECT_EQ(engineErrorOf([&] { projectTexture(context, *handle, 0, 2, {}); }), engine::kDivisionByZero);
  EXPECT_EQ(engineErrorOf([&] { projectTexture(context, *handle, 9, 2, {}); }), engine::kSubscript);
  addFace(context, *handle, 0, true);
  addVertices(9);
  EXPECT_EQ(engineErrorOf([&] { projectTexture(context, *handle, texture, -1, {}); }), engine::kSubscript);
  EXPECT_EQ(engineErrorOf([&] { projectTexture(context, *handle, texture, 2, {}); }), 0);
}

}  // namespace
}  // namespace ql::mesh
