/// @file
/// Things to draw that show most states at once.
#pragma once

#include "platform/opengl/TwoDevices.h"

#include <array>
#include <cstdint>
#include <vector>

namespace ql::test {

using device::PrimitiveType;

/// A smooth picture with alpha and all its mip levels: neighbours differ little, so that filters may round differently.
inline device::TextureId smoothTexture(Scene& s, std::uint32_t side = 32,
                                       device::Format format = device::Format::A8R8G8B8) {
  const std::uint32_t levels = device::fullLevelCount(side, side);
  const device::TextureId id = s.backEnd->createTexture({side, side, levels, format, false});
  for (std::uint32_t level = 0; level < levels; ++level) {
    const std::uint32_t n = std::max(side >> level, 1u);
    std::vector<std::uint32_t> argb;
    for (std::uint32_t y = 0; y < n; ++y)
      for (std::uint32_t x = 0; x < n; ++x) {
        // A wave that joins itself at the edges.
        const auto wave = [n](std::uint32_t i) { return std::min(i * 2 + 1, n * 2 - i * 2 - 1) * 255 / n; };
        argb.push_back((255 - wave(x) / 2) << 24 | wave(x) << 16 | wave(y) << 8 | (wave(x) + wave(y)) / 2);
      }
    std::vector<std::byte> bytes(argb.size() * device::bytesPerPixel(format));
    device::fromArgb(format, argb, bytes);
    s.backEnd->uploadTexture(id, level, bytes);
  }
  return id;
}

/// Each texel has one colour of its own, far from its neighbours'.
inline device::TextureId squaresTexture(Scene& s) {
  std::vector<std::uint32_t> argb;
  for (std::uint32_t i = 0; i < 16; ++i) argb.push_back(0xFF000000 | (i * 0x0F0F77u & 0xFFFFFF));
  return s.texture(4, 4, argb);
}

/// A quadrilateral on the screen with colours that change gently. @param repeats of the texture
inline std::vector<ScreenVertex> quad(float repeats = 1, float z = 0.5f, float shift = 0) {
  return {{6 + shift, 4 + shift, z, 1, 0xFFE04020, 0xFF102030, 0, 0},
          {58 + shift, 8 + shift, z, 0.5f, 0xC040D060, 0xC0302010, repeats, 0},
          {54 + shift, 44 + shift, z, 0.25f, 0x803050F0, 0x80203010, repeats, repeats},
          {9 + shift, 40 + shift, z, 1, 0x40F0F0C0, 0x40303030, 0, repeats}};
}

/// A floor that runs into the distance and a wall, seen by a camera.
inline void hall(Scene& s) {
  s.state.view = math::lookAt({0, 2, -4}, {0, 1, 4}, {0, 1, 0});
  s.state.projection = math::perspective(1.2f, 48.0f / 64.0f, 0.5f, 60);
  s.draw(PrimitiveType::TriangleFan, std::vector<LitVertex>{{-6, 0, -6, 0xFFFFFFFF, 0xFF000000, 0, 0},
                                                            {-6, 0, 40, 0xFF80A0C0, 0x80101010, 0, 8},
                                                            {6, 0, 40, 0xFFC0A080, 0x40101010, 3, 8},
                                                            {6, 0, -6, 0xFFFFC0C0, 0xC0101010, 3, 0}});
  s.draw(PrimitiveType::TriangleStrip, std::vector<LitVertex>{{-3, -1, 3, 0xFFFFFF80, 0x20080808, 0, 1},
                                                              {-2.5f, 3, 3, 0xFF80FFFF, 0x80080808, 0, 0},
                                                              {1, -1, 9, 0xA0FF80FF, 0xA0080808, 1, 1},
                                                              {1.5f, 3, 9, 0x80FFFFFF, 0xF0080808, 1, 0}});
}

}  // namespace ql::test
