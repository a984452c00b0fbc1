#include "mesh/Build.h"
#include "mesh/MeshPlacement.h"
#include "render/Camera.h"
#include "render/RenderTest.h"
#include "render/scene/Picking.h"
#include "render/scene/Scene.h"

namespace ql::render::scene {
namespace {

struct Target : engine::HitTarget {
  engine::EngineContext& context;
  bool hit = false;
  math::Vec3 start, end;
  explicit Target(engine::EngineContext& engineContext) : context(engineContext) {}
  engine::HitResult castRay(const math::Vec3& from, const math::Vec3& to) override {
    start = from;
    end = to;
    context.lastHitPoint = {hit ? 1.0f : -1.0f, 0, 0};
    return {.collision = hit, .distance = 7, .tu = 0.25f, .objectId = engine::kLandscapeObject};
  }
};

struct Picks : test::RenderTest {
  Target level{context}, landscape{context};
  std::shared_ptr<mesh::MeshHandle> wall;
  void SetUp() override {
    RenderTest::SetUp();
    createScene(context)->setViewFrustum(90, 1000);
    render::setCamera(context, {0, 0, 0}, {0, 0, 1});
    wall = mesh::allocateMesh(context);
    mesh::addWall(context, *wall, 0, {-5, 0, -5, 10}, {5, 0, -5, 10}, {});
    mesh::setPosition(mesh::meshRecord(context, wall->slot), {0, 0, 20});
    mesh::rebuildMatrix(context, wall->slot);
  }
  engine::HitResult pickMiddle(std::int32_t kinds) {
    return pick(context, context.viewport.width / 2, context.viewport.height / 2, kinds, mesh::RayTest::Accurate);
  }
};

TEST_F(Picks, TheRayOfAPixelRunsFromTheNearToTheFarPlane) {
  render::setCamera(context, {10, 20, 30}, {10, 20, 31});
  const PickRay middle = pickRay(context, context.viewport.width / 2, context.viewport.height / 2);
  EXPECT_NEAR(middle.near.z, 31, 1e-2);
  EXPECT_NEAR(middle.far.z, 1030, 2);
  EXPECT_NEAR(middle.far.x, 10, 0.5);
  const PickRay corner = pickRay(context, 0, 0);
  EXPECT_LT(corner.far.x, -500);
  EXPECT_GT(corner.far.y, 500);
}

TEST_F(Picks, LevelThenMeshThenLandscape) {
  context.get<engine::HitTargets>() = {&level, &landscape};
  struct Case {
    std::int32_t kinds;
    bool level, mesh, landscape;
    float objectId, distance;
  };
  const float slot = wall->slot;
  for (const Case& row : {Case{0, true, true, true, slot, 0},
                          {0, true, false, true, engine::kLandscapeObject, 7},
                          {0, true, false, false, engine::kLevelObject, 0},
                          {0, false, false, false, 0, 7},
                          {kPickLevel, true, true, true, engine::kLevelObject, 0},
                          {kPickLevel, false, true, true, 0, 0},
                          {kPickMeshes, true, true, true, slot, 0},
                          {kPickLandscape, true, true, true, engine::kLandscapeObject, 7},
                          {kPickLandscape | kPickMeshes, true, true, true, slot, 0},
                          {2, true, true, true, 0, 0},
                          {16 | 32 | 64, true, true, true, 0, 0}}) {
    level.hit = row.level;
    landscape.hit = row.landscape;
    mesh::meshRecord(context, wall->slot).enabled = row.mesh;
    const engine::HitResult result = pickMiddle(row.kinds);
    EXPECT_EQ(result.collision, row.level || row.mesh || row.landscape ? row.objectId != 0 : false);
    if (result.collision) {
      EXPECT_EQ(result.objectId, row.objectId);
      EXPECT_EQ(result.distance, row.distance);
    }
  }
}

TEST_F(Picks, AMissedLandscapeKeepsTheLevelsHit) {
  context.get<engine::HitTargets>() = {&level, &landscape};
  mesh::meshRecord(context, wall->slot).enabled = false;
  level.hit = true;
  EXPECT_EQ(pickMiddle(0).objectId, engine::kLevelObject);
  EXPECT_EQ(context.lastHitPoint.x, 1);
}

TEST_F(Picks, TheLevelIsAskedFromTheNearPlaneOthersFromTheCamera) {
  context.get<engine::HitTargets>() = {&level, &landscape};
  mesh::meshRecord(context, wall->slot).enabled = false;
  pickMiddle(0);
  EXPECT_NEAR(level.start.z, 1, 1e-3);
  EXPECT_EQ(landscape.start, context.cameraPosition);
  EXPECT_NEAR(landscape.end.z, 1000, 1);
}

}  // namespace
}  // namespace ql::render::scene
