/// @file
/// Vertex buffers.
#pragma once

#include "platform/software/Frame.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ql::software {

/// Whether the diffuse colours of some vertices are all white. @param offset of the colour in a vertex
bool allWhite(std::span<const std::byte> vertices, std::size_t stride, std::int32_t offset, std::size_t count);

/// A vertex buffer. Draws that wait hold its bytes; what changes it meanwhile changes a copy.
class Buffer {
 public:
  explicit Buffer(std::size_t bytes) : bytes_(std::make_shared<std::vector<std::byte>>(bytes)) {}

  const std::shared_ptr<std::vector<std::byte>>& bytes() const { return bytes_; }
  void upload(std::size_t offset, std::span<const std::byte> bytes);
  /// Whether all that a draw reads is white; of large draws only whether the whole buffer is, which is found out once.
  bool white(const device::DrawPacket& packet, std::int32_t offset) const;

 private:
  std::shared_ptr<std::vector<std::byte>> bytes_;
  /// What is known of the whole buffer, for vertices of a size and colours of an offset.
  struct Known {
    std::uint32_t stride = 0;
    std::int32_t offset = -1;
    bool white = false;
  };
  mutable Known known_;
};

}  // namespace ql::software
