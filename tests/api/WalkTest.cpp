#include "Engine.h"
#include "support/Golden.h"
#include "support/TinyQ3Level.h"

#include <cstring>

namespace ql::test {
namespace {

images::Image backBuffer(const InternalObjects8& internals) {
  const SurfaceObject surface = internals.GetBackbuffer();
  return {static_cast<std::uint32_t>(surface.Width()), static_cast<std::uint32_t>(surface.Height()),
          surface.ReadPixels()};
}

/// A picture of large squares in two colours.
void putChecks(const std::string& file, std::uint32_t a, std::uint32_t b) {
  images::Image image{16, 16, std::vector<std::uint32_t>(256)};
  for (std::uint32_t y = 0; y < 16; ++y)
    for (std::uint32_t x = 0; x < 16; ++x) image.at(x, y) = (x / 8 + y / 8) % 2 != 0 ? a : b;
  writeBytes(std::filesystem::absolute(file), images::encodeBmp(image));
  std::filesystem::rename(file, std::filesystem::path(file).replace_extension(".jpg"));  // the contents decide
}

/// In the eastern part, towards its floor, the curve, and the western floor at the left edge.
constexpr Vec3 kEastEye{-20, 60, 70}, kEastLook{-60, 30, 0};

class Walk : public EngineTest {
 protected:
  void load(const std::vector<std::byte>& file) {
    start(160, 120);
    putChecks("textures/base/stone.bmp", 0xFF8090A0, 0xFF304050);
    putChecks("textures/base/wood.bmp", 0xFFC08040, 0xFF604020);
    writeBytes(std::filesystem::absolute("maps/room.bsp"), file);
    level.Load("maps/room.bsp");
  }
  /// Draws a pose so that nothing depends on the frames before.
  images::Image draw(const Vec3& eye, const Vec3& look) {
    camera.SetCamera(eye.x, eye.y, eye.z, look.x, look.y, look.z);
    engine.Clear();
    engine.RenderToScreen();
    *time += 2001;
    engine.Clear();
    level.Render();
    engine.RenderToScreen();
    return backBuffer(internals);
  }

  BSPTree8 level;
  Camera8 camera;
};

TEST_F(Walk, DrawsARoom) {
  load(TinyQ3Level().bytes());
  const Vec3 start = level.GetStartPlayerPosition();  // file (-64, 32, 24)
  EXPECT_NEAR(start.x, 64, 1e-4);
  EXPECT_NEAR(start.y, 24, 1e-4);
  EXPECT_NEAR(start.z, -32, 1e-4);
  const images::Image fromEast = draw(kEastEye, kEastLook);
  EXPECT_TRUE(matchesGolden(fromEast, "tiny-room-east"));
  EXPECT_EQ(internals.GetFrameStatistics().faces, 4u) << "two floors, ceiling, curve";
  const images::Image fromWest = draw({100, 64, 0}, {-100, 30, 0});
  EXPECT_TRUE(matchesGolden(fromWest, "tiny-room-west")) << "the east floor is not seen from the western cluster";
  EXPECT_EQ(internals.GetFrameStatistics().faces, 2u);
  EXPECT_EQ(draw(kEastEye, kEastLook).pixels, fromEast.pixels) << "no picture depends on those before";
}

TEST_F(Walk, WithoutVisibilityEverythingIsDrawn) {
  load(TinyQ3Level().bytes());
  level.SetParameters(True, False);
  draw({100, 64, 0}, {-100, 30, 0});
  EXPECT_EQ(internals.GetFrameStatistics().faces, 4u);
}

TEST_F(Walk, ADamagedLevelIsLoggedAndTheEngineGoesOn) {
  std::vector<std::byte> file = TinyQ3Level().bytes();
  file.resize(file.size() / 2);
  load(file);
  EXPECT_NE(engineLog().find("BSP TREE : Error during loading : "), std::string::npos);
  draw({0, 64, 0}, {0, 64, 10});
  writeBytes(std::filesystem::absolute("maps/room.bsp"), TinyQ3Level().bytes());
  level.Load("maps/room.bsp");
  draw(kEastEye, kEastLook);
  EXPECT_EQ(internals.GetFrameStatistics().faces, 4u);
}

/// The demo level as its host sees it: its own textures, shaders and sky, curves at full precision.
class DemoLevel : public Walk {};
TEST_F(DemoLevel, LooksAsItDid) {
  const std::filesystem::path assets = QL_ASSETS_DIR;
  if (!std::filesystem::exists(assets / "maps/court.bsp")) GTEST_SKIP() << "skipped: no demo level";
  Scene8().SetViewFrustum(74, 8192);
  start(320, 240);
  engine.SetSearchDirectory(assets.string());
  level.SetCurvePrecision(QL_CURVE_HIGH);
  level.LoadShaderDirectory("scripts");
  level.SetParameters(True, True, QL_DOUBLESIDED, True);
  level.Load("maps/court.bsp");
  EXPECT_TRUE(matchesGolden(draw({0, 120, -660}, {0, 260, -1184}), "court-hall"));
  const images::Image pool = draw({190, 78, 430}, {-150, 140, -300});
  EXPECT_TRUE(matchesGolden(pool, "court-pool"));
  EXPECT_TRUE(matchesGolden(draw({-150, 140, -830}, {-286, 150, -896}), "court-window")) << "a vase behind glass";
  const images::Image later = draw({190, 78, 430}, {-150, 140, -300});
  std::size_t moved = 0, movedGround = 0;
  for (std::size_t i = 0; i < pool.pixels.size(); ++i)
    if (pool.pixels[i] != later.pixels[i]) ++(i < pool.pixels.size() / 4 * 3 ? moved : movedGround);
  EXPECT_GT(moved, 1000u) << "water drifts, lamps flicker";
  EXPECT_EQ(movedGround, 0u) << "paving does not";
}

}  // namespace
}  // namespace ql::test
