// Loads textures in several ways, looks them up, saves one, and writes text over the picture.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string out = "textures-and-text.bmp";
  bool hardware = false;
  CLI::App app("Loads textures and draws text.");
  app.add_option("--out", out, "BMP file to write")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::filesystem::path picture = std::filesystem::absolute(out);
    Quasarlens8 engine;
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    Scene8 scene;
    Globals8 globals;
    InternalObjects8 internals;

    // A picture to load: a frame with text on it.
    const std::string source = (picture.parent_path() / (picture.stem().string() + "-source.bmp")).string();
    scene.SetSceneBackGround(1, 1, 1);
    engine.Clear();
    scene.SelectFont("DejaVu Sans", "48", "", True);
    scene.DrawText("Texture", 40, 40, QL_COLORKEY_BLUE);
    engine.RenderToScreen();
    engine.ScreenShot(source);

    // The size in use is written back; white becomes transparent. Loading the same file again would replace it.
    TextureFactory8 factory;
    std::int32_t width = -1, height = -1;
    Texture8 keyed = factory.LoadTexture(source, "Label", width, height, QL_COLORKEY_WHITE);
    const std::string saved = (picture.parent_path() / (picture.stem().string() + "-saved.bmp")).string();
    globals.SaveTexture(internals.GetTexture(globals.GetTex("label")), saved);
    Texture8 small = scene.LoadTexture(saved, 64, 64, "Small");
    Texture8 missing = factory.LoadTexture("no-such-file.png");  // logged; draws untextured

    scene.SetSceneBackGround(0.1f, 0.15f, 0.25f);
    engine.Clear();
    scene.SelectFont("", "14");
    auto line = [&, y = 20](const std::string& text) mutable { scene.DrawText(text, 20, y), y += 26; };
    line("\"" + globals.GetTexNameFromObject(keyed) + "\" is used at " + std::to_string(width) + " x " +
         std::to_string(height));
    line("\"" + globals.GetTexNameFromObject(small) + "\" is number " + std::to_string(globals.GetTexIndex("SMALL")));
    line("\"" + globals.GetTexNameFromObject(missing) + "\" has " +
         (internals.GetTexture(missing) ? "a picture" : "no picture"));
    engine.RenderToScreen();
    engine.ScreenShot(picture.string());
    std::cout << "wrote " << picture.string() << " and " << saved << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
