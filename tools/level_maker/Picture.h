#pragma once

#include <cstdint>
#include <vector>

namespace ql::maker {

struct Rgba {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
  std::uint8_t a = 255;
  bool operator==(const Rgba&) const = default;
};

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<Rgba> pixels;  ///< top row first
};

enum class TargaKind { Plain24, RunLength32 };

/// A TGA file, bottom row first as most readers expect.
std::vector<std::uint8_t> encodeTarga(const Picture& picture, TargaKind kind);
/// A JPEG file (quality 1 to 100, colour at half resolution).
/// @throws std::runtime_error when the encoder fails
std::vector<std::uint8_t> encodeJpeg(const Picture& picture, int quality);

}  // namespace ql::maker
