#include "Engine.h"

#include <optional>
#include <type_traits>

namespace ql::test {
namespace {

TEST(Handles, CreatableClassesCreateAndTheOthersAreNothing) {
  Quasarlens8 engine;
  EXPECT_TRUE(engine);
  EXPECT_TRUE(Scene8());
  EXPECT_TRUE(Camera8());
  EXPECT_TRUE(BSPTree8());
  EXPECT_TRUE(Globals8());
  EXPECT_TRUE(TextureFactory8());
  EXPECT_TRUE(MaterialFactory8());
  EXPECT_TRUE(InternalObjects8());
  EXPECT_FALSE(Texture8());
  EXPECT_FALSE(SurfaceObject());
  EXPECT_FALSE(TextureObject());
  EXPECT_EQ(Texture8(), nullptr);
}

TEST(Handles, CopiesReferToTheSameObject) {
  Quasarlens8 engine;
  Quasarlens8 same = engine;
  same.Console(False);
  EXPECT_FALSE(engine.Console());
  EXPECT_EQ(same, engine);
  EXPECT_NE(Camera8(), Camera8());
  engine = nullptr;
  EXPECT_FALSE(engine);
  EXPECT_FALSE(same.Console()) << "the copy still holds the engine";
}

struct Use {
  const char* name;
  void (*operation)();
};
class Nothing : public testing::TestWithParam<Use> {};
TEST_P(Nothing, ThrowsObjectNotSet) {
  Quasarlens8 engine;
  EXPECT_EQ(errorOf(GetParam().operation), QL_ERROR_NOT_SET);
}
INSTANTIATE_TEST_SUITE_P(Handles, Nothing,
                         testing::Values(Use{"Engine", [] { Quasarlens8(nullptr).Clear(); }},
                                         Use{"Event", [] { (void)Quasarlens8(nullptr).RestoreObjectsAfterResize(); }},
                                         Use{"Scene", [] { Scene8(nullptr).SetSceneBackGround(0, 0, 0); }},
                                         Use{"Camera", [] { (void)Camera8(nullptr).GetCameraPosition(); }},
                                         Use{"Level", [] { BSPTree8(nullptr).Load("maps/none.bsp"); }},
                                         Use{"Globals", [] { (void)Globals8(nullptr).GetTex("wall"); }},
                                         Use{"Factory", [] { (void)TextureFactory8(nullptr).LoadTexture("a.bmp"); }},
                                         Use{"DeletedTexture", [] { TextureFactory8().DeleteTexture(Texture8()); }},
                                         Use{"TextureName", [] { (void)Globals8().GetTexNameFromObject(nullptr); }},
                                         Use{"SavedTexture", [] { Globals8().SaveTexture(TextureObject(), "a.bmp"); }},
                                         Use{"DeviceTexture", [] { (void)InternalObjects8().GetTexture(Texture8()); }},
                                         Use{"Surface", [] { (void)SurfaceObject().ReadPixels(); }},
                                         Use{"Backbuffer", [] { (void)InternalObjects8().GetBackbuffer(); }},
                                         Use{"FrameWithoutDevice", [] { Quasarlens8().Clear(); }},
                                         Use{"VisibilityWithoutDevice",
                                             [] { (void)Camera8().CheckPointVisibility(0, 0, 0); }}),
                         [](const auto& row) { return row.param.name; });

TEST(Handles, ANewEngineEndsTheOneBefore) {
  std::optional<Quasarlens8> first(std::in_place);
  first->SetEngineMode(16, 16, 32, False);
  ASSERT_TRUE(first->InitCurrentVideoMode());
  Camera8 camera;
  BSPTree8 level;
  Globals8 globals;
  MaterialFactory8().CreateMaterial("old");

  Quasarlens8 second;
  EXPECT_EQ(errorOf([&] { first->Clear(); }), QL_ERROR_NOT_SET);
  EXPECT_EQ(errorOf([&] { camera.SetCameraPosition(1, 2, 3); }), QL_ERROR_NOT_SET);
  EXPECT_EQ(errorOf([&] { level.Render(); }), QL_ERROR_NOT_SET);
  EXPECT_EQ(errorOf([&] { (void)globals.GetTex("x"); }), QL_ERROR_NOT_SET);
  EXPECT_EQ(Globals8().GetMat("old"), 0) << "the tables start afresh";

  second.SetEngineMode(16, 16, 32, False);
  ASSERT_TRUE(second.InitCurrentVideoMode());
  const std::string before = engineLog();
  first.reset();
  level = nullptr;
  EXPECT_EQ(errorOf([&] { second.Clear(); }), 0) << "the first engine's destruction must not touch the second";
  second.RenderToScreen();
  EXPECT_EQ(engineLog().find("Desallocate Textures"), std::string::npos);
}

TEST(Handles, ObjectsMadeBeforeTheFirstFrameOfAnEngineBelongToIt) {
  Quasarlens8 engine;
  Scene8 scene;
  scene.SetViewFrustum(60, 500);
  engine.SetEngineMode(16, 16, 32, False);
  ASSERT_TRUE(engine.InitCurrentVideoMode());
  scene.SetSceneBackGround(1, 1, 1);
  engine.Clear();
  engine.RenderToScreen();
  EXPECT_EQ(InternalObjects8().GetBackbuffer().ReadPixels().front() & 0xFFFFFF, 0xFFFFFFu);
}

TEST(Handles, TheEngineKeepsItsLevelUntilItEnds) {
  constexpr char kFreed[] = "BSP Tree : Desallocate Memory";
  Quasarlens8 engine;
  { BSPTree8 level; }
  EXPECT_EQ(engineLog().find(kFreed), std::string::npos);
  { BSPTree8 next; }
  EXPECT_NE(engineLog().find(kFreed), std::string::npos) << "a new level takes the first one's place";
  engine = nullptr;
  const std::string log = engineLog();
  EXPECT_NE(log.find(kFreed, log.find(kFreed) + 1), std::string::npos);
  // Materials, textures, level: in this order.
  EXPECT_LT(log.find("Desallocate Materials Memory"), log.find("Desallocate Textures Memory"));
}

TEST(Handles, ObjectsMayOutliveTheirEngine) {
  std::optional<Quasarlens8> engine(std::in_place);
  engine->SetEngineMode(16, 16, 32, False);
  ASSERT_TRUE(engine->InitCurrentVideoMode());
  BSPTree8 level;
  Texture8 texture = TextureFactory8().LoadTexture("missing.bmp");
  SurfaceObject surface = InternalObjects8().GetBackbuffer();
  engine.reset();
  EXPECT_EQ(errorOf([&] { level.Render(); }), QL_ERROR_NOT_SET);
}

}  // namespace
}  // namespace ql::test
