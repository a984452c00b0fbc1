#include "Pictures.h"

#include <cmath>
#include <numbers>

namespace ql::test {
namespace {

class MeshPictures : public PictureTest {
 protected:
  /// A level grid of squares as a list, with normals upwards.
  void addGrid(Mesh8& mesh, float from, float to, int cells) const {
    const float step = (to - from) / static_cast<float>(cells);
    for (int j = 0; j < cells; ++j)
      for (int i = 0; i < cells; ++i) {
        const float x = from + step * static_cast<float>(i), z = from + step * static_cast<float>(j);
        for (const auto& [dx, dz] :
             std::array<std::array<float, 2>, 6>{{{0, 0}, {0, 1}, {1, 0}, {1, 0}, {0, 1}, {1, 1}}})
          mesh.AddVertex(x + step * dx, 0, z + step * dz, -1, dx, dz, 0, 1, 0);
      }
  }
  images::Image checks(std::uint32_t a, std::uint32_t b, std::uint32_t cell = 8) const {
    images::Image image{64, 64, std::vector<std::uint32_t>(64 * 64)};
    for (std::uint32_t y = 0; y < 64; ++y)
      for (std::uint32_t x = 0; x < 64; ++x) image.at(x, y) = (x / cell + y / cell) % 2 != 0 ? a : b;
    return image;
  }
  MaterialFactory8 materials;
  LightEngine8 lights;
};

TEST_F(MeshPictures, Lighting) {
  start(320, 240);
  scene.SetSceneBackGround(0.1f, 0.1f, 0.2f);
  // The device's ambient light is white: how dark shadows are is the materials' business.
  const auto made = [&](float r, float g, float b) {
    const std::int16_t material = materials.CreateMaterialQuick(r, g, b, 1, "");
    materials.SetAmbient(material, r * 0.2f, g * 0.2f, b * 0.2f, 1);
    materials.SetEmissive(material, 0, 0, 0, 1);
    return material;
  };
  const std::int16_t grey = made(0.6f, 0.6f, 0.6f), yellow = made(1, 0.8f, 0.2f);
  lights.CreateDirectionalLight({1, -1, 1}, 0.8f, 0.8f, 0.8f, 1);
  const std::int16_t red = lights.CreatePointLight({-30, 12, -10}, 60, 1, 0.1f, 0.1f, 1);
  lights.SetLightAttenuation(red, 0.4f, 0, 0.008f);
  Mesh8 floor = scene.CreateMeshBuilder(), ball = scene.CreateMeshBuilder(), block = scene.CreateMeshBuilder();
  addGrid(floor, -60, 60, 24);
  floor.SetMaterial(grey);
  ball.CreateSphere(nullptr, 10, 24, 24);
  ball.SetPosition(-12, 10, 0);
  ball.SetMaterial(yellow);
  block.AddWall(nullptr, 5, -10, 25, -10, 20);
  block.AddWall(nullptr, 25, -10, 35, 5, 20);
  block.ComputeNormals();
  block.SetMaterial(yellow);
  camera.SetCamera(10, 40, -80, 2, 4, 0);
  const images::Image lit = frame();
  EXPECT_TRUE(matchesGolden(lit, "mesh-lighting"));
  lights.EnableLight(red, False);
  EXPECT_NE(frame().pixels, lit.pixels);
}

TEST_F(MeshPictures, BlendingModes) {
  start(320, 240);
  save(checks(0xFF4060A0, 0xFFC0C0C0), "back.bmp");
  images::Image spot = checks(0xFFC04020, 0xFF408020, 16);
  for (std::uint32_t y = 0; y < 64; ++y)
    for (std::uint32_t x = 0; x < 64; ++x)
      if ((x - 32) * (x - 32) + (y - 32) * (y - 32) > 900) spot.at(x, y) = 0xFF000000;
  save(spot, "spot.bmp");
  TextureFactory8 textures;
  const Texture8 back = textures.LoadTexture("back.bmp"), round = textures.LoadDecalTexture("spot.bmp");
  Mesh8 wall = scene.CreateMeshBuilder();
  wall.AddWall(back, -40, 10, 40, 10, 60, -30, 4, 5);
  std::vector<Mesh8> quads;
  for (int mode = 0; mode < 4; ++mode)
    for (int row = 0; row < 2; ++row) {
      // Above a keyed texture, below plain colours that fade out to the right.
      Mesh8& quad = quads.emplace_back(scene.CreateMeshBuilder());
      const auto left = static_cast<float>(mode * 17 - 33), low = row == 0 ? 2.0f : -20.0f;
      quad.AddWall(row == 0 ? round : nullptr, left, 0, left + 15, 0, 18, low);
      quad.SetVertexType(QL_COLOR_VERTEX);
      if (row == 1)
        for (int v = 0; v < 4; ++v) quad.SetColor(v < 2 ? static_cast<std::int32_t>(0xFFE0A030) : 0x20E0A030, v);
      quad.SetBlendingMode(mode);
    }
  camera.SetCamera(0, 0, -75, 0, 0, 0);
  EXPECT_TRUE(matchesGolden(frame(), "mesh-blending"));
}

TEST_F(MeshPictures, BillboardsFromEightSides) {
  start(120, 90);
  scene.SetSceneBackGround(0.5f, 0.6f, 0.7f);
  save(labelled('F', 0xFF40A040), "f.bmp");
  save(checks(0xFF806040, 0xFFA08060), "ground.bmp");
  const Mesh8 board = scene.CreateBillboard(scene.LoadTexture("f.bmp"), 0, 0, 0, 20, 20, "sign");
  Mesh8 ground = scene.CreateMeshBuilder(), posts = scene.CreateMeshBuilder();
  addGrid(ground, -30, 30, 6);
  ground.SetTexture(scene.LoadTexture("ground.bmp"));
  posts.SetVertexType(QL_COLOR_VERTEX);
  auto addPost = [&, next = 0](float x, float z, std::int32_t color) mutable {
    posts.AddWall(nullptr, x - 2, z, x + 2, z, 8);
    posts.AddWall(nullptr, x, z - 2, x, z + 2, 8);
    for (const int last = next + 8; next < last; ++next) posts.SetColor(color, next);
  };
  addPost(25, 0, static_cast<std::int32_t>(0xFFFF2020));
  addPost(0, 25, static_cast<std::int32_t>(0xFF2020FF));
  std::vector<images::Image> views;
  for (int side = 0; side < 8; ++side) {
    const double angle = side * std::numbers::pi / 4;
    camera.SetCamera(45 * std::sin(angle), 25, 45 * std::cos(angle), 0, 8, 0);
    views.push_back(frame());
  }
  EXPECT_TRUE(matchesGolden(sheet(views, 4), "mesh-billboards"));
  EXPECT_EQ(board.GetPosition().x, 0);
}

TEST_F(MeshPictures, SphereMapping) {
  start(200, 150);
  images::Image surroundings{64, 64, std::vector<std::uint32_t>(64 * 64)};
  for (std::uint32_t y = 0; y < 64; ++y)
    for (std::uint32_t x = 0; x < 64; ++x)
      surroundings.at(x, y) = 0xFF000000 | ((y < 32 ? 0x6090E0u : 0x604020u) + (x / 8 % 2 != 0 ? 0x181818u : 0u) +
                                            (x < 32 ? 0u : 0x100000u));
  save(surroundings, "around.bmp");
  Mesh8 ball = scene.CreateMeshBuilder();
  ball.CreateSphere(scene.LoadTexture("around.bmp"), 10, 32, 32);
  std::vector<images::Image> views;
  for (const int mode : {0, 1})
    for (const double x : {0.0, 25.0}) {
      ball.EnableSphereMapping(True, mode);
      camera.SetCamera(x, 10, -25, 0, 0, 0);
      views.push_back(frame());
    }
  EXPECT_TRUE(matchesGolden(sheet(views, 2), "mesh-sphere-mapping"));
}

TEST_F(MeshPictures, DecalsWhereRaysHit) {
  start(320, 240);
  save(checks(0xFF706050, 0xFF807060), "wall.bmp");
  images::Image mark{32, 32, std::vector<std::uint32_t>(32 * 32, 0xFF000000)};
  for (std::uint32_t y = 0; y < 32; ++y)
    for (std::uint32_t x = 0; x < 32; ++x) {
      const float d = std::hypot(static_cast<float>(x) - 15.5f, static_cast<float>(y) - 15.5f);
      if (d < 13) mark.at(x, y) = d > 9 || x == y ? 0xFFFFC040 : 0xFF402000;
    }
  save(mark, "mark.bmp");
  Mesh8 room = scene.CreateMeshBuilder();
  const Texture8 stone = scene.LoadTexture("wall.bmp"), spot = scene.LoadTexture("mark.bmp");
  room.AddWall(stone, -40, 20, 10, 20, 40, -20, 3, 3);
  room.AddWall(stone, 10, 20, 40, -10, 40, -20, 3, 3);
  room.AddFloor(stone, -40, -20, 40, 30, -20, 3, 3);
  camera.SetCamera(0, 15, -75, 0, -3, 20);
  frame();
  scene.SetCollisionPrecision(500);
  Globals8 globals;
  int hits = 0;
  for (const auto& [x, y] :
       std::array<std::array<int, 2>, 6>{{{80, 110}, {140, 100}, {220, 80}, {270, 130}, {150, 190}, {5, 5}}}) {
    const CollisionResult8 hit = scene.MousePicking(x, y, QL_COLLIDE_MESH, QL_TESTTYPE_ACCURATETESTING);
    if (!hit.IsCollision()) continue;
    ++hits;
    EXPECT_EQ(hit.GetCollisionMesh(), room);
    Vec3 normal = globals.VNormalize(hit.GetCollisionNormal());
    if (globals.VDotProduct(normal, globals.VSubtract(hit.GetImpactPoint(), camera.GetCameraPosition())) > 0)
      normal = globals.VScale(normal, -1);
    globals.CreateDecal(hit.GetImpactPoint(), normal, spot, 10);
  }
  EXPECT_EQ(hits, 5);
  EXPECT_TRUE(matchesGolden(frame(), "mesh-decals"));
}

TEST_F(MeshPictures, SkyBoxFaces) {
  start(120, 90);
  constexpr std::array<char, 6> kLetters{'L', 'R', 'F', 'K', 'T', 'B'};  // K for back
  constexpr std::array<std::uint32_t, 6> kColors{0xFFA03030, 0xFF30A030, 0xFF3030A0,
                                                 0xFFA0A030, 0xFFA030A0, 0xFF30A0A0};
  for (std::size_t i = 0; i < 6; ++i) save(labelled(kLetters[i], kColors[i]), "sky" + std::to_string(i + 1) + ".bmp");
  scene.LoadSky("sky1.bmp", 500);
  scene.SetViewFrustum(100, 2000);
  std::vector<images::Image> views;
  for (const Vec3& to : {Vec3{0, 0, -1}, {0, 0, 1}, {-1, 0, 0}, {1, 0, 0}, {0.01f, -1, 0}, {0.01f, 1, 0}}) {
    camera.SetCamera(5000, 100, 7, 5000 + to.x, 100 + to.y, 7 + to.z);
    engine.Clear();
    scene.RenderSky();
    engine.RenderToScreen();
    views.push_back(backBuffer());
  }
  EXPECT_TRUE(matchesGolden(sheet(views, 3), "sky-box"));
}

TEST_F(MeshPictures, ParentsAndChildren) {
  start(200, 150);
  save(labelled('P', 0xFF3060C0), "p.bmp");
  save(labelled('J', 0xFFC06030), "j.bmp");
  Mesh8 parent = scene.CreateMeshBuilder();
  parent.AddWall(scene.LoadTexture("p.bmp"), -8, 0, 8, 0, 16, -8);
  Mesh8 child = parent.CreateChild();
  child.AddWall(scene.LoadTexture("j.bmp"), -4, 0, 4, 0, 8, -4);
  child.SetPosition(14, 8, 0);
  std::vector<images::Image> views;
  camera.SetCamera(0, 0, -45, 0, 0, 0);
  for (const float turn : {0.0f, 40.0f, 80.0f, 120.0f}) {
    parent.SetRotation(0, 0, turn);
    views.push_back(frame());
  }
  EXPECT_TRUE(matchesGolden(sheet(views, 2), "mesh-children"));
}

}  // namespace
}  // namespace ql::test
