/// @file
/// The motors of an open controller and the effects on them.
#pragma once

#include "input/EffectTable.h"
#include "platform/input/ForceFeedback.h"

#include <cstdint>
#include <map>
#include <memory>

namespace ql::input {

/// Commands, one at a time.
inline constexpr std::int32_t kMotorsReset = 1, kMotorsStopAll = 2, kMotorsPause = 4, kMotorsContinue = 8,
                              kMotorsOn = 0x10, kMotorsOff = 0x20;
/// Bits of their state.
inline constexpr std::int32_t kStateEmpty = 1, kStateStopped = 2, kStatePaused = 4, kStateOn = 0x10, kStateOff = 0x20;
inline constexpr std::uint32_t kStateLost = 0x80000000;

class PlayedEffect;

class Motors {
 public:
  explicit Motors(std::unique_ptr<ForceFeedback> device) : device_(std::move(device)) {}
  ~Motors() { device_->stopAll(); }
  Motors(const Motors&) = delete;
  Motors& operator=(const Motors&) = delete;

  bool plays(EffectKind kind) const { return (device_->kinds() & effectBit(kind)) != 0; }
  /// @throws EngineError 5 for a command that does not exist
  void command(std::int32_t command);
  std::int32_t state() const;

 private:
  friend class PlayedEffect;
  std::unique_ptr<ForceFeedback> device_;
  std::map<const PlayedEffect*, int> effects_;  ///< and the device's numbers for them
  bool paused_ = false, on_ = true;
};

/// An effect on a controller. When the controller is closed or gone, its operations do nothing.
class PlayedEffect {
 public:
  /// @throws EngineError with the device's code when it cannot play the effect or has no room for it
  PlayedEffect(const std::shared_ptr<Motors>& motors, const EffectEntry& entry, Effect effect);
  ~PlayedEffect();
  PlayedEffect(const PlayedEffect&) = delete;
  PlayedEffect& operator=(const PlayedEffect&) = delete;

  const EffectEntry& entry() const { return entry_; }
  /// @param iterations kForever or at least 1 @return whether it plays
  bool start(std::int32_t iterations);
  void stop();
  bool playing() const;
  bool change(Effect effect);

 private:
  /// Does something with the effect's number while the motors still have it.
  template <class Action>
  bool act(Action&& action) const;
  std::weak_ptr<Motors> motors_;
  const EffectEntry& entry_;
};

}  // namespace ql::input
