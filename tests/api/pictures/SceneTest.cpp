#include "Pictures.h"

#include <cmath>
#include <functional>

namespace ql::test {
namespace {

class SceneOperations : public PictureTest {
 protected:
  /// A wall of 10 x 10 across z.
  Mesh8 wallAt(float z, const std::string& name = "") {
    Mesh8 wall = scene.CreateMeshBuilder(name);
    wall.AddWall(nullptr, -5, 0, 5, 0, 10, -5);
    wall.SetPosition(0, 0, z);
    return wall;
  }
};

TEST_F(SceneOperations, NothingThrowsNinetyOne) {
  start(64, 48);
  const std::function<void()> operations[] = {
      [] { Mesh8().Render(); },
      [] { Mesh8().SetPosition(1, 2, 3); },
      [] { (void)CollisionResult8().IsCollision(); },
      [this] { scene.SetSkyTexture(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); },
      [this] { camera.LookAtMesh(nullptr); },
      [this] { camera.SimpleFollowing(nullptr, {}); },
      [this] { camera.RotateAroundMesh(nullptr, False, 0); },
      [] { Scene8(nullptr).RenderSky(); },
  };
  for (const auto& operation : operations) EXPECT_EQ(errorOf(operation), 91);
  float speed = 3;
  EXPECT_EQ(errorOf([&] { camera.PurchaseFollowing(nullptr, {}, {}, speed); }), 0) << "ignores all errors";
}

TEST_F(SceneOperations, AMeshLivesAsLongAsItsHandles) {
  Mesh8 first = scene.CreateMeshBuilder(), second = scene.CreateMeshBuilder("Tree"), third = scene.CreateMeshBuilder();
  Globals8 globals;
  EXPECT_EQ(globals.GetMesh("mesh1"), first);
  EXPECT_EQ(globals.GetMesh("TREE"), second);
  third.SetMeshName("tree");
  EXPECT_EQ(globals.GetMesh("tree"), second) << "the lower slot";
  second = nullptr;
  EXPECT_EQ(globals.GetMesh("tree"), third);
  const Mesh8 again = scene.CreateMeshBuilder();
  EXPECT_EQ(globals.GetMesh("Mesh2"), again) << "the slot is used again";
  EXPECT_FALSE(globals.GetMesh("none"));
}

TEST_F(SceneOperations, PicksTellWhatWasHit) {
  start(64, 48);
  Mesh8 far = wallAt(25), near = wallAt(10);
  camera.SetCamera(0, 0, 0, 0, 0, 1);
  frame();
  const CollisionResult8 hit = scene.MousePicking(32, 24);
  EXPECT_TRUE(hit.IsCollision());
  EXPECT_EQ(hit.GetCollisionMesh(), far) << "the first, not the nearest";
  EXPECT_EQ(hit.GetCollisionObjectType(), QL_COLLIDE_MESH);
  EXPECT_EQ(hit.GetCollisionDistance(), 0);
  float tu = 7, tv = 7;
  hit.GetCollisionTriangleUV(tu, tv);
  EXPECT_EQ(tu + tv, 0);
  const CollisionResult8 miss = scene.MousePicking(32, 24, QL_COLLIDE_TERRAIN);
  EXPECT_FALSE(miss.IsCollision());
  EXPECT_FALSE(miss.GetCollisionMesh());
  EXPECT_EQ(miss.GetCollisionObjectType(), 0);
  EXPECT_TRUE(scene.Collide({0, 0, 0}, {0, 0, 1}));
  near.Enable(False);
  scene.SetCollisionPrecision(20);
  EXPECT_FALSE(scene.Collide({0, 0, 0}, {0, 0, 1}));
  EXPECT_TRUE(scene.Collide({0, 0, 0}, {0, 0, 1}, QL_TESTTYPE_BOUNDINGSPHERE));
}

TEST_F(SceneOperations, CamerasFollowWhereTheMeshWasDrawn) {
  start(64, 48);
  Mesh8 mesh = wallAt(100);
  mesh.SetRotation(0, 0.5f, 0);
  frame();
  camera.SimpleFollowing(mesh, {0, 2, -10});
  EXPECT_NEAR(camera.GetCameraPosition().z, 90, 0.1);
  EXPECT_EQ(camera.GetCameraLookAt().z, 100);
  camera.SetCamera(0, 0, 0, 0, 0, 1);
  *time += 100;
  engine.Clear();
  engine.RenderToScreen();
  float speed = 0.5f;
  camera.PurchaseFollowing(mesh, {0, 0, -10}, {0, 0, 0}, speed);
  EXPECT_NEAR(speed, 45, 0.1) << "half of 90 units per second";
  EXPECT_GT(camera.GetCameraPosition().z, 0);
  float distance = 0;
  camera.RotateAroundMesh(mesh, True, 0, distance);
  EXPECT_GT(distance, 0);
  EXPECT_NEAR(camera.GetCameraPosition().x, distance * std::cos(0.5f), 1e-2) << "degrees of the mesh taken as they are";
  camera.LookAtMesh(mesh);
  EXPECT_EQ(camera.GetCameraLookAt().z, 100);
}

TEST_F(SceneOperations, ListsAndSkiesFailAsTheirFilesDo) {
  start(64, 48);
  put("list.txt", "TEXTURES 1\nnothing\n");
  EXPECT_EQ(errorOf([&] { scene.LoadShaders("none.txt"); }), 53);
  EXPECT_EQ(errorOf([&] { scene.LoadShaders("list.txt"); }), 9);
  EXPECT_EQ(errorOf([&] { scene.LoadSky("1.x"); }), 5);
  scene.LoadSky("none1.jpg");
  engine.Clear();
  scene.RenderSky();
  engine.RenderToScreen();
  EXPECT_EQ(backBuffer().at(32, 24) & 0xFFFFFF, 0xFFFFFFu) << "white without pictures";
}

TEST_F(SceneOperations, TheCursorFollowsTheMouse) {
  start(64, 48);
  InputEngine8 input;
  save(labelled('F', 0xFF00FF00, 16), "arrow.bmp");
  scene.LoadCursor("arrow.bmp", QL_COLORKEY_NO, 16, 16);
  const auto green = [&](std::uint32_t x, std::uint32_t y) { return (frame().at(x, y) & 0xFFFFFF) == 0x00FF00; };
  input.SetMousePosition(20, 10);
  EXPECT_TRUE(green(22, 12));
  EXPECT_FALSE(green(42, 32));
  input.SetMousePosition(40, 30);
  EXPECT_TRUE(green(42, 32));
  scene.SetCursorTexture(nullptr);
  EXPECT_FALSE(green(42, 32));
}

TEST_F(SceneOperations, ANewEngineForgetsTheOldOnesMeshes) {
  start(64, 48);
  Mesh8 old = wallAt(10);
  Globals8().CreateDecal({}, {0, 0, 1}, nullptr, 5);
  Quasarlens8 second;
  EXPECT_EQ(errorOf([&] { old.SetPosition(0, 0, 0); }), 91);
  float speed = 1;
  EXPECT_EQ(errorOf([&] { Camera8().PurchaseFollowing(old, {}, {}, speed); }), 0)
      << "a mesh that is gone is not chased";
  EXPECT_FALSE(Globals8().GetMesh("Decal"));
  old = nullptr;  // its slot went with its engine
}

}  // namespace
}  // namespace ql::test
