#include "DrawingTest.h"
#include "engine/HitTarget.h"

#include <numbers>

namespace ql::mesh {
namespace {

struct Places : DrawingTest {
  math::Vec3 placed(const MeshHandle& mesh, const math::Vec3& point) {
    rebuildMatrix(context, mesh.slot);
    return math::transformPoint(point, record(mesh).worldMatrix);
  }
};

void expectNear(const math::Vec3& got, const math::Vec3& wanted, const std::string& what = "") {
  EXPECT_NEAR(got.x, wanted.x, 1e-4) << what;
  EXPECT_NEAR(got.y, wanted.y, 1e-4) << what;
  EXPECT_NEAR(got.z, wanted.z, 1e-4) << what;
}

TEST_F(Places, ScalesThenTurnsAboutZXYThenMoves) {
  struct Case {
    const char* name;
    math::Vec3 rotation, point, wanted;
  };
  MeshHandle& mesh = make();
  setPosition(record(mesh), {100, 200, 300});
  setScale(record(mesh), {1, 2, 3});
  for (const Case& row : {Case{"none", {}, {1, 1, 1}, {101, 202, 303}},
                          {"about z: x to y", {0, 0, 90}, {1, 0, 0}, {100, 201, 300}},
                          {"about x: y to z", {90, 0, 0}, {0, 1, 0}, {100, 200, 302}},
                          {"about y: z to x", {0, 90, 0}, {0, 0, 1}, {103, 200, 300}},
                          {"z before x", {90, 0, 90}, {1, 0, 0}, {100, 200, 301}},
                          {"x before y", {90, 90, 0}, {0, 1, 0}, {102, 200, 300}}}) {
    setRotation(record(mesh), row.rotation);
    expectNear(placed(mesh, row.point), row.wanted, row.name);
  }
}

TEST_F(Places, ChildrenMoveInWorldAxesAfterTheirParent) {
  MeshHandle &parent = make(), &child = make();
  addChild(context, parent, child);
  setRotation(record(parent), {0, 90, 0});
  setPosition(record(parent), {0, 0, 5});
  rebuildMatrix(context, parent.slot);
  setPosition(record(child), {10, 0, 0});
  expectNear(placed(child, {}), {10, 0, 5});
  record(child).parent = 30000;
  expectNear(placed(child, {}), {10, 0, 0}, "no such parent");
}

TEST_F(Places, BillboardsTurnWithTheHeadingAlone) {
  MeshHandle& mesh = make();
  record(mesh).billboard = true;
  setRotation(record(mesh), {10, 20, 30});
  for (int eighth = 0; eighth < 8; ++eighth) {
    const double angle = eighth * std::numbers::pi / 4 + 0.01;
    const auto x = static_cast<float>(std::sin(angle)), z = static_cast<float>(std::cos(angle));
    context.cameraLookAt = {x, 5, z};  // looking up does not tilt it
    expectNear(placed(mesh, {0, 1, 1}), {x, 1, z}, std::to_string(eighth));
  }
}

TEST_F(Places, AGivenMatrixStaysUntilTheNextSetter) {
  MeshHandle& mesh = makeRow(3);
  beginFrame();
  setMatrix(context, mesh.slot, math::scaling(3, 1, 1));
  renderMesh(context, mesh.slot);
  EXPECT_EQ(record(mesh).worldMatrix.m11, 3);
  setRotation(record(mesh), {});
  renderMesh(context, mesh.slot);
  EXPECT_EQ(record(mesh).worldMatrix.m11, 1);
}

TEST_F(Places, MovesByVelocityAndGravity) {
  MeshHandle& mesh = make();
  context.elapsedMs = 500;
  setVelocity(record(mesh), {2, 0, 0}, 10);
  rebuildMatrix(context, mesh.slot);
  moveMesh(context, mesh.slot, 3, false);
  expectNear(record(mesh).position, {3, 0, 0});
  expectNear(record(mesh).velocity, {2, -5, 0}, "gravity does not follow the speed");
  EXPECT_TRUE(record(mesh).matrixDirty);
  moveMesh(context, mesh.slot, 1, false);
  expectNear(record(mesh).position, {4, -2.5f, 0});
}

TEST_F(Places, CollisionsStopAMeshForGood) {
  struct Wall : engine::HitTarget {
    bool there = false;
    engine::HitResult castRay(const math::Vec3& start, const math::Vec3& end) override {
      return {.collision = there && start.x == 0 && end.x == 1};
    }
  } wall;
  context.get<engine::HitTargets>().landscape = &wall;
  MeshHandle& mesh = make();
  context.elapsedMs = 1000;
  for (const bool there : {true, false}) {
    setVelocity(record(mesh), {1, 0, 0}, 0);
    wall.there = there;
    moveMesh(context, mesh.slot, 1, true);
    EXPECT_EQ(record(mesh).position.x, there ? 0 : 1);
    EXPECT_EQ(record(mesh).velocity.x, there ? 0 : 1);
  }
}

TEST_F(Places, BillboardsFlipBothListsAndBack) {
  MeshHandle& mesh = make();
  addWall(context, mesh, 0, {0, 0, 0, 5}, {10, 0, 0, 5}, {});
  const auto coordinates = [&] {
    std::vector<float> all;
    for (std::size_t i = 0; i < 4; ++i) {
      const math::NormalVertex& v = record(mesh).normalVertices[i];
      EXPECT_EQ(v.tu, record(mesh).colorVertices[i].tu);
      EXPECT_EQ(v.tv, record(mesh).colorVertices[i].tv);
      all.insert(all.end(), {v.tu, v.tv});
    }
    return all;
  };
  constexpr float a = 0.02f, b = 0.98f;
  using testing::ElementsAre;
  EXPECT_THAT(coordinates(), ElementsAre(a, a, a, b, b, a, b, b));
  flipBillboard(record(mesh), true, false);
  EXPECT_THAT(coordinates(), ElementsAre(b, a, b, b, a, a, a, b));
  flipBillboard(record(mesh), true, true);
  EXPECT_THAT(coordinates(), ElementsAre(a, b, a, a, b, b, b, a));
  flipBillboard(record(mesh), false, true);
  EXPECT_THAT(coordinates(), ElementsAre(a, a, a, b, b, a, b, b));
  EXPECT_THROW(flipBillboard(record(makeRow(2)), true, true), engine::EngineError);
}

TEST_F(Places, LooksAreSetByNumberOrForAllGroups) {
  MeshHandle& mesh = make();
  addFace(context, mesh, 0, false);
  const auto textures = [&] {
    std::vector<int> all;
    for (const MeshGroup& group : record(mesh).groups) all.push_back(group.texture);
    return all;
  };
  using testing::ElementsAre;
  setTexture(record(mesh), 5, 2);
  EXPECT_THAT(textures(), ElementsAre(0, 0, 5));
  setTexture(record(mesh), 6, 1.5f);
  setTexture(record(mesh), 6, 3);
  setTexture(record(mesh), 6, 0);
  EXPECT_THAT(textures(), ElementsAre(0, 0, 5));
  setTexture(record(mesh), 7);
  EXPECT_THAT(textures(), ElementsAre(0, 7, 7));
}

}  // namespace
}  // namespace ql::mesh
