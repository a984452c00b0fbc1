/// @file
/// Text on the device.
#pragma once

#include "math/Vector.h"
#include "platform/device/Device.h"
#include "platform/fonts/FontFace.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace ql::utility {

inline constexpr std::uint32_t kTextCenter = 1, kTextRight = 2, kTextVerticalCenter = 4, kTextBottom = 8,
                               kTextWordBreak = 0x10, kTextSingleLine = 0x20, kTextNoClip = 0x100;

/// A font ready to draw: glyphs are rendered on first use into a texture.
class Font {
 public:
  Font(device::Device& device, const fonts::FontRequest& request);
  ~Font();
  /// Draws a text in a rectangle with transformed vertices; every state that it changes is put back. In an empty
  /// rectangle the text starts at its top left, unclipped, line breaks honoured.
  void drawText(device::Device& device, std::string_view text, const math::Rect& rect, std::uint32_t format,
                std::uint32_t color);
  /// Width and height of the text, pixels.
  math::Rect measure(std::string_view text);
  const fonts::FontRequest& request() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ql::utility
