/// @file
/// The demo walk in OpenGL 3.3 as one would write it for this walk alone.
#pragma once

#include "Frames.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ql::bench {

/// Draws the faces of each frame in their order: one vertex buffer, two programs, a change of state where the frame has
/// one, and neighbouring faces of one texture in one call. It knows the walk's few states beforehand.
class ByHand {
 public:
  /// @throws std::runtime_error when the walk has a state that it does not know
  explicit ByHand(const Walk& walk);
  ~ByHand();
  ByHand(const ByHand&) = delete;
  ByHand& operator=(const ByHand&) = delete;
  /// Draws a frame and waits for its first pixel.
  void frame(std::size_t index);
  /// 0xAARRGGBB, rows from the top.
  std::vector<std::uint32_t> picture();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ql::bench
