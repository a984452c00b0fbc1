/// @file
/// Primitives that wait to be drawn together.
#pragma once

#include "platform/device/BackEnd.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ql::opengl {

/// Primitives of one state from one buffer. Neighbouring lists grow together; several strips and fans become one list
/// by indices.
class Batch {
 public:
  struct Range {
    device::PrimitiveType type;
    std::uint32_t first, count;  ///< vertices
  };
  void add(const Range& range);
  bool empty() const { return ranges_.empty(); }
  bool single() const { return ranges_.size() == 1; }
  const Range& front() const { return ranges_.front(); }
  /// Indices that draw all ranges as a list of their basic primitive.
  std::span<const std::uint32_t> indices();
  void clear() { ranges_.clear(); }

 private:
  std::vector<Range> ranges_;
  std::vector<std::uint32_t> indices_;
};

/// Number of corners of the basic primitive: 1, 2 or 3.
inline std::uint32_t corners(device::PrimitiveType type) {
  if (type == device::PrimitiveType::PointList) return 1;
  return type <= device::PrimitiveType::LineStrip ? 2 : 3;
}

}  // namespace ql::opengl
