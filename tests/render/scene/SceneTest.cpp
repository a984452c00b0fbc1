#include "render/RenderTest.h"
#include "render/scene/Scene.h"

namespace ql::render::scene {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Scenes : test::RenderTest {
  std::shared_ptr<Scene> scene;
  void SetUp() override {
    RenderTest::SetUp();
    startScenes(context);
    scene = createScene(context);
  }
};

TEST_F(Scenes, TheLastOneIsActiveAndResetsThePrecisions) {
  scene->setCollisionPrecision(5);
  scene->setPickingPrecision(6);
  EXPECT_EQ(context.collisionPrecision, 5);
  EXPECT_EQ(context.pickingPrecision, 6);
  const auto second = createScene(context);
  EXPECT_EQ(&activeScene(context), second.get());
  EXPECT_EQ(context.collisionPrecision, 30);
  EXPECT_EQ(context.pickingPrecision, 1000);
  engine::releaseEngine(context);
  EXPECT_EQ(second.use_count(), 1) << "the engine keeps it no longer";
  EXPECT_EQ(context.get<ActiveScene>().scene, nullptr);
}

TEST_F(Scenes, StatesReachTheDeviceWithTheirNumbers) {
  struct Case {
    std::function<void()> set;
    std::vector<std::string> calls;
  };
  const Case cases[] = {
      {[&] { scene->setRenderMode(1); }, {"SetRenderState(8, 1)"}},
      {[&] { scene->setRenderMode(2); }, {"SetRenderState(8, 2)"}},
      {[&] { scene->setRenderMode(3); }, {"SetRenderState(8, 3)"}},
      {[&] { scene->setRenderMode(0); }, {}},
      {[&] { scene->setRenderMode(4); }, {}},
      {[&] { scene->enableMipMapping(); }, {"SetTextureStageState(0, 18, 1)"}},
      {[&] { scene->setDithering(true); }, {"SetRenderState(26, 4294967295)"}},
      {[&] { scene->setDithering(false); }, {"SetRenderState(26, 0)"}},
  };
  for (const Case& row : cases) {
    recorder.clear();
    row.set();
    EXPECT_EQ(recorder.lines(), row.calls);
  }
}

TEST_F(Scenes, FrustumKeepsItsAspectWhateverTheBackBuffer) {
  engine::setEngineMode(context, 800, 200, 32, false, 0);
  ASSERT_TRUE(engine::initialize(context, engine::kFullScreen));
  scene->setViewFrustum(90, 5000);
  EXPECT_FLOAT_EQ(context.fieldOfView, 1.5707963265f);
  EXPECT_EQ(context.farPlane, 5000);
  EXPECT_EQ(context.aspectRatio, 0.25f) << "not consulted, not changed";
  EXPECT_NEAR(context.projectionMatrix.m22, 1, 1e-6f);
  EXPECT_NEAR(context.projectionMatrix.m11, 0.75f, 1e-6f);
  EXPECT_EQ(context.device->getTransform(device::Transform::Projection).m11, context.projectionMatrix.m11);

  engine::EngineContext idle(machine.platform());
  createScene(idle)->setViewFrustum(60, 700);
  EXPECT_EQ(idle.farPlane, 700);
  EXPECT_NEAR(idle.fieldOfView, 1.0471976f, 1e-6f);
}

TEST_F(Scenes, BackgroundIsTheColourOfClear) {
  scene->setBackground(1, 0.5f, 0);
  EXPECT_EQ(static_cast<std::uint32_t>(context.backgroundColor), 0xFFFF8000u);
  scene->setBackground(-1, 0, 1);
  EXPECT_EQ(static_cast<std::uint32_t>(context.backgroundColor), 0xFF0000FFu);
}

TEST_F(Scenes, FontChangesOnlyWhatIsGiven) {
  const fonts::FontRequest& font = context.internalFont;
  const std::string before = font.face;
  struct Case {
    const char *name, *size;
    std::string face;
    float points;
  };
  for (const Case& row : {Case{"", "", before, 8.25f},
                          {"Serif", "", "Serif", 8.25f},
                          {"", "12.5 points", "Serif", 12.5f},
                          {"", "big", "Serif", 12.5f},
                          {"Sans", "0", "Sans", 12.5f},
                          {"", "-4", "Sans", 1}}) {
    scene->selectFont(row.name, row.size, true, false, false);
    EXPECT_EQ(font.face, row.face);
    EXPECT_EQ(font.points, row.points) << row.size;
    EXPECT_TRUE(font.bold);
    EXPECT_EQ(context.systemFont->request().points, row.points);
  }
  scene->selectFont("", "", false, true, true);
  EXPECT_FALSE(font.bold);
  EXPECT_TRUE(font.italic && font.underline);
}

TEST_F(Scenes, TextIsDrawnInsideAFrame) {
  engine::clear(context);
  recorder.clear();
  scene->drawText("12 lamps", 20, 30, -1);
  EXPECT_FALSE(recorder.lines({"DrawPrimitiveUP"}).empty());
  context.device->endScene();
  engine::EngineContext idle(machine.platform());
  EXPECT_THROW(createScene(idle)->drawText("x", 0, 0, -1), engine::EngineError);
  EXPECT_THROW(createScene(idle)->selectFont("", "", false, false, false), engine::EngineError);
}

TEST_F(Scenes, TexturesAreLoadedWithoutAKey) {
  picture("black.bmp", 8, 8, 0);
  std::string file = "black.bmp";
  std::int32_t width = -1, height = -1;
  EXPECT_EQ(scene->loadTexture(file, width, height, "Night")->index, 1);
  EXPECT_EQ(width, 8);
  EXPECT_THAT(recorder.lines({"SetRenderState"}), IsEmpty());
  EXPECT_EQ(findTextureIndex(context, "night"), 1);
}

}  // namespace
}  // namespace ql::render::scene
