/// @file
/// OpenGL without a display.
#pragma once

#include "common/Cases.h"

#include <cstdint>
#include <string>
#include <vector>

#include <epoxy/gl.h>

namespace peers::gl {

/// A compatibility context on Mesa's software driver, current while it lives, and the frame buffer of one size that it
/// draws into: 32 bits of colour, 24 of depth.
class Context {
 public:
  /// @throws std::runtime_error when the machine has no such driver
  explicit Context(Size size);
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  Size size() const { return size_; }
  std::string renderer() const;
  /// Rows from the top, 0xAARRGGBB.
  std::vector<std::uint32_t> pixels() const;

 private:
  Size size_;
  void* display_ = nullptr;
  void* context_ = nullptr;
};

/// Clears colour and depth of the frame buffer.
void clear();
/// Repeated, bilinear, with the nearest mip level.
GLuint createTexture(const std::vector<Level>& levels);
/// A static buffer.
GLuint createBuffer(GLenum target, const void* bytes, std::size_t size);
template <class Item>
GLuint createBuffer(GLenum target, const std::vector<Item>& items) {
  return createBuffer(target, items.data(), items.size() * sizeof(Item));
}
/// A place in the bound buffer.
inline const void* offset(std::size_t bytes) { return static_cast<const char*>(nullptr) + bytes; }

}  // namespace peers::gl
