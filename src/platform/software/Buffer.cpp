#include "platform/software/Buffer.h"

#include <algorithm>
#include <cstring>

namespace ql::software {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFFFF, kFewVertices = 64;

}  // namespace

bool allWhite(std::span<const std::byte> vertices, std::size_t stride, std::int32_t offset, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t color = 0;
    std::memcpy(&color, vertices.data() + i * stride + static_cast<std::size_t>(offset), sizeof color);
    if (color != kWhite) return false;
  }
  return true;
}

void Buffer::upload(std::size_t offset, std::span<const std::byte> bytes) {
  if (bytes_.use_count() > 1) bytes_ = std::make_shared<std::vector<std::byte>>(*bytes_);
  std::ranges::copy(bytes, bytes_->begin() + static_cast<std::ptrdiff_t>(offset));
  known_ = {};
}

bool Buffer::white(const device::DrawPacket& packet, std::int32_t offset) const {
  const std::size_t stride = packet.stride, first = std::size_t{packet.firstVertex} * stride;
  const std::span<const std::byte> drawn = std::span(*bytes_).subspan(first);
  if (packet.vertexCount <= kFewVertices) return allWhite(drawn, stride, offset, packet.vertexCount);
  if (known_.stride != packet.stride || known_.offset != offset)
    known_ = {packet.stride, offset, allWhite(*bytes_, stride, offset, bytes_->size() / stride)};
  return known_.white;
}

}  // namespace ql::software
