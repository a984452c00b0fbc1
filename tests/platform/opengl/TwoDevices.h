/// @file
/// The same scene on the reference device and on the hardware device, and how far the pictures are apart.
#pragma once

#include "platform/device/DeviceError.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/software/Scene.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include <gtest/gtest.h>

namespace ql::test {

/// The hardware device's back end, one for the whole program; nothing where no driver offers one.
inline std::shared_ptr<device::BackEnd> hardware() {
  static const std::shared_ptr<device::BackEnd> made = []() -> std::shared_ptr<device::BackEnd> {
    try {
      return opengl::createBackEnd({});
    } catch (const device::DeviceError&) {
      return nullptr;
    }
  }();
  return made;
}

/// How two pictures differ.
struct Comparison {
  int worstInside = 0;     ///< the largest difference of a channel where the reference is even around the pixel
  std::size_t faults = 0;  ///< pixels there that differ by more than the limit
  std::size_t edges = 0;   ///< other pixels that do
  std::size_t pixels = 0;
  std::uint32_t x = 0, y = 0, reference = 0, hardware = 0;  ///< of the worst pixel inside
};

/// An edge may lie a pixel apart: a pixel whose colour lies within the range of the reference's 3 x 3 pixels around it,
/// widened by the limit, is no fault, wherever that range is wide.
inline Comparison compare(const std::vector<std::uint32_t>& reference, const std::vector<std::uint32_t>& hardware,
                          std::uint32_t width, int limit) {
  Comparison out;
  out.pixels = reference.size();
  const auto height = static_cast<std::uint32_t>(reference.size() / width);
  for (std::uint32_t y = 0; y < height; ++y)
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::uint32_t a = reference[y * width + x], b = hardware[y * width + x];
      const int apart = difference(a, b);
      if (apart <= limit) {
        out.worstInside = std::max(out.worstInside, apart);
        continue;
      }
      bool within = true;
      for (int shift = 0; shift < 32; shift += 8) {
        int low = 255, high = 0;
        for (std::uint32_t ny = y > 0 ? y - 1 : 0; ny <= std::min(y + 1, height - 1); ++ny)
          for (std::uint32_t nx = x > 0 ? x - 1 : 0; nx <= std::min(x + 1, width - 1); ++nx) {
            const int value = static_cast<int>(reference[ny * width + nx] >> shift & 255);
            low = std::min(low, value);
            high = std::max(high, value);
          }
        const int value = static_cast<int>(b >> shift & 255);
        within &= value >= low - limit && value <= high + limit;
      }
      within ? ++out.edges : ++out.faults;
      if (!within && apart > out.worstInside) {
        out.worstInside = apart;
        out.x = x;
        out.y = y;
        out.reference = a;
        out.hardware = b;
      }
    }
  return out;
}

inline std::ostream& operator<<(std::ostream& out, const Comparison& c) {
  return out << "worst " << c.worstInside << " at " << c.x << ", " << c.y << std::hex << ": reference " << c.reference
             << ", hardware " << c.hardware << std::dec << "; " << c.faults << " inside and " << c.edges << " of "
             << c.pixels << " on edges";
}

/// Draws a scene on both devices. @param limit of a channel's difference inside areas
inline Comparison onBoth(const std::function<void(Scene&)>& draw, int limit,
                         device::Format format = device::Format::A8R8G8B8, std::uint32_t width = 64,
                         std::uint32_t height = 48) {
  Scene reference(width, height, format), gl(hardware(), width, height, format);
  draw(reference);
  draw(gl);
  const Comparison out = compare(reference.pixels(), gl.pixels(), width, limit);
  hardware()->destroyTarget(gl.target);
  return out;
}

class OpenGL : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!hardware()) GTEST_SKIP() << "no OpenGL 3.3 on this machine";
  }
};

}  // namespace ql::test
