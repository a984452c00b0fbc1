#include "platform/recording/NullBackEnd.h"

#include "platform/device/Levels.h"
#include "platform/device/Resources.h"

#include <algorithm>
#include <cstring>

namespace ql::recording {

using namespace device;

std::byte* NullBackEnd::Pixels::row(const PixelRect& rect, std::size_t y) {
  return bytes.data() + ((rect.y + y) * width + rect.x) * pixel;
}

NullBackEnd::Pixels& NullBackEnd::pixelsOf(Target& target) {
  return target.texture == TextureId::None ? target.own : textures_.at(target.texture).levels.at(target.level);
}

TargetId NullBackEnd::createTarget(std::uint32_t width, std::uint32_t height, Format format) {
  const TargetId id{++lastId_};
  const std::size_t pixel = bytesPerPixel(format);
  targets_[id] = {format, {}, 0, {width, height, pixel, std::vector<std::byte>(pixel * width * height)}};
  return id;
}

TargetId NullBackEnd::createTextureTarget(TextureId texture, std::uint32_t level) {
  const TargetId id{++lastId_};
  targets_[id] = {textures_.at(texture).format, texture, level, {}};
  return id;
}

void NullBackEnd::destroyTarget(TargetId target) { targets_.erase(target); }

TextureId NullBackEnd::createTexture(const TextureDescription& description) {
  const TextureId id{++lastId_};
  Texture& texture = textures_[id];
  texture.format = description.format;
  const std::size_t pixel = bytesPerPixel(description.format);
  for (std::uint32_t level = 0; level < description.levels; ++level) {
    const std::uint32_t width = std::max(description.width >> level, 1u);
    const std::uint32_t height = std::max(description.height >> level, 1u);
    texture.levels.push_back({width, height, pixel, std::vector<std::byte>(pixel * width * height)});
  }
  return id;
}

void NullBackEnd::destroyTexture(TextureId texture) { textures_.erase(texture); }

void NullBackEnd::uploadTexture(TextureId texture, std::uint32_t level, std::span<const std::byte> pixels) {
  textures_.at(texture).levels.at(level).bytes.assign(pixels.begin(), pixels.end());
}

std::vector<std::byte> NullBackEnd::readTexture(TextureId texture, std::uint32_t level) {
  return textures_.at(texture).levels.at(level).bytes;
}

BufferId NullBackEnd::createBuffer(std::size_t bytes) {
  const BufferId id{++lastId_};
  buffers_[id].resize(bytes);
  return id;
}

void NullBackEnd::destroyBuffer(BufferId buffer) { buffers_.erase(buffer); }

void NullBackEnd::uploadBuffer(BufferId buffer, std::size_t offset, std::span<const std::byte> bytes) {
  std::ranges::copy(bytes, buffers_.at(buffer).begin() + static_cast<std::ptrdiff_t>(offset));
}

void NullBackEnd::draw(const DrawPacket& packet) {
  ++statistics_.drawCalls;
  if (packet.primitive >= PrimitiveType::TriangleList) statistics_.triangles += packet.primitiveCount;
}

void NullBackEnd::clear(TargetId target, std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color,
                        float) {
  if (!(flags & kClearTarget)) return;
  Target& to = targets_.at(target);
  Pixels& pixels = pixelsOf(to);
  const std::uint32_t value = fromArgb(to.format, color);
  const PixelRect whole{0, 0, pixels.width, pixels.height};
  for (const PixelRect& rect : rects.empty() ? std::span(&whole, 1) : rects)
    for (std::size_t y = 0; y < rect.height; ++y)
      for (std::size_t x = 0; x < rect.width; ++x)
        std::memcpy(pixels.row(rect, y) + x * pixels.pixel, &value, pixels.pixel);
}

std::vector<std::byte> NullBackEnd::readPixels(TargetId target, PixelRect rect) {
  Pixels& pixels = pixelsOf(targets_.at(target));
  const std::size_t row = rect.width * pixels.pixel;
  std::vector<std::byte> out(row * rect.height);
  for (std::size_t y = 0; y < rect.height; ++y) std::copy_n(pixels.row(rect, y), row, out.data() + y * row);
  return out;
}

void NullBackEnd::writePixels(TargetId target, PixelRect rect, std::span<const std::byte> bytes) {
  Pixels& pixels = pixelsOf(targets_.at(target));
  const std::size_t row = rect.width * pixels.pixel;
  for (std::size_t y = 0; y < rect.height; ++y) std::copy_n(bytes.data() + y * row, row, pixels.row(rect, y));
}

void NullBackEnd::copyToTexture(TargetId target, TextureId texture, std::uint32_t level) {
  const Target& from = targets_.at(target);
  const Pixels& pixels = pixelsOf(targets_.at(target));
  Texture& to = textures_.at(texture);
  std::vector<std::uint32_t> picture(std::size_t{pixels.width} * pixels.height);
  toArgb(from.format, pixels.bytes, picture);
  for (; level < to.levels.size(); ++level) {
    Pixels& here = to.levels[level];
    fromArgb(to.format, picture, here.bytes);
    picture = halved(picture, here.width, here.height);
  }
}

void NullBackEnd::present(TargetId, Window*) {}

}  // namespace ql::recording
