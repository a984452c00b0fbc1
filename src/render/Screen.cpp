#include "render/Screen.h"

#include "engine/PointerState.h"
#include "platform/utility/StateGuard.h"

#include <array>

namespace ql::render {
namespace {

using device::PrimitiveType;
using device::RenderState;
using Vertex = Quasarlens3D::TransformedLitVertex;

constexpr std::uint32_t kTrue = 0xFFFFFFFF, kFalse = 0;
constexpr std::uint32_t kWorldFormat = 706;  // of lines in the world
constexpr float kReciprocalW = 0.5f;
constexpr TextureCorners kInset{0.02f, 0.02f, 0.98f, 0.98f};
constexpr std::int32_t kWhite = -1;

constexpr Vertex corner(float x, float y, std::int32_t color, float tu = 0, float tv = 0) {
  return {x, y, 0, kReciprocalW, color, color, tu, tv};
}

/// The corners of a rectangle as a strip of two triangles.
constexpr std::array<Vertex, 4> strip(const Corners& at, const CornerColors& colors, const TextureCorners& part = {}) {
  return {corner(at.x, at.y, colors.first, part.tu, part.tv), corner(at.x1, at.y, colors.second, part.tu1, part.tv),
          corner(at.x, at.y1, colors.third, part.tu, part.tv1),
          corner(at.x1, at.y1, colors.fourth, part.tu1, part.tv1)};
}

constexpr CornerColors plain(std::int32_t color) { return {color, color, color, color}; }

}  // namespace

Screen::Screen(engine::EngineContext& context) : context_(context), fonts_(context) {
  context.log.write("SCREEN INTERFACE 2D : Initialized");
}

Screen::~Screen() { context_.log.write("SCREEN MANAGER : Desallocate memory from fonts and sprites..."); }

void Screen::setBlending(std::uint32_t destination, std::uint32_t source) {
  destinationBlend_ = destination;
  sourceBlend_ = source;
}

void Screen::setBlendStates(bool blended) {
  device::Device& device = context_.requireDevice();
  device.setRenderState(RenderState::AlphaBlendEnable, blended ? kTrue : kFalse);
  device.setRenderState(RenderState::DestBlend, destinationBlend_);
  device.setRenderState(RenderState::SrcBlend, sourceBlend_);
}

void Screen::draw(PrimitiveType type, std::uint32_t count, std::span<const Vertex> vertices) {
  device::Device& device = context_.requireDevice();
  device.setVertexShader(utility::kOverlayFormat);
  device.drawPrimitiveUP(type, count, std::as_bytes(vertices), sizeof(Vertex));
}

void Screen::drawBox(const Corners& at, std::int32_t color) {
  device::Device& device = context_.requireDevice();
  device.setTexture(0, nullptr);
  device.setRenderState(RenderState::Lighting, 0);
  const Vertex line[] = {corner(at.x, at.y, color), corner(at.x1, at.y, color), corner(at.x1, at.y1, color),
                         corner(at.x, at.y1, color), corner(at.x, at.y, color)};
  draw(PrimitiveType::LineStrip, 4, line);
}

void Screen::drawFilledBox(const Corners& at, std::int32_t color, bool blended) {
  device::Device& device = context_.requireDevice();
  device.setTexture(0, nullptr);
  device.setRenderState(RenderState::Lighting, 0);
  device.setRenderState(RenderState::CullMode, static_cast<std::uint32_t>(device::CullMode::None));
  setBlendStates(blended);
  draw(PrimitiveType::TriangleStrip, 2, strip(at, plain(color)));
}

void Screen::drawFilledColorBox(const Corners& at, const CornerColors& colors, bool blended) {
  device::Device& device = context_.requireDevice();
  setBlendStates(blended);
  device.setTexture(0, nullptr);
  device.setRenderState(RenderState::Lighting, 0);
  draw(PrimitiveType::TriangleStrip, 2, strip(at, colors));
}

void Screen::drawLine(const Corners& at, std::int32_t color) {
  device::Device& device = context_.requireDevice();
  device.setTexture(0, nullptr);
  device.setRenderState(RenderState::Lighting, 0);
  const Vertex line[] = {corner(at.x, at.y, color), corner(at.x1, at.y1, color)};
  draw(PrimitiveType::LineList, 1, line);
}

void Screen::drawPoint(float x, float y, std::int32_t color) {
  device::Device& device = context_.requireDevice();
  device.setTexture(0, nullptr);
  device.setRenderState(RenderState::Lighting, 0);
  const Vertex point[] = {corner(x, y, color)};
  draw(PrimitiveType::PointList, 1, point);
}

void Screen::drawLine3D(const math::Vec3& from, const math::Vec3& to, std::int32_t color) {
  device::Device& device = context_.requireDevice();
  device.setTransform(device::Transform::World, math::identity());
  device.setTexture(0, nullptr);
  device.setRenderState(RenderState::Lighting, 0);
  device.setVertexShader(kWorldFormat);
  const math::ColorVertex line[] = {{from.x, from.y, from.z, color}, {to.x, to.y, to.z, color}};
  device.drawPrimitiveUP(PrimitiveType::LineList, 1, std::as_bytes(std::span(line)), sizeof line[0]);
}

void Screen::drawTexture(const std::shared_ptr<device::Texture>& texture, const Corners& at, std::int32_t color,
                         bool blended) {
  device::Device& device = context_.requireDevice();
  device.setTexture(0, texture);
  device.setRenderState(RenderState::Lighting, 0);
  device.setRenderState(RenderState::AlphaBlendEnable, blended ? kTrue : kFalse);
  device.setRenderState(RenderState::AlphaTestEnable, 1);
  device.setRenderState(RenderState::DestBlend, destinationBlend_);
  device.setRenderState(RenderState::SrcBlend, sourceBlend_);
  draw(PrimitiveType::TriangleStrip, 2, strip(at, plain(color), kInset));
}

void Screen::drawPartTexture(const std::shared_ptr<device::Texture>& texture, const Corners& at,
                             const TextureCorners& part, std::int32_t color, bool blended) {
  device::Device& device = context_.requireDevice();
  device.setTexture(0, texture);
  device.setRenderState(RenderState::Lighting, 0);
  setBlendStates(blended);
  draw(PrimitiveType::TriangleStrip, 2, strip(at, plain(color), part));
}

void Screen::drawText(const std::string& text, std::int32_t x, std::int32_t y, std::int32_t color,
                      const std::string& userFont) {
  device::Device& device = context_.requireDevice();
  utility::Font* font = fonts_.find(userFont);
  if (!font) font = context_.systemFont.get();
  if (!font) throw engine::EngineError(engine::kNotSet, "Object variable not set: no system font");
  font->drawText(device, text, {x, y, x, y}, 0, static_cast<std::uint32_t>(color));
}

bool Screen::rollOver(const std::shared_ptr<device::Texture>& over, const std::shared_ptr<device::Texture>& normal,
                      const math::Rect& at, bool blended) {
  const engine::PointerState& pointer = context_.get<engine::PointerState>();
  const bool inside =
      pointer.known && at.left < pointer.x && pointer.x < at.right && at.top < pointer.y && pointer.y < at.bottom;
  const Corners corners{static_cast<float>(at.left), static_cast<float>(at.top), static_cast<float>(at.right),
                        static_cast<float>(at.bottom)};
  drawTexture(inside ? over : normal, corners, kWhite, blended);
  return inside;
}

Screen& activeScreen(engine::EngineContext& context) {
  ActiveScreen& active = context.get<ActiveScreen>();
  if (!active.screen) active.screen = std::make_shared<Screen>(context);
  return *active.screen;
}

}  // namespace ql::render
