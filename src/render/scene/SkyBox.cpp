#include "render/scene/SkyBox.h"

#include <cstdint>
#include <span>

namespace ql::render::scene {
namespace {

constexpr std::uint32_t kSkyFormat = 0x1C2;  // position, diffuse, specular, one coordinate pair
constexpr std::int32_t kWhite = -1;

/// A corner: signs of the distance along the axes, and its place in the picture.
struct Corner {
  float x, y, z, tu, tv;
};
constexpr std::array<Corner, SkyBox::kFaces * 4> kCorners{{
    {-1, -1, -1, 0, 1}, {1, -1, -1, 1, 1},  {-1, 1, -1, 0, 0}, {1, 1, -1, 1, 0},   // left, z = -distance
    {1, -1, 1, 0, 1},   {-1, -1, 1, 1, 1},  {1, 1, 1, 0, 0},   {-1, 1, 1, 1, 0},   // right
    {-1, -1, -1, 1, 1}, {-1, 1, -1, 1, 0},  {-1, -1, 1, 0, 1}, {-1, 1, 1, 0, 0},   // front, x = -distance
    {1, 1, -1, 0, 0},   {1, -1, -1, 0, 1},  {1, 1, 1, 1, 0},   {1, -1, 1, 1, 1},   // back
    {1, -1, -1, 0, 1},  {-1, -1, -1, 1, 1}, {1, -1, 1, 0, 0},  {-1, -1, 1, 1, 0},  // top, y = -distance
    {-1, 1, -1, 1, 0},  {1, 1, -1, 0, 0},   {-1, 1, 1, 1, 1},  {1, 1, 1, 0, 1},    // bottom
}};

}  // namespace

void SkyBox::build(float distance) {
  for (std::size_t i = 0; i < kCorners.size(); ++i) {
    const Corner& c = kCorners[i];
    vertices_[i] = {c.x * distance, c.y * distance, c.z * distance, kWhite, 0, c.tu, c.tv};
  }
}

void SkyBox::render(engine::EngineContext& context) const {
  device::Device& device = context.requireDevice();
  const math::Vec3& eye = context.cameraPosition;
  device.setTransform(device::Transform::World, math::translation(eye.x, eye.y, eye.z));
  device.setRenderState(device::RenderState::Lighting, 0);
  device.setRenderState(device::RenderState::AlphaBlendEnable, 0);
  device.setVertexShader(kSkyFormat);
  device.setRenderState(device::RenderState::CullMode, static_cast<std::uint32_t>(device::CullMode::None));
  for (std::size_t face = 0; face < kFaces; ++face) {
    device.setTexture(0, textures_[face]);
    device.drawPrimitiveUP(device::PrimitiveType::TriangleStrip, 2,
                           std::as_bytes(std::span(vertices_).subspan(face * 4, 4)), sizeof vertices_[0]);
  }
}

}  // namespace ql::render::scene
