/// @file
/// Effects in SDL's terms.
#pragma once

#include "platform/input/ForceFeedback.h"

#include <cstdint>
#include <vector>

#include <SDL_haptic.h>

namespace ql::input {

/// Bits of our kinds for what SDL says of a device.
std::uint32_t kindsOf(unsigned supported);

/// An effect as SDL takes it. What exceeds SDL's ranges is clamped to them.
struct SdlEffect {
  explicit SdlEffect(const Effect& effect);
  SDL_HapticEffect value{};
  std::vector<std::uint16_t> samples;  ///< that value points to
  SdlEffect(const SdlEffect&) = delete;
  SdlEffect& operator=(const SdlEffect&) = delete;
};

}  // namespace ql::input
