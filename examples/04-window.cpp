// Opens a window, turns the camera until the window is closed, and follows changes of the window's size.
#include <Quasarlens3D/Quasarlens3D.h>

#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string base = "assets", level = "maps/court.bsp";
  bool hardware = false;
  int frames = 0;
  CLI::App app("Shows a level in a window.");
  app.add_option("LEVEL", level, "level file, as seen from --base")->capture_default_str();
  app.add_option("--base", base, "folder with the level's files")->capture_default_str();
  app.add_option("--frames", frames, "end after so many frames; 0: when the window is closed")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    Quasarlens8 engine;
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!engine.Initialize(-1)) return 5;  // the engine's own window
    engine.SetWindowTitle("Quasarlens8: " + level);
    engine.DisplayFPS(True);
    engine.SetSearchDirectory(base);

    Scene8 scene;
    scene.SetSceneBackGround(0.2f, 0.3f, 0.4f);
    int resized = 0;
    const Connection connection = engine.RestoreObjectsAfterResize().Connect([&] {
      // Fonts belong to the device's size; what a host keeps on the device is made again here.
      scene.SelectFont("", "10");
      ++resized;
    });

    BSPTree8 tree;
    tree.LoadShaderDirectory("scripts");
    tree.SetParameters(True, True, QL_DOUBLESIDED, True);  // with the sky
    tree.Load(level);
    const Vec3 start = tree.GetStartPlayerPosition();
    Camera8 camera;
    camera.SetCamera(start.x, start.y + 26, start.z, start.x, start.y + 26, start.z + 1);

    for (int frame = 0; !engine.CloseRequested() && (frames == 0 || frame < frames); ++frame) {
      engine.Clear();
      tree.Render();
      engine.RenderToScreen();
      camera.RotateCameraY(20);
      if (frame == 10) engine.ResizeDevice();
    }
    std::cout << "resized " << resized << " times\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
