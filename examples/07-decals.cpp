// Shoots at the walls of a room: a ray under each target pixel, a decal where it meets a triangle, gone after a while.
#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

int main(int argc, char** argv) {
  std::string out = "decals.bmp";
  bool hardware = false;
  CLI::App app("Puts decals on walls and writes two pictures.");
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
    engine.SetEngineMode(640, 480, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    Scene8 scene;
    Screen8 screen;
    Globals8 globals;
    scene.SetViewFrustum(60, 1000);
    scene.SetCollisionPrecision(1000);

    // A glowing hole for the decals (they add their light to the wall), tiles for the walls.
    engine.Clear();
    for (float radius = 220; radius > 0; radius -= 5)
      for (float angle = 0; angle < 6.28f; angle += 0.1f) {
        const double heat = 1 - radius / 220.0;
        const float x = 320 + radius * std::cos(angle), y = 240 + radius * std::sin(angle);
        screen.DrawFilledBox(x - 12, y - 12, x + 12, y + 12,
                             globals.RGBA(heat, heat * heat * 0.7, heat * heat * 0.2, 1));
      }
    engine.RenderToScreen();
    engine.ScreenShot(beside("hole"));
    engine.Clear();
    for (float y = 0; y < 480; y += 60)
      for (float x = 0; x < 640; x += 80)
        screen.DrawFilledBox(x + 2, y + 2, x + 78, y + 58, globals.RGBA(0.25 + (x - y) / 8000, 0.27, 0.3, 1));
    engine.RenderToScreen();
    engine.ScreenShot(beside("tiles"));
    const Texture8 hole = scene.LoadTexture(beside("hole"), 64, 64),
                   tiles = scene.LoadTexture(beside("tiles"), 256, 256);

    Mesh8 room = scene.CreateMeshBuilder("Room");
    room.AddWall(tiles, -50, -40, -50, 60, 50, 0, 2, 2);
    room.AddWall(tiles, -50, 60, 20, 60, 50, 0, 2, 2);
    room.AddWall(tiles, 20, 60, 50, 20, 50, 0, 2, 2);
    room.AddFloor(tiles, -50, -40, 50, 60, 0, 2, 2);
    scene.SetCamera(10, 25, -60, -5, 18, 40);

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
      const std::int32_t x = 60 + shot * 197 % 540, y = 90 + shot * 131 % 370;
      const CollisionResult8 hit = scene.MousePicking(x, y, QL_COLLIDE_MESH, QL_TESTTYPE_ACCURATETESTING);
      if (!hit.IsCollision() || hit.GetCollisionMesh() != room) continue;  // past the walls, or on a decal
      // The room stands at the origin: its own space is the world. The normal is turned towards the camera.
      const Vec3 point = hit.GetImpactPoint(), way = globals.VSubtract(point, Camera8().GetCameraPosition());
      Vec3 normal = globals.VNormalize(hit.GetCollisionNormal());
      if (globals.VDotProduct(normal, way) > 0) normal = globals.VScale(normal, -1);
      globals.CreateDecal(point, globals.VScale(normal, 0.5f), hole, 9, shot % 2 == 0 ? 0.0f : 1500.0f);
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
