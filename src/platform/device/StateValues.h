/// @file
/// State values as they were set, beside the meaningful ones that draws see.
#pragma once

#include "platform/device/State.h"

#include <array>
#include <cstdint>

namespace ql::device {

/// Finds states by their numbers and keeps every value that was set, also those without a meaning, so that they can be
/// read back; only meaningful values reach the state that draws see.
class StateValues {
 public:
  /// Starts with the values of a new device. The state must outlive this object.
  explicit StateValues(State& effective);
  StateValues(const StateValues&) = delete;
  StateValues& operator=(const StateValues&) = delete;

  /// The value of a state as it was set; null when the number is no state (or the stage is none).
  const std::uint32_t* find(RenderState state) const;
  const std::uint32_t* find(std::uint32_t stage, StageState state) const;

  /// Sets a state that find knows. @return whether a value that draws see changed
  bool set(RenderState state, std::uint32_t value);
  bool set(std::uint32_t stage, StageState state, std::uint32_t value);

 private:
  static constexpr std::size_t kRenderNumbers = 172, kStageNumbers = 29;
  RenderStates render_;
  std::array<StageStates, kStageStates> stages_;
  std::array<std::uint32_t*, kRenderNumbers> renderSet_{}, renderEffective_{};
  std::array<std::array<std::uint32_t*, kStageNumbers>, kStageStates> stageSet_{}, stageEffective_{};
};

}  // namespace ql::device
