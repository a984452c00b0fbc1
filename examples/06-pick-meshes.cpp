// Loads a mesh file many times and lets the mouse pick among the copies: the one under it lights up.
#include <Quasarlens3D/Quasarlens3D.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string out = "pick-meshes.bmp";
  std::vector<int> mouse{240, 250};
  bool hardware = false, window = false;
  int frames = 0;
  CLI::App app("Picks meshes with the mouse, in a window, or at a given place into a picture.");
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
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!(window ? engine.Initialize(-1) : engine.InitCurrentVideoMode())) return 5;
    Scene8 scene;
    Screen8 screen;
    InputEngine8 input;
    scene.SetViewFrustum(50, 1000);
    scene.SetCollisionPrecision(1000);  // how far triangles are looked for

    // The cursor: a yellow triangle; black is left out.
    const std::string arrow = (picture.parent_path() / (picture.stem().string() + "-cursor.bmp")).string();
    engine.Clear();
    for (float i = 0; i < 480; ++i) screen.DrawFilledBox(0, i, (480 - i) * 0.8f, i + 1, QL_COLORKEY_YELLOW);
    engine.RenderToScreen();
    engine.ScreenShot(arrow);
    scene.LoadCursor(arrow, QL_COLORKEY_BLACK, 24, 24);

    {  // a crystal of eight triangles; its handle goes, its file stays
      Mesh8 crystal = scene.CreateMeshBuilder();
      const Vec3 ring[] = {{3, 0, 0}, {0, 0, 3}, {-3, 0, 0}, {0, 0, -3}};
      for (int i = 0; i < 8; ++i) {
        const Vec3 a = ring[i % 4], b = ring[(i + 1) % 4], tip{0, i < 4 ? 6.0f : -6.0f, 0};
        crystal.AddFace(nullptr, False);  // a group for each, so that no triangle is made across two
        for (const Vec3& p : {i < 4 ? b : a, i < 4 ? a : b, tip}) crystal.AddVertex(p.x, p.y, p.z, -1, 0, 0);
      }
      crystal.ComputeNormals();
      crystal.SaveToQLO(file);
    }
    scene.SetSceneBackGround(0.1f, 0.12f, 0.2f);
    LightEngine8().CreateDirectionalLight({1, -1, 2}, 0.8f, 0.8f, 0.8f, 1);
    MaterialFactory8 materials;
    const auto lit = [&](float r, float g, float b) {
      const std::int16_t material = materials.CreateMaterialQuick(r, g, b, 1, "");
      materials.SetAmbient(material, r / 3, g / 3, b / 3, 1);
      materials.SetEmissive(material, 0, 0, 0, 1);
      return material;
    };
    const std::int16_t blue = lit(0.3f, 0.5f, 1), orange = lit(1, 0.6f, 0.1f);
    std::vector<Mesh8> crystals;
    for (float z = 0; z < 48; z += 12)
      for (float x = -18; x < 20; x += 9) {
        crystals.push_back(scene.CreateMeshBuilder());
        crystals.back().LoadFromQLO(file);
        crystals.back().SetPosition(x, 0, z);
        crystals.back().SetRotation(0, 7 * x + 3 * z, 10);
      }
    scene.SetCamera(0, 22, -40, 0, 0, 12);

    std::string picked = "nothing";
    for (int frame = 0; window ? !engine.CloseRequested() && (frames == 0 || frame < frames) : frame < 2; ++frame) {
      if (!window) input.SetMousePosition(mouse[0], mouse[1]);
      std::int32_t x = 0, y = 0;
      input.GetAbsMouseState(x, y);
      const CollisionResult8 hit = scene.MousePicking(x, y, QL_COLLIDE_MESH, QL_TESTTYPE_ACCURATETESTING);
      picked = "nothing";
      for (std::size_t i = 0; i < crystals.size(); ++i) {
        const bool under = hit.IsCollision() && hit.GetCollisionMesh() == crystals[i];
        crystals[i].SetMaterial(under ? orange : blue);
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
