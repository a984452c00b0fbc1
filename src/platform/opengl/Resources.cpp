#include "platform/opengl/Resources.h"

#include "platform/device/DeviceError.h"
#include "platform/device/Resources.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace ql::opengl {
namespace {

constexpr GLenum kLayout = GL_BGRA, kType = GL_UNSIGNED_INT_8_8_8_8_REV;  // 0xAARRGGBB in words
constexpr std::uint32_t kOpaque = 0xFF000000;

GLint integer(std::uint32_t value) { return static_cast<GLint>(value); }

// Errors of earlier calls are nobody's business here.
void forgetErrors() {
  for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
  }
}
void requireMemory(const char* what, std::uint32_t width, std::uint32_t height) {
  if (glGetError() == GL_NO_ERROR) return;
  throw device::DeviceError(device::kErrorOutOfMemory, std::string("no room for a ") + what + " of " +
                                                           std::to_string(width) + " x " + std::to_string(height));
}

}  // namespace

std::vector<std::uint32_t> decodePixels(device::Format format, std::span<const std::byte> pixels) {
  std::vector<std::uint32_t> argb(pixels.size() / device::bytesPerPixel(format));
  if (format == device::Format::X8R8G8B8) {
    std::memcpy(argb.data(), pixels.data(), pixels.size());
    for (std::uint32_t& pixel : argb) pixel |= kOpaque;
  } else {
    device::toArgb(format, pixels, argb);
  }
  return argb;
}

std::vector<std::byte> encodePixels(device::Format format, std::span<const std::uint32_t> argb) {
  const std::uint32_t bytes = device::bytesPerPixel(format);
  std::vector<std::byte> pixels(argb.size() * bytes);
  if (format == device::Format::X8R8G8B8) {
    std::vector<std::uint32_t> opaque(argb.begin(), argb.end());
    for (std::uint32_t& pixel : opaque) pixel |= kOpaque;
    std::memcpy(pixels.data(), opaque.data(), pixels.size());
  } else if (bytes == 4) {
    std::memcpy(pixels.data(), argb.data(), pixels.size());
  } else {
    device::fromArgb(format, argb, pixels);
  }
  return pixels;
}

Texture::Texture(Shadow& shadow, const device::TextureDescription& description)
    : shadow_(shadow), description_(description), texture_(GlTexture::make()) {
  description_.levels =
      std::clamp(description.levels, 1u, device::fullLevelCount(description.width, description.height));
  forgetErrors();
  bind();
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, integer(description_.levels) - 1);
  if (description.renderTarget && !device::hasAlpha(description.format)) hideAlpha();
  for (std::uint32_t i = 0; i < description_.levels; ++i)
    glTexImage2D(GL_TEXTURE_2D, integer(i), GL_RGBA8, integer(width(i)), integer(height(i)), 0, kLayout, kType,
                 nullptr);
  requireMemory("texture", description.width, description.height);
}

Texture::~Texture() { shadow_.forgetTexture(texture_.name()); }

std::uint32_t Texture::width(std::uint32_t level) const { return std::max(description_.width >> level, 1u); }
std::uint32_t Texture::height(std::uint32_t level) const { return std::max(description_.height >> level, 1u); }

void Texture::write(std::uint32_t level, std::span<const std::uint32_t> argb) {
  bind();
  glTexSubImage2D(GL_TEXTURE_2D, integer(level), 0, 0, integer(width(level)), integer(height(level)), kLayout, kType,
                  argb.data());
  written_ |= 1u << level;
}

void Texture::hideAlpha() {
  if (std::exchange(alphaHidden_, true)) return;
  bind();
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_A, GL_ONE);
}

void Texture::showLevels(std::uint32_t first, std::uint32_t last) {
  bind();
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, integer(first));
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, integer(last));
}

GLuint Texture::complete() {
  const std::uint32_t all = (1u << description_.levels) - 1;
  for (std::uint32_t i = 0; written_ != all && i < description_.levels; ++i)
    if (!(written_ >> i & 1)) write(i, std::vector<std::uint32_t>(std::size_t{width(i)} * height(i)));
  return texture_.name();
}

void Texture::upload(std::uint32_t level, std::span<const std::byte> pixels) {
  if (description_.format == device::Format::A8R8G8B8) {
    bind();
    glTexSubImage2D(GL_TEXTURE_2D, integer(level), 0, 0, integer(width(level)), integer(height(level)), kLayout, kType,
                    pixels.data());
    written_ |= 1u << level;
    return;
  }
  write(level, decodePixels(description_.format, pixels));
}

