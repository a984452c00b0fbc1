/// @file
/// Draws finished pictures into windows.
#pragma once

#include "platform/device/Display.h"
#include "platform/device/Gamma.h"
#include "platform/opengl/GlObject.h"
#include "platform/opengl/Programs.h"
#include "platform/opengl/Resources.h"
#include "platform/opengl/Shadow.h"

#include <array>
#include <cstdint>
#include <optional>

namespace ql::opengl {

/// Copies a target to frame buffer 0: scaled to its size, narrow formats rounded to their colours, and through a gamma
/// ramp. A picture that has the window's size keeps every pixel.
class Presenter {
 public:
  explicit Presenter(Shadow& shadow) : shadow_(shadow) {}
  /// @param ramp null: colours stay @param size of the window
  void draw(Target& target, device::Window::Size size, const device::GammaRamp* ramp);

 private:
  using Table = std::array<std::uint32_t, 256>;  ///< 0xXXRRGGBB for the value that a channel had
  void prepare();
  void setTable(const device::GammaRamp* ramp);

  Shadow& shadow_;
  GlProgram program_;
  GlVertexArray nothing_;  ///< the corners come from their numbers
  GlTexture table_;
  GlSampler nearest_, linear_;
  GLint limits_ = -1;
  std::optional<Table> sentTable_;
  std::array<GLint, 3> sentLimits_{};
};

}  // namespace ql::opengl
