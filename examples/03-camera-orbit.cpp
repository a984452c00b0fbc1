// Turns the camera at a level's player start with a clock of its own, and writes a picture every quarter turn.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string base = "assets", level = "maps/court.bsp", out = "camera-orbit.bmp";
  bool hardware = false;
  CLI::App app("Turns the camera about itself and writes four pictures.");
  app.add_option("LEVEL", level, "level file, as seen from --base")->capture_default_str();
  app.add_option("--base", base, "folder with the level's files")->capture_default_str();
  app.add_option("--out", out, "BMP file to write; a number is put before its ending")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::filesystem::path picture = std::filesystem::absolute(out);
    Quasarlens8 engine;

    // 50 milliseconds a frame, however long it takes: every run gives the same pictures.
    std::uint32_t now = 10'000;
    InternalObjects8 internals;
    internals.SetClock([&now] { return now; });

    // Given before there is a device, the field of view goes with any size of picture.
    Scene8 scene;
    scene.SetViewFrustum(74, 8192);
    engine.SetEngineMode(640, 360, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    engine.SetSearchDirectory(base);
    BSPTree8 tree;
    tree.LoadShaderDirectory("scripts");
    tree.SetParameters(True, True, QL_DOUBLESIDED, True);  // with the sky
    tree.Load(level);
    const Vec3 start = tree.GetStartPlayerPosition();
    Camera8 camera;
    camera.SetCamera(start.x, start.y + 26, start.z, start.x, start.y + 26, start.z + 1);

    constexpr int kFramesPerTurn = 80;
    for (int frame = 0; frame < kFramesPerTurn; ++frame) {
      engine.Clear();
      tree.Render();
      scene.DrawText(std::to_string(static_cast<int>(camera.GetCameraRotationY())) + " degrees", 10, 10);
      engine.RenderToScreen();
      if (frame % (kFramesPerTurn / 4) == kFramesPerTurn / 8) {
        const std::string name = picture.stem().string() + "-" + std::to_string(frame) + picture.extension().string();
        engine.ScreenShot((picture.parent_path() / name).string());
        std::cout << "wrote " << name << ", " << internals.GetFrameStatistics().faces << " faces\n";
      }
      camera.RotateCameraY(-90);  // degrees per second of the engine's time
      now += 50;
    }
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
