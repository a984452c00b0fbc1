// Tests the first game controller: shows its axes, buttons and points of view, and plays an effect for each button.
// Escape ends. With --replay it shows a session that was recorded before, without any controller or display.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string replay, record, out = "controllers.bmp";
  bool hardware = false;
  CLI::App app("Shows what the first game controller does, and plays its effects.");
  app.add_option("--replay", replay, "show a recorded session");
  app.add_option("--record", record, "record this session");
  app.add_option("--out", out, "BMP file of the last frame")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::string picture = std::filesystem::absolute(out).string();
    Quasarlens8 engine;
    InternalObjects8 internals;
    if (!record.empty() && !internals.StartRecording(record)) return 3;
    if (!replay.empty() && !internals.StartReplay(replay)) return 4;
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!engine.Initialize(-1)) return 5;
    engine.SetWindowTitle("Game controllers");
    Scene8 scene;
    scene.SetSceneBackGround(0.1f, 0.12f, 0.2f);
    Screen8 screen;
    InputEngine8 input;

    GameControllers8 controllers = input.GameControllers();
    controllers.GetControllers();
    if (controllers.Count() == 0) {
      std::cout << "no controller is attached\n";
      return 0;
    }
    GameController8 pad = controllers.Item(1);
    pad.Initialize();
    std::cout << pad.ProductName() << ": " << pad.GetButtonCount() << " buttons, " << pad.ForceFeedEffects().Count()
              << " effects\n";

    // Every effect lasts half a second at half strength; a button plays its own.
    std::vector<ForceEffectObject> effects;
    QL_EFFECT_INFO strength;
    strength.Duration = 500'000;
    strength.Magnitude = strength.WeakMagnitude = strength.RampStart = 5000;
    strength.ConditionX.PositiveCoefficient = strength.ConditionX.NegativeCoefficient = 5000;
    for (const ForceFeedEffect8& effect : pad.ForceFeedEffects().NewEnum())
      if (effect.EffectType() != ql_CUSTOMFORCE) effects.push_back(pad.CreateForceFeedEffect(effect.Guid(), strength));

    QL_JOYSTATE now, before;
    int changes = 0, played = 0;
    const Connection changed = pad.Change().Connect([&] {
      ++changes;
      before = now;
      now = pad.ControllerState();
      for (std::size_t i = 0; i < effects.size() && i < now.Buttons.size(); ++i)
        if (now.Buttons[i] != 0 && before.Buttons[i] == 0) played += effects[i].Start() ? 1 : 0;
    });

    const char* const names[] = {"x", "y", "z", "rotation x", "rotation y", "rotation z", "slider 0", "slider 1"};
    while (!engine.CloseRequested() && !internals.ReplayEnded() && !input.IsKeyPressed(QL_KEY_ESCAPE)) {
      engine.Clear();
      scene.DrawText(pad.ProductName() + (pad.IsConnected() ? "" : " (unplugged)"), 20, 16);
      const std::int32_t values[] = {now.x,         now.y,         now.z,       now.RotationX,
                                     now.RotationY, now.RotationZ, now.Slider0, now.Slider1};
      for (int i = 0; i < 8; ++i) {
        const float top = 50.0f + 30 * static_cast<float>(i), part = static_cast<float>(values[i]) / 10'000;
        if (!pad.GetAxis()[static_cast<std::size_t>(i)]) continue;
        scene.DrawText(std::string(names[i]) + " " + std::to_string(values[i]), 20, static_cast<int>(top));
        screen.DrawBox(160, top, 560, top + 20, -1);
        screen.DrawFilledBox(161, top + 1, 161 + 398 * part, top + 19, 0x4080FF);
      }
      for (int i = 0; i < pad.GetButtonCount() && i < 32; ++i) {
        const float left = 20 + 36 * static_cast<float>(i % 16), top = 310 + 36 * static_cast<float>(i / 16);
        const bool down = now.Buttons[static_cast<std::size_t>(i)] != 0;
        screen.DrawFilledBox(left, top, left + 30, top + 30, down ? 0xFF8040 : 0x404860);
        scene.DrawText(std::to_string(i), static_cast<int>(left) + 8, static_cast<int>(top) + 8);
      }
      scene.DrawText("point of view " + std::to_string(now.PointOfView0), 20, 400);
      scene.DrawText(std::to_string(played) + " effects played, motors " + std::to_string(pad.GetForceFeedbackState()),
                     20, 430);
      engine.RenderToScreen();
    }
    engine.ScreenShot(picture);
    std::cout << changes << " changes, " << played << " effects played; wrote " << picture << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
