// Loads a mesh file many times and lets the mouse pick among the copies: the one under it lights up.
#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string base = "assets", out = "pick-meshes.bmp";
  std::vector<int> mouse{215, 275};
  bool hardware = false, window = false;
  int frames = 0;
  CLI::App app("Picks meshes with the mouse, in a window, or at a given place into a picture.");
  app.add_option("--base", base, "folder with the textures")->capture_default_str();
  app.add_option("--out", out, "BMP file to write; the mesh file is written beside it")->capture_default_str();
  app.add_option("--mouse", mouse, "where the mouse is, without --window")->expected(2)->capture_default_str();
  app.add_flag("--window", window, "follow the mouse in a window until it is closed");
  app.add_option("--frames", frames, "end a window after so many frames; 0: when it is closed")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::filesystem::path picture = std::filesystem::absolute(out);
    const std::string file = (picture.parent_path() / (picture.stem().string() + ".qlo")).string();
    Quasarlens8 engine;
    engine.SetEngineMode(800, 600, 32, hardware);
    if (!(window ? engine.Initialize(-1) : engine.InitCurrentVideoMode())) return 5;
    engine.SetSearchDirectory(base);
    Scene8 scene;
    Screen8 screen;
    InputEngine8 input;
    scene.SetViewFrustum(50, 1000);
    scene.SetCollisionPrecision(1000);  // how far triangles are looked for

    // The cursor: a yellow triangle; black is left out.
    const std::string arrow = (picture.parent_path() / (picture.stem().string() + "-cursor.bmp")).string();
    engine.Clear();
    for (float i = 0; i < 600; ++i) screen.DrawFilledBox(0, i, (600 - i) * 0.8f, i + 1, QL_COLORKEY_YELLOW);
    engine.RenderToScreen();
    engine.ScreenShot(arrow);
    scene.LoadCursor(arrow, QL_COLORKEY_BLACK, 24, 24);

    {  // a crystal of twelve triangles; its handle goes, its file stays
      Mesh8 crystal = scene.CreateMeshBuilder();
      for (int i = 0; i < 12; ++i) {
        const auto corner = [](int k) {
          const float turn = 1.0471976f * static_cast<float>(k);
          return Vec3{2 * std::sin(turn), 0, 2 * std::cos(turn)};
        };
        crystal.AddFace(nullptr, False);  // a group for each, so that no triangle is made across two
        for (const Vec3& p : {corner(i < 6 ? i + 1 : i), Vec3{0, i < 6 ? 6.0f : -3.0f, 0}, corner(i < 6 ? i : i + 1)})
          crystal.AddVertex(p.x, p.y, p.z, -1, 0, 0);
      }
      crystal.ComputeNormals();
      crystal.SaveToQLO(file);
    }
    scene.SetSceneBackGround(0.05f, 0.06f, 0.12f);
    LightEngine8().CreateDirectionalLight({1, -1, 1.2f}, 0.9f, 0.9f, 0.9f, 1);
    MaterialFactory8 materials;
    const auto lit = [&](float r, float g, float b) {
      const std::int16_t material = materials.CreateMaterialQuick(r, g, b, 1, "");
      materials.SetAmbient(material, r / 3, g / 3, b / 3, 1);
      materials.SetEmissive(material, 0, 0, 0, 1);
      return material;
    };
    const std::int16_t orange = lit(1, 0.6f, 0.1f);
    std::vector<Mesh8> crystals;
    std::vector<std::int16_t> colors;
    for (float z = 0; z < 48; z += 9)
      for (float x = -20; x < 21; x += 8) {
        crystals.push_back(scene.CreateMeshBuilder());
        crystals.back().LoadFromQLO(file);
        crystals.back().SetPosition(x, 0, z);
        crystals.back().SetRotation(6, 7 * x + 13 * z, 8);
        colors.push_back(lit(0.25f + (x + 20) / 80, 0.6f - (x + 20) / 120, 1 - z / 90));
      }
    // The first mesh in order of slots is picked, not the nearest: what stands in front is made first.
    Mesh8 floor = scene.CreateMeshBuilder();
    floor.AddFloor(scene.LoadTexture("textures/court/marble_green.jpg"), -60, -40, 60, 90, -4, 12, 12);
    floor.ComputeNormals();
    floor.SetMaterial(lit(0.6f, 0.7f, 0.8f));
    scene.SetCamera(-4, 17, -32, 0, 0, 8);

    std::string picked = "nothing";
    for (int frame = 0; window ? !engine.CloseRequested() && (frames == 0 || frame < frames) : frame < 2; ++frame) {
      if (!window) input.SetMousePosition(mouse[0], mouse[1]);
      std::int32_t x = 0, y = 0;
      input.GetAbsMouseState(x, y);
      const CollisionResult8 hit = scene.MousePicking(x, y, QL_COLLIDE_MESH, QL_TESTTYPE_ACCURATETESTING);
      picked = "nothing";
      for (std::size_t i = 0; i < crystals.size(); ++i) {
        const bool under = hit.IsCollision() && hit.GetCollisionMesh() == crystals[i];
        crystals[i].SetMaterial(under ? orange : colors[i]);
        if (under) picked = "crystal " + std::to_string(i + 1);
      }
      engine.Clear();
      scene.RenderAllMeshes();
      scene.DrawText("Under the mouse: " + picked, 10, 10);
      engine.RenderToScreen();
    }
    engine.ScreenShot(picture.string());
    std::cout << picked << " is under the mouse; wrote " << picture.string() << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
