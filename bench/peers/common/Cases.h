/// @file
/// The work that every program here does in the same way: the same layers, triangles, textures and colours. Coordinates
/// are those of clip space with depths 0 to 1, y up; v = 0 is a texture's first row.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace peers {

struct Size {
  int width = 1024, height = 768;
};
inline constexpr Size kSizes[] = {{640, 480}, {1024, 768}};

inline constexpr std::uint32_t kBackground = 0xFF29293D;  // ARGB

/// Full-screen layers, drawn back to front without a depth test.
inline constexpr int kLayers = 16;
inline constexpr float kFogStart = 0, kFogEnd = 2;  // depth of the eye's space; layers lie between 0.6 and 0.9
inline constexpr std::uint32_t kFogColor = 0xFF8090A0;
inline constexpr std::uint32_t kLayerColor = 0xF0FFC080;  // of the coloured case
inline constexpr int kAlphaReference = 100;               // greater passes, which every pixel here does
/// Distances of a tilted layer's bottom and top; its projection divides x, y and half the z by z.
inline constexpr float kTiltNear = 1, kTiltFar = 4;

struct Corner {
  float x, y, z, u, v;
};

/// Corners clockwise from the top left.
inline std::array<Corner, 4> layer(int index, bool tilted) {
  std::array<Corner, 4> corners{};
  constexpr float kAcross = 3.3f, kDown = 2.5f;  // repeats of the texture
  for (std::size_t i = 0; i < 4; ++i) {
    const float x = i == 1 || i == 2 ? 1 : -1, y = i < 2 ? 1 : -1;
    if (tilted) {
      const float z = i < 2 ? kTiltFar : kTiltNear;
      corners[i] = {x * z, y * z, z, x * z * kAcross / 2, -z * kDown};
    } else {
      const float z = 0.9f - 0.02f * static_cast<float>(index);
      corners[i] = {x, y, z, (x + 1) * kAcross / 2, (1 - y) * kDown / 2};
    }
  }
  return corners;
}

/// A million triangles: sheets of a quarter of the picture, each nearer than the one before. At 1024 x 768 a triangle
/// covers six pixels.
inline constexpr int kSheets = 31, kSheetCells = 128;
inline constexpr int kSheetCorners = (kSheetCells + 1) * (kSheetCells + 1);
inline constexpr int kSheetIndices = kSheetCells * kSheetCells * 6;
inline constexpr double kTriangles = static_cast<double>(kSheets) * kSheetCells * kSheetCells * 2;

inline std::vector<Corner> sheet(int index) {
  std::vector<Corner> corners;
  corners.reserve(kSheetCorners);
  for (int row = 0; row <= kSheetCells; ++row)
    for (int column = 0; column <= kSheetCells; ++column) {
      const float s = static_cast<float>(column) / kSheetCells, t = static_cast<float>(row) / kSheetCells;
      corners.push_back({static_cast<float>(index % 2 - 1) + s, static_cast<float>(index / 2 % 2 - 1) + t,
                         0.9f - 0.02f * static_cast<float>(index), s * 4, t * 4});
    }
  return corners;
}

/// Two triangles for every cell of a sheet.
inline std::vector<std::uint16_t> sheetIndices() {
  std::vector<std::uint16_t> indices;
  indices.reserve(kSheetIndices);
  for (int row = 0; row < kSheetCells; ++row)
    for (int column = 0; column < kSheetCells; ++column)
      for (const auto& [right, up] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 0}, {1, 1}, {0, 1}})
        indices.push_back(static_cast<std::uint16_t>((row + up) * (kSheetCells + 1) + column + right));
  return indices;
}

/// Pixels 0xAARRGGBB of one mip level, side x side.
struct Level {
  int side;
  std::vector<std::uint32_t> pixels;
};

/// A texture of 256 x 256 down to 1 x 1: shades of red and green, noise in blue.
inline std::vector<Level> texture(std::uint32_t alpha) {
  std::vector<Level> levels{{256, {}}};
  std::uint32_t random = 1;
  for (std::uint32_t i = 0; i < 256 * 256; ++i) {
    random = random * 1664525 + 1013904223;
    const std::uint32_t x = i & 255, y = i >> 8;
    // Up and down again, so that the repeated texture has no seam.
    const std::uint32_t red = x < 128 ? 2 * x : 511 - 2 * x, green = y < 128 ? 2 * y : 511 - 2 * y;
    levels[0].pixels.push_back(alpha << 24 | red << 16 | green << 8 | random >> 24);
  }
  while (levels.back().side > 1) {
    const Level& from = levels.back();
    const int side = from.side / 2;
    Level half{side, {}};
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) {
        const std::uint32_t* block = &from.pixels[static_cast<std::size_t>(2 * y * from.side + 2 * x)];
        std::uint32_t pixel = 0;
        for (int shift = 0; shift < 32; shift += 8) {
          std::uint32_t sum = 2;
          for (const int at : {0, 1, from.side, from.side + 1}) sum += block[at] >> shift & 255;
          pixel |= sum / 4 << shift;
        }
        half.pixels.push_back(pixel);
      }
    levels.push_back(std::move(half));
  }
  return levels;
}
/// The textures: opaque, and one whose pixels are half transparent.
inline constexpr std::uint32_t kOpaque = 255, kHalf = 128;

}  // namespace peers
