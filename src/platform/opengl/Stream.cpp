#include "platform/opengl/Stream.h"

#include <algorithm>
#include <cstring>

namespace ql::opengl {
namespace {

// A place for work on a buffer that no draw looks at.
constexpr GLenum kTarget = GL_COPY_WRITE_BUFFER;

}  // namespace

Stream::Stream(std::size_t bytes, std::size_t window) : buffer_(GlBuffer::make()), window_(window) { renew(bytes); }

void Stream::bind() { glBindBuffer(kTarget, buffer_.name()); }

void Stream::renew(std::size_t bytes) {
  finish();
  size_ = std::max(size_, bytes);
  used_ = 0;
  bind();
  glBufferData(kTarget, static_cast<GLsizeiptr>(size_), nullptr, GL_STREAM_DRAW);
}

std::size_t Stream::write(std::size_t offset, std::span<const std::byte> bytes) {
  if (!fits(offset, bytes.size())) {
    renew(bytes.size());
    offset = 0;
  }
  const std::size_t end = offset + bytes.size();
  if (mapped_ && end > mappedTo_) finish();
  if (!mapped_) {
    mappedFrom_ = offset;
    mappedTo_ = std::min(std::max(end, offset + window_), size_);
    bind();
    mapped_ = static_cast<std::byte*>(
        glMapBufferRange(kTarget, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(mappedTo_ - offset),
                         GL_MAP_WRITE_BIT | GL_MAP_UNSYNCHRONIZED_BIT | GL_MAP_INVALIDATE_RANGE_BIT));
  }
  if (mapped_)
    std::memcpy(mapped_ + (offset - mappedFrom_), bytes.data(), bytes.size());
  else  // no room to map: the slow way
    glBufferSubData(kTarget, static_cast<GLintptr>(offset), static_cast<GLsizeiptr>(bytes.size()), bytes.data());
  used_ = end;
  return offset;
}

void Stream::finish() {
  if (!mapped_) return;
  bind();
  glUnmapBuffer(kTarget);
  mapped_ = nullptr;
}

}  // namespace ql::opengl
