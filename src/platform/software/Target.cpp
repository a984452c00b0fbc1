#include "platform/software/Target.h"

#include <algorithm>

namespace ql::software {
namespace {

std::int32_t tiles(std::int32_t pixels) { return (pixels + kTileSide - 1) / kTileSide; }

TileDepth emptyDepth() {
  TileDepth out;
  out.depth.fill(kFarthest);
  out.farthest.fill(kFarthest);
  return out;
}

}  // namespace

Target::Target(std::uint32_t width, std::uint32_t height, device::Format format)
    : width_(static_cast<std::int32_t>(width)),
      height_(static_cast<std::int32_t>(height)),
      tilesX_(tiles(width_)),
      tilesY_(tiles(height_)),
      format_(format),
      color_(std::size_t{width} * height, targetBits(format).alpha == 0 ? 0xFF000000 : 0),
      depth_(static_cast<std::size_t>(tilesX_ * tilesY_), emptyDepth()) {}

Target::Target(std::shared_ptr<Texture> texture, std::uint32_t level)
    : width_(static_cast<std::int32_t>(texture->level(level).width)),
      height_(static_cast<std::int32_t>(texture->level(level).height)),
      tilesX_(tiles(width_)),
      tilesY_(tiles(height_)),
      format_(texture->description().format),
      texture_(std::move(texture)),
      level_(level),
      depth_(static_cast<std::size_t>(tilesX_ * tilesY_), emptyDepth()) {}

Target::Rows Target::beginWrite() {
  if (texture_) return {texture_->writable(level_), texture_->level(level_).stride, kTexelFlip};
  return {color_.data(), static_cast<std::size_t>(width_), 0};
}

void Target::endWrite() {
  if (texture_) texture_->wrapEdges(level_);
}

void Target::readRow(std::int32_t x, std::int32_t y, std::span<std::uint32_t> argb) const {
  const auto column = static_cast<std::size_t>(x), row = static_cast<std::size_t>(y);
  if (!texture_) {
    std::copy_n(color_.data() + row * static_cast<std::size_t>(width_) + column, argb.size(), argb.data());
    return;
  }
  const std::shared_ptr<const TextureData> data = texture_->data();
  const TextureLevel& level = data->levels[level_];
  const std::uint32_t* from = data->texels.data() + level.offset + row * level.stride + column;
  for (std::size_t i = 0; i < argb.size(); ++i) argb[i] = from[i] ^ kTexelFlip;
}

}  // namespace ql::software
