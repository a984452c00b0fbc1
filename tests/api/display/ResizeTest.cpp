// Windows that the user resizes, names and closes while the engine draws in them.
#include "OnDisplay.h"
#include "platform/images/Image.h"
#include "support/CloseWindow.h"
#include "support/Golden.h"
#include "support/TinyQ3Level.h"

#include <functional>
#include <memory>
#include <set>

// Xlib's macros spoil the names of others: last.
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#undef Bool
#undef None
#undef Status

namespace ql::test {
namespace {

constexpr const char* kTitle = "A window for tests";

struct Kind {
  const char* name;
  bool hardware;
};

class Resizing : public OnDisplay, public testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override {
    OnDisplay::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    internals.SetClock([time = time] { return *time; });
    engine.SetWindowTitle(kTitle);
    engine.SetEngineMode(320, 240, 32, GetParam().hardware);
  }
  bool initialize(std::intptr_t window) {
    if (!engine.Initialize(window)) return false;
    return internals.GetDeviceKind() == (GetParam().hardware ? QL_DEVICE_HARDWARE : QL_DEVICE_REFERENCE);
  }
  void loadLevel() {
    putStripes("textures/base/stone.jpg", 0xFF8090A0, 0xFF304050);
    putStripes("textures/base/wood.jpg", 0xFFC08040, 0xFF604020);
    writeBytes(std::filesystem::absolute("maps/room.bsp"), TinyQ3Level().bytes());
    level.Load("maps/room.bsp");
  }
  /// Colours of the level from its floors to the ceiling, after the frames that culling needs.
  std::vector<std::uint32_t> draw() {
    camera.SetCamera(-20, 60, 70, -60, 30, 0);
    for (int i = 0; i < 3; ++i) {
      engine.Clear();
      level.Render();
      engine.RenderToScreen();
      *time += 2001;
    }
    return internals.GetBackbuffer().ReadPixels();
  }
  /// The user gives the window another size; until the engine follows.
  bool follow(int width, int height) {
    const Hands hands(kTitle);
    hands.resize(width, height);
    const std::string wanted = std::to_string(width) + "x" + std::to_string(height) + " 22";
    internals.SetClock(nullptr);
    for (int i = 0; i < 100 && size(engine) != wanted; ++i) {
      engine.Pause(engine.TickCount() + 20);
      engine.ResizeDevice();
    }
    internals.SetClock([clock = time] { return *clock; });
    return size(engine) == wanted;
  }
  static void putStripes(const std::string& file, std::uint32_t a, std::uint32_t b) {
    images::Image image{16, 16, std::vector<std::uint32_t>(256)};
    for (std::uint32_t y = 0; y < 16; ++y)
      for (std::uint32_t x = 0; x < 16; ++x) image.at(x, y) = y < 8 ? a : b;
    writeBytes(std::filesystem::absolute(file), images::encodeBmp(image));  // the contents decide, not the ending
  }

