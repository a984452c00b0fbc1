// Builds a scene without any file: a lit floor and a wall, shapes, letters, a billboard, and a sky box around them.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string out = "scene-by-hand.bmp";
  bool hardware = false;
  CLI::App app("Builds a scene by hand and writes a picture.");
  app.add_option("--out", out, "BMP file to write; pictures for textures are written beside it")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::filesystem::path picture = std::filesystem::absolute(out);
    Quasarlens8 engine;
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    Scene8 scene;
    Screen8 screen;
    Globals8 globals;
    scene.SetViewFrustum(60, 2000);
    scene.EnableMipMapping();

    // Textures are drawn first, one a frame, and loaded from what was drawn.
    const auto paint = [&](const std::string& name, std::int32_t above, std::int32_t below, float tiles) {
      const std::string file = (picture.parent_path() / (picture.stem().string() + "-" + name + ".bmp")).string();
      engine.Clear();
      screen.DrawFilledColorBox(0, 0, 640, 480, above, above, below, below);
      for (float y = 0; y < 480 * tiles; y += 160) screen.DrawFilledBox(0, y, 640, y + 8, QL_COLORKEY_BLACK);
      for (float x = 0; x < 640 * tiles; x += 160) screen.DrawFilledBox(x, 0, x + 10, 480, QL_COLORKEY_BLACK);
      engine.RenderToScreen();
      engine.ScreenShot(file);
      return scene.LoadTexture(file, 256, 256);
    };
    const auto rgb = [&](double r, double g, double b) { return globals.RGBA(r, g, b, 1); };
    const std::int32_t blue = rgb(0.2, 0.4, 0.8), green = rgb(0.3, 0.35, 0.2);
    const Texture8 zenith = paint("zenith", blue, blue, 0), side = paint("side", blue, rgb(0.9, 0.85, 0.8), 0);
    const Texture8 ground = paint("ground", green, green, 0);
    const Texture8 tile = paint("tile", rgb(0.75, 0.5, 0.4), rgb(0.65, 0.4, 0.3), 1);
    scene.SetSkyTexture(side, side, side, side, ground, zenith);  // the top picture lies below, the bottom one above

    // How dark a shadow is, is the material's business: the device's ambient light is white.
    LightEngine8 lights;
    lights.CreateDirectionalLight({0.4f, -0.7f, 1}, 0.7f, 0.65f, 0.6f, 1);
    const std::int16_t lamp = lights.CreatePointLight({-16, 14, -6}, 70, 1, 0.5f, 0.1f, 1);
    lights.SetLightAttenuation(lamp, 0.3f, 0, 0.004f);
    MaterialFactory8 materials;
    const auto lit = [&](float r, float g, float b) {
      const std::int16_t material = materials.CreateMaterialQuick(r, g, b, 1, "");
      materials.SetAmbient(material, 0.3f * r, 0.3f * g, 0.35f * b, 1);
      materials.SetEmissive(material, 0, 0, 0, 1);
      return material;
    };

    Mesh8 floor = scene.CreateMeshBuilder("Floor"), wall = scene.CreateMeshBuilder("Wall");
    for (float x = -40; x < 40; x += 4)  // small pieces: lights light vertices
      for (float z = -40; z < 40; z += 4) floor.AddFloor(nullptr, x, z, x + 4, z + 4);
    for (float x = -40; x < 40; x += 8)
      for (float y = 0; y < 18; y += 6) wall.AddWall(tile, x, 30, x + 8, 30, 6, y);
    // Reflections switch normals of unit length on, which scaled meshes need to be lit right: the ball comes first.
    Mesh8 ball = scene.CreateMeshBuilder(), teapot = scene.CreateMeshBuilder(), letters = scene.CreateMeshBuilder();
    ball.CreateSphere(side, 6, 32, 32);
    ball.EnableSphereMapping(True);
    ball.SetPosition(-12, 6, 4);
    teapot.CreateTeapot();
    teapot.SetPosition(6, 3, -4);
    letters.Create3DText("QL8");
    letters.ScaleMesh(0.1f, 0.1f, 0.1f);
    letters.SetPosition(10, 1.5f, 18);
    floor.ComputeNormals();  // those of floors point down
    wall.ComputeNormals();
    const Mesh8 sign = scene.CreateBillboard(tile, -26, 0, -14, 5, 8, "Sign");
    floor.SetMaterial(lit(0.5f, 0.6f, 0.4f));
    wall.SetMaterial(lit(1, 1, 1));
    teapot.SetMaterial(lit(0.6f, 0.6f, 0.7f));
    ball.SetMaterial(lit(1, 0.9f, 0.6f));
    letters.SetMaterial(lit(0.9f, 0.2f, 0.2f));

    scene.SetCamera(18, 26, -58, -2, 7, 6);
    engine.Clear();
    scene.RenderSky();
    scene.RenderAllMeshes();
    engine.RenderToScreen();
    engine.ScreenShot(picture.string());
    std::cout << "wrote " << picture.string() << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
