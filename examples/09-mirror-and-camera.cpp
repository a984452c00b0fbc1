// Two pictures within the picture: a mirror on the wall and the screen of a security camera, both render surfaces.
#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

using namespace Quasarlens3D;

namespace {

constexpr Vec3 kEye{-10, 20, -46}, kMirrorMiddle{2, 14, 29.5f};  // of the viewer; world units, as all places here
constexpr float kWall = 30, kHeight = 28;
constexpr float kMirrorFov = 44;  // degrees
constexpr std::int32_t argb(std::uint32_t color) { return static_cast<std::int32_t>(color); }

/// Where a point of the mirror stands in a picture from behind the mirror, as texture coordinates.
Vec3 seenFrom(const Globals8& g, const Vec3& eye, const Vec3& look, const Vec3& point) {
  const Vec3 ahead = g.VNormalize(g.VSubtract(look, eye)), side = g.VNormalize(g.VCrossProduct({0, 1, 0}, ahead));
  const Vec3 up = g.VCrossProduct(ahead, side), to = g.VSubtract(point, eye);
  const float depth = g.VDotProduct(to, ahead) * std::tan(kMirrorFov / 360 * 3.14159265f);
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
    screen.CreateUserFont("sign", "DejaVu Sans", 36, True, False, False);
    const auto paint = [&](std::uint32_t a, std::uint32_t b, const std::string& text = "") {
      RenderSurface8 tiles = scene.CreateRenderSurface(128, 128, True);
      tiles.StartRender();
      screen.DrawFilledBox(0, 0, 128, 128, argb(a));
      if (text.empty())
        for (float at : {0.0f, 64.0f}) screen.DrawFilledBox(at, at, at + 64, at + 64, argb(b));
      else
        screen.DrawText(text, 8, 36, argb(b), "sign");
      tiles.EndRender();
      return tiles.GetTexture();
    };
    const Texture8 floorTiles = paint(0xFFD0C8B8, 0xFF605850), wallTiles = paint(0xFFB07058, 0xFFA06048);
    const Texture8 otherTiles = paint(0xFF6080A0, 0xFF587898), wood = paint(0xFF906030, 0xFF8C5C2C);
    Mesh8 floor = scene.CreateMeshBuilder("Floor"), wall = scene.CreateMeshBuilder("Wall");
    floor.AddFloor(floorTiles, -40, -60, 40, kWall, 0, 10, 10);
    wall.AddWall(wallTiles, -40, kWall, 40, kWall, kHeight, 0, 4, 12);
    floor.AddFloor(otherTiles, -40, -60, 40, kWall, kHeight, 10, 10);
    Mesh8 room = scene.CreateMeshBuilder("Room");
    room.AddWall(otherTiles, 40, -60, -40, -60, kHeight, 0, 4, 12);
    room.AddWall(wallTiles, -40, -60, -40, kWall, kHeight, 0, 4, 12);
    room.AddWall(wallTiles, 40, kWall, 40, -60, kHeight, 0, 4, 12);
    Mesh8 ball = scene.CreateMeshBuilder("Ball"), sign = scene.CreateMeshBuilder("Sign");
    ball.CreateSphere(paint(0xFFE0C040, 0xFF3060A0), 5, 24, 24);
    ball.SetPosition(-17, 5, 0);
    // A board that is to be read from the mirror; who stands behind it sees wood, and in the mirror reversed letters.
    sign.AddWall(paint(0xFFF0F0E0, 0xFFC02020, "QL8"), 29, 0, 13, 0, 12, 0, -1);
    sign.AddWall(wood, 13, -0.5f, 29, -0.5f, 12, 0, 1, 1);
    // A mirror that is looked at from far needs a narrow view only.
    scene.SetViewFrustum(kMirrorFov, 500);
    RenderSurface8 mirror = scene.CreateRenderSurface(512, 512, True);
    scene.SetViewFrustum(70, 500);
    RenderSurface8 camera = scene.CreateRenderSurface(256, 256, True);
    const Vec3 behind{kEye.x, kEye.y, 2 * kMirrorMiddle.z - kEye.z};
    mirror.SetCamera(behind.x, behind.y, behind.z, kMirrorMiddle.x, kMirrorMiddle.y, kMirrorMiddle.z);
    camera.SetCamera(-34, 25, 24, 8, 4, -4);
    // The glass shows for each of its points what is seen through it from behind; small pieces follow the perspective.
    Mesh8 frame = scene.CreateMeshBuilder("Frame"), glass = scene.CreateMeshBuilder("Glass");
    frame.AddWall(wood, kMirrorMiddle.x - 23, kWall - 0.2f, kMirrorMiddle.x + 23, kWall - 0.2f, 24, 2);
    glass.SetPrimitiveType(QL_TRIANGLELIST);
    glass.SetTexture(mirror.GetTexture());
    for (int i = 0; i < 600; ++i) {
      const int corner = i % 6, piece = i / 6, right = 0x32 >> corner & 1, up = 0x2C >> corner & 1;
      const auto x = static_cast<float>(piece % 10 + right - 5), y = static_cast<float>(piece / 10 + up - 5);
      const Vec3 at{kMirrorMiddle.x + x * 4.4f, kMirrorMiddle.y + y * 2.2f, kMirrorMiddle.z};
      const Vec3 seen = seenFrom(globals, behind, kMirrorMiddle, at);
      glass.AddVertex(at.x, at.y, at.z, -1, seen.x, seen.y);
    }
    // What is behind the mirror must not stand before its camera.
    const auto render = [&](RenderSurface8& surface, Boolean whole) {
      for (Mesh8* mesh : {&glass, &frame, &wall}) mesh->Enable(whole);
      surface.StartRender();
      scene.RenderAllMeshes();
      surface.EndRender();
    };
    render(mirror, False);
    render(camera, True);
    scene.SetCamera(kEye.x, kEye.y, kEye.z, 2, 9, 10);
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
