// Text, sprites and render surfaces, as pictures of the software renderer.
#include "platform/software/SoftwareBackEnd.h"
#include "platform/utility/Bounds.h"
#include "platform/utility/Font.h"
#include "platform/utility/RenderToSurface.h"
#include "platform/utility/Sprite.h"
#include "support/FakeDisplay.h"

#include <algorithm>
#include <functional>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

using namespace ql::device;
using namespace ql::utility;
using ql::math::Rect;
using ql::test::parameters;

namespace {

constexpr std::uint32_t kBlack = 0xFF000000, kRed = 0xFFFF0000;

/// Every value that a guest must put back.
std::vector<std::uint32_t> states(const Device& device) {
  std::vector<std::uint32_t> all;
  RenderStates render;
  forEachRenderState(render,
                     [&](RenderState s, const char*, std::uint32_t) { all.push_back(device.getRenderState(s)); });
  for (std::uint32_t stage = 0; stage < kStageStates; ++stage) {
    StageStates values;
    forEachStageState(values, [&](StageState s, const char*, std::uint32_t) {
      all.push_back(device.getTextureStageState(stage, s));
    });
    all.push_back(static_cast<std::uint32_t>(device.getTexture(stage) ? device.getTexture(stage)->id() : TextureId{}));
  }
  all.push_back(device.getVertexShader());
  return all;
}

struct Drawing : ::testing::Test {
  std::shared_ptr<BackEnd> backEnd{ql::software::createBackEnd({.threads = 1})};
  Device device{backEnd, DeviceType::Reference, parameters(96, 64)};

  /// The frame's pixels after drawing on black, without alpha.
  std::vector<std::uint32_t> picture(const std::function<void()>& draw) {
    device.clear({}, 3, kBlack, 1, 0);
    device.beginScene();
    const auto before = states(device);
    draw();
    EXPECT_EQ(states(device), before) << "a state was not put back";
    device.endScene();
    return pixels(*device.getBackBuffer(0));
  }
  static std::vector<std::uint32_t> pixels(Surface& surface) {
    const SurfaceDescription size = surface.description();
    std::vector<std::uint32_t> argb(size.width * size.height);
    toArgb(size.format, surface.read({0, 0, size.width, size.height}), argb);
    for (std::uint32_t& pixel : argb) pixel |= 0xFF000000;
    return argb;
  }
  /// The smallest rectangle around everything that is not black; empty when all is.
  Rect inked(const std::vector<std::uint32_t>& argb) const {
    Rect box{96, 64, 0, 0};
    for (std::int32_t y = 0; y < 64; ++y)
      for (std::int32_t x = 0; x < 96; ++x) {
        if (argb[static_cast<std::size_t>(y * 96 + x)] == kBlack) continue;
        box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1), std::max(box.bottom, y + 1)};
      }
    return box;
  }
  /// States that would spoil every overlay, were they not changed for it.
  void spoil() {
    device.setRenderState(RenderState::ZFunc, static_cast<std::uint32_t>(Compare::Never));
    device.setRenderState(RenderState::AlphaTestEnable, 1);
    device.setRenderState(RenderState::AlphaFunc, static_cast<std::uint32_t>(Compare::Never));
    device.setRenderState(RenderState::SrcBlend, static_cast<std::uint32_t>(Blend::Zero));
    device.setRenderState(RenderState::FillMode, static_cast<std::uint32_t>(FillMode::Point));
    device.setRenderState(RenderState::FogEnable, 1);
    device.setRenderState(RenderState::FogTableMode, static_cast<std::uint32_t>(FogMode::Linear));
    device.setTextureStageState(0, StageState::ColorOp, 1);
    device.setTextureStageState(0, StageState::TexCoordIndex, 0x20001);
    device.setTextureStageState(1, StageState::ColorOp, 4);
    device.setTexture(0, device.createTexture(1, 1, 1, 0, Format::A8R8G8B8, Pool::Managed));
    device.setVertexShader(0x142);
  }
};

