// Spheres, teapots and solid letters in light, from several sides.
#include "Pictures.h"

namespace ql::test {
namespace {

class ShapePictures : public PictureTest {
 protected:
  void start() {
    PictureTest::start(200, 150);
    scene.SetSceneBackGround(0.15f, 0.18f, 0.22f);
    // The device's ambient light is white: how dark shadows are is the material's business.
    material = materials.CreateMaterialQuick(0.9f, 0.8f, 0.6f, 1, "Clay");
    materials.SetAmbient(material, 0.1f, 0.1f, 0.12f, 1);
    materials.SetEmissive(material, 0, 0, 0, 1);
    lights.CreateDirectionalLight({1, -1, 1}, 1, 1, 1, 1);
    lights.CreateDirectionalLight({-1, 0, -0.5f}, 0.1f, 0.15f, 0.5f, 1);
  }
  /// The scene's meshes from four sides and heights.
  images::Image fromFourSides(const Vec3& at, float distance) {
    std::vector<images::Image> views;
    for (const Vec3& from :
         {Vec3{0, 0.2f, -1}, Vec3{0.7f, 0.5f, -0.7f}, Vec3{-0.6f, -0.7f, -0.3f}, Vec3{0.1f, 0.6f, 0.8f}}) {
      camera.SetCamera(at.x + from.x * distance, at.y + from.y * distance, at.z + from.z * distance, at.x, at.y, at.z);
      views.push_back(frame());
    }
    return sheet(views, 2);
  }

  MaterialFactory8 materials;
  LightEngine8 lights;
  std::int16_t material = 0;
};

TEST_F(ShapePictures, Teapot) {
  start();
  Mesh8 teapot = scene.CreateMeshBuilder();
  teapot.CreateTeapot();
  teapot.SetMaterial(material);
  teapot.ScaleMesh(1, 1, 1);  // normals shrink where a mesh grows: at its own scale of 4 it is dark
  EXPECT_TRUE(matchesGolden(fromFourSides({}, 3.3f), "shape-teapot"));
}

TEST_F(ShapePictures, SpheresWithATexture) {
  start();
  images::Image map{32, 16, std::vector<std::uint32_t>(32 * 16, 0xFF3060A0)};
  for (std::uint32_t y = 0; y < 16; ++y)
    for (std::uint32_t x = 0; x < 32; ++x) {
      if (y == 0 || y == 15) map.at(x, y) = 0xFFFFFFFF;                                   // the poles
      if (y > 4 && y < 11 && x % 8 < 4) map.at(x, y) = x < 16 ? 0xFFA07030 : 0xFF40A040;  // four lands of two kinds
    }
  save(map, "map.bmp");
  Texture8 texture = scene.LoadTexture("map.bmp");
  Mesh8 fine = scene.CreateMeshBuilder(), coarse = scene.CreateMeshBuilder();
  fine.CreateSphere(texture, 4, 32, 24);
  coarse.CreateSphere(nullptr, 2, 8, 5);
  coarse.SetPosition(5, 2, -3);
  for (Mesh8* sphere : {&fine, &coarse}) sphere->SetMaterial(material);
  EXPECT_TRUE(matchesGolden(fromFourSides({1, 0, 0}, 14), "shape-spheres"));
}

TEST_F(ShapePictures, SolidLetters) {
  start();
  Screen8 screen;
  screen.CreateUserFont("Title", "DejaVu Serif", 10, True, True, False);
  Mesh8 sans = scene.CreateMeshBuilder(), serif = scene.CreateMeshBuilder();
  sans.Create3DText("Aq8&%");
  serif.Create3DText("Rg@i\xC3\xA4", "title");
  serif.SetPosition(0, -125, 0);
  for (Mesh8* text : {&sans, &serif}) {
    text->SetMaterial(material);
    text->ScaleMesh(1, 1, 1);
  }
  EXPECT_TRUE(matchesGolden(fromFourSides({175, -30, -20}, 380), "shape-letters"));
}

}  // namespace
}  // namespace ql::test
