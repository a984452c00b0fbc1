// Mesh files as hosts use them.
#include "Engine.h"
#include "support/PakFile.h"
#include "support/PictureFiles.h"
#include "support/ThreeDsFiles.h"
#include "support/XFiles.h"

#include <functional>
#include <vector>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

constexpr std::int32_t kInvalidData = static_cast<std::int32_t>(0x88760B59);

std::string textOf(const std::vector<std::byte>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class MeshFiles : public EngineTest {
 protected:
  MeshFiles() { start(); }
  Scene8 scene;
};

TEST_F(MeshFiles, AMeshGoesThroughAFile) {
  Mesh8 wall = scene.CreateMeshBuilder("Wall");
  wall.AddWall(nullptr, 0, 0, 10, 0, 5);
  wall.SetPosition(1, 2, 3);
  wall.SetBlendingMode(QL_BLEND_ADD);
  wall.SaveToQLO("wall.qlo");
  Mesh8 copy = scene.CreateMeshBuilder();
  copy.LoadFromQLO("WALL.QLO");
  EXPECT_EQ(copy.GetPosition(), (Vec3{1, 2, 3}));
  EXPECT_EQ(copy.AddVertex(0, 0, 0, -1, 0, 0), 5) << "four were loaded";
  EXPECT_EQ(Globals8().GetMesh("wall"), wall) << "both have that name; the first is found";
  wall.SaveToQLO("again.qlo");
  EXPECT_EQ(contents("again.qlo").size(), contents("wall.qlo").size());

  // Drawn, it is the same picture.
  Camera8 camera;
  camera.SetCamera(5, 4, -10, 5, 4, 0);
  copy = nullptr;
  Mesh8 drawn = scene.CreateMeshBuilder();
  drawn.LoadFromQLO("wall.qlo");
  drawn.SetPrimitiveType(QL_TRIANGLESTRIP);
  std::vector<std::uint32_t> pictures[2];
  for (int i = 0; i < 2; ++i) {
    engine.Clear();
    (i == 0 ? wall : drawn).Render();
    engine.RenderToScreen();
    pictures[i] = internals.GetBackbuffer().ReadPixels();
  }
  EXPECT_EQ(pictures[0], pictures[1]);
}

TEST_F(MeshFiles, AShapeIsSavedWithoutItsGeometry) {
  Mesh8 teapot = scene.CreateMeshBuilder("Pot");
  teapot.CreateTeapot();
  teapot.SaveToQLO("pot.qlo");
  Mesh8 back = scene.CreateMeshBuilder();
  back.LoadFromQLO("pot.qlo");
  engine.Clear();
  back.Render();
  engine.RenderToScreen();
  EXPECT_FALSE(back.Collision({0, 0, -100}, {0, 0, 1}));
}

TEST_F(MeshFiles, ErrorsReachTheHost) {
  put("text.x", "xof 0303txt 0032\nMesh { 3; }");
  put("note", "no mesh at all");
  put("short.qlm", "QLMESH");
  Mesh8 mesh = scene.CreateMeshBuilder("Mesh");
  struct Row {
    const char* name;
    std::function<void()> act;
    std::int32_t error;
  };
  const Row rows[] = {
      {"missing chunks", [&] { mesh.LoadFromQLO("none"); }, 53},
      {"other chunks", [&] { mesh.LoadFromQLO("note"); }, 0},
      {"missing dump", [&] { mesh.LoadMesh("none"); }, 53},
      {"other dump", [&] { mesh.LoadMesh("note"); }, 0},
      {"short dump", [&] { mesh.LoadMesh("short.qlm"); }, 62},
      {"chunks into no folder", [&] { mesh.SaveToQLO("no/mesh.qlo"); }, 76},
      {"dump into no folder", [&] { mesh.SaveMesh("no/mesh.qlm"); }, 76},
      {"missing X file", [&] { mesh.LoadXFile("none.x"); }, 53},
      {"damaged X file", [&] { mesh.LoadXFile("text.x"); }, kInvalidData},
      {"another file as X file", [&] { mesh.LoadXFile("note"); }, kInvalidData},
      {"missing 3DS file", [&] { mesh.Load3DsMesh("none.3ds"); }, 0},
      {"another file as 3DS file", [&] { mesh.Load3DsMesh("note"); }, 0},
      {"nothing", [] { Mesh8(nullptr).LoadXFile("none"); }, 91},
  };
  for (const Row& row : rows) EXPECT_EQ(errorOf(row.act), row.error) << row.name;
}

TEST_F(MeshFiles, A3DStudioFileIsTakenFromTheArchive) {
  Tiny3ds file;
  put("models.pak", PakFile({{"models/box.3ds", textOf(file.bytes())}}).bytes);
  engine.OpenPAKFile("models.pak");
  Mesh8 mesh = scene.CreateMeshBuilder();
  std::string name = "models/box.3ds";
  mesh.Load3DsMesh(name);
  EXPECT_EQ(name, "box.3ds") << "the extracted copy";
  EXPECT_FALSE(std::filesystem::exists(name)) << "which is gone again";
  EXPECT_EQ(mesh.AddVertex(0, 0, 0, -1, 0, 0), 10);
  EXPECT_THAT(engineLog(), testing::HasSubstr("Loading 3DS mesh : box.3ds..."));
}

TEST_F(MeshFiles, AnXFileIsDrawn) {
  put("tiny.x", textOf(tinyX(XKind::CompressedText)));
  Mesh8 mesh = scene.CreateMeshBuilder();
  mesh.LoadXFile("tiny.x");
  Camera8 camera;
  camera.SetCamera(9, 11, -6, 9, 11, 0);
  engine.Clear();
  mesh.Render();
  engine.RenderToScreen();
  EXPECT_EQ(internals.GetFrameStatistics().triangles, 3u);
}

}  // namespace
}  // namespace ql::test