TEST_F(Drawing, TextLandsInItsRectangle) {
  Font font(device, {});
  const Rect size = font.measure("Wxg");
  const std::int32_t line = size.bottom;
  ASSERT_GT(size.right, 10);
  const Rect room{20, 10, 80, 50};
  struct Row {
    const char* name;
    std::uint32_t format;
    float x, y;  // where the text's box lies in the free space, 0 to 1
  };
  const Row rows[] = {{"upper left", 0, 0, 0},
                      {"middle of the line", kTextCenter, 0.5f, 0},
                      {"right", kTextRight, 1, 0},
                      {"middle", kTextCenter | kTextVerticalCenter | kTextSingleLine, 0.5f, 0.5f},
                      {"lower right", kTextRight | kTextBottom | kTextSingleLine, 1, 1}};
  spoil();
  const Rect plain = inked(picture([&] { font.drawText(device, "Wxg", {20, 10, 0, 0}, 0, kRed); }));
  for (const Row& row : rows) {
    const auto argb = picture([&] { font.drawText(device, "Wxg", room, row.format, kRed); });
    const Rect box = inked(argb);
    EXPECT_NEAR(box.left - plain.left, row.x * static_cast<float>(60 - size.right), 1) << row.name;
    EXPECT_NEAR(box.top - plain.top, row.y * static_cast<float>(40 - line), 1) << row.name;
    EXPECT_EQ(box.right - box.left, plain.right - plain.left) << row.name;
    for (const std::uint32_t pixel : argb) ASSERT_EQ(pixel & 0xFFFF, 0u) << row.name << ": not only red";
    EXPECT_NE(std::ranges::find(argb, kRed), argb.end()) << row.name << ": nothing is fully covered";
  }
}

TEST_F(Drawing, TextIsClippedAndBroken) {
  Font font(device, {});
  const std::int32_t line = font.measure("x").bottom;
  const auto box = [&](const char* text, const Rect& rect, std::uint32_t format) {
    return inked(picture([&] { font.drawText(device, text, rect, format, 0xFFFFFFFF); }));
  };
  const Rect clipped = box("WWWWWWWW", {5, 5, 25, 12}, 0);
  EXPECT_GE(clipped.left, 5);
  EXPECT_LE(clipped.right, 25);
  EXPECT_LE(clipped.bottom, 12);
  EXPECT_GT(box("WWWWWWWW", {5, 5, 25, 12}, kTextNoClip).right, 30);
  EXPECT_GT(box("WWWWWWWW", {5, 5, 0, 0}, kTextWordBreak | kTextCenter).right, 30) << "an empty rectangle has no edge";
  EXPECT_GE(box("x\nx\r\nx", {5, 5, 0, 0}, 0).bottom, 5 + 2 * line + 3);
  EXPECT_LE(box("x\nx\r\nx", {5, 5, 95, 60}, kTextSingleLine).bottom, 5 + line);
  const Rect broken = box("xx xx xx", {5, 5, 5 + font.measure("xx x").right, 60}, kTextWordBreak);
  EXPECT_LE(broken.right, 5 + font.measure("xx").right);
  EXPECT_GE(broken.bottom, 5 + 2 * line + 3);
  // Far outside, beyond any sensible number, and nothing at all.
  EXPECT_EQ(box("x", {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX}, 0).right, 0);
  EXPECT_EQ(box("x", {INT32_MAX, INT32_MAX, 0, 0}, 0).right, 0);
  EXPECT_EQ(box("", {5, 5, 0, 0}, 0).right, 0);
  EXPECT_EQ(box(" \t\x01", {5, 5, 0, 0}, 0).right, 0) << "control characters show nothing";
}

