/// @file
/// Copies targets to textures.
#pragma once

#include "platform/opengl/GlObject.h"
#include "platform/opengl/Resources.h"
#include "platform/opengl/Shadow.h"

#include <cstdint>
#include <optional>

namespace ql::opengl {

/// The driver copies the picture and draws each smaller level from the one above, with the arithmetic of
/// device::halveRows. Colours are rounded to the texture's format when somebody reads them. The levels are made in
/// memory where the format's steps would show before (one bit of alpha, no colours), and of large pictures when the
/// driver is one in software.
class TextureCopier {
 public:
  explicit TextureCopier(Shadow& shadow) : shadow_(shadow) {}
  /// @param to has a level of the target's size, and is not its own texture
  void copy(Target& from, Texture& to, std::uint32_t level);

 private:
  void prepare();
  void drawSmaller(Texture& to, std::uint32_t level);

  Shadow& shadow_;
  std::optional<bool> inSoftware_;
  GlProgram program_;
  GLint beside_ = -1;      ///< place of the uniform
  GlVertexArray nothing_;  ///< the corners come from their numbers
  GlFramebuffer framebuffer_;
};

}  // namespace ql::opengl
