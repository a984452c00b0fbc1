/// @file
/// A small session on the reference device that uses every kind of resource.
#pragma once

#include "platform/device/Device.h"
#include "platform/software/SoftwareBackEnd.h"
#include "platform/utility/RenderToSurface.h"

#include <array>
#include <memory>
#include <vector>

namespace ql::test {

struct TracedVertex {
  float x = 0, y = 0, z = 0.5f, rhw = 1;
  std::uint32_t diffuse = 0xFFFFFFFF;
  float u = 0, v = 0;
};
inline constexpr std::uint32_t kTracedFormat = 0x144, kSessionWidth = 32, kSessionHeight = 24;

inline std::shared_ptr<device::BackEnd> referenceBackEnd(const device::PresentParameters&) {
  return software::createBackEnd({1});
}

/// Four corners of a rectangle as a fan.
inline std::array<TracedVertex, 4> rectangle(float left, float top, float right, float bottom, std::uint32_t color) {
  const auto at = [color](float x, float y, float u, float v) { return TracedVertex{x, y, 0.5f, 1, color, u, v}; };
  return {at(left, top, 0, 0), at(right, top, 1, 0), at(right, bottom, 1, 1), at(left, bottom, 0, 1)};
}

class Session {
 public:
  explicit Session(device::CallSink* sink = nullptr) {
    device::PresentParameters wanted;
    wanted.backBufferWidth = kSessionWidth;
    wanted.backBufferHeight = kSessionHeight;
    wanted.backBufferFormat = device::Format::X8R8G8B8;
    device = std::make_unique<device::Device>(referenceBackEnd(wanted), device::DeviceType::Reference, wanted);
    if (sink) watch(*sink);
  }
  void watch(device::CallSink& sink) {
    device->describe(sink);
    device->setCallSink(&sink);
  }

  /// Textures, a vertex buffer, states.
  void load() {
    using namespace device;
    texture = device->createTexture(16, 16, 1, 0, Format::A8R8G8B8, Pool::Managed);
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t i = 0; i < 256; ++i) pixels.push_back(0xFF000000 | i << 16 | (i % 16) * 16);
    texture->writeLevel(0, std::as_bytes(std::span(pixels)));
    onto = device->createTexture(16, 16, 1, kUsageRenderTarget, Format::X8R8G8B8, Pool::Default);
    converted = device->createTexture(16, 16, 1, 0, Format::R5G6B5, Pool::Managed);
    const auto corners = rectangle(2, 2, 14, 22, 0xFFFFFFFF);
    buffer = device->createVertexBuffer(sizeof corners, 0, kTracedFormat, Pool::Default);
    buffer->write(0, std::as_bytes(std::span(corners)));
    device->setRenderState(RenderState::Lighting, 0);
    device->setRenderState(RenderState::CullMode, 1);
    device->setVertexShader(kTracedFormat);
    device->setTexture(0, texture);
    device->setStreamSource(0, buffer, sizeof(TracedVertex));
  }

  /// One frame: a scene onto two textures, then one on the back buffer from the buffer, from memory, and by a lock.
  void frame(std::uint32_t color) {
    using namespace device;
    utility::RenderToSurface surface(*device, 16, 16, Format::X8R8G8B8, true);
    for (const std::shared_ptr<Texture>& target : {onto, converted}) {
      surface.beginScene(target, 0, {0, 0, 16, 16, 0, 1});
      device->clear({}, kClearTarget | kClearDepth, 0xFF402010, 1, 0);
      draw(rectangle(4, 4, 12, 12, color));
      surface.endScene();
    }
    device->clear({}, kClearTarget | kClearDepth, 0xFF000040, 1, 0);
    device->beginScene();
    device->drawPrimitive(PrimitiveType::TriangleFan, 0, 2);
    for (const float left : {16.0f, 24.0f}) {
      device->setTexture(0, left == 16 ? onto : converted);
      draw(rectangle(left, 4, left + 8, 12, 0xFFFFFFFF));
    }
    device->setTexture(0, texture);
    draw(rectangle(18, 14, 30, 22, color));
    device->endScene();
    const std::shared_ptr<Surface> back = device->getBackBuffer(0);
    const LockedRect locked = back->lock(PixelRect{0, 0, 2, 2});
    for (std::byte& byte : locked.bytes) byte = std::byte{0x80};
    back->unlock();
    device->present();
  }

  std::vector<std::uint32_t> picture() {
    std::vector<std::uint32_t> pixels(kSessionWidth * kSessionHeight);
    device::toArgb(device::Format::X8R8G8B8, device->getBackBuffer(0)->read({0, 0, kSessionWidth, kSessionHeight}),
                   pixels);
    return pixels;
  }

  std::unique_ptr<device::Device> device;
  std::shared_ptr<device::Texture> texture, onto, converted;
  std::shared_ptr<device::VertexBuffer> buffer;

 private:
  void draw(const std::array<TracedVertex, 4>& corners) {
    device->drawPrimitiveUP(device::PrimitiveType::TriangleFan, 2, std::as_bytes(std::span(corners)),
                            sizeof(TracedVertex));
  }
};

}  // namespace ql::test
