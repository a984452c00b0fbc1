/// @file
/// Vertex buffers.
#pragma once

#include "platform/software/Frame.h"
#include "platform/software/ViewSides.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace ql::software {

/// Whether the diffuse colours of some vertices are all white. @param offset of the colour in a vertex
bool allWhite(std::span<const std::byte> vertices, std::size_t stride, std::int32_t offset, std::size_t count);

/// A vertex buffer. Draws that wait hold its bytes; what changes it meanwhile changes a copy.
class Buffer {
 public:
  /// What is known of the vertices of a draw.
  struct Part {
    std::optional<Bounds> bounds;  ///< of their positions, of three numbers in front; of what is drawn again
    bool white = false;            ///< whether their colours all are
  };

  explicit Buffer(std::size_t bytes) : bytes_(std::make_shared<std::vector<std::byte>>(bytes)) {}

  const std::shared_ptr<std::vector<std::byte>>& bytes() const { return bytes_; }
  void upload(std::size_t offset, std::span<const std::byte> bytes);
  /// What is found out once until the buffer changes. @param offset of the colour in a vertex; -1: none is asked for
  const Part& part(const device::DrawPacket& packet, std::int32_t offset);

 private:
  struct Known : Part {
    std::uint64_t version = 0;  ///< of the buffer
    std::uint32_t stride = 0;
    std::int32_t offset = -1;
  };
  std::shared_ptr<std::vector<std::byte>> bytes_;
  std::uint64_t version_ = 1;
  std::unordered_map<std::uint64_t, Known> parts_;  ///< by first vertex and count
};

}  // namespace ql::software
