/// @file
/// What tests that compare pictures of the public classes share.
#pragma once

#include "api/Engine.h"
#include "support/Golden.h"

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace ql::test {

/// An engine whose frames become pictures.
class PictureTest : public EngineTest {
 protected:
  void start(std::int32_t width, std::int32_t height) {
    EngineTest::start(width, height);
    scene.SetViewFrustum(50, 2000);
  }
  images::Image backBuffer() const {
    const SurfaceObject surface = internals.GetBackbuffer();
    return {static_cast<std::uint32_t>(surface.Width()), static_cast<std::uint32_t>(surface.Height()),
            surface.ReadPixels()};
  }
  /// A frame of all meshes, after one that brings the view's planes up to date.
  images::Image frame() {
    engine.Clear();
    engine.RenderToScreen();
    engine.Clear();
    scene.RenderAllMeshes();
    engine.RenderToScreen();
    return backBuffer();
  }
  void save(const images::Image& image, const std::string& file) const {
    writeBytes(std::filesystem::absolute(file), images::encodeBmp(image));
  }

  Scene8 scene;
  Camera8 camera;
};

/// Pictures of one size in rows, a line of grey between them.
inline images::Image sheet(const std::vector<images::Image>& pictures, std::uint32_t columns) {
  const std::uint32_t width = pictures.at(0).width, height = pictures[0].height;
  const auto count = static_cast<std::uint32_t>(pictures.size()), rows = (count + columns - 1) / columns;
  images::Image all{columns * (width + 2), rows * (height + 2), {}};
  all.pixels.assign(std::size_t{all.width} * all.height, 0xFF808080);
  for (std::uint32_t i = 0; i < count; ++i)
    for (std::uint32_t y = 0; y < height; ++y)
      for (std::uint32_t x = 0; x < width; ++x)
        all.at(i % columns * (width + 2) + x + 1, i / columns * (height + 2) + y + 1) = pictures[i].at(x, y);
  return all;
}

/// A square picture of one colour with a dark rim and a letter on it: A to Z are not all known, only those used.
inline images::Image labelled(char letter, std::uint32_t color, std::uint32_t side = 64) {
  struct Glyph {
    char letter;
    std::array<const char*, 5> rows;
  };
  static constexpr std::array<Glyph, 8> kGlyphs{{{'L', {"X..", "X..", "X..", "X..", "XXX"}},
                                                 {'R', {"XX.", "X.X", "XX.", "X.X", "X.X"}},
                                                 {'F', {"XXX", "X..", "XX.", "X..", "X.."}},
                                                 {'K', {"X.X", "X.X", "XX.", "X.X", "X.X"}},
                                                 {'T', {"XXX", ".X.", ".X.", ".X.", ".X."}},
                                                 {'B', {"XX.", "X.X", "XX.", "X.X", "XX."}},
                                                 {'P', {"XX.", "X.X", "XX.", "X..", "X.."}},
                                                 {'J', {"..X", "..X", "..X", "X.X", ".X."}}}};
  images::Image image{side, side, std::vector<std::uint32_t>(std::size_t{side} * side, color)};
  for (std::uint32_t i = 0; i < side; ++i)
    for (std::uint32_t rim = 0; rim < side / 16; ++rim)
      image.at(i, rim) = image.at(i, side - 1 - rim) = image.at(rim, i) = image.at(side - 1 - rim, i) = 0xFF202020;
  const std::uint32_t cell = side / 8;
  for (const Glyph& glyph : kGlyphs)
    for (std::uint32_t row = 0; glyph.letter == letter && row < 5; ++row)
      for (std::uint32_t column = 0; column < 3; ++column)
        for (std::uint32_t p = 0; glyph.rows[row][column] == 'X' && p < cell * cell; ++p)
          image.at(cell * (column + 2) + cell / 2 + p % cell, cell * (row + 1) + cell / 2 + p / cell) = 0xFFFFFFFF;
  return image;
}

}  // namespace ql::test
