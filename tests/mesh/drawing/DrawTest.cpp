#include "DrawingTest.h"
#include "mesh/LightmapList.h"
#include "platform/utility/SubsetMesh.h"
#include "render/shaders/ShaderTable.h"

namespace ql::mesh {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

struct Draws : DrawingTest {
  void SetUp() override {
    DrawingTest::SetUp();
    makeLooks(4);
    beginFrame();
  }
  std::vector<std::string> render(const MeshHandle& mesh) {
    recorder.clear();
    renderMesh(context, mesh.slot);
    return calls();
  }
  std::vector<std::string> renderRange(const MeshHandle& mesh, std::int32_t first, std::int32_t last) {
    recorder.clear();
    renderGroupRange(context, mesh.slot, first, last);
    return calls();
  }
  /// A square of two triangles as the geometry of a mesh with one group.
  MeshHandle& makeShape() {
    MeshHandle& mesh = make();
    MeshRecord& shape = record(mesh);
    const auto corner = [](float x, float y) { return utility::SubsetVertex{{x, y, 0}, {0, 0, -1}, 0, 0}; };
    shape.subsets =
        std::make_shared<utility::SubsetMesh>(std::vector{corner(0, 0), corner(0, 1), corner(1, 0), corner(1, 1)},
                                              std::vector<std::uint32_t>{0, 1, 2, 2, 1, 3});
    shape.usesSubsets = true;
    shape.vertexCount = 4;
    shape.groups[1].count = 30;
    return mesh;
  }
};

TEST_F(Draws, AllGroupsInOrderWithTheirLooks) {
  MeshHandle& mesh = makeRow(6);
  setPosition(record(mesh), {7, 0, 0});
  addFace(context, mesh, 2, false);
  addFace(context, mesh, 3, false);
  for (float x : {10.f, 11.f, 12.f, 13.f}) addVertex(context, mesh, {x}, -1);
  setMaterial(record(mesh), 4, 3);
  EXPECT_THAT(render(mesh),
              ElementsAre("transform 256 at 0", "transform 256 at 7", "27 = 1", "15 = 1", "137 = 1",
                          "transform 16 at 0", "stage 24 = 0", "stage 11 = 0",                                 //
                          "19 = 5", "20 = 6", "texture none", "material 1", "format 530", "list of 2 from 0",  //
                          "19 = 5", "20 = 6",                                                                  //
                          "19 = 5", "20 = 6", "texture 3", "material 4", "format 530", "list of 1 from 10"));
  EXPECT_THAT(render(mesh), Contains("transform 256 at 7").Times(1)) << "the matrix is built once";

  record(mesh).vertexType = kColorVertices;
  record(mesh).primitiveType = kTriangleStrip;
  const std::vector<std::string> colored = render(mesh);
  EXPECT_THAT(colored, Contains("137 = 0"));
  EXPECT_THAT(colored, Contains("format 706"));
  EXPECT_THAT(colored, Contains("strip of 4 from 0"));
  EXPECT_THAT(colored, Contains("strip of 2 from 10"));
}

TEST_F(Draws, GroupsOfFewerThanTwoVerticesAreSkipped) {
  MeshHandle& mesh = makeRow(0);
  record(mesh).primitiveType = kTriangleStrip;
  record(mesh).groups[1].texture = 1;
  addFace(context, mesh, 2, false);
  addVertex(context, mesh, {5}, -1);
  addFace(context, mesh, 3, false);
  addVertex(context, mesh, {6}, -1);
  addVertex(context, mesh, {7}, -1);
  EXPECT_THAT((renderMesh(context, mesh.slot), drawn()),
              ElementsAre("19 = 5", "20 = 6", "19 = 5", "20 = 6", "19 = 5", "20 = 6", "texture 3", "material 1",
                          "strip of 0 from 6"));
}

TEST_F(Draws, BlendingOfGroups) {
  struct Case {
    std::int16_t blending;
    std::vector<std::string> states;
  };
  MeshHandle& mesh = makeRow(3);
  for (const Case& row : {Case{0, {"19 = 5", "20 = 6"}},
                          {1, {"19 = 5", "20 = 6"}},
                          {2, {"19 = 2", "20 = 2"}},
                          {3, {"19 = 3", "20 = 2"}},
                          {9, {}}}) {
    setBlending(record(mesh), row.blending);
    renderMesh(context, mesh.slot);
    std::vector<std::string> states = drawn();
    std::erase_if(states, [](const std::string& line) { return !line.starts_with("19") && !line.starts_with("20"); });
    EXPECT_EQ(states, row.states) << row.blending;
  }
}

TEST_F(Draws, SphereMappingTakesCoordinatesFromTheView) {
  MeshHandle& mesh = makeRow(3);
  setSphereMapping(record(mesh), true, false);
  const std::vector<std::string> reflected = render(mesh);
  EXPECT_THAT(reflected, Contains("transform 16 at 0.5"));
  EXPECT_THAT(reflected, Contains("22 = 1"));
  EXPECT_THAT(reflected, Contains("stage 24 = 2"));
  EXPECT_THAT(reflected, Contains("stage 11 = 196608"));
  EXPECT_THAT(reflected, Contains("143 = 1"));
  setSphereMapping(record(mesh), true, true);
  EXPECT_THAT(render(mesh), Contains("stage 11 = 65536"));
  setSphereMapping(record(mesh), false, false);
  EXPECT_THAT(render(mesh), Contains("stage 11 = 0"));
}

TEST_F(Draws, RangesKeepToTheirGroupsAndCulling) {
  MeshHandle& mesh = makeRow(3);
  for (const std::int16_t texture : {std::int16_t{2}, std::int16_t{3}}) {
    addFace(context, mesh, texture, false);
    for (int i = 0; i < 3; ++i) addVertex(context, mesh, {static_cast<float>(10 * texture + i)}, -1);
  }
  setBlending(record(mesh), 2);
  record(mesh).cullMode = 3;
  EXPECT_THAT(renderRange(mesh, 2, 3),
              ElementsAre("transform 256 at 0", "transform 256 at 0", "27 = 1", "15 = 1", "137 = 1",
                          "transform 16 at 0", "stage 24 = 0", "stage 11 = 0", "22 = 3", "20 = 6", "19 = 5", "15 = 1",
                          "27 = 1", "137 = 1", "format 530", "texture 2", "material 1", "list of 1 from 20",  //
                          "format 530", "texture 3", "material 1", "list of 1 from 30"));
  EXPECT_THAT(renderRange(mesh, 3, 0), Contains("list of 1 from 30"));
  EXPECT_THAT(renderRange(mesh, 3, 0), Not(Contains("list of 1 from 20")));
  EXPECT_THROW(renderRange(mesh, 1, 4), engine::EngineError);
  EXPECT_THROW(renderRange(mesh, -1, 2), engine::EngineError);
}

TEST_F(Draws, LightMapsMultiplyInRangesOnly) {
  MeshHandle& mesh = makeRow(3);
  auto& maps = context.get<LightmapList>().maps;
  maps.at(maps.grow()) = context.device->createTexture(4, 4, 1, 0, device::Format::R5G6B5, device::Pool::Managed);
  name(maps.at(1), "light");
  record(mesh).groups[1].lightmap = 1;
  record(mesh).groups[1].texture = 2;
  addFace(context, mesh, 3, false);
  for (float x : {5.f, 6.f, 7.f}) addVertex(context, mesh, {x}, -1);
  recorder.clear();
  renderGroupRange(context, mesh.slot, 1, 0);
  EXPECT_THAT(drawn(), ElementsAre("20 = 6", "19 = 5",                                       //
                                   "20 = 6", "19 = 5", "texture light", "list of 1 from 0",  //
                                   "20 = 3", "19 = 1", "texture 2", "list of 1 from 0",      //
                                   "texture 3", "material 1", "list of 1 from 5"))
      << "the light map's blending stays";
  EXPECT_THAT(render(mesh), Not(Contains("texture light")));
}

TEST_F(Draws, ShapesAreDrawnBySubsets) {
  MeshHandle& shape = makeShape();
  setTexture(record(shape), 2);
  EXPECT_THAT(render(shape), Contains("texture 2"));
  const std::vector<std::string> range = renderRange(shape, 1, 0);
  EXPECT_THAT(range, Contains("137 = 1"));
  EXPECT_THAT(range, Not(Contains("27 = 1"))) << "blending is not touched";
  EXPECT_THAT(range, Not(Contains("15 = 1")));
  EXPECT_EQ(range.back(), "DrawPrimitive(4, 0, 2)");
  context.get<render::TextureTable>().entries.at(2).colorKey = 0xFF000000;
  EXPECT_THAT(renderRange(shape, 1, 0), Contains("15 = 1")) << "keyed textures need the alpha test";
  EXPECT_NO_THROW(renderRange(shape, 0, 0)) << "group 0 has no subset";
}

TEST_F(Draws, ShadersAreDrawnStageByStage) {
  using render::shaders::ShaderStage;
  using render::shaders::StageKind;
  auto& shaders = context.get<render::shaders::ShaderTable>().entries;
  shaders.at(shaders.grow()).stages = {
      {.textures = {1}, .material = 2},
      {.textures = {-1}, .sourceBlend = 9, .destinationBlend = 1, .material = 3},
      {.textures = {-2}, .sourceBlend = 2, .destinationBlend = 2, .kind = StageKind::Lightmap},
      {.textures = {-1}, .kind = static_cast<StageKind>(7)},
  };
  MeshHandle& mesh = makeRow(3);
  setTexture(record(mesh), 4);
  setShader(record(mesh), 1);
  record(mesh).groups[1].lightmap = 3;
  recorder.clear();
  renderMesh(context, mesh.slot);
  EXPECT_THAT(drawn(), ElementsAre("19 = 5", "20 = 6", "texture 1", "material 2", "list of 1 from 0",  //
                                   "19 = 9", "20 = 1", "texture 4", "material 3", "list of 1 from 0",  //
                                   "19 = 2", "20 = 2", "texture 3", "material 1", "list of 1 from 0",  //
                                   "19 = 5", "20 = 6", "texture 3", "material 1", "list of 1 from 0"))
      << "a stage without a texture shows the group's, one of an unknown kind the previous stage's";
  setShader(record(mesh), 9);
  EXPECT_THROW(renderMesh(context, mesh.slot), engine::EngineError);
}

TEST_F(Draws, AnimatedStagesAdvanceOncePerFrame) {
  auto& shaders = context.get<render::shaders::ShaderTable>().entries;
  shaders.at(shaders.grow()).stages = {
      {.textures = {1, 2, 3}, .frameCount = 3, .frequency = 10, .kind = render::shaders::StageKind::Animation}};
  MeshHandle& mesh = makeRow(3);
  setShader(record(mesh), 1);
  const auto shown = [&](std::int32_t elapsed) {
    endFrame(elapsed);
    recorder.clear();
    renderMesh(context, mesh.slot);
    const std::vector<std::string> first = drawn();
    renderMesh(context, mesh.slot);
    EXPECT_EQ(drawn(), first) << "twice in a frame";
    return first.at(2);
  };
  EXPECT_EQ(shown(50), "texture 1") << "before the first frame";
  EXPECT_EQ(shown(60), "texture 1");
  EXPECT_EQ(shown(100), "texture 2");
  EXPECT_EQ(shown(190), "texture 1") << "position 4 wraps to 1";
  EXPECT_EQ(shown(200), "texture 3");
  record(mesh).groups[1].framePos = 3e9f;
  EXPECT_EQ(shown(0).substr(0, 7), "texture");
  EXPECT_LE(record(mesh).groups[1].framePos, 4);
}

TEST_F(Draws, DeathTimeRunsDownOncePerFrameButWithEveryRange) {
  MeshHandle& mesh = makeRow(3);
  record(mesh).deathTime = 100;
  endFrame(60);
  render(mesh);
  render(mesh);
  EXPECT_EQ(record(mesh).deathTime, 40);
  endFrame(60);
  EXPECT_THAT(render(mesh), IsEmpty());
  EXPECT_FALSE(record(mesh).enabled);

  MeshHandle& ranged = makeRow(3);
  record(ranged).deathTime = 100;
  renderRange(ranged, 1, 0);
  EXPECT_TRUE(record(ranged).enabled);
  renderRange(ranged, 1, 0);
  EXPECT_FALSE(record(ranged).enabled);
  EXPECT_EQ(record(ranged).deathTime, -20);
}

TEST_F(Draws, OutOfViewMeshesAndTheirChildrenAreLeftOut) {
  context.frustumPlanes = engine::frustumPlanes(context.viewMatrix, context.projectionMatrix);
  MeshHandle& mesh = makeRow(3);
  MeshHandle& child = makeRow(3);
  addChild(context, mesh, child);
  computeBounds(context, mesh);
  setPosition(record(mesh), {0, 0, -500});
  EXPECT_THAT(render(mesh), Contains("list of 1 from 0").Times(2)) << "a mesh that moved is drawn unseen";
  EXPECT_EQ(record(mesh).visible, 1);
  EXPECT_THAT(render(mesh), ElementsAre("transform 256 at 0"));
  EXPECT_EQ(record(mesh).visible, 0);
  record(mesh).boundsValid = false;
  EXPECT_THAT(render(mesh), Contains("list of 1 from 0").Times(2));
}

TEST_F(Draws, ChildrenFollowTheirParentAsRanges) {
  MeshHandle &top = makeRow(3), &left = makeRow(4), &below = makeRow(5), &right = makeRow(6);
  addChild(context, top, left);
  addChild(context, left, below);
  addChild(context, top, right);
  for (MeshHandle* mesh : {&top, &left, &below, &right}) record(*mesh).primitiveType = kTriangleStrip;
  setPosition(record(top), {1, 0, 0});
  setPosition(record(left), {10, 0, 0});
  setPosition(record(below), {100, 0, 0});
  recorder.clear();
  renderAllMeshes(context);
  std::vector<std::string> order = calls();
  std::erase_if(order, [](const std::string& line) { return !line.starts_with("strip") && !line.starts_with("22"); });
  EXPECT_THAT(order, ElementsAre("strip of 1 from 0", "22 = 1", "strip of 2 from 0", "22 = 1", "strip of 3 from 0",
                                 "22 = 1", "strip of 4 from 0"));
  EXPECT_EQ(record(below).worldMatrix.m41, 111);
  EXPECT_EQ(record(right).worldMatrix.m41, 1);
  EXPECT_FALSE(record(left).renderedThisFrame);

  record(left).enabled = false;
  EXPECT_THAT(render(top), Not(Contains("strip of 3 from 0"))) << "what hangs below a disabled mesh";
}

TEST_F(Draws, LinksThatLeadBackEnd) {
  MeshHandle &a = makeRow(3), &b = makeRow(3);
  record(a).children = {b.slot, 99, -1, 0};
  record(b).children = {a.slot, b.slot};
  record(b).parent = 99;
  EXPECT_THAT(render(a), Contains("list of 1 from 0").Times(2));
}

TEST_F(Draws, GroupsThatPromiseMoreThanThereIsDrawWhatThereIs) {
  struct Case {
    std::int16_t start, count;
    const char* expected;
  };
  MeshHandle& mesh = makeRow(6);
  for (const Case& row : {Case{0, 32767, "list of 2 from 0"},  // six vertices and the spare
                          {5, 6, "list of 0 from 5"},
                          {32767, 6, "list of 0"},
                          {-5, 3, "list of 1 from 0"}}) {
    record(mesh).groups[1].start = row.start;
    record(mesh).groups[1].count = row.count;
    EXPECT_EQ(render(mesh).back(), row.expected);
  }
  record(mesh).groups[1].count = -3;
  EXPECT_NE(render(mesh).back().substr(0, 4), "list");
}

}  // namespace
}  // namespace ql::mesh
