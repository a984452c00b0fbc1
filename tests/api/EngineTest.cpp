#include "Engine.h"

#include <stdexcept>
#include <vector>

namespace ql::test {
namespace {

class Engine : public EngineTest {
 protected:
  std::int32_t frameAt(std::uint32_t now) {
    *time = now;
    engine.Clear();
    engine.RenderToScreen();
    return engine.TimeElapsed();
  }
};

TEST_F(Engine, TellsWhichDeviceItGot) {
  EXPECT_EQ(internals.GetDeviceKind(), QL_DEVICE_NONE);
  EXPECT_FALSE(internals.GetDevice3D());
  EXPECT_TRUE(internals.GetDirect3D());
  start();
  EXPECT_EQ(internals.GetDeviceKind(), QL_DEVICE_REFERENCE);
  EXPECT_TRUE(internals.GetDevice3D());
  EXPECT_TRUE(internals.GetD3DXLibrary());
}

TEST_F(Engine, TimeFollowsTheHostsClock) {
  start();
  frameAt(20'000);
  const struct {
    std::uint32_t now;
    std::int32_t elapsed;
  } cases[] = {{20'016, 16}, {20'215, 199}, {20'415, 200}, {20'616, 50}, {25'616, 50}, {25'616, 0}};
  for (const auto& row : cases) EXPECT_EQ(frameAt(row.now), row.elapsed) << "at " << row.now;
  EXPECT_EQ(engine.TickCount(), 25'616);
  internals.SetClock(nullptr);
  EXPECT_NE(engine.TickCount(), 25'616) << "the system's counter again";
}

TEST_F(Engine, ReadsWhatItDrew) {
  start(32, 24);
  Scene8 scene;
  scene.SetSceneBackGround(0, 0, 1);
  engine.Clear();
  scene.DrawText("Hello", 2, 4, QL_COLORKEY_WHITE);
  engine.RenderToScreen();
  const SurfaceObject surface = internals.GetBackbuffer();
  ASSERT_EQ(surface.Width(), 32);
  ASSERT_EQ(surface.Height(), 24);
  const std::vector<std::uint32_t> pixels = surface.ReadPixels();
  ASSERT_EQ(pixels.size(), 32u * 24u);
  EXPECT_EQ(pixels.back() & 0xFFFFFF, 0x0000FFu);
  EXPECT_GT(std::count_if(pixels.begin(), pixels.end(), [](std::uint32_t p) { return (p >> 16 & 255) > 128; }), 10)
      << "the text is white";
  EXPECT_GT(internals.GetFrameStatistics().triangles, 0u);

  // The screenshot holds the same pixels, bottom row first.
  engine.ScreenShot("shot.bmp");
  const std::string bmp = contents("shot.bmp");
  ASSERT_EQ(bmp.size(), 54u + 32u * 24u * 3u);
  const auto byteAt = [&](std::size_t at) { return static_cast<std::uint32_t>(static_cast<unsigned char>(bmp[at])); };
  for (std::size_t y = 0; y < 24; ++y)
    for (std::size_t x = 0; x < 32; ++x) {
      const std::size_t at = 54 + ((23 - y) * 32 + x) * 3;
      EXPECT_EQ(byteAt(at) | byteAt(at + 1) << 8 | byteAt(at + 2) << 16, pixels[y * 32 + x] & 0xFFFFFF);
    }
}

TEST_F(Engine, SixteenBitBackBuffersReadAsFullColours) {
  engine.SetEngineMode(8, 8, 16, False);
  ASSERT_TRUE(engine.InitCurrentVideoMode());
  Scene8().SetSceneBackGround(1, 1, 1);
  engine.Clear();
  engine.RenderToScreen();
  EXPECT_EQ(internals.GetBackbuffer().Format(), 23);
  EXPECT_EQ(internals.GetBackbuffer().ReadPixels().front(), 0xFFFFFFFFu);
  engine.ScreenShot("white.bmp");
  EXPECT_EQ(contents("white.bmp").substr(54, 3), "\xF8\xFC\xF8");
}

TEST_F(Engine, ResizingRaisesItsEventWhileConnected) {
  engine.SetEngineMode(8, 8, 32, False);
  ASSERT_TRUE(engine.Initialize(-1));
  int raised = 0, second = 0;
  Connection connection = engine.RestoreObjectsAfterResize().Connect([&] { ++raised; });
  Connection other;
  other = engine.RestoreObjectsAfterResize().Connect([&] {
    ++second;
    connection.Disconnect();
  });
  ASSERT_TRUE(engine.ResizeDevice());
  ASSERT_TRUE(engine.ResizeDevice());
  EXPECT_EQ(raised, 1);
  EXPECT_EQ(second, 2);

  engine.Clear();
  EXPECT_FALSE(engine.ResizeDevice()) << "inside a frame";
  engine.RenderToScreen();
  EXPECT_EQ(second, 2);

  // A handler's own exception passes through unchanged.
  struct HostsOwn {};
  const Connection throwing = engine.RestoreObjectsAfterResize().Connect([] { throw HostsOwn(); });
  EXPECT_THROW(engine.ResizeDevice(), HostsOwn);
}

TEST_F(Engine, ConnectionsMayOutliveTheirEngine) {
  Connection connection = engine.RestoreObjectsAfterResize().Connect([] {});
  engine = nullptr;
  connection.Disconnect();
}

}  // namespace
}  // namespace ql::test
