#include "engine/PointerState.h"
#include "render/Background.h"
#include "render/RenderTest.h"
#include "render/Screen.h"
#include "render/Sprites.h"
#include "render/TextureTable.h"

#include <cstring>
#include <optional>

namespace ql::render {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Vertex = Quasarlens3D::TransformedLitVertex;

constexpr std::int32_t kColor = 0x40FF8010, kWhite = -1;
constexpr std::uint32_t kInvalidCall = device::kErrorInvalidCall;

/// x, y, colour, tu, tv of a vertex, as a text that a failure shows.
std::string text(const Vertex& v) {
  EXPECT_EQ(v.z, 0);
  EXPECT_EQ(v.rhw, 0.5f);
  EXPECT_EQ(v.specular, v.diffuse);
  std::ostringstream out;
  out << v.x << ' ' << v.y << ' ' << std::hex << v.diffuse << ' ' << v.tu << ' ' << v.tv;
  return out.str();
}

struct Screens : test::RenderTest {
  std::shared_ptr<device::Texture> texture;
  std::optional<Screen> screen;
  void SetUp() override {
    RenderTest::SetUp();
    screen.emplace(context);
    texture = context.device->createTexture(4, 4, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
    engine::clear(context);
    forget();
  }
  /// The calls with everything but the vertices.
  std::vector<std::string> calls() const {
    std::vector<std::string> lines;
    for (recording::Recorder::Call call : recorder.calls()) {
      if (call.name == "DrawPrimitiveUP") call.values.erase(call.values.begin() + 2);
      lines.push_back(call.line());
    }
    return lines;
  }
  template <class V>
  std::vector<V> vertices() const {
    std::vector<V> all;
    for (const recording::Recorder::Call& call : recorder.calls()) {
      if (call.name != "DrawPrimitiveUP") continue;
      all.resize(call.blobs.at(0).size() / sizeof(V));
      std::memcpy(all.data(), call.blobs[0].data(), all.size() * sizeof(V));
    }
    return all;
  }
  std::vector<std::string> corners() const {
    std::vector<std::string> all;
    for (const Vertex& vertex : vertices<Vertex>()) all.push_back(text(vertex));
    return all;
  }
  std::string bound() const { return "SetTexture(0, " + std::to_string(static_cast<unsigned>(texture->id())) + ")"; }
};

TEST_F(Screens, ShapesReachTheDeviceInOrder) {
  const std::string none = "SetTexture(0, 0)", dark = "SetRenderState(137, 0)", format = "SetVertexShader(452)";
  const std::string blend = "SetRenderState(27, 4294967295)", noBlend = "SetRenderState(27, 0)";
  const std::string destination = "SetRenderState(20, 6)", source = "SetRenderState(19, 5)";
  const std::string strip = "DrawPrimitiveUP(5, 2, 32)";
  const CornerColors four{0x11, 0x22, 0x33, 0x44};
  const Corners box{10, 20, 30, 45};
  struct Case {
    const char* name;
    std::function<void()> draw;
    std::vector<std::string> calls, vertices;
  };
  const Case cases[] = {
      {"box",
       [&] { screen->drawBox(box, kColor); },
       {none, dark, format, "DrawPrimitiveUP(3, 4, 32)"},
       {"10 20 40ff8010 0 0", "30 20 40ff8010 0 0", "30 45 40ff8010 0 0", "10 45 40ff8010 0 0", "10 20 40ff8010 0 0"}},
      {"filled box",
       [&] { screen->drawFilledBox(box, kColor, false); },
       {none, dark, "SetRenderState(22, 1)", noBlend, destination, source, format, strip},
       {"10 20 40ff8010 0 0", "30 20 40ff8010 1 0", "10 45 40ff8010 0 1", "30 45 40ff8010 1 1"}},
      {"blended box",
       [&] { screen->drawFilledBox(box, kColor, true); },
       {none, dark, "SetRenderState(22, 1)", blend, destination, source, format, strip},
       {}},
      {"coloured box",
       [&] { screen->drawFilledColorBox(box, four, true); },
       {blend, destination, source, none, dark, format, strip},
       {"10 20 11 0 0", "30 20 22 1 0", "10 45 33 0 1", "30 45 44 1 1"}},
      {"line",
       [&] { screen->drawLine(box, kColor); },
       {none, dark, format, "DrawPrimitiveUP(2, 1, 32)"},
       {"10 20 40ff8010 0 0", "30 45 40ff8010 0 0"}},
      {"point",
       [&] { screen->drawPoint(3, 4.5f, kColor); },
       {none, dark, format, "DrawPrimitiveUP(1, 1, 32)"},
       {"3 4.5 40ff8010 0 0"}},
      {"texture",
       [&] { screen->drawTexture(texture, box, kWhite, true); },
       {bound(), dark, blend, "SetRenderState(15, 1)", destination, source, format, strip},
       {"10 20 ffffffff 0.02 0.02", "30 20 ffffffff 0.98 0.02", "10 45 ffffffff 0.02 0.98",
        "30 45 ffffffff 0.98 0.98"}},
      {"part of a texture",
       [&] {
         screen->drawPartTexture(texture, box, {0.25f, 0.5f, 0.75f, 1}, kColor, false);
       },
       {bound(), dark, noBlend, destination, source, format, strip},
       {"10 20 40ff8010 0.25 0.5", "30 20 40ff8010 0.75 0.5", "10 45 40ff8010 0.25 1", "30 45 40ff8010 0.75 1"}},
      {"additive from here on",
       [&] {
         screen->setBlending(2, 5);
         screen->drawFilledBox(box, kColor, true);
       },
       {none, dark, "SetRenderState(22, 1)", blend, "SetRenderState(20, 2)", source, format, strip},
       {}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    recorder.clear();
    row.draw();
    EXPECT_EQ(calls(), row.calls);
    if (!row.vertices.empty()) {
      EXPECT_EQ(corners(), row.vertices);
    }
  }
}

TEST_F(Screens, LinesInTheWorldStandInTheWorld) {
  context.device->setTransform(device::Transform::World, math::scaling(2, 2, 2));
  recorder.clear();
  screen->drawLine3D({1, 2, 3}, {-4, 5, -6}, kColor);
  const auto lines = calls();
  EXPECT_THAT(
      std::vector(lines.begin() + 1, lines.end()),
      ElementsAre("SetTexture(0, 0)", "SetRenderState(137, 0)", "SetVertexShader(706)", "DrawPrimitiveUP(2, 1, 36)"));
  const math::Mat4 world = context.device->getTransform(device::Transform::World);
  EXPECT_EQ(world.m11, 1);
  EXPECT_EQ(world.m41, 0);
  const auto line = vertices<math::ColorVertex>();
  ASSERT_EQ(line.size(), 2u);
  EXPECT_EQ(line[1].x, -4);
  EXPECT_EQ(line[1].z, -6);
  EXPECT_EQ(line[0].diffuse, kColor);
}

TEST_F(Screens, ButtonsAnswerToThePointerStrictlyInside) {
  const auto over = context.device->createTexture(2, 2, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
  engine::PointerState& pointer = context.get<engine::PointerState>();
  EXPECT_FALSE(screen->rollOver(over, texture, {10, 20, 30, 40}, true)) << "no input engine";
  pointer.known = true;
  struct Case {
    std::int32_t x, y;
    bool inside;
  };
  for (const Case& row : {Case{11, 21, true},
                          {29, 39, true},
                          {10, 30, false},
                          {30, 30, false},
                          {20, 20, false},
                          {20, 40, false},
                          {-5, 30, false}}) {
    pointer.x = row.x;
    pointer.y = row.y;
    recorder.clear();
    EXPECT_EQ(screen->rollOver(over, texture, {10, 20, 30, 40}, false), row.inside) << row.x << ", " << row.y;
    EXPECT_EQ(context.device->getTexture(0), row.inside ? over : texture);
    EXPECT_THAT(corners(), ElementsAre("10 20 ffffffff 0.02 0.02", "30 20 ffffffff 0.98 0.02",
                                       "10 40 ffffffff 0.02 0.98", "30 40 ffffffff 0.98 0.98"));
  }
}

TEST_F(Screens, TextIsInTheNamedFontOrTheSystemFont) {
  screen->userFonts().create("", {.points = 30});
  screen->userFonts().create("", {.points = 60});
  screen->userFonts().create("Title", {.points = 90, .bold = true});
  screen->userFonts().create("title", {.points = 20});
  const auto height = [&](const char* font) {
    recorder.clear();
    screen->drawText("H", 5, 7, kColor, font);
    float top = 1e6f, bottom = 0;
    for (const Vertex& vertex : vertices<Vertex>()) {
      EXPECT_EQ(vertex.diffuse, kColor);
      EXPECT_GE(vertex.x, 4.5f);
      top = std::min(top, vertex.y);
      bottom = std::max(bottom, vertex.y);
    }
    return bottom - top;
  };
  const float system = height(""), first = height("UserFont1"), second = height("userfont2"), title = height("TITLE");
  EXPECT_GT(first, 2 * system);
  EXPECT_GT(second, 1.7f * first);
  EXPECT_GT(title, 1.3f * second) << "the first of a name counts";
  EXPECT_EQ(height("UserFont3"), system) << "number 3 has a name of its own";
  EXPECT_EQ(recorder.lines({"SetTexture"}).size(), 2u) << "one page, put back";
  recorder.clear();
  screen->drawText("Credits", -10, -8, kColor, "UserFont1");
  float right = 0;
  for (const Vertex& vertex : vertices<Vertex>()) right = std::max(right, vertex.x);
  EXPECT_GT(right, 100) << "a text that starts beyond the upper left is not cut off there";
  EXPECT_EQ(findUserFont(context, "TITLE")->points, 90);
  {
    Screen other(context);
    other.userFonts().create("Other", {.points = 11});
    EXPECT_EQ(findUserFont(context, "other")->points, 11);
  }
  EXPECT_FALSE(findUserFont(context, "other")) << "it went with its screen";
}

TEST_F(Screens, LogsItsLife) {
  machine.clearLog();
  screen.emplace(context);
  activeScreen(context);
  activeScreen(context);
  EXPECT_THAT(machine.logLines(),
              ElementsAre("SCREEN MANAGER : Desallocate memory from fonts and sprites...",
                          "SCREEN INTERFACE 2D : Initialized", "SCREEN INTERFACE 2D : Initialized"));
  machine.clearLog();
  context.device->endScene();
  engine::releaseEngine(context);
  EXPECT_THAT(machine.logLines(), testing::Contains("SCREEN MANAGER : Desallocate memory from fonts and sprites..."));
}

TEST_F(Screens, NeedsADeviceAndAFrame) {
  context.device->endScene();
  const std::function<void()> all[] = {[&] { screen->drawBox({}, 0); },
                                       [&] { screen->drawFilledBox({}, 0, false); },
                                       [&] { screen->drawFilledColorBox({}, {}, false); },
                                       [&] { screen->drawLine({}, 0); },
                                       [&] { screen->drawPoint(0, 0, 0); },
                                       [&] { screen->drawLine3D({}, {}, 0); },
                                       [&] { screen->drawTexture(texture, {}, 0, false); },
                                       [&] { screen->drawPartTexture(nullptr, {}, {}, 0, false); },
                                       [&] { screen->drawText("x", 0, 0, 0, ""); }};
  for (const auto& draw : all) try {
      draw();
      ADD_FAILURE() << "drawn outside a frame";
    } catch (const device::DeviceError& error) {
      EXPECT_EQ(error.code, kInvalidCall);
    }
  context.device->setCallSink(nullptr);
  context.systemFont.reset();
  context.device.reset();
  for (const auto& draw : all) EXPECT_THROW(draw(), engine::EngineError);
  EXPECT_THROW(screen->userFonts().create("x", {}), engine::EngineError);
  EXPECT_THROW(loadSprite(context, "", ""), engine::EngineError);
  EXPECT_THROW(loadBackground(context, "x.bmp"), engine::EngineError);
}

TEST_F(Screens, SpritesTakeTexturesByNameOrFile) {
  picture("ship.bmp", 8, 4, 0xFF8000);
  picture("star.bmp", 2, 2, 0xFFFFFF);
  std::string file = "ship.bmp";
  std::int32_t width = -1, height = -1, key = 0;
  loadTexture(context, file, "Ship", width, height, key);
  EXPECT_EQ(loadSprite(context, "SHIP", ""), 1);
  EXPECT_EQ(loadSprite(context, "star.bmp", "Star"), 2);
  EXPECT_EQ(loadSprite(context, "", "Bare"), 3);
  SpriteTable& sprites = context.get<SpriteTable>();
  EXPECT_EQ(sprites.entries.at(1).texture, 1) << "no file is loaded again";
  EXPECT_EQ(sprites.entries.at(2).texture, 2);
  EXPECT_EQ(findSpriteIndex(context, "sprite 1"), 1);
  EXPECT_EQ(findSpriteIndex(context, "STAR"), 2);
  EXPECT_EQ(findSpriteIndex(context, "none"), 0);

  rotateSprite(context, 2, {4, 5}, 180);
  scaleSprite(context, 2, {2, 3});
  EXPECT_EQ(sprites.entries.at(2).rotation, 3.14f);
  sprites.entries.at(2).used = false;
  EXPECT_EQ(findSpriteIndex(context, "star"), 0);
  EXPECT_EQ(loadSprite(context, "ship", "Again"), 2) << "the free slot";
  EXPECT_EQ(sprites.entries.at(2).scaling.x, 1);
  EXPECT_EQ(sprites.entries.at(2).rotation, 0);
  EXPECT_EQ(sprites.entries.count(), 3);

  recorder.clear();
  drawSprite(context, 1, 30, 20);
  const auto quad = vertices<Vertex>();
  ASSERT_EQ(quad.size(), 4u);
  EXPECT_EQ(quad[0].x, 29.5f);
  EXPECT_EQ(quad[3].x - quad[0].x, 8);
  EXPECT_EQ(quad[3].y - quad[0].y, 4);
  EXPECT_EQ(quad[0].diffuse, kWhite);
  for (const std::int32_t index : {-1, 4}) {
    EXPECT_THROW(drawSprite(context, index, 0, 0), engine::EngineError);
    EXPECT_THROW(rotateSprite(context, index, {}, 0), engine::EngineError);
    EXPECT_THROW(scaleSprite(context, index, {}), engine::EngineError);
  }
  EXPECT_THROW(drawSprite(context, 3, 0, 0), device::DeviceError) << "no picture";
  EXPECT_THROW(drawSprite(context, 0, 0, 0), device::DeviceError);
}

TEST_F(Screens, TheBackgroundIsCopiedWhileItIsEnabled) {
  context.device->endScene();
  picture("sky.bmp", 16, 8, 0x2040C0);
  test::put("broken.bmp", "BM");
  loadBackground(context, "sky.bmp");
  const auto cleared = [&] {
    recorder.clear();
    engine::clear(context);
    context.device->endScene();
    return recorder.lines({"Clear", "CopyRects", "BeginScene"}).size();
  };
  EXPECT_EQ(cleared(), 2u) << "not enabled";
  context.get<Background>().enabled = true;
  EXPECT_EQ(cleared(), 3u);
  EXPECT_THAT(recorder.calls()[1].name, "GetBackBuffer");
  EXPECT_THAT(recorder.calls()[2].name, "CopyRects");
  for (const char* bad : {"broken.bmp", "none.bmp"}) EXPECT_THROW(loadBackground(context, bad), device::DeviceError);
  EXPECT_EQ(cleared(), 3u) << "the picture before";

  engine::setEngineMode(context, 320, 200, 32, false, 0);
  ASSERT_TRUE(engine::initialize(context, engine::kFullScreen));
  context.device->setCallSink(&recorder);
  EXPECT_EQ(cleared(), 3u) << "converted for another back buffer";
  EXPECT_EQ(context.get<Background>().surface->description().width, 320u);
  context.get<Background>().surface = nullptr;
  EXPECT_EQ(cleared(), 2u) << "enabled without a picture";
}

}  // namespace
}  // namespace ql::render
