// Loads a level, stands at its player start and writes one picture.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string base = "assets", level = "maps/court.bsp", out = "hello-level.bmp";
  bool hardware = false;
  CLI::App app("Loads a level and writes one picture.");
  app.add_option("LEVEL", level, "level file, as seen from --base")->capture_default_str();
  app.add_option("--base", base, "folder with the level's files")->capture_default_str();
  app.add_option("--out", out, "BMP file to write")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::string picture = std::filesystem::absolute(out).string();
    Quasarlens8 engine;
    engine.SetEngineMode(800, 600, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    engine.SetSearchDirectory(base);

    BSPTree8 tree;
    tree.SetCurvePrecision(QL_CURVE_HIGH);
    tree.LoadShaderDirectory("scripts");
    tree.SetParameters(True, True, QL_DOUBLESIDED, True);  // with the sky
    tree.Load(level);
    const Vec3 start = tree.GetStartPlayerPosition();
    constexpr float kEyeHeight = 26;
    Camera8 camera;
    camera.SetCamera(start.x, start.y + kEyeHeight, start.z, start.x, start.y + kEyeHeight, start.z - 1);

    // Culling takes the planes of the frame before: after a jump of the camera one frame is drawn without the level.
    engine.Clear();
    engine.RenderToScreen();
    engine.Clear();
    tree.Render();
    engine.RenderToScreen();
    engine.ScreenShot(picture);
    std::cout << "wrote " << picture << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
