// Meshes and lights as hosts build them.
#include "Engine.h"

#include <functional>
#include <limits>

namespace ql::test {
namespace {

struct Meshes : EngineTest {
  Scene8 scene;
};

TEST_F(Meshes, LiveInSlotsAsLongAsAHandleDoes) {
  start();
  Mesh8 first = scene.CreateMeshBuilder(), second = scene.CreateMeshBuilder("Named"), same = second;
  EXPECT_EQ(same, second);
  EXPECT_NE(first, second);
  EXPECT_EQ(second.AddVertex(1, 2, 3, 0xFF00FF00u, 0, 0), 1);
  EXPECT_EQ(same.AddVertex(1, 2, 3, -1, 0, 0), 2) << "the same mesh, the same current group";
  second = nullptr;
  same = nullptr;
  EXPECT_EQ(scene.CreateMeshBuilder().AddVertex(0, 0, 0, 0, 0, 0), 1) << "the slot is taken again, empty";
  EXPECT_FALSE(Mesh8());
  EXPECT_EQ(Mesh8(), nullptr);
}

TEST_F(Meshes, ChildrenAreMeshesToo) {
  start();
  Mesh8 parent = scene.CreateMeshBuilder(), child = parent.CreateChild("Arm");
  EXPECT_EQ(child.AddVertex(0, 0, 0, 0, 0, 0), 1);
  EXPECT_EQ(errorOf([&] { child.AddChild(parent); }), QL_ERROR_INVALID_ARGUMENT);
  EXPECT_EQ(errorOf([&] { child.AddChild(Mesh8()); }), QL_ERROR_NOT_SET);
  parent.DeleteChilds();
  child.AddChild(parent);
}

// One row per operation that fails and its error.
struct Failing {
  const char* name;
  std::function<void(Scene8&)> operation;
  std::int64_t error;
};
constexpr double kBeyondSingle = 1e39;
const Failing kFailing[] = {
    {"nothing", [](Scene8&) { Mesh8().AddFace(nullptr, True); }, QL_ERROR_NOT_SET},
    {"a coordinate beyond a single", [](Scene8& s) { s.CreateMeshBuilder().AddVertex(kBeyondSingle, 0, 0, 0, 0, 0); },
     QL_ERROR_OVERFLOW},
    {"a colour beyond 32 bits", [](Scene8& s) { s.CreateMeshBuilder().AddVertex(0, 0, 0, 5e9, 0, 0); },
     QL_ERROR_OVERFLOW},
    {"a vertex type beyond 16 bits", [](Scene8& s) { s.CreateMeshBuilder().SetVertexType(65536 + 530); },
     QL_ERROR_OVERFLOW},
    {"a group below 0", [](Scene8& s) { s.CreateMeshBuilder().SetGroupPointer(-1); }, QL_ERROR_SUBSCRIPT},
    {"a vertex that is not there", [](Scene8& s) { s.CreateMeshBuilder().MoveVertex(1, 0, 0, 0); }, QL_ERROR_SUBSCRIPT},
    {"a missing DXE file", [](Scene8& s) { s.CreateMeshBuilder().LoadDXE("none.dxe"); }, QL_ERROR_FILE_NOT_FOUND},
    {"a sphere of one slice", [](Scene8& s) { s.CreateMeshBuilder().CreateSphere(nullptr, 1, 1, 1); },
     static_cast<std::int32_t>(0x8876086C)},
    {"a sphere of too many vertices", [](Scene8& s) { s.CreateMeshBuilder().CreateSphere(nullptr, 1, 40000, 40000); },
     QL_ERROR_OVERFLOW},
    {"letters of no text", [](Scene8& s) { s.CreateMeshBuilder().Create3DText(" "); },
     static_cast<std::int32_t>(0x8876086C)},
    {"a texture of nothing", [](Scene8& s) { Texture8().ApplyOn(s.CreateMeshBuilder()); }, QL_ERROR_NOT_SET},
    {"a light outside the table", [](Scene8&) { LightEngine8().SetLightRadius(101, 1); }, QL_ERROR_SUBSCRIPT},
    {"a material outside the table", [](Scene8&) { LightEngine8().SetMaterialPower(1, 1); }, QL_ERROR_SUBSCRIPT},
};
TEST_F(Meshes, FailuresHaveNumbers) {
  EXPECT_EQ(errorOf([&] { scene.CreateMeshBuilder().CreateTeapot(); }), QL_ERROR_NOT_SET) << "before there is a device";
  EXPECT_EQ(errorOf([] { LightEngine8().EnableLight(1, True); }), QL_ERROR_NOT_SET);
  start();
  for (const Failing& row : kFailing) EXPECT_EQ(errorOf([&] { row.operation(scene); }), row.error) << row.name;
}

TEST_F(Meshes, ALightEngineMakesMaterialsOfTheOneTable) {
  start();
  LightEngine8 lights;
  MaterialFactory8 factory;
  EXPECT_EQ(factory.CreateMaterial("First"), 1);
  EXPECT_EQ(lights.CreateMaterial(), 2);
  EXPECT_EQ(Globals8().GetMat("material2"), 2);
  lights.DeleteMaterial(2);
  lights.SetMaterialDiffuse(2, 1, 0, 0, 1);
  EXPECT_EQ(lights.CreatePointLight({0, 0, 0}, 10, 1, 1, 1, 1), 1);
  EXPECT_EQ(LightEngine8().CreateDirectionalLight({0, 0, 1}, 1, 1, 1, 1), 2) << "all light engines share the lights";
  lights.DeleteLight(1);
  EXPECT_EQ(lights.CreateDirectionalLight({0, 0, 1}, 1, 1, 1, 1), 1);
}

}  // namespace
}  // namespace ql::test