TEST_F(Drawing, UnderlinesRunUnderTheWholeLine) {
  Font font(device, {"DejaVu Sans", 12, false, false, true});
  const auto argb = picture([&] { font.drawText(device, "a  a", {10, 10, 0, 0}, 0, 0xFFFFFFFF); });
  const Rect size = font.measure("a  a");
  bool found = false;
  for (std::int32_t y = 10; y < 10 + size.bottom; ++y) {
    std::int32_t full = 0;
    for (std::int32_t x = 0; x < 96; ++x) full += argb[static_cast<std::size_t>(y * 96 + x)] == 0xFFFFFFFF;
    found |= full == size.right;
  }
  EXPECT_TRUE(found);
}

TEST_F(Drawing, ManyLargeCharactersUseSeveralPages) {
  Font font(device, {"DejaVu Sans", 300, false, false, false});
  std::string all;
  for (char c = 'A'; c <= 'Z'; ++c) all += c;
  std::uint64_t before = 0;
  picture([&] {
    before = backEnd->statistics().drawCalls;
    font.drawText(device, all, {0, -200, 0, 0}, 0, kRed);
  });
  EXPECT_GT(backEnd->statistics().drawCalls - before, 1u);
  const Rect last = inked(picture([&] { font.drawText(device, "I", {0, -200, 0, 0}, 0, kRed); }));
  EXPECT_LT(last.left, last.right) << "earlier characters are still there";
}

TEST_F(Drawing, SpritesPutTexelsOntoPixels) {
  const auto texture = device.createTexture(2, 2, 1, 0, Format::A8R8G8B8, Pool::Managed);
  const std::uint32_t texels[4] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF};
  texture->writeLevel(0, std::as_bytes(std::span(texels)));
  spoil();
  Sprite sprite;
  const auto at = [](const std::vector<std::uint32_t>& argb, int x, int y) {
    return argb[static_cast<std::size_t>(y * 96 + x)];
  };
  const auto plain = picture([&] { sprite.draw(device, texture, {}, {1, 1}, {0, 0}, 0, {10, 20}, 0xFFFFFFFF); });
  EXPECT_EQ(inked(plain).left, 10);
  EXPECT_EQ(inked(plain).bottom, 22);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(at(plain, 10 + i % 2, 20 + i / 2), texels[i]) << i;
  // A quarter turn clockwise about the middle: the left column becomes the upper row, from its lower end.
  const auto turned = picture([&] {
    sprite.draw(device, texture, {}, {1, 1}, {1, 1}, std::numbers::pi_v<float> / 2, {10, 20}, 0xFFFFFFFF);
  });
  EXPECT_EQ(at(turned, 10, 20), texels[2]);
  EXPECT_EQ(at(turned, 11, 20), texels[0]);
  EXPECT_EQ(at(turned, 11, 21), texels[1]);
  const auto part = picture([&] {
    sprite.draw(device, texture, Rect{1, 0, 2, 1}, {8, 4}, {0, 0}, 0, {0, 0}, 0x80FFFFFF);
  });
  EXPECT_EQ(inked(part).right, 8);
  EXPECT_EQ(inked(part).bottom, 4);
  EXPECT_NEAR((at(part, 7, 0) >> 8) & 255, 128, 2) << "half of what shows through";
  device.beginScene();
  EXPECT_THROW(sprite.draw(device, nullptr, {}, {1, 1}, {0, 0}, 0, {0, 0}, 0), DeviceError);
}

