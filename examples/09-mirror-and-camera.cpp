// Two pictures within the picture: a mirror on the wall and the screen of a security camera, both render surfaces.
#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

namespace {

constexpr Vec3 kEye{26, 15, -44};                               // of the viewer
constexpr float kWallZ = 30, kMirrorZ = 29.5f, kFov = 1.2217f;  // world units; radians
constexpr std::int32_t argb(std::uint32_t color) { return static_cast<std::int32_t>(color); }

/// Where a point of the mirror stands in a picture from behind the mirror, as texture coordinates.
Vec3 seenFrom(const Globals8& g, const Vec3& eye, const Vec3& look, const Vec3& point) {
  const Vec3 ahead = g.VNormalize(g.VSubtract(look, eye)), side = g.VNormalize(g.VCrossProduct({0, 1, 0}, ahead));
  const Vec3 up = g.VCrossProduct(ahead, side), to = g.VSubtract(point, eye);
  const float depth = g.VDotProduct(to, ahead) * std::tan(kFov / 2);
  return {0.5f + 0.5f * g.VDotProduct(to, side) / depth, 0.5f - 0.5f * g.VDotProduct(to, up) / depth, 0};
}

}  // namespace

int main(int argc, char** argv) {
  std::string out = "mirror-and-camera.bmp";
  bool hardware = false;
  CLI::App app("Shows a mirror and a security camera.");
  app.add_option("--out", out, "BMP file to write")->capture_default_str();
  app.add_flag("--hardware", hardware, "use the hardware device when there is one");
  CLI11_PARSE(app, argc, argv);

  try {
    Quasarlens8 engine;
    engine.SetEngineMode(800, 600, 32, hardware);
    if (!engine.InitCurrentVideoMode()) return 5;
    Scene8 scene;
    Screen8 screen;
    Globals8 globals;
    scene.SetViewFrustum(70, 500);
    const auto paint = [&](std::uint32_t a, std::uint32_t b) {
      RenderSurface8 tiles = scene.CreateRenderSurface(64, 64, True);
      tiles.StartRender();
      screen.DrawFilledBox(0, 0, 64, 64, argb(a));
      for (float at : {0.0f, 32.0f}) screen.DrawFilledBox(at, at, at + 32, at + 32, argb(b));
      tiles.EndRender();
      return tiles.GetTexture();
    };
    const Texture8 floorTiles = paint(0xFFD0C8B8, 0xFF605850), wallTiles = paint(0xFFB07058, 0xFFA06048);
    Mesh8 floor = scene.CreateMeshBuilder("Floor"), wall = scene.CreateMeshBuilder("Wall");
    floor.AddFloor(floorTiles, -40, -60, 40, kWallZ, 0, 10, 10);
    wall.AddWall(wallTiles, -40, kWallZ, 40, kWallZ, 26, 0, 4, 12);
    Mesh8 ball = scene.CreateMeshBuilder("Ball"), letters = scene.CreateMeshBuilder("Letters");
    ball.CreateSphere(paint(0xFFE0C040, 0xFF3060A0), 5, 24, 24);
    ball.SetPosition(-8, 5, 8);
    letters.Create3DText("QL8");
    letters.ScaleMesh(0.08f, 0.08f, 0.08f);
    letters.SetPosition(4, 2, 2);
    RenderSurface8 mirror = scene.CreateRenderSurface(512, 512, True);
    RenderSurface8 camera = scene.CreateRenderSurface(256, 256, True);
    const Vec3 behind{kEye.x, kEye.y, 2 * kMirrorZ - kEye.z}, middle{0, 12, kMirrorZ};
    mirror.SetCamera(behind.x, behind.y, behind.z, middle.x, middle.y, middle.z);
    camera.SetCamera(-34, 26, -24, 4, 2, 4);
    // The glass shows for each of its points what is seen through it from behind; small pieces follow the perspective.
    Mesh8 glass = scene.CreateMeshBuilder("Glass");
    glass.SetPrimitiveType(QL_TRIANGLELIST);
    glass.SetTexture(mirror.GetTexture());
    for (int i = 0; i < 600; ++i) {
      const int corner = i % 6, piece = i / 6, right = 0x32 >> corner & 1, up = 0x2C >> corner & 1;
      const auto x = static_cast<float>(piece % 10 + right), y = static_cast<float>(piece / 10 + up);
      const Vec3 at{x * 3 - 15, y * 1.8f + 3, kMirrorZ}, seen = seenFrom(globals, behind, middle, at);
      glass.AddVertex(at.x, at.y, at.z, -1, seen.x, seen.y);
    }
    // What is behind the mirror must not stand before its camera.
    const auto render = [&](RenderSurface8& surface, Boolean whole) {
      for (Mesh8* mesh : {&glass, &wall}) mesh->Enable(whole);
      surface.StartRender();
      scene.RenderAllMeshes();
      surface.EndRender();
    };
    render(mirror, False);
    render(camera, True);
    scene.SetCamera(kEye.x, kEye.y, kEye.z, 0, 8, 10);
    engine.Clear();
    scene.RenderAllMeshes();
    screen.DrawPartTexture(camera.GetTexture(), 600, 20, 780, 200, 0, 0, 1, 1);
    screen.DrawBox(600, 20, 780, 200, argb(0xFF60FF60));
    screen.DrawText("CAM 1", 608, 26, argb(0xFF60FF60));
    engine.RenderToScreen();
    engine.ScreenShot(out);
    std::cout << "wrote " << out << "\n";
  } catch (const Error& error) {
    std::cerr << "error " << error.Number() << ": " << error.what() << "\n";
    return 1;
  }
}
