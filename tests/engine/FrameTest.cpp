#include "RunningEngine.h"
#include "platform/host/Files.h"

#include <cmath>
#include <cstring>

#include <gmock/gmock.h>

namespace ql::engine {
namespace {

using test::RunningEngine;
using testing::ElementsAre;

/// An engine that runs in its own window.
struct Frames : testing::Test {
  RunningEngine engine;
  EngineContext& context = engine.context;
  test::TestClock& clock = *engine.machine.clock;

  void SetUp() override {
    ASSERT_TRUE(initialize(context, kOwnWindow));
    engine.recorder.clear();
    engine.machine.clearLog();
  }
  void frame() {
    clear(context);
    renderToScreen(context);
  }
};

TEST_F(Frames, ElapsedTimeFollowsTheClockAndDoesNotJump) {
  frame();
  EXPECT_EQ(context.elapsedMs, 50);  // the first frame
  EXPECT_EQ(context.framesPerSecond, 1);
  struct Case {
    std::uint32_t gap;
    std::int32_t elapsed;
  };
  for (const Case& row : {Case{0, 0}, {1, 1}, {199, 199}, {200, 200}, {201, 50}, {5000, 50}, {0x80000000, 50}}) {
    clock.now += row.gap;
    frame();
    EXPECT_EQ(context.elapsedMs, row.elapsed) << row.gap;
  }
}

TEST_F(Frames, TimeGoesOnWhenTheCounterWraps) {
  clock.now = 0xFFFFFFFF - 9;
  frame();
  for (int i = 0; i < 4; ++i) {
    clock.now += 150;
    frame();
    EXPECT_EQ(context.elapsedMs, 150);
  }
  EXPECT_EQ(context.framesPerSecond, 1);
  clock.now += 401;
  frame();
  EXPECT_EQ(context.framesPerSecond, 5) << "1001 ms after the last count, over the wrap";
}

TEST_F(Frames, FrameRateCountsTheFramesOfMoreThanASecond) {
  frame();
  for (int i = 0; i < 10; ++i) {
    clock.now += 100;
    frame();
    EXPECT_EQ(context.framesPerSecond, 1) << "a full second is not more than a second";
  }
  clock.now += 1;
  frame();
  EXPECT_EQ(context.framesPerSecond, 11);
}

TEST_F(Frames, ClearDrawsTheBackgroundBetweenClearingAndTheScene) {
  context.backgroundColor = static_cast<std::int32_t>(0xFF102030);
  context.viewMatrix = math::translation(1, 2, 3);
  context.drawBackground = [&] { context.device->setRenderState(device::RenderState::ZEnable, 0); };
  clear(context);
  const auto& calls = engine.recorder.calls();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_THAT(calls[0].values, ElementsAre("0", testing::_, "3", std::to_string(0xFF102030u), "1", "0"));
  EXPECT_EQ(calls[1].line(), "SetRenderState(7, 0)");
  EXPECT_EQ(calls[2].name + calls[2].values[0], "SetTransform2");
  math::Mat4 loaded;
  std::memcpy(&loaded, calls[2].blobs.at(0).data(), sizeof loaded);
  EXPECT_EQ(loaded.m42, 2);
  EXPECT_EQ(calls[3].line(), "BeginScene()");
}

TEST_F(Frames, FrameEndRunsItsStagesInOrderWithFogOffForWhatIsFlat) {
  clear(context);
  engine.recorder.clear();
  context.fogEnabled = true;
  const auto mark = [&](FrameStage stage, std::uint32_t value) {
    context.frameSteps.add(stage, [&, value] { context.device->setRenderState(device::RenderState::AlphaRef, value); });
  };
  mark(FrameStage::EndOfFrame, 4);
  mark(FrameStage::Input, 3);
  mark(FrameStage::Cursor, 2);
  mark(FrameStage::Effects, 1);
  renderToScreen(context);
  EXPECT_THAT(engine.newCalls(),
              ElementsAre("SetRenderState(28, 0)", "SetRenderState(24, 1)", "SetRenderState(24, 2)", "EndScene()",
                          "Present()", "SetRenderState(24, 3)", "SetRenderState(28, 1)", "SetRenderState(24, 4)"));
  start2D(context);
  EXPECT_THAT(engine.newCalls(), ElementsAre("SetRenderState(28, 0)"));
  context.fogEnabled = false;
  start2D(context);
  frame();
  for (const std::string& call : engine.newCalls()) EXPECT_EQ(call.find("(28,"), std::string::npos) << call;
}

TEST_F(Frames, PlanesAreThoseOfTheViewAtTheFramesEnd) {
  // A field of view of a quarter turn, square: the side planes stand at 45 degrees.
  context.projectionMatrix = math::perspective(1.57079633f, 1, 1, 100);
  context.viewMatrix = math::translation(-10, 0, 0);  // the camera stands at x = 10
  frame();
  const auto at = [&](int plane, math::Vec3 p) { return math::distance(context.frustumPlanes[std::size_t(plane)], p); };
  struct Case {
    int plane;
    math::Vec3 point;
    float distance;
  };
  const float half = std::sqrt(0.5f);
  for (const Case& row : {Case{0, {10, 0, 50}, 50 * half},
                          {0, {-50, 0, 50}, -10 * half},
                          {1, {70, 0, 50}, -10 * half},
                          {2, {10, 60, 50}, -10 * half},
                          {3, {10, -60, 50}, -10 * half},
                          {5, {10, 0, 101}, -1}})
    EXPECT_NEAR(at(row.plane, row.point), row.distance, 0.02f) << row.plane;
  EXPECT_LT(at(4, {10, 0, 0}), 0) << "behind the near plane";
}

TEST_F(Frames, StatisticsAreThoseOfTheFinishedFrame) {
  const std::vector<Quasarlens3D::LitVertex> quad(4);
  for (const int draws : {3, 1, 0}) {
    clear(context);
    context.device->setVertexShader(0x1C2);
    for (int i = 0; i < draws; ++i) {
      context.device->drawPrimitiveUP(device::PrimitiveType::TriangleStrip, 2, std::as_bytes(std::span(quad)), 28);
      context.facesThisFrame += 5;
    }
    renderToScreen(context);
    EXPECT_EQ(context.statistics.work.drawCalls, static_cast<std::uint64_t>(draws));
    EXPECT_EQ(context.statistics.work.triangles, static_cast<std::uint64_t>(2 * draws));
    EXPECT_EQ(context.statistics.faces, static_cast<std::uint32_t>(5 * draws));
    EXPECT_EQ(context.facesThisFrame, 0u);
  }
}

TEST_F(Frames, FrameRateTextIsDrawnInsideTheSceneWhenWanted) {
  frame();
  EXPECT_TRUE(engine.recorder.lines({"DrawPrimitiveUP"}).empty());
  engine.recorder.clear();
  context.displayFps = true;
  frame();
  EXPECT_FALSE(engine.recorder.lines({"DrawPrimitiveUP"}).empty());
  EXPECT_EQ(engine.recorder.calls().back().name, "Present");
}

TEST_F(Frames, ScreenNeedsADeviceAndAScene) {
  EXPECT_THROW(renderToScreen(context), device::DeviceError);
  clear(context);
  EXPECT_THROW(clear(context), device::DeviceError);
  RunningEngine idle;
  EXPECT_THROW(clear(idle.context), EngineError);
  EXPECT_THROW(renderToScreen(idle.context), EngineError);
  EXPECT_THROW(resetDevice(idle.context), EngineError);
  EXPECT_THROW(screenShot(idle.context, "none.bmp"), EngineError);
}

TEST_F(Frames, PauseWaitsForAPointInTime) {
  clock.stepPerRead = 10;
  const auto pumped = [&] { return engine.machine.display->pumped; };
  pauseUntil(context, 0);
  EXPECT_EQ(pumped(), 1);
  const std::uint32_t before = clock.now;
  pauseUntil(context, static_cast<std::int32_t>(before + 100));
  EXPECT_GT(clock.now - before, 100u);
  EXPECT_LE(clock.now - before, 120u);
  EXPECT_GT(pumped(), 5);
  clock.now = 0xFFFFFFF0;
  pauseUntil(context, 40);  // beyond the wrap
  EXPECT_GT(clock.now, 40u);
  EXPECT_LT(clock.now, 100u);
}

TEST_F(Frames, ResizeFollowsTheWindowAndTellsTheHost) {
  int told = 0;
  context.deviceSteps.add(DeviceStage::Resized, [&] { ++told; });
  engine.machine.display->ownWindows.at(0)->size = {400, 100};
  ASSERT_TRUE(resizeDevice(context));
  EXPECT_EQ(told, 1);
  EXPECT_EQ(context.viewport.width, 400);
  EXPECT_EQ(context.aspectRatio, 0.25f);
  EXPECT_EQ(context.device->getViewport().height, 100);
  EXPECT_THAT(engine.recorder.lines({"Reset"}), ElementsAre("Reset(400, 100, 22, 1, 0, 3, 1, 1, 80)"));
  EXPECT_EQ(engine.recorder.lines({"SetRenderState"}).size(), 8u);
  EXPECT_THAT(engine.machine.logLines(),
              ElementsAre("DEVICE INIT : RE-Creating Matrices", "DEVICE INIT : Viewport Resized (400 100)",
                          "DEVICE INIT : Re-Setting the viewport...",
                          "DEVICE INIT : RE-Creating Spherical environment mapping matrix.",
                          "DEVICE INIT : Re-Setting RenderStates"));
  engine.recorder.clear();
  resetDevice(context);
  EXPECT_THAT(engine.newCalls(), ElementsAre("Reset(400, 100, 22, 1, 0, 3, 1, 1, 80)"));
}

TEST_F(Frames, ResizeDoesNothingWhenItMayNotAct) {
  test::MachineWindow& window = *engine.machine.display->ownWindows.at(0);
  window.size = {0, 300};
  EXPECT_FALSE(resizeDevice(context)) << "an iconic window";
  window.size = {300, 200};
  clear(context);
  EXPECT_FALSE(resizeDevice(context)) << "inside a frame";
  renderToScreen(context);
  ASSERT_TRUE(initialize(context, kFullScreen));
  engine.recorder.clear();
  EXPECT_FALSE(resizeDevice(context)) << "full screen";
  RunningEngine idle;
  EXPECT_FALSE(resizeDevice(idle.context)) << "before initialize";
  EXPECT_TRUE(engine.newCalls().empty());
}

// The back buffer holds the clear colour; the file says it in 24 bits.
struct ShotCase {
  std::intptr_t window;
  int bits;
  std::uint32_t color;
  std::array<std::uint8_t, 3> pixel;  ///< blue, green, red
};
class ScreenShots : public testing::TestWithParam<ShotCase> {};

TEST_P(ScreenShots, AreBottomUpBitmapsOf24Bits) {
  const ShotCase& row = GetParam();
  RunningEngine engine;
  EngineContext& context = engine.context;
  setEngineMode(context, 5, 3, row.bits, true, 0);
  engine.machine.display->hostWindows[9] = std::make_shared<test::MachineWindow>();
  engine.machine.display->hostWindows[9]->size = {5, 3};
  ASSERT_TRUE(initialize(context, row.window));
  context.backgroundColor = static_cast<std::int32_t>(row.color);
  clear(context);
  renderToScreen(context);
  // A first row of another colour shows which way up the file is.
  const auto back = context.device->getBackBuffer(0);
  const std::size_t bytes = device::bytesPerPixel(back->description().format);
  back->write({0, 0, 5, 1}, std::vector<std::byte>(5 * bytes));

  const std::string name = engine.machine.folder->file("shot.bmp");
  std::ofstream(name) << std::string(10000, 'x');  // replaced, not overwritten in part
  screenShot(context, name);
  const std::vector<std::byte> file = host::readFile(name);
  ASSERT_EQ(file.size(), 54u + 45u);
  const auto number = [&](std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    std::memcpy(&value, file.data() + at, size);
    return value;
  };
  const std::pair<std::size_t, std::uint32_t> fields[] = {{2, 99}, {6, 0},   {10, 54}, {14, 40}, {18, 5}, {22, 3},
                                                          {30, 0}, {34, 45}, {38, 50}, {42, 50}, {46, 0}, {50, 0}};
  EXPECT_EQ(number(0, 2), 19778u);
  EXPECT_EQ(number(26, 2), 1u);
  EXPECT_EQ(number(28, 2), 24u);
  for (const auto& [at, value] : fields) EXPECT_EQ(number(at, 4), value) << at;
  for (std::size_t i = 0; i < 10; ++i)
    for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(number(54 + 3 * i + c, 1), row.pixel[c]) << i << " " << c;
  for (std::size_t at = 54 + 30; at < file.size(); ++at) EXPECT_EQ(number(at, 1), 0u) << at;
  EXPECT_THROW(screenShot(context, engine.machine.folder->file("no/such/folder/shot.bmp")), host::FileFault);
}
INSTANTIATE_TEST_SUITE_P(Formats, ScreenShots,
                         testing::Values(ShotCase{kFullScreen, 16, 0xFFFFFFFF, {248, 252, 248}},
                                         ShotCase{kFullScreen, 16, 0xFF0000FF, {248, 0, 0}},
                                         ShotCase{kFullScreen, 16, 0xFF00FF00, {0, 252, 0}},
                                         ShotCase{kFullScreen, 32, 0x80123456, {0x56, 0x34, 0x12}},
                                         ShotCase{9, 16, 0xFF123456, {0x56, 0x34, 0x12}}));

}  // namespace
}  // namespace ql::engine
