/// @file
/// Buffers that are written from front to back while the driver reads what lies before.
#pragma once

#include "platform/opengl/GlObject.h"

#include <cstddef>
#include <span>

namespace ql::opengl {

/// A ring of bytes in one buffer object. Places that were handed out are never written again before the whole buffer is
/// renewed, which gives its old memory to the draws that still read it: no write ever waits for a draw.
class Stream {
 public:
  /// @param bytes size of the ring; it grows for writes that are larger
  /// @param window bytes that are mapped at once: small writes share a mapping
  Stream(std::size_t bytes, std::size_t window);

  GLuint buffer() const { return buffer_.name(); }
  /// Whether bytes fit behind what was written, at a multiple of a number. When not, the next write renews the buffer:
  /// draws of what was written must have been issued before.
  bool fits(std::size_t bytes, std::size_t multiple) const { return start(multiple) + bytes <= size_; }
  /// Copies bytes behind what was written. Renews the buffer when they don't fit. @return their offset
  std::size_t write(std::span<const std::byte> bytes, std::size_t multiple);
  /// Must be called before the driver reads what was written.
  void finish();

 private:
  std::size_t start(std::size_t multiple) const { return (used_ + multiple - 1) / multiple * multiple; }
  void bind();
  void renew(std::size_t bytes);

  GlBuffer buffer_;
  std::size_t window_;
  std::size_t size_ = 0, used_ = 0;
  std::byte* mapped_ = nullptr;  ///< from mappedFrom_ to mappedTo_
  std::size_t mappedFrom_ = 0, mappedTo_ = 0;
};

}  // namespace ql::opengl
