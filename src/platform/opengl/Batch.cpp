#include "platform/opengl/Batch.h"

namespace ql::opengl {

using device::PrimitiveType;

void Batch::add(const Range& range) {
  const bool list = range.type == PrimitiveType::PointList || range.type == PrimitiveType::LineList ||
                    range.type == PrimitiveType::TriangleList;
  if (list && !ranges_.empty()) {
    Range& last = ranges_.back();
    if (last.type == range.type && last.first + last.count == range.first) {
      last.count += range.count;
      return;
    }
  }
  ranges_.push_back(range);
}

std::span<const std::uint32_t> Batch::indices() {
  indices_.clear();
  const auto triangle = [this](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    const std::uint32_t corners[] = {a, b, c};
    indices_.insert(indices_.end(), corners, corners + 3);
  };
  for (const Range& r : ranges_) {
    switch (r.type) {
      // The first corner gives a triangle's colour when it is flat.
      case PrimitiveType::TriangleStrip:
        for (std::uint32_t i = 0; i + 2 < r.count; ++i)
          i & 1 ? triangle(r.first + i, r.first + i + 2, r.first + i + 1)
                : triangle(r.first + i, r.first + i + 1, r.first + i + 2);
        break;
      case PrimitiveType::TriangleFan:
        for (std::uint32_t i = 0; i + 2 < r.count; ++i) triangle(r.first + i + 1, r.first + i + 2, r.first);
        break;
      case PrimitiveType::LineStrip:
        for (std::uint32_t i = 0; i + 1 < r.count; ++i) indices_.insert(indices_.end(), {r.first + i, r.first + i + 1});
        break;
      default:
        for (std::uint32_t i = 0; i < r.count; ++i) indices_.push_back(r.first + i);
    }
  }
  return indices_;
}

}  // namespace ql::opengl
