// A menu: buttons that light up under the mouse, a cursor, text in fonts of its own, and fades. Its pictures are drawn
// into textures first. Without --window the pointer goes over the buttons by itself and a picture is written.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

namespace {

constexpr std::int32_t argb(std::uint32_t color) { return static_cast<std::int32_t>(color); }
constexpr std::int32_t kLeft = 220, kTop = 190, kWidth = 200, kHeight = 48, kStep = 64;

/// A texture with a button's picture.
RenderSurface8 paintButton(Scene8& scene, Screen8& screen, std::uint32_t above, std::uint32_t below) {
  RenderSurface8 surface = scene.CreateRenderSurface(256, 64, True);
  surface.StartRender();
  screen.DrawFilledColorBox(0, 0, 256, 64, argb(above), argb(above), argb(below), argb(below));
  for (float inset = 6; inset < 10; ++inset) screen.DrawBox(inset, inset, 255 - inset, 63 - inset, argb(0xFFF0E0B0));
  surface.EndRender();
  return surface;
}

}  // namespace

int main(int argc, char** argv) {
  std::string out = "menu.bmp";
  bool window = false, hardware = false;
  CLI::App app("Shows a menu.");
  app.add_option("--out", out, "BMP file of the menu")->capture_default_str();
  app.add_flag("--window", window, "in a window, for the mouse: a click on Quit ends");
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::filesystem::path picture = std::filesystem::absolute(out);
    Quasarlens8 engine;
    InternalObjects8 internals;
    std::uint32_t time = 10'000;
    if (!window) internals.SetClock([&time] { return time += 8; });
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!engine.Initialize(window ? -1 : 0)) return 5;
    InputEngine8 input;
    Scene8 scene;
    Screen8 screen;
    GraphicEffect8 effect;
    screen.CreateUserFont("Title", "DejaVu Serif", 34, True, True, False);
    screen.CreateUserFont("Button", "DejaVu Sans", 16, True, False, False);
    RenderSurface8 over = paintButton(scene, screen, 0xFFC08030, 0xFF603010);
    RenderSurface8 normal = paintButton(scene, screen, 0xFF405878, 0xFF182438);

    // A cursor needs transparent parts: a picture with a colour key.
    RenderSurface8 arrow = scene.CreateRenderSurface(32, 32, True);
    arrow.StartRender();
    for (float i = 0; i < 24; ++i) screen.DrawLine(0, i, i * 0.7f, i, i > 22 ? argb(0xFF404040) : -1);
    arrow.EndRender();
    const std::string cursor = (picture.parent_path() / (picture.stem().string() + "-cursor.bmp")).string();
    Globals8().SaveTexture(internals.GetTexture(arrow.GetTexture()), cursor);
    scene.LoadCursor(cursor, QL_COLORKEY_BLACK);

    const char* const labels[] = {"New game", "Options", "Quit"};
    effect.FadeIn(600);
    bool leaving = false;
    for (int frame = 0; !engine.CloseRequested() && !(leaving && effect.FadeFinished()); ++frame) {
      if (!window) input.SetMousePosition(300, 120 + 2 * frame);
      engine.Clear();
      screen.DrawFilledColorBox(0, 0, 640, 480, argb(0xFF101828), argb(0xFF302040), argb(0xFF283040), argb(0xFF081018));
      screen.DrawText("Quasarlens 8", 132, 72, argb(0xFFFFE0A0), "Title");
      for (std::int32_t i = 0; i < 3; ++i) {
        const std::int32_t top = kTop + i * kStep;
        const bool inside =
            screen.RollOver(over.GetTexture(), normal.GetTexture(), kLeft, top, kLeft + kWidth, top + kHeight);
        screen.DrawText(labels[i], kLeft + 44, top + 12, inside ? -1 : argb(0xFFB0C0D0), "button");
        std::int32_t x = 0, y = 0;
        std::int16_t pressed = 0;
        input.GetAbsMouseState(x, y, pressed);
        const bool chosen = inside && i == 2 && (pressed != 0 || (!window && y >= top + kHeight - 4));
        if (chosen && !leaving) effect.FadeOut(600), leaving = true;
      }
      engine.RenderToScreen();
      if (frame == 80) engine.ScreenShot(picture.string());
    }
    std::cout << "wrote " << picture.string() << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
