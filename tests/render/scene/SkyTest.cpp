#include "render/RenderTest.h"
#include "render/scene/Scene.h"

#include <cstring>

namespace ql::render::scene {
namespace {

using testing::ElementsAre;

struct Sky : test::RenderTest {
  std::shared_ptr<Scene> scene;
  void SetUp() override {
    RenderTest::SetUp();
    startScenes(context);
    scene = createScene(context);
  }
  std::vector<std::string> loadedFiles() {
    std::vector<std::string> files;
    const auto& entries = context.get<TextureTable>().entries;
    for (std::int32_t i = 1; i <= entries.count(); ++i) files.push_back(entries.at(i).fileName);
    return files;
  }
};

TEST_F(Sky, LoadsSixNumberedPictures) {
  std::filesystem::create_directories("sky");
  for (int i = 1; i <= 6; ++i) picture("sky/day" + std::to_string(i) + ".bmp", 4, 4, 0x101010);
  scene->loadSky("sky/day3.bmp", 800);
  EXPECT_THAT(loadedFiles(), ElementsAre("sky/day1.bmp", "sky/day2.bmp", "sky/day3.bmp", "sky/day4.bmp", "sky/day5.bmp",
                                         "sky/day6.bmp"));
  EXPECT_THROW(scene->loadSky(".bmp", 800), engine::EngineError);
}

TEST_F(Sky, SurroundsTheCameraWithItsFaces) {
  context.cameraPosition = {10, 20, 30};
  for (int i = 1; i <= 6; ++i) picture("a" + std::to_string(i) + ".bmp", 4, 4, 0x101010);
  std::filesystem::remove("a5.bmp");  // one picture is missing
  scene->loadSky("a1.bmp", 600);
  engine::clear(context);
  recorder.clear();
  scene->renderSky();
  std::vector<std::string> states;
  for (const std::string& line : recorder.lines({"SetRenderState", "SetVertexShader"})) states.push_back(line);
  EXPECT_THAT(states, ElementsAre("SetRenderState(137, 0)", "SetRenderState(27, 0)", "SetVertexShader(450)",
                                  "SetRenderState(22, 1)"));
  EXPECT_EQ(recorder.lines({"SetTexture"}).at(4), "SetTexture(0, 0)");
  EXPECT_EQ(context.device->getTransform(device::Transform::World).m42, 20);

  // The plane of each face: left z-, right z+, front x-, back x+, top y-, bottom y+.
  constexpr math::Vec3 kPlanes[] = {{0, 0, -600}, {0, 0, 600}, {-600, 0, 0}, {600, 0, 0}, {0, -600, 0}, {0, 600, 0}};
  std::size_t face = 0;
  for (const recording::Recorder::Call& call : recorder.calls()) {
    if (call.name != "DrawPrimitiveUP") continue;
    ASSERT_EQ(call.blobs.at(0).size(), 4 * sizeof(Quasarlens3D::LitVertex));
    math::Vec3 middle;
    float tu = 0, tv = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      Quasarlens3D::LitVertex v;
      std::memcpy(&v, call.blobs[0].data() + i * sizeof v, sizeof v);
      middle = math::add(middle, math::scale({v.x, v.y, v.z}, 0.25f));
      tu += v.tu;
      tv += v.tv;
      EXPECT_EQ(v.diffuse, -1);
    }
    EXPECT_EQ(middle, kPlanes[face]) << face;
    EXPECT_EQ(tu, 2) << "each corner of the picture once";
    EXPECT_EQ(tv, 2);
    ++face;
  }
  EXPECT_EQ(face, SkyBox::kFaces);
}

TEST_F(Sky, NeedsADevice) {
  engine::EngineContext idle(machine.platform());
  EXPECT_THROW(createScene(idle)->renderSky(), engine::EngineError);
}

}  // namespace
}  // namespace ql::render::scene