TEST_F(Drawing, RenderSurfacesFillTheirTextures) {
  struct Row {
    const char* name;
    std::uint32_t usage;
    Format texture, surface;
    Pool pool;
    std::uint32_t levels;
  };
  const Row rows[] = {
      {"a target of the same format", kUsageRenderTarget, Format::X8R8G8B8, Format::X8R8G8B8, Pool::Default, 1},
      {"a target of another format", kUsageRenderTarget, Format::R5G6B5, Format::X8R8G8B8, Pool::Default, 1},
      {"an ordinary texture with levels", 0, Format::R5G6B5, Format::X8R8G8B8, Pool::Managed, 0},
      {"an ordinary texture on a 16-bit device", 0, Format::A8R8G8B8, Format::R5G6B5, Pool::Managed, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto texture = device.createTexture(16, 8, row.levels, row.usage, row.texture, row.pool);
    RenderToSurface surface(device, 16, 8, row.surface, true);
    device.setViewport({1, 2, 30, 20, 0.25f, 0.75f});
    surface.beginScene(texture, 0, {0, 0, 16, 8, 0, 1});
    device.clear({}, 3, kRed, 1, 0);
    surface.endScene();
    EXPECT_EQ(device.getViewport().height, 20);
    for (std::uint32_t level = 0; level < texture->levelCount(); ++level)
      for (const std::uint32_t pixel : pixels(*surfaceLevel(texture, level))) ASSERT_EQ(pixel, kRed) << level;
    // A second scene draws over the first: a viewport limits it.
    surface.beginScene(texture, 0, {8, 0, 8, 8, 0, 1});
    device.clear({}, 1, 0xFF0000FF, 1, 0);
    surface.endScene();
    const auto both = pixels(*surfaceLevel(texture, 0));
    EXPECT_EQ(both[7], kRed);
    EXPECT_EQ(both[8], 0xFF0000FF);
    // The frame goes on undisturbed.
    device.clear({}, 1, 0xFF00FF00, 1, 0);
    EXPECT_EQ(pixels(*device.getBackBuffer(0))[2 * 96 + 1], 0xFF00FF00);
    EXPECT_EQ(pixels(*surfaceLevel(texture, 0))[0], kRed);
  }
}

TEST_F(Drawing, RenderSurfacesRefuseAndRecover) {
  const auto texture = device.createTexture(16, 8, 0, kUsageRenderTarget, Format::X8R8G8B8, Pool::Default);
  RenderToSurface surface(device, 16, 8, Format::X8R8G8B8, true);
  EXPECT_THROW(RenderToSurface(device, 0, 8, Format::X8R8G8B8, true), DeviceError);
  EXPECT_THROW(RenderToSurface(device, 8, 8, Format::L8, true), DeviceError);
  EXPECT_THROW(surface.endScene(), DeviceError);
  EXPECT_THROW(surface.beginScene(nullptr, 0, {0, 0, 16, 8, 0, 1}), DeviceError);
  EXPECT_THROW(surface.beginScene(texture, 1, {0, 0, 8, 4, 0, 1}), DeviceError) << "a level of another size";
  EXPECT_THROW(surface.beginScene(texture, 0, {0, 0, 17, 8, 0, 1}), DeviceError) << "a viewport outside";
  EXPECT_EQ(device.getViewport().width, 96);
  device.beginScene();
  EXPECT_THROW(surface.beginScene(texture, 0, {0, 0, 16, 8, 0, 1}), DeviceError) << "inside a scene";
  EXPECT_EQ(device.getViewport().width, 96);
  device.endScene();
  {
    RenderToSurface dropped(device, 16, 8, Format::X8R8G8B8, true);
    dropped.beginScene(texture, 0, {0, 0, 16, 8, 0, 1});
  }
  EXPECT_NO_THROW(device.beginScene()) << "a surface that goes ends its scene";
  EXPECT_EQ(device.getViewport().width, 96);
}

TEST(Bounds, OfVerticesWithOtherFields) {
  const float vertices[] = {-1, 2, 0, 99, 3, 2, 0, 99, 1, 5, 0, 99, 1, -1, 0};  // the last stride is cut short
  const auto bytes = std::as_bytes(std::span(vertices));
  const Sphere sphere = boundingSphere(bytes, 16);
  EXPECT_EQ(sphere.center, (ql::math::Vec3{1, 2, 0}));
  EXPECT_EQ(sphere.radius, 3);
  const Box box = boundingBox(bytes, 16);
  EXPECT_EQ(box.minimum, (ql::math::Vec3{-1, -1, 0}));
  EXPECT_EQ(box.maximum, (ql::math::Vec3{3, 5, 0}));
  EXPECT_EQ(boundingSphere(bytes.first(11), 16).radius, 0);
  EXPECT_EQ(boundingSphere(bytes, 0).radius, 0) << "no stride, no loop without end";
}

}  // namespace
