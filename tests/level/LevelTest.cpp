#include "RunningLevel.h"
#include "level/Lightmap.h"
#include "render/TextureTable.h"
#include "support/PakFile.h"
#include "support/SharedData.h"
#include "support/TinyQ3Level.h"

#include <cmath>
#include <numbers>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::level {
namespace {

using test::TinyQ3Level;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;

class LevelTest : public RunningLevel {
 protected:
  void load(const TinyQ3Level& tiny, const std::string& name = "tiny.bsp") { loadBytes(tiny.bytes(), name); }
  /// Camera at a point of the file's space, looking along an angle in the ground plane (degrees from +x towards -z of
  /// the world).
  void stand(float x, float y, float z, float degrees = 0) {
    const float radians = degrees * std::numbers::pi_v<float> / 180;
    context.cameraPosition = {-x, z, -y};
    context.cameraLookAt = math::add(context.cameraPosition, {std::cos(radians), 0, -std::sin(radians)});
  }
};

// Vertices 0, 6 and 12 are the floors and the ceiling, 18 the curve (8 triangles).
constexpr const char* kWest = "DrawPrimitive(4, 0, 2)";
constexpr const char* kEast = "DrawPrimitive(4, 6, 2)";
constexpr const char* kCeiling = "DrawPrimitive(4, 12, 2)";
constexpr const char* kCurve = "DrawPrimitive(4, 18, 8)";

TEST_F(LevelTest, LogsItsLoading) {
  TinyQ3Level tiny;
  tiny.faces[TinyQ3Level::kCurve].firstVertex = 0;
  tiny.vertices.assign(tiny.vertices.size(), tiny.vertices[0]);
  load(tiny);
  EXPECT_THAT(
      machine.logLines(),
      ElementsAre("", "------------------------------------", "  BSP Loader for Quasarlens ",
                  "------------------------------------", " Load header and lumps.", " QUAKE 3 MAP .", "",
                  "---------------------------------", " QUAKE BSP 3 Loading Stats       ",
                  "---------------------------------", " num  Shader        : 2", " size Entities      : 144",
                  " num  Vertex        : 22", " num  Face          : 5", " num  Vertex elem   : 6",
                  " num  Indexed faces : 6", " size PVS Info      : 10", " num  Cluster       : 2",
                  " num  Leafs         : 4", "-------------------------------------------", "Load Lightmaps : 1",
                  "Transform faces for Quasarlens", "TEXTURE FACTORY : Load texture textures/base/stone.JPG / Name : ",
                  "TEXTURE FACTORY : ERROR textures/base/stone.JPG texture NOT FOUND ! ",
                  "TEXTURE FACTORY : Load texture textures/base/wood.JPG / Name : ",
                  "TEXTURE FACTORY : ERROR textures/base/wood.JPG texture NOT FOUND ! ",
                  "QUAKE 3 MESH CURVES MAKER : ERROR : Bad controls points"));
}

TEST_F(LevelTest, EndsDamagedLoadsWithOneLine) {
  struct Case {
    const char* name;
    std::string file;
    const char* line;
  };
  const std::vector<std::byte> tiny = TinyQ3Level().bytes();
  const std::string good(reinterpret_cast<const char*>(tiny.data()), tiny.size());
  for (const Case& c :
       {Case{"missing", "", "BSP TREE : Error during loading : File not found 53"},
        Case{"not a level", std::string("\x1E\0\0\0", 4) + good,
             "BSP TREE : Error during loading : entity lump past the end of the file at 0x50534249: 46 bytes, the file "
             "has 51418 62"},
        Case{
            "three bytes", "IBS",
            "BSP TREE : Error during loading : level identifier past the end of the file at 0x0: 4 bytes, the file has "
            "3 62"},
        Case{"header cut", good.substr(0, 100),
             "BSP TREE : Error during loading : level header past the end of the file at 0x0: 144 bytes, the file has "
             "100 62"}}) {
    std::string name = "bad.bsp";
    if (!c.file.empty()) test::put(name, c.file);
    machine.clearLog();
    level->load(name, {});
    EXPECT_EQ(machine.logLines().back(), c.line) << c.name;
    std::filesystem::remove("bad.bsp");
    render();
  }
  // What stands before the damage stays.
  test::put("cut.bsp", good.substr(0, good.size() - 20));
  std::string name = "cut.bsp";
  level->load(name, {});
  EXPECT_THAT(machine.logLines().back(), testing::StartsWith("BSP TREE : Error during loading : visibility lump"));
  EXPECT_EQ(level->entityText(), TinyQ3Level().entities);
  EXPECT_TRUE(draws().empty());
}

TEST_F(LevelTest, SurvivesDamagedFiles) {
  QL_NEED_SHARED_DATA();
  int files = 0;
  for (const auto& path : test::sharedFiles("hostile/q3bsp/bsp")) {
    SCOPED_TRACE(path);
    std::string name = path.string();
    machine.clearLog();
    level->setCurvePrecision(2);
    level->load(name, {});
    render();
    machine.clock->now += 2001;
    context.cameraPosition = level->startPosition();
    render();
    ++files;
  }
  EXPECT_GE(files, 20);
}

TEST_F(LevelTest, ReadsFromArchivesAndCleansUp) {
  const std::vector<std::byte> file = TinyQ3Level().bytes();
  test::put("levels.pak",
            test::PakFile({{"maps/tiny.bsp", {reinterpret_cast<const char*>(file.data()), file.size()}}}).bytes);
  context.pak.open("levels.pak");
  std::string name = "maps/tiny.bsp";
  level->load(name, {});
  EXPECT_EQ(name, "tiny.bsp");
  EXPECT_EQ(level->entityText(), TinyQ3Level().entities);
  EXPECT_FALSE(std::filesystem::exists("tiny.bsp"));
  context.pak.close();
}

TEST_F(LevelTest, ReplacesALevelByTheNext) {
  TinyQ3Level many;
  for (int i = 0; i < 9; ++i) many.leaves.push_back(many.leaves[2]);
  load(many);
  level->setPosition(5, 6, 7);
  stand(64, 0, 50);
  draws();
  TinyQ3Level few;
  few.faces.resize(1);
  few.leafFaces = {0};
  few.leaves[1].leafFaceCount = 1;
  few.leaves[2].leafFaceCount = 0;
  load(few);
  level->setParameters(false, true, 1, false);
  EXPECT_THAT(draws(), ElementsAre(kWest)) << "nothing of the old list is left, though the camera did not move";
}

TEST_F(LevelTest, LogsItsLife) {
  EXPECT_EQ(machine.logLines().back(), "BSP Tree object initialized. STATE : OK");
  Level* created = level.get();
  EXPECT_EQ(context.get<ActiveLevel>().level, created);
  level.reset();
  const Lines lines = machine.logLines();
  EXPECT_THAT(Lines(lines.end() - 2, lines.end()),
              ElementsAre("BSP Tree : Desallocate Memory from textures and lightmaps. ",
                          "Desallocate texture memory. Please Wait..."));
  EXPECT_EQ(context.get<ActiveLevel>().level, nullptr);
}

TEST_F(LevelTest, PlacesThePlayerStart) {
  EXPECT_EQ(level->startPosition(), math::Vec3());
  load({});
  const auto expectNear = [&](const math::Vec3& expected) {
    const math::Vec3 got = level->startPosition();
    EXPECT_LT(math::length(math::subtract(got, expected)), 1e-4f) << got.x << ' ' << got.y << ' ' << got.z;
  };
  expectNear({64, 24, -32});
  level->setPosition(100, 200, 300);
  expectNear({164, 224, 268});
  level->setPosition(0, 0, 0);
  expectNear({64, 24, -32});
}

TEST_F(LevelTest, PacksLightmaps) {
  const auto packed = [](int r, int g, int b) {
    const std::vector<std::byte> rgb{std::byte(r), std::byte(g), std::byte(b)};
    std::uint16_t pixel = 0;
    brightenPixels(rgb, &pixel);
    return int{pixel};
  };
  EXPECT_EQ(packed(0, 0, 0), 4 << 11 | 8 << 5 | 4) << "0 becomes 32";
  EXPECT_EQ(packed(222, 222, 222), 31 << 11 | 63 << 5 | 31) << "254";
  EXPECT_EQ(packed(223, 100, 7), 31 << 11 | 33 << 5 | 4) << "255, 132, 39";
  EXPECT_EQ(packed(8, 255, 250), 5 << 11 | 63 << 5 | 31) << "40, 255, 255";

  context.device->setCallSink(&recorder);
  const auto small = createLightmapTexture(context, std::vector<std::byte>(3 * 3 * 2), 3, 2);
  context.device->setCallSink(nullptr);
  EXPECT_EQ(small->description().width, 8U);
  EXPECT_EQ(small->description().height, 8U);
  EXPECT_THAT(recorder.lines({"CreateTexture", "CreateImageSurface"}),
              ElementsAre("CreateTexture(8, 8, 1, 0, 23, 1)", "CreateImageSurface(8, 8, 23)"));
  EXPECT_EQ(recorder.calls().back().name, "CopyRects");
}

TEST_F(LevelTest, DrawsInTheGivenOrder) {
  load({});
  stand(64, 0, 50);
  const Lines calls = render();
  const std::string world = calls[1], identity = calls.back();
  EXPECT_THAT(world, testing::StartsWith("SetTransform(256, "));
  EXPECT_THAT(identity, testing::StartsWith("SetTransform(16, "));
  const std::string on = "4294967295";
  EXPECT_THAT(recorder.lines(),
              ElementsAre("SetTextureStageState(0, 24, 0)", world,
                          // states
                          "SetRenderState(15, 0)", "SetRenderState(25, 5)", "SetRenderState(24, 0)",
                          "SetRenderState(137, 0)", "SetRenderState(22, 1)", "SetRenderState(27, 0)",
                          "SetTextureStageState(1, 18, 1)", "SetTextureStageState(0, 18, 1)", "SetVertexShader(706)",
                          testing::MatchesRegex("SetStreamSource\\(0, [0-9]+, 36\\)"), "SetRenderState(27, 0)",
                          "SetTextureStageState(0, 11, 0)",
                          // base pass: texture 0, then texture 1; neither has a picture
                          "SetTexture(0, 0)", kCurve, kEast, "SetTexture(0, 0)", kWest, kCeiling,
                          // lightmap pass: one lightmap, set once
                          "SetRenderState(15, 0)", "SetTextureStageState(0, 11, 1)", "SetRenderState(19, 9)",
                          "SetRenderState(20, 1)", "SetRenderState(27, " + on + ")",
                          testing::MatchesRegex("SetTexture\\(0, [1-9][0-9]*\\)"), kCurve, kEast, kWest, kCeiling,
                          "SetRenderState(27, 0)",
                          // reset
                          "SetTextureStageState(0, 24, 0)", "SetTextureStageState(0, 11, 0)", identity));
  EXPECT_EQ(context.facesThisFrame, 4U) << "each once; the flare has no triangles";
}

TEST_F(LevelTest, ObeysItsParameters) {
  TinyQ3Level tiny;
  tiny.faces[TinyQ3Level::kEastFloor].lightmap = -1;
  load(tiny);
  stand(-64, 0, 50);
  EXPECT_THAT(draws(), testing::UnorderedElementsAre(kWest, kCeiling, kWest, kCeiling)) << "east cannot be seen";
  level->setParameters(false, false, 3, true);
  EXPECT_THAT(draws(), testing::UnorderedElementsAre(kWest, kEast, kCeiling, kCurve));
  EXPECT_THAT(recorder.lines(), Contains("SetRenderState(22, 3)"));
  level->setParameters(true, false, 1, false);
  EXPECT_EQ(draws().size(), 7U) << "no light on the east floor";
  level->setParameters(true, true, 1, false);
  EXPECT_EQ(draws().size(), 7U) << "the list of all faces is kept until it is rebuilt";
  machine.clock->now += 2001;
  EXPECT_EQ(draws().size(), 4U);
}

/// A frustum of which one plane lets pass what lies at x >= limit of the world; leaves are spheres of radius 156.8.
void limitFrustum(engine::EngineContext& context, float limit) {
  context.frustumPlanes = {};
  context.frustumPlanes[3] = {1, 0, 0, -limit};
}
constexpr float kOpen = -1000, kClosed = 1000;

// The list is rebuilt by time, turn and cluster, and by nothing else: a closed frustum shows when.
TEST_F(LevelTest, KeepsTheVisibleFaces) {
  load({});
  level->setParameters(false, true, 1, false);
  constexpr std::size_t kAll = 4, kNone = 0;
  const auto facesNow = [&] { return draws().size(); };
  stand(64, 0, 50);
  EXPECT_EQ(facesNow(), kAll);
  limitFrustum(context, kClosed);
  EXPECT_EQ(facesNow(), kAll) << "nothing happened";
  stand(30, 10, 60, 40);
  EXPECT_EQ(facesNow(), kAll) << "moved in the cluster, turned by 40 degrees";
  stand(30, 10, 60, 180);
  EXPECT_EQ(facesNow(), kAll) << "straight back counts as no turn";
  machine.clock->now += 2000;
  EXPECT_EQ(facesNow(), kAll) << "2000 ms are not more than 2000 ms";
  machine.clock->now += 1;
  EXPECT_EQ(facesNow(), kNone) << "2001 ms";
  limitFrustum(context, kOpen);
  stand(30, 10, 60, 180 + 50);
  EXPECT_EQ(facesNow(), kAll) << "turned by 50 degrees";
  limitFrustum(context, kClosed);
  stand(900, 0, 0, 180 + 50);
  EXPECT_EQ(facesNow(), kNone) << "outside every leaf: cluster 0, another one than before";
  limitFrustum(context, kOpen);
  stand(550, 550, 550, 180 + 50);
  EXPECT_EQ(facesNow(), kNone) << "a solid leaf keeps the cluster";
  stand(-1, 0, 0, 180 + 50);
  EXPECT_EQ(facesNow(), kNone) << "still cluster 0";
  stand(0.5f, 0, 0, 180 + 50);
  EXPECT_EQ(facesNow(), kAll) << "cluster 1";
  stand(0, 0, 0, 180 + 50);
  EXPECT_EQ(facesNow(), 2U) << "on the border the first leaf wins";
  machine.clock->now = 100;
  EXPECT_EQ(facesNow(), 2U);
}

TEST_F(LevelTest, CullsLeavesByTheirSpheresWithAMargin) {
  load({});
  level->setParameters(false, true, 1, false);
  for (const auto& [limit, faces] : {std::pair{122.0f, 4U}, {124.0f, 2U}, {250.0f, 2U}, {252.0f, 0U}}) {
    limitFrustum(context, limit);
    machine.clock->now += 2001;
    stand(64, 0, 50);
    EXPECT_EQ(draws().size(), faces) << limit;
  }
}

TEST_F(LevelTest, SeesEverythingWithoutVisibility) {
  TinyQ3Level tiny;
  tiny.clusters = 0;
  load(tiny);
  level->setParameters(false, true, 1, false);
  stand(-64, 0, 50);
  EXPECT_EQ(draws().size(), 4U);
}

TEST_F(LevelTest, MovesWithItsPosition) {
  load({});
  level->setParameters(false, true, 1, false);
  level->setPosition(1000, 0, 0);
  stand(64, 0, 50);
  context.cameraPosition.x += 1000;
  context.cameraLookAt.x += 1000;
  EXPECT_EQ(draws().size(), 4U) << "the camera is in the eastern cluster";
  const math::Mat4 world = context.device->getTransform(device::Transform::World);
  EXPECT_EQ(world.m41, 1000);
}

TEST_F(LevelTest, UsesTheCurvePrecisionOfTheLoad) {
  level->setCurvePrecision(2);
  load({});
  level->setCurvePrecision(0);
  stand(64, 0, 50);
  EXPECT_THAT(draws(), Contains("DrawPrimitive(4, 18, 128)"));
}

TEST_F(LevelTest, PrefersTargaFiles) {
  std::filesystem::create_directories("textures/base");
  const std::string targa = std::string("\0\0\2\0\0\0\0\0\0\0\0\0\2\0\2\0\x18\0", 18) + std::string(12, '\x7F');
  test::put("textures/base/wood.tga", targa);
  load({});
  EXPECT_THAT(machine.logLines(), IsSupersetOf({"TEXTURE FACTORY : Load texture textures/base/stone.JPG / Name : ",
                                                "TEXTURE FACTORY : Load texture textures/base/wood.TGA / Name : "}));
  const render::TextureTable& table = context.get<render::TextureTable>();
  ASSERT_EQ(table.entries.count(), 2);
  EXPECT_EQ(table.entries.at(2).width, 2) << "the file's own size";
  ASSERT_NE(table.entries.at(2).texture, nullptr);
  stand(64, 0, 50);
  render();
  const Lines set = recorder.lines({"SetTexture"});
  EXPECT_EQ(set[1], "SetTexture(0, " + std::to_string(static_cast<unsigned>(table.entries.at(2).texture->id())) + ")");
}

}  // namespace
}  // namespace ql::level
