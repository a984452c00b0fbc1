/// @file
/// Drawing on the screen, over or before the scene.
#pragma once

#include "engine/EngineContext.h"
#include "render/UserFonts.h"

#include <Quasarlens3D/Types.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace ql::render {

/// Two opposite corners of a rectangle, pixels.
struct Corners {
  float x = 0, y = 0, x1 = 0, y1 = 0;
};
/// The texture coordinates of the same two corners.
struct TextureCorners {
  float tu = 0, tv = 0, tu1 = 1, tv1 = 1;
};
/// One packed ARGB colour per corner: (x, y), (x1, y), (x, y1), (x1, y1).
struct CornerColors {
  std::int32_t first = 0, second = 0, third = 0, fourth = 0;
};

/// Draws at once what it is told, inside a frame. Colours are packed ARGB; a point (x, y) is the middle of a pixel, and
/// a filled rectangle ends before its last column and row. What is drawn keeps the states that it sets.
/// @throws engine::EngineError 91 without a device, device::DeviceError outside a frame (all drawing)
class Screen {
 public:
  explicit Screen(engine::EngineContext& context);
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen();

  void drawBox(const Corners& at, std::int32_t color);
  void drawFilledBox(const Corners& at, std::int32_t color, bool blended);
  void drawFilledColorBox(const Corners& at, const CornerColors& colors, bool blended);
  void drawLine(const Corners& at, std::int32_t color);
  void drawPoint(float x, float y, std::int32_t color);
  /// A line in the world.
  void drawLine3D(const math::Vec3& from, const math::Vec3& to, std::int32_t color);
  /// The whole texture but for a fiftieth at every side. @param texture null draws plainly
  void drawTexture(const std::shared_ptr<device::Texture>& texture, const Corners& at, std::int32_t color,
                   bool blended);
  void drawPartTexture(const std::shared_ptr<device::Texture>& texture, const Corners& at, const TextureCorners& part,
                       std::int32_t color, bool blended);
  /// In a user font (any letter case), or else in the system font. Line breaks are honoured. @param x,y top left
  void drawText(const std::string& text, std::int32_t x, std::int32_t y, std::int32_t color,
                const std::string& userFont);
  /// A button: one texture while the pointer is inside (the edges are not), else the other.
  /// @return whether the pointer is inside
  bool rollOver(const std::shared_ptr<device::Texture>& over, const std::shared_ptr<device::Texture>& normal,
                const math::Rect& at, bool blended);

  /// Factors of the device, for all blended drawing; source alpha and inverse source alpha at first.
  void setBlending(std::uint32_t destination, std::uint32_t source);
  UserFonts& userFonts() { return fonts_; }

 private:
  using Vertex = Quasarlens3D::TransformedLitVertex;
  void setBlendStates(bool blended);
  void draw(device::PrimitiveType type, std::uint32_t count, std::span<const Vertex> vertices);

  engine::EngineContext& context_;
  UserFonts fonts_;
  std::uint32_t sourceBlend_ = static_cast<std::uint32_t>(device::Blend::SrcAlpha);
  std::uint32_t destinationBlend_ = static_cast<std::uint32_t>(device::Blend::InvSrcAlpha);
};

/// The engine's own screen, for fades and progress panels.
struct ActiveScreen {
  std::shared_ptr<Screen> screen;
};
/// It, made on first use.
Screen& activeScreen(engine::EngineContext& context);

}  // namespace ql::render