std::vector<std::byte> Texture::read(std::uint32_t level) {
  if (!(written_ >> level & 1))
    return std::vector<std::byte>(std::size_t{width(level)} * height(level) *
                                  device::bytesPerPixel(description_.format));
  bind();
  std::vector<std::uint32_t> argb(std::size_t{width(level)} * height(level));
  glGetTexImage(GL_TEXTURE_2D, integer(level), kLayout, kType, argb.data());
  return encodePixels(description_.format, argb);
}

std::unique_ptr<Texture> Texture::copy() {
  auto out = std::make_unique<Texture>(shadow_, description_);
  const GlFramebuffer from = GlFramebuffer::make();
  shadow_.framebuffer(from.name());
  for (std::uint32_t i = 0; i < description_.levels; ++i) {
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, complete(), integer(i));
    out->bind();
    glCopyTexSubImage2D(GL_TEXTURE_2D, integer(i), 0, 0, 0, 0, integer(width(i)), integer(height(i)));
  }
  out->written_ = written_;
  shadow_.framebuffer(0);
  return out;
}

Target::Target(Shadow& shadow, std::uint32_t width, std::uint32_t height, device::Format format)
    : shadow_(shadow),
      texture_(std::make_shared<Texture>(shadow, device::TextureDescription{width, height, 1, format, true})),
      width_(width),
      height_(height),
      isTextureLevel_(false) {
  build();
  clear({0, 0, integer(width_), integer(height_)}, device::kClearTarget | device::kClearDepth, 0, 1);
}

Target::Target(Shadow& shadow, std::shared_ptr<Texture> texture, std::uint32_t level)
    : shadow_(shadow),
      texture_(std::move(texture)),
      level_(level),
      width_(texture_->width(level)),
      height_(texture_->height(level)),
      isTextureLevel_(true) {
  build();
  clear({0, 0, integer(width_), integer(height_)}, device::kClearDepth, 0, 1);
}

Target::~Target() { shadow_.forgetFramebuffer(framebuffer_.name()); }

void Target::build() {
  forgetErrors();
  depth_ = GlRenderbuffer::make();
  glBindRenderbuffer(GL_RENDERBUFFER, depth_.name());
  glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, integer(width_), integer(height_));
  framebuffer_ = GlFramebuffer::make();
  shadow_.framebuffer(framebuffer_.name());
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture_->complete(), integer(level_));
  glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth_.name());
  requireMemory("target", width_, height_);
  if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    throw device::DeviceError(device::kErrorNotAvailable, "the OpenGL driver cannot draw into a target of " +
                                                              std::to_string(width_) + " x " + std::to_string(height_));
}

void Target::clear(const std::array<std::int32_t, 4>& area, std::uint32_t flags, std::uint32_t color, float z) {
  const bool alpha = device::hasAlpha(format());
  // Without alpha the channel is 1, as blending reads it; drawing never writes it.
  const std::uint32_t stored = device::toArgb(format(), device::fromArgb(format(), color));
  const auto channel = [stored](int shift) { return static_cast<float>(stored >> shift & 255) / 255.0f; };
  shadow_.framebuffer(framebuffer_.name());
  shadow_.prepareClear(area);
  GLbitfield what = 0;
  if (flags & device::kClearTarget) {
    glClearColor(channel(16), channel(8), channel(0), alpha ? channel(24) : 1.0f);
    what |= GL_COLOR_BUFFER_BIT;
  }
  if (flags & device::kClearDepth) {
    glClearDepth(GLdouble{z});
    what |= GL_DEPTH_BUFFER_BIT;
  }
  glClear(what);
}

std::vector<std::uint32_t> Target::read(device::PixelRect rect) const {
  std::vector<std::uint32_t> argb(std::size_t{rect.width} * rect.height);
  shadow_.framebuffer(framebuffer_.name());
  glReadPixels(integer(rect.x), integer(rect.y), integer(rect.width), integer(rect.height), kLayout, kType,
               argb.data());
  return argb;
}

void Target::write(device::PixelRect rect, std::span<const std::byte> pixels) {
  const std::vector<std::uint32_t> argb = decodePixels(format(), pixels);
  shadow_.texture(Shadow::kWorkUnit, texture_->complete());
  glTexSubImage2D(GL_TEXTURE_2D, integer(level_), integer(rect.x), integer(rect.y), integer(rect.width),
                  integer(rect.height), kLayout, kType, argb.data());
}

}  // namespace ql::opengl
