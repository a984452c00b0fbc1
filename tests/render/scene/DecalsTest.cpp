#include "mesh/MeshDraw.h"
#include "render/RenderTest.h"
#include "render/scene/Decals.h"
#include "render/scene/Scene.h"

namespace ql::render::scene {
namespace {

struct Decals : test::RenderTest {
  void SetUp() override {
    RenderTest::SetUp();
    mesh::startMeshes(context);
    startScenes(context);
  }
  mesh::MeshRecord& record(std::int16_t slot) { return mesh::meshRecord(context, slot); }
  void frame(std::int32_t milliseconds) {
    engine::clear(context);
    context.elapsedMs = milliseconds;
    mesh::renderAllMeshes(context);
    engine::renderToScreen(context);
  }
};

TEST_F(Decals, LieAcrossTheirNormal) {
  struct Case {
    const char* name;
    math::Vec3 normal;
    std::array<math::Vec3, 4> corners;
  };
  for (const Case& row : {Case{"towards +z", {0, 0, 1}, {{{-5, -5, 0}, {-5, 5, 0}, {5, -5, 0}, {5, 5, 0}}}},
                          {"towards -z", {0, 0, -1}, {{{5, -5, 0}, {5, 5, 0}, {-5, -5, 0}, {-5, 5, 0}}}},
                          {"towards +x", {3, 0, 0}, {{{0, -5, 5}, {0, 5, 5}, {0, -5, -5}, {0, 5, -5}}}},
                          {"up", {0, 1, 0}, {{{-5, 0, -5}, {5, 0, -5}, {-5, 0, 5}, {5, 0, 5}}}},
                          {"down", {0, -1, 0}, {{{5, 0, 5}, {-5, 0, 5}, {5, 0, -5}, {-5, 0, -5}}}},
                          {"up, long", {0, 3, 0}, {{{-5, 0, -5}, {5, 0, -5}, {-5, 0, 5}, {5, 0, 5}}}},
                          {"no normal", {}, {}}}) {
    const auto handle = createDecal(context, {100, 0, 0}, row.normal, 0, 10, 0);
    const mesh::MeshRecord& decal = record(handle->slot);
    EXPECT_EQ(decal.position, math::add({100, 0, 0}, row.normal)) << row.name;
    for (std::size_t i = 0; i < 4; ++i) {
      const math::NormalVertex& v = decal.normalVertices[i];
      EXPECT_EQ((math::Vec3{v.x, v.y, v.z}), row.corners[i]) << row.name << " " << i;
    }
  }
}

TEST_F(Decals, AreStripsOfColouredVerticesThatAddTheirColour) {
  const auto handle = createDecal(context, {}, {0, 0, 1}, 0, 10, 0);
  const mesh::MeshRecord& decal = record(handle->slot);
  EXPECT_EQ(decal.name, "Decal");
  EXPECT_EQ(decal.primitiveType, mesh::kTriangleStrip);
  EXPECT_EQ(decal.vertexType, mesh::kColorVertices);
  EXPECT_EQ(decal.groups.back().blending, 3);
}

TEST_F(Decals, LiveWithoutTheirHandleUntilTheirTimeIsOver) {
  createDecal(context, {}, {0, 0, 1}, 0, 10, 100);
  createDecal(context, {}, {0, 0, 1}, 0, 10, 0);
  auto held = createDecal(context, {}, {0, 0, 1}, 0, 10, 100);
  frame(60);
  EXPECT_TRUE(record(1).enabled);
  frame(60);
  EXPECT_FALSE(record(1).inUse) << "its slot is free again";
  EXPECT_TRUE(record(2).inUse);
  EXPECT_TRUE(record(3).inUse && !record(3).enabled) << "the host still holds it";
  held.reset();
  EXPECT_FALSE(record(3).inUse);
  engine::releaseEngine(context);
  EXPECT_FALSE(record(2).inUse);
}

TEST_F(Decals, BillboardsStandOnTheirLowerEdge) {
  const auto handle = createBillboard(context, "tree", 4, {10, 20, 30, 6, 8});
  const mesh::MeshRecord& board = record(handle->slot);
  EXPECT_EQ(board.name, "tree");
  EXPECT_TRUE(board.billboard);
  EXPECT_EQ(board.position, (math::Vec3{10, 20, 30}));
  EXPECT_EQ(board.primitiveType, mesh::kTriangleStrip);
  ASSERT_EQ(board.vertexCount, 4);
  constexpr math::Vec3 kCorners[] = {{-3, 8, 0}, {-3, 0, 0}, {3, 8, 0}, {3, 0, 0}};
  for (std::size_t i = 0; i < 4; ++i) {
    const math::NormalVertex& v = board.normalVertices[i];
    EXPECT_EQ((math::Vec3{v.x, v.y, v.z}), kCorners[i]) << i;
  }
  for (const mesh::MeshGroup& group : std::span(board.groups).subspan(1)) EXPECT_EQ(group.texture, 4);
}

}  // namespace
}  // namespace ql::render::scene
