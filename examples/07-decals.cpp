// Shoots at the walls of a room: a ray under each target pixel, a decal where it meets a triangle, gone after a while.
#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string base = "assets", out = "decals.bmp";
  bool hardware = false;
  CLI::App app("Puts decals on walls and writes two pictures.");
  app.add_option("--base", base, "folder with the textures")->capture_default_str();
  app.add_option("--out", out, "BMP file to write; -later is put before its ending")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    const std::filesystem::path picture = std::filesystem::absolute(out);
    const auto beside = [&](const std::string& name) {
      return (picture.parent_path() / (picture.stem().string() + "-" + name + ".bmp")).string();
    };
    Quasarlens8 engine;
    std::uint32_t now = 10'000;  // 100 milliseconds a frame, however long it takes
    InternalObjects8().SetClock([&now] { return now; });
    engine.SetEngineMode(800, 600, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    engine.SetSearchDirectory(base);
    Scene8 scene;
    Screen8 screen;
    Globals8 globals;
    scene.SetViewFrustum(60, 1000);
    scene.SetCollisionPrecision(1000);

    // A glowing hole for the decals; they add their light to the wall.
    engine.Clear();
    for (float radius = 280; radius > 0; radius -= 5)
      for (float angle = 0; angle < 6.28f; angle += 0.1f) {
        const double heat = 1 - radius / 280.0, spark = 0.75 + 0.25 * std::sin(angle * 9);
        const float x = 400 + radius * std::cos(angle), y = 300 + radius * std::sin(angle);
        screen.DrawFilledBox(x - 14, y - 14, x + 14, y + 14,
                             globals.RGBA(heat * spark, heat * heat * 0.9 * spark, heat * heat * heat * 0.6, 1));
      }
    engine.RenderToScreen();
    engine.ScreenShot(beside("hole"));
    const Texture8 hole = scene.LoadTexture(beside("hole"), 128, 128);
    const auto load = [&](const char* name) { return scene.LoadTexture(std::string("textures/court/") + name); };

    const Texture8 stone = load("rough.jpg"), planks = load("planks.jpg"), flags = load("flags.jpg");
    Mesh8 room = scene.CreateMeshBuilder("Room");
    const float corners[][2] = {{-50, -60}, {-50, 60}, {20, 60}, {50, 20}, {50, -60}};
    for (int i = 0; i < 4; ++i) {
      const float *from = corners[i], *to = corners[i + 1], length = std::hypot(to[0] - from[0], to[1] - from[1]);
      room.AddWall(stone, from[0], from[1], to[0], to[1], 50, 0, 2, length / 25);
    }
    room.AddFloor(flags, -50, -60, 50, 60, 0, 5, 4);
    room.AddFloor(planks, -50, -60, 50, 60, 50, 5, 4);
    // Dark at the feet of the walls, so that the holes glow.
    room.SetVertexType(QL_COLOR_VERTEX);
    for (std::int32_t v = 0; v < 24; ++v) room.SetColor(globals.RGBA(0.45, 0.4, v % 2 == 0 ? 0.5 : 0.4, 1), v);
    scene.SetCamera(10, 25, -58, -5, 20, 40);

    int hits = 0;
    const auto frame = [&] {
      engine.Clear();
      scene.RenderAllMeshes();
      scene.DrawText(std::to_string(hits) + " hits", 10, 10);
      engine.RenderToScreen();
      now += 100;
    };
    frame();
    for (int shot = 0; shot < 24; ++shot) {
      const std::int32_t x = 60 + shot * 277 % 680, y = 60 + shot * 203 % 490;
      const CollisionResult8 hit = scene.MousePicking(x, y, QL_COLLIDE_MESH, QL_TESTTYPE_ACCURATETESTING);
      if (!hit.IsCollision() || hit.GetCollisionMesh() != room) continue;  // past the walls, or on a decal
      // The room stands at the origin: its own space is the world. The normal is turned towards the camera.
      const Vec3 point = hit.GetImpactPoint(), way = globals.VSubtract(point, Camera8().GetCameraPosition());
      Vec3 normal = globals.VNormalize(hit.GetCollisionNormal());
      if (globals.VDotProduct(normal, way) > 0) normal = globals.VScale(normal, -1);
      globals.CreateDecal(point, globals.VScale(normal, 0.5f), hole, 12, shot % 2 == 0 ? 0.0f : 1500.0f);
      ++hits;
      frame();
    }
    engine.ScreenShot(picture.string());
    for (int i = 0; i < 20; ++i) frame();
    engine.ScreenShot(beside("later"));
    std::cout << hits << " hits; wrote " << picture.string() << " and " << beside("later") << "\n";
    return hits > 0 ? 0 : 1;
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
