#include "platform/software/Texture.h"

#include "platform/device/Resources.h"
#include "platform/software/Formats.h"

#include <algorithm>
#include <cstring>

namespace ql::software {

Texture::Texture(const device::TextureDescription& description)
    : description_(description), data_(std::make_shared<TextureData>()) {
  data_->levelCount = std::clamp(description.levels, 1u, kMaxLevels);
  std::size_t size = 0;
  for (std::uint32_t i = 0; i < data_->levelCount; ++i) {
    TextureLevel& level = data_->levels[i];
    level.width = std::max(description.width >> i, 1u);
    level.height = std::max(description.height >> i, 1u);
    level.stride = level.width + 1;
    level.offset = size;
    size += std::size_t{level.stride} * (level.height + 1);
  }
  data_->texels.assign(size + 1, kTexelFlip);  // vector loads of pairs may touch one texel past the last
}

std::uint32_t* Texture::writable(std::uint32_t level) {
  if (data_.use_count() > 1) data_ = std::make_shared<TextureData>(*data_);
  return data_->texels.data() + data_->levels[level].offset;
}

void Texture::wrapEdges(std::uint32_t index) {
  const TextureLevel& level = data_->levels[index];
  std::uint32_t* row = data_->texels.data() + level.offset;
  std::uint32_t* const first = row;
  for (std::uint32_t y = 0; y < level.height; ++y, row += level.stride) row[level.width] = row[0];
  std::copy_n(first, level.stride, row);
}

void Texture::upload(std::uint32_t index, std::span<const std::byte> pixels) {
  std::uint32_t* row = writable(index);
  const TextureLevel& level = data_->levels[index];
  const FormatCodec codec(description_.format);
  const std::size_t pitch = std::size_t{level.width} * codec.bytes();
  for (std::uint32_t y = 0; y < level.height; ++y, row += level.stride) {
    const std::span<std::uint32_t> texels(row, level.width);
    codec.decode(pixels.subspan(y * pitch, pitch), texels);
    for (std::uint32_t& texel : texels) texel ^= kTexelFlip;
  }
  wrapEdges(index);
}

std::vector<std::byte> Texture::read(std::uint32_t index) const {
  const TextureLevel& level = data_->levels[index];
  const FormatCodec codec(description_.format);
  const std::size_t pitch = std::size_t{level.width} * codec.bytes();
  std::vector<std::byte> out(pitch * level.height);
  std::vector<std::uint32_t> argb(level.width);
  for (std::uint32_t y = 0; y < level.height; ++y) {
    const std::uint32_t* row = data_->texels.data() + level.offset + std::size_t{y} * level.stride;
    for (std::uint32_t x = 0; x < level.width; ++x) argb[x] = row[x] ^ kTexelFlip;
    codec.encode(argb, std::span(out).subspan(y * pitch, pitch));
  }
  return out;
}

}  // namespace ql::software
