/// @file
/// Textures, targets and vertex buffers as OpenGL objects.
#pragma once

#include "platform/device/BackEnd.h"
#include "platform/opengl/GlObject.h"
#include "platform/opengl/Shadow.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ql::opengl {

/// Rows of pixels between a format's bytes and 0xAARRGGBB, as textures and targets hold them. Narrow channels expand by
/// repeating their bits, which encoding inverts exactly.
std::vector<std::uint32_t> decodePixels(device::Format format, std::span<const std::byte> pixels);
std::vector<std::byte> encodePixels(device::Format format, std::span<const std::uint32_t> argb);

/// A texture of 8 bits per channel, whatever its format.
class Texture {
 public:
  /// @throws device::DeviceError out of memory
  Texture(Shadow& shadow, const device::TextureDescription& description);
  ~Texture();
  Texture(const Texture&) = delete;
  Texture& operator=(const Texture&) = delete;

  const device::TextureDescription& description() const { return description_; }
  std::uint32_t levels() const { return description_.levels; }
  std::uint32_t width(std::uint32_t level) const;
  std::uint32_t height(std::uint32_t level) const;
  /// The name, for drawing: levels that nobody has written become 0 first.
  GLuint complete();
  /// The name, for drawing all pixels of a level anew.
  GLuint overwrite(std::uint32_t level) {
    written_ |= 1u << level;
    return texture_.name();
  }
  /// Drawing and copying leave anything in an alpha that the format does not have: it reads as 1 from now on.
  void hideAlpha();
  /// Limits what can be read when drawing.
  void showLevels(std::uint32_t first, std::uint32_t last);
  void upload(std::uint32_t level, std::span<const std::byte> pixels);
  /// The same with colours that the format keeps as they are.
  void write(std::uint32_t level, std::span<const std::uint32_t> argb);
  std::vector<std::byte> read(std::uint32_t level);
  /// The contents now, in a texture of its own.
  std::unique_ptr<Texture> copy();

 private:
  void bind() const { shadow_.texture(Shadow::kWorkUnit, texture_.name()); }

  Shadow& shadow_;
  device::TextureDescription description_;
  GlTexture texture_;
  std::uint32_t written_ = 0;  ///< a bit for each level
  bool alphaHidden_ = false;
};

/// Colour and depth to draw into. The first row of the picture is the one at y = 0.
class Target {
 public:
  /// @throws device::DeviceError out of memory
  Target(Shadow& shadow, std::uint32_t width, std::uint32_t height, device::Format format);
  Target(Shadow& shadow, std::shared_ptr<Texture> texture, std::uint32_t level);
  ~Target();
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  std::uint32_t width() const { return width_; }
  std::uint32_t height() const { return height_; }
  device::Format format() const { return texture_->description().format; }
  GLuint framebuffer() const { return framebuffer_.name(); }
  const Texture& texture() const { return *texture_; }
  GLuint colors() { return texture_->complete(); }
  std::uint32_t level() const { return level_; }  ///< of the texture that holds the colours
  bool isTextureLevel() const { return isTextureLevel_; }

  void clear(const std::array<std::int32_t, 4>& area, std::uint32_t flags, std::uint32_t color, float z);
  /// Colours as they are stored, 0xAARRGGBB.
  std::vector<std::uint32_t> read(device::PixelRect rect) const;
  void write(device::PixelRect rect, std::span<const std::byte> pixels);

 private:
  void build();

  Shadow& shadow_;
  std::shared_ptr<Texture> texture_;  ///< that holds the colours
  std::uint32_t level_ = 0, width_, height_;
  bool isTextureLevel_;
  GlRenderbuffer depth_;
  GlFramebuffer framebuffer_;
};

}  // namespace ql::opengl
