/// @file
/// How vertices lie in buffers, as vertex array objects.
#pragma once

#include "platform/opengl/GlObject.h"
#include "platform/opengl/Shadow.h"

#include <compare>
#include <cstdint>
#include <map>

namespace ql::opengl {

class VertexArrays {
 public:
  /// @param indices the buffer that indexed draws take their indices from
  VertexArrays(Shadow& shadow, GLuint indices) : shadow_(shadow), indices_(indices) {}

  /// Binds the array object for vertices of a format in a buffer, from its beginning.
  void bind(GLuint buffer, std::uint32_t vertexFormat, std::uint32_t stride);
  /// Must be called before a buffer is deleted.
  void forget(GLuint buffer);

 private:
  struct Key {
    GLuint buffer = 0;
    std::uint32_t vertexFormat = 0, stride = 0;
    auto operator<=>(const Key&) const = default;
  };
  GlVertexArray make(const Key& key);

  Shadow& shadow_;
  GLuint indices_;
  std::map<Key, GlVertexArray> arrays_;
};

}  // namespace ql::opengl
