#include "platform/software/Buffer.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace ql::software {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFFFF;
constexpr std::size_t kMostParts = std::size_t{1} << 14;

// What is not a number counts nothing: triangles with such a corner are not drawn.
Bounds boundsOf(std::span<const std::byte> vertices, std::size_t stride, std::size_t count) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  Bounds out{{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}};
  const auto widen = [](float at, float& low, float& high) {
    low = at < low ? at : low;
    high = at > high ? at : high;
  };
  for (std::size_t i = 0; i < count; ++i) {
    math::Vec3 at;
    std::memcpy(&at, vertices.data() + i * stride, sizeof at);
    widen(at.x, out.low.x, out.high.x);
    widen(at.y, out.low.y, out.high.y);
    widen(at.z, out.low.z, out.high.z);
  }
  return out;
}

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
  ++version_;
}

const Buffer::Part& Buffer::part(const device::DrawPacket& packet, std::int32_t offset) {
  if (parts_.size() >= kMostParts) parts_.clear();
  Known& known = parts_[std::uint64_t{packet.vertexCount} << 32 | packet.firstVertex];
  const std::size_t stride = packet.stride;
  const std::span<const std::byte> drawn = std::span(*bytes_).subspan(packet.firstVertex * stride);
  if (known.version != version_ || known.stride != packet.stride) {
    known = {};
    known.version = version_;
    known.stride = packet.stride;
  } else if (!known.bounds) {  // not at first: much is drawn just once
    known.bounds = boundsOf(drawn, stride, packet.vertexCount);
  }
  if (offset >= 0 && known.offset != offset) {
    known.offset = offset;
    known.white = allWhite(drawn, stride, offset, packet.vertexCount);
  }
  return known;
}

}  // namespace ql::software
