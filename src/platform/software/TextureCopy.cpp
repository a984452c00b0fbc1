#include "platform/software/TextureCopy.h"

#include "platform/device/Levels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <utility>

namespace ql::software {
namespace {

constexpr std::uint32_t kSide = kTileSide, kTileLevels = std::bit_width(kSide) - 1;
static_assert(std::has_single_bit(kSide));

}  // namespace

TextureCopy::TextureCopy(const Target& target, std::shared_ptr<Texture> texture, std::uint32_t level)
    : texture_(std::move(texture)),
      level_(level),
      lastTileLevel_(std::min(level + kTileLevels, texture_->levels() - 1)),
      lastLevel_(texture_->levels() - 1),
      forced_(target.bits().alpha == 0 ? 0xFF000000 : 0),
      texels_(texture_->writable(0)),
      smallest_(std::size_t{texture_->level(lastTileLevel_).width} * texture_->level(lastTileLevel_).height) {}

void TextureCopy::store(std::uint32_t level, std::uint32_t x, std::uint32_t y,
                        std::span<const std::uint32_t> argb) const {
  const TextureLevel& to = texture_->level(level);
  std::uint32_t* texel = texels_ + to.offset + std::size_t{y} * to.stride + x;
  std::array<std::uint32_t, kSide> rounded;
  for (std::size_t at = 0; at < argb.size(); at += kSide) {
    const std::span<const std::uint32_t> part = argb.subspan(at, std::min<std::size_t>(kSide, argb.size() - at));
    std::ranges::copy(part, rounded.begin());
    device::roundTo(texture_->description().format, std::span(rounded).first(part.size()));
    for (std::size_t i = 0; i < part.size(); ++i) *texel++ = rounded[i] ^ kTexelFlip;
  }
}

void TextureCopy::copyTile(const Target::Rows& rows, const Box& area) {
  const auto left = static_cast<std::uint32_t>(area.left), top = static_cast<std::uint32_t>(area.top);
  auto width = static_cast<std::uint32_t>(area.right) - left, height = static_cast<std::uint32_t>(area.bottom) - top;
  alignas(64) std::array<std::array<std::uint32_t, kSide * kSide>, 2> pictures;
  std::uint32_t* picture = pictures[0].data();
  std::uint32_t* smaller = pictures[1].data();
  for (std::uint32_t y = 0; y < height; ++y) {
    const std::uint32_t* from = rows.first + std::size_t{top + y} * rows.pitch + left;
    for (std::uint32_t x = 0; x < width; ++x) picture[y * kSide + x] = (from[x] ^ rows.flip) | forced_;
  }
  for (std::uint32_t level = level_;; ++level) {
    const std::uint32_t shift = level - level_, column = left >> shift, line = top >> shift;
    for (std::uint32_t y = 0; y < height; ++y) store(level, column, line + y, {picture + y * kSide, width});
    if (level == lastTileLevel_) {
      const std::size_t pitch = texture_->level(level).width;
      for (std::uint32_t y = 0; y < height; ++y)
        std::copy_n(picture + y * kSide, width, smallest_.data() + (line + y) * pitch + column);
      return;
    }
    // The last tiles of a row or column may have nothing left for a smaller level.
    const TextureLevel& next = texture_->level(level + 1);
    const std::uint32_t nextColumn = column / 2, nextLine = line / 2;
    if (nextColumn >= next.width || nextLine >= next.height) return;
    const std::uint32_t nextWidth = std::min(next.width - nextColumn, kSide >> (shift + 1));
    const std::uint32_t nextHeight = std::min(next.height - nextLine, kSide >> (shift + 1));
    for (std::uint32_t y = 0; y < nextHeight; ++y) {
      const std::uint32_t* upper = picture + std::size_t{2 * y} * kSide;
      const std::uint32_t* lower = 2 * y + 1 < height ? upper + kSide : upper;
      device::halveRows({upper, width}, {lower, width}, {smaller + y * kSide, nextWidth});
    }
    std::swap(picture, smaller);
    width = nextWidth;
    height = nextHeight;
  }
}

void TextureCopy::finish() {
  for (std::uint32_t level = lastTileLevel_; level < lastLevel_; ++level) {
    const TextureLevel& to = texture_->level(level + 1);
    smallest_ = device::halved(smallest_, texture_->level(level).width, texture_->level(level).height);
    for (std::uint32_t y = 0; y < to.height; ++y)
      store(level + 1, 0, y, std::span(smallest_).subspan(std::size_t{y} * to.width, to.width));
  }
  for (std::uint32_t level = level_; level <= lastLevel_; ++level) texture_->wrapEdges(level);
}

}  // namespace ql::software