  std::shared_ptr<std::uint32_t> time = std::make_shared<std::uint32_t>(10'000);
  BSPTree8 level;
  Camera8 camera;
};

TEST_P(Resizing, FollowsTheUserAndKeepsTexturesAndGeometry) {
  if (!initialize(-1)) GTEST_SKIP() << "skipped: no such device here";
  loadLevel();
  const std::vector<std::uint32_t> first = draw();
  EXPECT_EQ(first.size(), 640u * 480u) << "the engine's own window";
  EXPECT_GT(std::set<std::uint32_t>(first.begin(), first.end()).size(), 20u) << "an empty picture";
  int raised = 0;
  const Connection connection = engine.RestoreObjectsAfterResize().Connect([&] { ++raised; });

  ASSERT_TRUE(follow(400, 300)) << size(engine);
  EXPECT_GT(raised, 0);
  EXPECT_NE(log().find("DEVICE INIT : Viewport Resized (400 300)"), std::string::npos);
  const std::vector<std::uint32_t> smaller = draw();
  ASSERT_EQ(smaller.size(), 400u * 300u);
  engine.ScreenShot("small.bmp");
  EXPECT_EQ(contents("small.bmp").size(), 54u + 400u * 300u * 3u);

  ASSERT_TRUE(follow(640, 480)) << size(engine);
  EXPECT_EQ(draw(), first) << "textures, vertices and states are what they were";
  engine.ResetDevice();
  EXPECT_EQ(draw(), first);
}

TEST_P(Resizing, InAWindowOfTheHost) {
  ::Display* server = XOpenDisplay(nullptr);
  ASSERT_NE(server, nullptr);
  const ::Window window = XCreateSimpleWindow(server, DefaultRootWindow(server), 0, 0, 200, 160, 0, 0, 0);
  XStoreName(server, window, "The host's own");
  XMapWindow(server, window);
  XSync(server, 0);
  if (!initialize(static_cast<std::intptr_t>(window))) {
    XCloseDisplay(server);
    GTEST_SKIP() << "skipped: no such device here";
  }
  EXPECT_EQ(size(engine), "200x160 22");
  Scene8 scene;
  scene.SetSceneBackGround(1, 0.5f, 0);
  XResizeWindow(server, window, 300, 100);
  XSync(server, 0);
  EXPECT_TRUE(engine.ResizeDevice());
  EXPECT_EQ(size(engine), "300x100 22");
  std::uint32_t corner = 0;
  for (int i = 0; i < 100 && (corner & 0xFFFFFF) != 0xFF8000; ++i) {  // the server works at its own time
    engine.Clear();
    engine.RenderToScreen();
    XImage* image = XGetImage(server, window, 299, 99, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr) continue;
    corner = static_cast<std::uint32_t>(XGetPixel(image, 0, 0));
    XDestroyImage(image);
  }
  EXPECT_EQ(corner & 0xFFFFFF, 0xFF8000u) << "the last pixel of the new size";
  engine = nullptr;
  XDestroyWindow(server, window);
  XCloseDisplay(server);
}

TEST_P(Resizing, ScreenShotsOfBothDepths) {
  Scene8().SetSceneBackGround(1, 1, 1);
  for (const auto& [bits, pixel] : {std::pair(16, "\xF8\xFC\xF8"), std::pair(32, "\xFF\xFF\xFF")}) {
    engine.SetEngineMode(40, 30, bits, GetParam().hardware);
    if (!initialize(0)) GTEST_SKIP() << "skipped: no such device here";
    engine.Clear();
    engine.RenderToScreen();
    engine.ScreenShot("white.bmp");
    const std::string file = contents("white.bmp");
    ASSERT_EQ(file.size(), 54u + 40u * 30u * 3u);
    EXPECT_EQ(file.substr(54, 3), pixel) << bits;
    EXPECT_EQ(file.substr(file.size() - 3), pixel) << bits;
  }
}

INSTANTIATE_TEST_SUITE_P(Devices, Resizing, testing::Values(Kind{"Reference", false}, Kind{"Hardware", true}),
                         [](const auto& row) { return row.param.name; });

TEST_F(OnDisplay, PauseTakesInWhatTheUserDoes) {
  engine.SetWindowTitle("First title");
  engine.SetEngineMode(320, 240, 32, False);
  ASSERT_TRUE(engine.Initialize(-1));
  engine.Clear();
  engine.RenderToScreen();
  EXPECT_TRUE(Hands("First title").act("getwindowname %w"));
  engine.SetWindowTitle(
      "Z\xFC"
      "ge");  // not UTF-8
  engine.Pause(0);
  EXPECT_TRUE(Hands("Z.+ge").act("getwindowname %w"));
  EXPECT_FALSE(engine.CloseRequested());

  engine.SetWindowTitle("Third title");
  engine.Pause(0);
  EXPECT_TRUE(closeWindow("Third title"));
  const std::int32_t before = engine.TickCount();
  engine.Pause(before + 300);
  EXPECT_GT(engine.TickCount(), before + 300);
  EXPECT_TRUE(engine.CloseRequested());
}

}  // namespace
}  // namespace ql::test
