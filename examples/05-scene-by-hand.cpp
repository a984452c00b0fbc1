// Builds a scene by hand: an evening court of columns and torches, shapes, letters, and a sky box around it.
#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string base = "assets", out = "scene-by-hand.bmp";
  bool hardware = false;
  CLI::App app("Builds a scene by hand and writes a picture.");
  app.add_option("--base", base, "folder with the textures")->capture_default_str();
  app.add_option("--out", out, "BMP file to write; pictures of the sky are written beside it")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::string picture = std::filesystem::absolute(out).string();
    Quasarlens8 engine;
    engine.SetEngineMode(800, 600, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    engine.SetSearchDirectory(base);
    Scene8 scene;
    Screen8 screen;
    Globals8 globals;
    scene.SetViewFrustum(50, 2000);
    scene.EnableMipMapping();

    // The sky is drawn first and loaded from what was drawn: light over hills, the same on every side.
    const auto sky = [&](int ridges, std::int32_t high, std::int32_t low) {
      engine.Clear();
      screen.DrawFilledColorBox(0, 0, 800, 320, high, high, low, low);
      for (int ridge = 0; ridge < ridges; ++ridge)
        for (float x = 0, near = static_cast<float>(ridge); x < 800; ++x) {
          const float turn = x / 800 * 6.2831853f, wave = std::sin(turn * (2 + near));
          screen.DrawFilledBox(x, 278 + 14 * near - 12 * wave - 5 * std::sin(turn * 7 + 2 * wave), x + 1, 600,
                               globals.RGBA(0.6 - 0.2 * near, 0.4 - 0.12 * near, 0.4 - 0.1 * near, 1));
        }
      engine.RenderToScreen();
      const std::string file = picture.substr(0, picture.rfind('.')) + "-sky" + std::to_string(ridges) + ".bmp";
      engine.ScreenShot(file);
      return scene.LoadTexture(file, 512, 512);
    };
    const std::int32_t blue = globals.RGBA(0.15, 0.22, 0.45, 1);
    const Texture8 side = sky(3, blue, globals.RGBA(1, 0.65, 0.4, 1)), zenith = sky(0, blue, blue);
    scene.SetSkyTexture(side, side, side, side, zenith, zenith);

    // How dark a shadow is, is the material's business: the device's ambient light is white.
    LightEngine8 lights;
    lights.CreateDirectionalLight({0.8f, -0.5f, 0.7f}, 0.9f, 0.7f, 0.5f, 1);
    MaterialFactory8 materials;
    const auto lit = [&](float r, float g, float b) {
      const std::int16_t material = materials.CreateMaterialQuick(r, g, b, 1, "");
      materials.SetAmbient(material, 0.3f * r, 0.3f * g, 0.4f * b, 1);
      materials.SetEmissive(material, 0, 0, 0, 1);
      return material;
    };
    const auto load = [&](const char* name) { return scene.LoadTexture(std::string("textures/court/") + name); };
    const Texture8 marble = load("marble.jpg"), meander = load("meander.jpg"), flags = load("flags.jpg"),
                   flame = load("flame1.tga");

    // Reflections switch normals of unit length on, which scaled meshes need to be lit right: the balls come first.
    Mesh8 balls[2] = {scene.CreateMeshBuilder(), scene.CreateMeshBuilder()}, floor = scene.CreateMeshBuilder(),
          walls = scene.CreateMeshBuilder(), teapot = scene.CreateMeshBuilder(), letters = scene.CreateMeshBuilder(),
          flames[6];
    for (float x = -40; x < 40; x += 4)  // small pieces: lights light vertices
      for (float z = -40; z < 40; z += 4) floor.AddFloor(flags, x, z, x + 4, z + 4);
    flags.ApplyOn(floor, -1, 24, 24);  // one picture over all pieces, 24 texels a unit
    const auto pillar = [&](const Texture8& texture, float x, float z, float radius, float low, float high, int sides) {
      const auto corner = [&](int i) {
        const float turn = 6.2831853f * (static_cast<float>(i) + 0.5f) / static_cast<float>(sides);
        return Vec3{x + radius * std::sin(turn), high, z + radius * std::cos(turn)};
      };
      for (int i = 0; i < sides; ++i)  // from the upper edge down, or pictures would stand on their heads
        walls.AddWall(texture, corner(i).x, corner(i).z, corner(i + 1).x, corner(i + 1).z, low - high, high);
      if (sides == 4) walls.AddFloor(marble, corner(2).x, corner(2).z, corner(0).x, corner(0).z, high);
    };
    for (int i = 0; i < 6; ++i) {
      const float x = i % 2 == 0 ? -18.0f : 18.0f, z = static_cast<float>(i / 2) * 13 - 3, inside = x * 0.68f;
      for (const float low : {0.0f, 15.0f}) pillar(marble, x, z, 2.2f, low, low + 1, 4);
      pillar(marble, x, z, 1.4f, 1, 15, 16);
      pillar(meander, inside, z - 5, 1.2f, 0, 3, 4);
      flames[i] = scene.CreateBillboard(flame, inside, 3, z - 5, 2, 3);
      flames[i].SetBlendingMode(QL_BLEND_ADD);
      const std::int16_t light = lights.CreatePointLight({inside, 4.5f, z - 5}, 20, 1, 0.5f, 0.15f, 1);
      lights.SetLightAmbientColor(light, 0, 0, 0, 1);
      lights.SetLightAttenuation(light, 0.5f, 0, 0.06f);
    }
    for (const float x : {-7.0f, 7.0f}) {
      Mesh8& ball = balls[x < 0 ? 0 : 1];
      pillar(meander, x, -4, 2.8f, 0, 4, 4);
      ball.CreateSphere(side, 2.2f, 32, 32);
      ball.EnableSphereMapping(True);
      ball.SetPosition(x, 6.2f, -4);
    }
    pillar(meander, 0, 4, 6, 0, 3, 4);
    teapot.CreateTeapot();
    teapot.ScaleMesh(2.6f, 2.6f, 2.6f);
    teapot.SetPosition(0, 5, 4);
    walls.AddWall(marble, -21, 22, 21, 22, 2, 16, 1, 8);
    letters.Create3DText("QUASARLENS");
    letters.ScaleMesh(0.05f, 0.05f, 0.025f);
    letters.SetPosition(-17, 18.2f, 23);
    for (Mesh8* mesh : {&floor, &walls}) {
      mesh->ComputeNormals();
      mesh->SetMaterial(lit(1, 1, 1));
    }
    teapot.SetMaterial(lit(0.8f, 0.55f, 0.15f));
    letters.SetMaterial(lit(0.8f, 0.2f, 0.1f));

    scene.SetCamera(-8, 8, -38, 0.5f, 8.5f, 0);
    engine.Clear();
    scene.RenderSky();
    scene.RenderAllMeshes();
    engine.RenderToScreen();
    engine.ScreenShot(picture);
    std::cout << "wrote " << picture << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
