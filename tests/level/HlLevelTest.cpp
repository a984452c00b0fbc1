#include "RunningLevel.h"
#include "render/Lights.h"
#include "render/TextureTable.h"
#include "support/SharedData.h"
#include "support/TinyHlLevel.h"

#include <filesystem>
#include <numbers>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::level {
namespace {

using test::mipTexture;
using test::TinyHlLevel;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

void putBytes(const std::string& name, const std::vector<std::byte>& bytes) {
  test::put(name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

class HlLevelTest : public RunningLevel {
 protected:
  void load(const TinyHlLevel& tiny, const LoadOptions& options = {}) { loadBytes(tiny.bytes(), "tiny.bsp", options); }
  /// Camera at a point of the file's space.
  void stand(float x, float y, float z) {
    context.cameraPosition = {-x, z, -y};
    context.cameraLookAt = math::add(context.cameraPosition, {1, 0, 0});
    machine.clock->now += 2001;
  }
};

// Fans (6) of four vertices each, in the faces' order.
constexpr const char* kWest = "DrawPrimitive(6, 0, 2)";
constexpr const char* kEast = "DrawPrimitive(6, 4, 2)";
constexpr const char* kFence = "DrawPrimitive(6, 12, 2)";
constexpr const char* kPane = "DrawPrimitive(6, 16, 2)";
constexpr const char* kTrigger = "DrawPrimitive(6, 20, 2)";

TEST_F(HlLevelTest, LogsItsLoading) {
  load({});
  const Lines lines = machine.logLines();
  EXPECT_THAT(Lines(std::find(lines.begin(), lines.end(), " Load header and lumps."), lines.end()),
              ElementsAre(" Load header and lumps.", "Load entities.", "BSP file Summary :",
                          "Vertexes, models, planes, leafs loaded", "24 Vertexes", "5 Textures", "3 Models", "6 Faces",
                          "243 lightmap bytes.", std::to_string(TinyHlLevel().entities.size()) + " entity bytes",
                          "BSP TREE : Load textures.", "floor no found in WAD3 Pack", "sky no found in WAD3 Pack",
                          "TEXTURE FACTORY : Load texture sky.bmp / Name : ",
                          "TEXTURE FACTORY : ERROR sky.bmp texture NOT FOUND ! ", "{fence no found in WAD3 Pack",
                          "glass no found in WAD3 Pack", "TEXTURE FACTORY : Load texture glass.bmp / Name : ",
                          "TEXTURE FACTORY : ERROR glass.bmp texture NOT FOUND ! ", "aaatrigger no found in WAD3 Pack",
                          "TEXTURE FACTORY : Load texture aaatrigger.bmp / Name : ",
                          "TEXTURE FACTORY : ERROR aaatrigger.bmp texture NOT FOUND ! ",
                          "BSP TREE : textures that are nowhere, replaced: glass", "BSP TREE : Create world..."));
}

TEST_F(HlLevelTest, LooksForTexturesInTheirOrder) {
  // Each place gives floor another colour: red is 40 in the older package, 72 in the newer one, 10 in the level.
  putBytes("old.wad", test::wadFile({{"FLOOR", mipTexture("FLOOR", 16, 40)}, {"glass", mipTexture("glass", 16, 200)}}));
  putBytes("new.wad", test::wadFile({{"floor", mipTexture("floor", 16, 72)}}));
  level->copyTexturesTo(".", false);
  const auto redOf = [&](const char* name) {
    std::ifstream in(std::string(name) + ".bmp", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    std::filesystem::remove(std::string(name) + ".bmp");
    return bytes.size() < 57 ? -1 : static_cast<unsigned char>(bytes[56]) / 32;
  };
  load({});
  EXPECT_EQ(redOf("floor"), 0);
  EXPECT_EQ(redOf("glass"), -1);
  level->openPackage("old.wad");
  load({});
  EXPECT_EQ(redOf("floor"), 1);
  level->openPackage("new.wad");
  load({});
  EXPECT_EQ(redOf("floor"), 2);
  EXPECT_EQ(redOf("glass"), 6) << "from the older package";
  EXPECT_THAT(machine.logLines(), Not(Contains("floor no found in WAD3 Pack")));
  EXPECT_THAT(machine.logLines(), Contains("glass no found in WAD3 Pack")) << "before it is looked for elsewhere";
  level->openPackage("missing.wad");
  load({});
  EXPECT_THAT(machine.logLines(), Contains(" Error in LoadTextures "));
  EXPECT_EQ(redOf("floor"), 2) << "what else is open still counts";
  level->closePackages();
  load({});
  EXPECT_EQ(redOf("floor"), 0);
}

TEST_F(HlLevelTest, LoadsAndCopiesBitmapsByNameOrNumber) {
  const images::Image red{1, 1, {0xFFFF0000}, false};
  putBytes("3.bmp", images::encodeBmp(red));
  putBytes("glass.bmp", images::encodeBmp(red));
  std::filesystem::create_directory("copies");
  level->copyTexturesTo("copies", true);
  load({}, {.textureNumber = true});
  EXPECT_THAT(machine.logLines(), IsSupersetOf({"TEXTURE FACTORY : Load texture 3.bmp / Name : ",
                                                "TEXTURE FACTORY : ERROR 1.bmp texture NOT FOUND ! "}));
  EXPECT_TRUE(std::filesystem::exists("copies/3.bmp"));
  EXPECT_TRUE(std::filesystem::exists("copies/0.bmp")) << "made from the level's own pixels";
  EXPECT_FALSE(std::filesystem::exists("copies/1.bmp"));
  level->copyTexturesTo("copies", false);
  load({});
  EXPECT_TRUE(std::filesystem::exists("copies/glass.bmp"));
  // Names cannot lead out of the folder.
  TinyHlLevel sly;
  sly.textures[0] = mipTexture("../../sly", 16, 10);
  load(sly);
  EXPECT_TRUE(std::filesystem::exists("copies/.._.._sly.bmp"));
  std::filesystem::create_directory("elsewhere");
  load({}, {.texturePath = "elsewhere"});
  EXPECT_EQ(std::filesystem::current_path().filename(), "elsewhere");
  std::filesystem::current_path("..");
  load({}, {.loadTextures = false});
  EXPECT_THAT(machine.logLines(), Not(Contains("BSP TREE : Load textures.")));
  stand(64, 64, 32);
  EXPECT_FALSE(draws().empty());
}

TEST_F(HlLevelTest, DrawsInTheGivenOrder) {
  load({});
  stand(64, 64, 32);
  const Lines calls = render();
  const std::string on = "4294967295";
  const auto has = [&](std::initializer_list<const char*> sequence) {
    auto at = calls.begin();
    for (const char* call : sequence) {
      at = std::find(at, calls.end(), call);
      if (at == calls.end()) return testing::AssertionFailure() << call;
      ++at;
    }
    return testing::AssertionSuccess();
  };
  EXPECT_TRUE(has({"SetRenderState(137, 0)", "SetRenderState(19, 9)", "SetRenderState(20, 1)", "SetRenderState(22, 1)",
                   "SetRenderState(27, 0)", "SetTextureStageState(1, 18, 1)", "SetTextureStageState(0, 18, 1)",
                   "SetVertexShader(530)"}));
  EXPECT_TRUE(has({"SetTextureStageState(0, 11, 1)", kWest, "SetRenderState(25, 5)", "SetRenderState(24, 0)",
                   "SetRenderState(15, 4294967295)", "SetRenderState(27, 4294967295)", "SetTextureStageState(0, 11, 0)",
                   kWest, "SetRenderState(27, 0)"}))
      << "light, then textures over it";
  EXPECT_TRUE(
      has({"SetRenderState(27, 0)", "SetRenderState(24, 127)", kFence, "SetRenderState(24, 0)", "SetRenderState(20, 4)",
           "SetRenderState(19, 5)", "SetRenderState(27, 4294967295)", "SetRenderState(14, 0)", "SetRenderState(19, 5)",
           "SetRenderState(20, 6)", "SetRenderState(60, 1677721600)", kPane, "SetRenderState(27, 0)",
           "SetRenderState(14, 4294967295)", "SetRenderState(137, 0)"}))
      << "holes, then what is translucent, as much as it says";
  EXPECT_EQ(context.facesThisFrame, 4U) << "no sky, no trigger";
  EXPECT_EQ(context.device->getTextureStageState(0, device::StageState::ColorOp), 4U) << "stages as they were";
  EXPECT_EQ(context.device->getTextureStageState(1, device::StageState::ColorOp), 1U);

  stand(-64, 64, 32);
  EXPECT_THAT(draws(), ElementsAre(kWest, kWest, kPane)) << "from the west only the west is seen; models always";
  level->setParameters(false, true, 3, false);
  EXPECT_THAT(draws(), ElementsAre(kWest, kPane));
  EXPECT_THAT(recorder.lines(), IsSupersetOf({"SetRenderState(22, 3)", "SetRenderState(15, 0)"}));
  level->setParameters(false, false, 1, false);
  EXPECT_THAT(draws(), ElementsAre(kEast, kWest, kFence, kPane)) << "models only once";
}

TEST_F(HlLevelTest, DrawsModesAsTheyAreKnown) {
  struct Case {
    const char* mode;
    Lines states;
  };
  for (const Case& c :
       {Case{"1", {"SetRenderState(20, 6)", "SetRenderState(60, 1677787140)", "SetTextureStageState(0, 2, 3)"}},
        Case{"2", {"SetRenderState(20, 6)", "SetTextureStageState(0, 2, 2)", "SetTextureStageState(0, 4, 4)"}},
        Case{"5", {"SetRenderState(19, 5)", "SetRenderState(20, 2)"}}}) {
    TinyHlLevel tiny;
    tiny.entities = std::string("{\n\"model\" \"*1\"\n\"renderamt\" \"100\"\n\"rendercolor\" \"1 0 4\"\n") +
                    "\"rendermode\" \"" + c.mode + "\"\n}\n";
    load(tiny);
    stand(-64, 64, 32);
    render();
    EXPECT_THAT(recorder.lines(), IsSupersetOf(c.states)) << c.mode;
  }
  TinyHlLevel solid;
  solid.entities = "{\n\"model\" \"*1\"\n\"rendermode\" \"4\"\n}\n";
  load(solid);
  stand(-64, 64, 32);
  const Lines calls = render();
  EXPECT_LT(std::find(calls.begin(), calls.end(), kPane),
            std::find(calls.begin(), calls.end(), "SetRenderState(14, 0)"))
      << "before depth stops being written";
}

TEST_F(HlLevelTest, HidesTriggersOfModelsAlone) {
  TinyHlLevel tiny;
  for (level::HlFace& face : tiny.faces) face.textureInfo = 4;
  load(tiny);
  stand(64, 64, 32);
  EXPECT_THAT(draws(), IsSupersetOf({kWest, kEast}));
  EXPECT_THAT(draws(), Not(Contains(kPane)));
  EXPECT_THAT(draws(), Not(Contains(kTrigger)));
}

TEST_F(HlLevelTest, CullsModelsByTheirSpheres) {
  load({});
  stand(-64, 64, 32);
  context.frustumPlanes[3] = {1, 0, 0, -1000};
  EXPECT_TRUE(draws().empty());
  // The pane's middle is at (-32, 32, -64) of the world, its radius 71.6, the margin 30.
  context.frustumPlanes[3] = {0, 1, 0, -130};
  EXPECT_THAT(draws(), Contains(kPane));
  context.frustumPlanes[3] = {0, 1, 0, -140};
  EXPECT_THAT(draws(), Not(Contains(kPane)));
}

TEST_F(HlLevelTest, MakesLights) {
  load({}, {.createDynamicLights = true});
  const render::LightEntry& light = context.get<render::LightTable>().entries[1];
  ASSERT_TRUE(light.used);
  EXPECT_EQ(light.record.range, 300);
  EXPECT_EQ(light.record.diffuse.r, 10);
  EXPECT_NEAR(light.record.diffuse.g, 5.02f, 0.01f);
  EXPECT_EQ(light.record.diffuse.b, 0);
  EXPECT_NEAR(light.record.position.x, -1, 1e-5f);
  EXPECT_NEAR(light.record.position.y, 3, 1e-5f);
  EXPECT_NEAR(light.record.position.z, -2, 1e-5f);
  TinyHlLevel many;
  for (int i = 0; i < 300; ++i)
    many.entities += "{\n\"classname\" \"light_spot\"\n\"origin\" \"0 0 0\"\n\"_light\" \"1 1 1\"\n}\n";
  load(many, {.createDynamicLights = true});
  EXPECT_EQ(machine.logLines().back(), "BSP TREE : Create world...") << "as many as there is room for";
}

TEST_F(HlLevelTest, AnswersQueries) {
  load({});
  context.collisionPrecision = 1000;
  // World: x = -file x, y = file z, z = -file y.
  EXPECT_TRUE(level->detectCollision({64, 50, -64}, {64, 40, -64}));
  EXPECT_NEAR(context.lastHitPoint.y, 0, 1e-4f);
  EXPECT_NEAR(context.lastHitNormal.x, 0, 1e-2f);
  EXPECT_NEAR(level->altitude({64, 50, -64}), 0, 1e-3f);
  EXPECT_FLOAT_EQ(level->altitude({900, 50, -64}), 50) << "over nothing";
  EXPECT_TRUE(level->detectCollision({0, 32, -64}, {-1, 32, -64})) << "the pane at x = 32";
  EXPECT_FALSE(level->detectSphereCollision({64, 50, -64}, 1, 0));
  EXPECT_TRUE(level->detectSphereCollision({64, -7, -64}, 4, 0)) << "9 above the solid ground: span 3";
  EXPECT_FALSE(level->detectSphereCollision({64, -7, -64}, 3, 0));
  EXPECT_TRUE(level->detectSphereCollision({64, -20, -64}, 1, 1)) << "the flag is not for these levels";
  EXPECT_FALSE(level->moveSphere({64, 50, -64}, {64, 45, -64}, 2).collision);
  const engine::HitResult hit = level->moveSphere({64, 50, -64}, {64, -16, -64}, 8);
  EXPECT_TRUE(hit.collision);
  EXPECT_EQ(hit.objectId, engine::kLevelObject);
  EXPECT_EQ(context.lastHitPoint, math::Vec3()) << "a tree alone has no point";
  EXPECT_FALSE(level->lineSight({-64, 64, 32}, {-64, 64, -40}, 0)) << "file coordinates";
  EXPECT_TRUE(level->lineSight({-64, 64, 32}, {64, 64, 32}, 0));
  EXPECT_THROW(level->lineSight({}, {}, 2), engine::EngineError);
}

TEST_F(HlLevelTest, SurvivesDamagedFiles) {
  QL_NEED_SHARED_DATA();
  int files = 0;
  context.collisionPrecision = 100;
  for (const char* kind : {"hostile/hlbsp/bsp", "hostile/hlbsp/wad", "hostile/wad3/wad"}) {
    for (const auto& path : test::sharedFiles(kind)) {
      SCOPED_TRACE(path);
      std::string name = path.string();
      machine.clearLog();
      if (path.extension() == ".wad") {
        level->openPackage(name);
        load({});
        level->closePackages();
      } else {
        level->load(name, {});
      }
      render();
      machine.clock->now += 2001;
      context.cameraPosition = level->startPosition();
      render();
      level->detectCollision(context.cameraPosition, {});
      level->moveSphere(context.cameraPosition, {}, 50);
      level->lineSight({}, {100, 100, 100}, 0);
      ++files;
    }
  }
  EXPECT_GE(files, 60);
}

}  // namespace
}  // namespace ql::level
