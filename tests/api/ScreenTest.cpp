#include "Engine.h"
#include "support/Golden.h"
#include "support/TinyQ3Level.h"

#include <stdexcept>

namespace ql::test {
namespace {

constexpr std::int32_t kInvalidCall = static_cast<std::int32_t>(0x8876086C);
constexpr std::int32_t kRed = static_cast<std::int32_t>(0xFFFF0000);

struct ScreenApi : EngineTest {
  Scene8 scene;
  Screen8 screen;
  std::uint32_t pixel(std::size_t x, std::size_t y) const {
    return internals.GetBackbuffer().ReadPixels().at(y * 64 + x) & 0xFFFFFF;
  }
};

TEST_F(ScreenApi, DrawsButtonsFadesAndSpritesForAHost) {
  start();
  std::int32_t width = 16, height = 8;
  RenderSurface8 red = scene.CreateRenderSurface(width, height, True), blue = scene.CreateRenderSurface(16, 8, True);
  EXPECT_EQ(width, 16);
  for (const auto& [surface, color] :
       {std::pair(&red, kRed), std::pair(&blue, static_cast<std::int32_t>(0xFF0000FF))}) {
    surface->StartRender();
    screen.DrawFilledBox(0, 0, 16, 8, color);
    surface->EndRender();
  }
  Globals8 globals;
  EXPECT_EQ(globals.GetTexNameFromObject(red.GetTexture()), "No need");
  EXPECT_EQ(screen.LoadSprite("no need", "Hero"), 1);
  EXPECT_EQ(globals.GetSprite("HERO"), 1);
  EXPECT_EQ(globals.GetSprite("nobody"), 0);

  InputEngine8 input;
  input.SetMousePosition(20, 12);
  engine.Clear();
  EXPECT_TRUE(screen.RollOver(red.GetTexture(), blue.GetTexture(), 10, 10, 30, 20));
  EXPECT_FALSE(screen.RollOver(red.GetTexture(), blue.GetTexture(), 20, 30, 40, 40));
  screen.ScaleSprite(1, 0.5f, 0.5f);
  screen.DrawSprite(1, 50, 10);
  engine.RenderToScreen();
  EXPECT_EQ(pixel(11, 11), 0xFF0000u);
  EXPECT_EQ(pixel(21, 31), 0x0000FFu);
  EXPECT_EQ(pixel(57, 13), 0xFF0000u);
  EXPECT_EQ(pixel(58, 13), 0u);

  GraphicEffect8 effect;
  EXPECT_TRUE(effect.FadeFinished());
  effect.FadeOut(100);
  EXPECT_FALSE(effect.FadeFinished());
  *time += 100;
  engine.Clear();
  engine.RenderToScreen();
  EXPECT_TRUE(effect.FadeFinished());
  effect.Flash(1, 1, 1);
  EXPECT_FALSE(effect.FlashFinished());
  effect.StopFlash();
  engine.Clear();
  effect.InstantFlash(0, 1, 0, 1);
  engine.RenderToScreen();
  EXPECT_EQ(pixel(63, 47), 0x00FF00u);
}

TEST_F(ScreenApi, RefusesNothingAndWhatComesTooEarly) {
  EXPECT_EQ(errorOf([&] { screen.DrawBox(0, 0, 1, 1, 0); }), 91) << "no device yet";
  EXPECT_EQ(errorOf([&] { scene.CreateRenderSurface(16, 16, True); }), 91);
  EXPECT_EQ(errorOf([&] { screen.CreateUserFont("", "", 10, False, False, False); }), 91);
  start();
  EXPECT_EQ(errorOf([&] { screen.DrawBox(0, 0, 1, 1, 0); }), kInvalidCall) << "outside a frame";
  EXPECT_EQ(errorOf([&] { screen.DrawTexture(nullptr, 0, 0, 1, 1); }), 91);
  EXPECT_EQ(errorOf([&] { screen.RollOver(nullptr, nullptr, 0, 0, 1, 1); }), 91);
  EXPECT_EQ(errorOf([&] { screen.DrawSprite(1, 0, 0); }), 9);
  EXPECT_EQ(errorOf([&] { screen.LoadBackground("none.bmp"); }), static_cast<std::int32_t>(0x88760866));
  EXPECT_EQ(errorOf([] { RenderSurface8().StartRender(); }), 91);
  RenderSurface8 surface = scene.CreateRenderSurface(16, 16, True);
  EXPECT_EQ(errorOf([&] { surface.EndRender(); }), kInvalidCall);
  engine.Clear();
  EXPECT_EQ(errorOf([&] { surface.StartRender(); }), kInvalidCall) << "inside a frame";
  engine.RenderToScreen();
}

/// What a level looks like on a surface is what it looks like on the screen, whatever was drawn before.
TEST_F(ScreenApi, ALevelOnASurfaceIsTheLevelOnTheScreen) {
  scene.SetViewFrustum(90, 500);
  start(64, 64);
  writeBytes(std::filesystem::absolute("maps/room.bsp"), TinyQ3Level().bytes());
  BSPTree8 level;
  level.Load("maps/room.bsp");
  Camera8 camera;
  constexpr Vec3 kEast{-20, 60, 70}, kEastLook{-60, 30, 0}, kWest{64, 60, 0}, kWestLook{-64, 20, 0};
  const auto onScreen = [&](const Vec3& eye, const Vec3& look) {
    camera.SetCamera(eye.x, eye.y, eye.z, look.x, look.y, look.z);
    engine.Clear();
    engine.RenderToScreen();
    *time += 2001;
    engine.Clear();
    level.Render();
    engine.RenderToScreen();
    return internals.GetBackbuffer().ReadPixels();
  };
  const std::vector<std::uint32_t> east = onScreen(kEast, kEastLook), west = onScreen(kWest, kWestLook);

  RenderSurface8 surface = scene.CreateRenderSurface(64, 64, True);
  surface.SetCamera(kEast.x, kEast.y, kEast.z, kEastLook.x, kEastLook.y, kEastLook.z);
  EXPECT_THROW(
      {
        surface.StartRender();
        throw std::runtime_error("the host's own");
      },
      std::runtime_error);
  surface.StartRender();
  level.Render();
  surface.EndRender();
  engine.Clear();
  level.Render();
  engine.RenderToScreen();
  EXPECT_EQ(internals.GetBackbuffer().ReadPixels(), west) << "the frame's own view is as it was";

  engine.Clear();
  screen.DrawPartTexture(surface.GetTexture(), -0.5f, -0.5f, 63.5f, 63.5f, 0, 0, 1, 1);
  engine.RenderToScreen();
  const std::vector<std::uint32_t> shown = internals.GetBackbuffer().ReadPixels();
  std::size_t different = 0;
  for (std::size_t i = 0; i < shown.size(); ++i) different += channelDifference(shown[i], east[i]) > 8 ? 1u : 0u;
  EXPECT_EQ(different, 0u) << "beyond what 16 bits lose";
  EXPECT_NE(shown, west);
}

TEST_F(ScreenApi, LoadingShowsItsPanelOnlyWhenAsked) {
  start(240, 160);
  writeBytes(std::filesystem::absolute("maps/room.bsp"), TinyQ3Level().bytes());
  const auto panel = [&](Boolean console) {
    engine.Clear();
    engine.RenderToScreen();
    engine.Console(console);
    BSPTree8().Load("maps/room.bsp");
    return internals.GetBackbuffer().ReadPixels().at(5 * 240 + 100) & 0xFFFFFF;
  };
  EXPECT_EQ(panel(False), 0u);
  EXPECT_EQ(panel(True), 0x00FF00u) << "the frame's upper edge";
}

}  // namespace
}  // namespace ql::test
