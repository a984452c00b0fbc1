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
  /// The first free offset that is a multiple of a number.
  std::size_t place(std::size_t multiple) const { return (used_ + multiple - 1) / multiple * multiple; }
  /// Whether bytes fit at an offset. When not, writing them renews the buffer: draws of what was written must have been
  /// issued before.
  bool fits(std::size_t offset, std::size_t bytes) const { return offset + bytes <= size_; }
  /// Copies bytes to a free offset, or to the beginning of the renewed buffer. @return where they are
  std::size_t write(std::size_t offset, std::span<const std::byte> bytes);
  /// Whether writing there takes no call of the driver.
  bool reaches(std::size_t offset, std::size_t bytes) const { return mapped_ && offset + bytes <= mappedTo_; }
  /// Must be called before the driver reads what was written.
  void finish();

 private:
  void bind();
  void renew(std::size_t bytes);

  GlBuffer buffer_;
  std::size_t window_;
  std::size_t size_ = 0, used_ = 0;
  std::byte* mapped_ = nullptr;  ///< from mappedFrom_ to mappedTo_
  std::size_t mappedFrom_ = 0, mappedTo_ = 0;
};

}  // namespace ql::opengl
