/// @file
/// A small target with the state, textures and draws of a test.
#pragma once

#include "math/Matrix.h"
#include "platform/device/BackEnd.h"
#include "platform/device/Resources.h"
#include "platform/software/SoftwareBackEnd.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace ql::test {

/// The engine's screen vertex, format code 0x1C4, and its lit vertex, 0x1C2.
struct ScreenVertex {
  float x = 0, y = 0, z = 0, rhw = 1;
  std::uint32_t diffuse = 0xFFFFFFFF, specular = 0;
  float u = 0, v = 0;
};
struct LitVertex {
  float x = 0, y = 0, z = 0;
  std::uint32_t diffuse = 0xFFFFFFFF, specular = 0;
  float u = 0, v = 0;
};
inline constexpr std::uint32_t kScreenFormat = 0x1C4, kLitFormat = 0x1C2;

inline std::uint32_t bitsOf(float value) { return std::bit_cast<std::uint32_t>(value); }
template <class E>
std::uint32_t code(E value) {
  return static_cast<std::uint32_t>(value);
}

/// The code that tests draw with: the best of the machine, or the one that the environment asks for, so that all tests
/// can be repeated with another.
inline software::Kernels testedKernels() {
  const char* wanted = std::getenv("QL_TEST_KERNELS");
  return wanted && std::string_view(wanted) == "portable" ? software::Kernels::Portable : software::Kernels::Auto;
}

class Scene {
 public:
  Scene(std::uint32_t width, std::uint32_t height, device::Format format = device::Format::A8R8G8B8,
        unsigned threads = 2, software::Kernels kernels = testedKernels())
      : Scene(software::createBackEnd({threads, kernels}), width, height, format) {}
  Scene(std::shared_ptr<device::BackEnd> drawsWith, std::uint32_t width, std::uint32_t height,
        device::Format format = device::Format::A8R8G8B8)
      : backEnd(std::move(drawsWith)), width_(width), height_(height), format_(format) {
    target = backEnd->createTarget(width, height, format);
    state.viewport = {0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height), 0, 1};
    state.render.lighting = 0;
    state.render.cullMode = 1;
    clear(0);
  }

  std::shared_ptr<device::BackEnd> backEnd;
  device::State state;
  device::TargetId target{};
  std::array<device::TextureId, device::kStages> textures{};

  void clear(std::uint32_t color, float z = 1, std::uint32_t flags = 3) { backEnd->clear(target, {}, flags, color, z); }

  template <class V>
  void draw(device::PrimitiveType type, const std::vector<V>& vertices, std::uint32_t format) {
    draw(type, std::as_bytes(std::span(vertices)), sizeof(V), format);
  }
  void draw(device::PrimitiveType type, const std::vector<ScreenVertex>& v) { draw(type, v, kScreenFormat); }
  void draw(device::PrimitiveType type, const std::vector<LitVertex>& v) { draw(type, v, kLitFormat); }

  /// @param buffer where the same vertices stand from the first on; none: they are drawn from memory
  void draw(device::PrimitiveType type, std::span<const std::byte> bytes, std::size_t stride, std::uint32_t format,
            device::BufferId buffer = device::BufferId::None, std::uint32_t first = 0) {
    const auto n = static_cast<std::uint32_t>(bytes.size() / stride);
    device::DrawPacket packet;
    packet.target = target;
    packet.state = &state;
    packet.stateVersion = ++version_;
    packet.textures = textures;
    packet.primitive = type;
    using device::PrimitiveType;
    switch (type) {
      case PrimitiveType::PointList:
        packet.primitiveCount = n;
        break;
      case PrimitiveType::LineList:
        packet.primitiveCount = n / 2;
        break;
      case PrimitiveType::LineStrip:
        packet.primitiveCount = n - 1;
        break;
      case PrimitiveType::TriangleList:
        packet.primitiveCount = n / 3;
        break;
      default:
        packet.primitiveCount = n - 2;
    }
    packet.vertexCount = n;
    packet.vertexFormat = format;
    packet.stride = static_cast<std::uint32_t>(stride);
    packet.buffer = buffer;
    if (buffer == device::BufferId::None)
      packet.vertices = bytes;
    else
      packet.firstVertex = first;
    backEnd->draw(packet);
  }

  /// A rectangle of the screen in one colour; covers the pixels from (left, top) to before (right, bottom).
  void rectangle(float left, float top, float right, float bottom, std::uint32_t diffuse, float z = 0.5f,
                 std::uint32_t specular = 0, float rhw = 1) {
    const auto corner = [&](float x, float y, float u, float v) {
      return ScreenVertex{x, y, z, rhw, diffuse, specular, u, v};
    };
    draw(device::PrimitiveType::TriangleFan,
         std::vector<ScreenVertex>{corner(left, top, 0, 0), corner(right, top, 1, 0), corner(right, bottom, 1, 1),
                                   corner(left, bottom, 0, 1)});
  }
  void fill(std::uint32_t diffuse, float z = 0.5f, std::uint32_t specular = 0, float rhw = 1) {
    rectangle(0, 0, static_cast<float>(width_), static_cast<float>(height_), diffuse, z, specular, rhw);
  }

  device::TextureId texture(std::uint32_t width, std::uint32_t height, const std::vector<std::uint32_t>& argb) {
    const device::TextureId id = backEnd->createTexture({width, height, 1, device::Format::A8R8G8B8, false});
    backEnd->uploadTexture(id, 0, std::as_bytes(std::span(argb)));
    return id;
  }
  /// Makes stage 0 show its texture alone.
  void replaceByTexture() {
    state.stages[0].colorOp = state.stages[0].alphaOp = code(device::TextureOp::SelectArg1);
    state.stages[0].colorArg1 = state.stages[0].alphaArg1 = code(device::TextureArg::Texture);
  }

  /// The target's pixels as 0xAARRGGBB.
  std::vector<std::uint32_t> pixels() {
    const std::vector<std::byte> bytes = backEnd->readPixels(target, {0, 0, width_, height_});
    std::vector<std::uint32_t> out(std::size_t{width_} * height_);
    const std::size_t size = bytes.size() / out.size();
    for (std::size_t i = 0; i < out.size(); ++i) {
      std::uint32_t value = 0;
      std::memcpy(&value, bytes.data() + i * size, size);
      out[i] = device::toArgb(format_, value);
    }
    return out;
  }
  std::uint32_t pixel(std::uint32_t x, std::uint32_t y) { return pixels()[std::size_t{y} * width_ + x]; }

 private:
  std::uint32_t width_, height_;
  device::Format format_;
  std::uint64_t version_ = 0;
};

/// The largest difference of a channel.
inline int difference(std::uint32_t a, std::uint32_t b) {
  int worst = 0;
  for (int shift = 0; shift < 32; shift += 8)
    worst = std::max(worst, std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)));
  return worst;
}

}  // namespace ql::test
