// Meshes from files as they look: a toy house from 3D Studio and X files, meshes that went through the engine's own
// files, and one that an earlier version of the engine wrote.
#include "Pictures.h"
#include "ToyHouse.h"

#include <numbers>

namespace ql::test {
namespace {

class MeshFilePictures : public PictureTest {
 protected:
  void start() {
    PictureTest::start(160, 120);
    scene.SetSceneBackGround(0.25f, 0.3f, 0.35f);
    // The materials of 3DS files add ambient light, those of X files have none: the pictures' own light is direct.
    key = lights.CreateDirectionalLight({}, 0.75f, 0.75f, 0.75f, 1);
    lights.SetLightAmbientColor(key, 0, 0, 0, 1);
    save(labelled('F', 0xFF40A040), "f.bmp");
    std::filesystem::create_directory("art");
    save(labelled('L', 0xFF4060C0), "art/l.bmp");
    images::Image stripes{64, 64, std::vector<std::uint32_t>(64 * 64)};
    for (std::uint32_t y = 0; y < 64; ++y)
      for (std::uint32_t x = 0; x < 64; ++x)
        stripes.at(x, y) = (x + y) / 8 % 2 != 0 ? 0xFFE0C060 : y < 32 ? 0xFFA04030 : 0xFF5050A0;
    save(stripes, "stripes.bmp");
  }
  /// What stands in the scene, from four sides: front, right, back and left, each a little to the right and above.
  images::Image aroundThe(const Vec3& center, double distance) {
    std::vector<images::Image> views;
    for (int side = 0; side < 4; ++side) {
      const double angle = (side * 90 + 25) * std::numbers::pi / 180;
      const double x = std::sin(angle), z = -std::cos(angle);
      camera.SetCamera(center.x + distance * x, center.y + distance * 0.4, center.z + distance * z, center.x, center.y,
                       center.z);
      // Over the camera's left shoulder.
      lights.SetLightDirection(key, static_cast<float>(-x - z * 0.3), -0.6f, static_cast<float>(-z + x * 0.3));
      views.push_back(frame());
    }
    return sheet(views, 2);
  }
  LightEngine8 lights;
  std::int16_t key = 0;
};

TEST_F(MeshFilePictures, ThreeDStudio) {
  start();
  writeBytes(std::filesystem::absolute("house.3ds"), toyHouse3ds());
  Mesh8 house = scene.CreateMeshBuilder();
  house.Load3DsMesh("house.3ds");
  house.ScaleMesh(-1, 1, 1);  // such files have z up
  house.SetRotation(-90, 0, 0);
  EXPECT_TRUE(matchesGolden(aroundThe({3, 5, 0}, 32), "mesh-file-3ds"));
}

TEST_F(MeshFilePictures, XFilesOfEveryKind) {
  start();
  for (const XKind kind : {XKind::Text, XKind::Binary, XKind::CompressedText, XKind::CompressedBinary}) {
    SCOPED_TRACE(static_cast<int>(kind));
    writeBytes(std::filesystem::absolute("house.x"), toyHouseX(kind));
    Mesh8 house = scene.CreateMeshBuilder();
    house.LoadXFile("house.x");
    EXPECT_TRUE(matchesGolden(aroundThe({3, 5, 0}, 32), "mesh-file-x"));
  }
}

/// A hall of groups with their own textures, materials and blending, lit, and a glass of coloured vertices.
class OwnFiles : public MeshFilePictures {
 protected:
  /// Textures and materials, in the order in which files number them.
  void start() {
    MeshFilePictures::start();
    f = scene.LoadTexture("f.bmp");
    stripes = scene.LoadTexture("stripes.bmp");
    gold = materials.CreateMaterialQuick(0.9f, 0.7f, 0.2f, 1, "Gold");
    for (const std::int16_t material : {std::int16_t{0}, gold}) {
      materials.SetAmbient(material, 0.2f, 0.2f, 0.2f, 1);
      materials.SetEmissive(material, 0, 0, 0, 1);
    }
  }
  void build() {
    hall = scene.CreateMeshBuilder("Hall");
    glass = scene.CreateMeshBuilder("Glass");
    hall.AddFloor(stripes, -10, -10, 10, 10, 0, 3, 3);
    hall.AddWall(f, -10, 10, 10, 10, 12);
    hall.AddWall(stripes, 10, 10, 10, -10, 12, 0, 2, 2);
    hall.AddWall2(nullptr, -10, -10, -10, 10, 4, 12);
    hall.ComputeNormals();
    hall.SetMaterial(gold, 3);
    hall.SetMaterial(gold, 5);
    hall.SetRotation(0, 10, 0);
    hall.SetPosition(1, -1, 0);
    glass.AddWall(nullptr, -6, -2, 6, -6, 9);
    glass.AddWall(f, -3, 0, 3, 3, 6);
    const std::int32_t colors[] = {0x40FF4000, 0x4040FF00, 0x400040FF, 0x40FFFFFF};
    for (int v = 0; v < 4; ++v) glass.SetColor(colors[v], v);
    glass.SetVertexType(QL_COLOR_VERTEX);
    glass.SetBlendingMode(QL_BLEND_ADD, 3);
    glass.ScaleMesh(1, 1.2f, 1);
  }
  void saveMeshes(const std::string& where) {
    hall.SaveToQLO(where + "hall-v8.qlo", True);
    glass.SaveToQLO(where + "glass-v8.qlo", True);
    glass.SaveMesh(where + "glass-v8.qlm");
  }
  void loadMeshes(const std::string& where) {
    hall = glass = nullptr;
    hall = scene.CreateMeshBuilder();
    glass = scene.CreateMeshBuilder("12345");
    hall.LoadFromQLO(where + "hall-v8.qlo");
    glass.LoadMesh(where + "glass-v8.qlm");
    EXPECT_EQ(Globals8().GetMesh("Glass"), glass) << "a dump gives the name back";
    glass.LoadFromQLO(where + "glass-v8.qlo");
    for (Mesh8* mesh : {&hall, &glass}) mesh->SetPrimitiveType(QL_TRIANGLESTRIP);  // files do not keep it
  }
  images::Image picture() { return aroundThe({0, 5, 0}, 34); }
  Mesh8 hall, glass;
  Texture8 f, stripes;
  MaterialFactory8 materials;
  std::int16_t gold = 0;
};

TEST_F(OwnFiles, GiveThePictureBack) {
  start();
  build();
  const images::Image before = picture();
  saveMeshes("");
  loadMeshes("");
  EXPECT_EQ(picture().pixels, before.pixels);
  EXPECT_TRUE(matchesGolden(before, "mesh-file-qlof"));
}

TEST_F(OwnFiles, OfAnEarlierVersionDoToo) {
  start();
  loadMeshes(QL_TEST_DATA_DIR "/");
  EXPECT_TRUE(matchesGolden(picture(), "mesh-file-qlof"));
}

/// Run with --gtest_also_run_disabled_tests to make the files of a new version.
TEST_F(OwnFiles, DISABLED_Write) {
  start();
  build();
  frame();
  saveMeshes(QL_TEST_DATA_DIR "/");
}

}  // namespace
}  // namespace ql::test
