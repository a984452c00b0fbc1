/// @file
/// One game controller.
#pragma once

#include "engine/EngineContext.h"
#include "input/Motors.h"
#include "platform/input/Machine.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ql::input {

/// What a host reads of a controller. Axes: x, y, z, their rotations, two sliders; what the controller lacks stays 0.
struct JoyState {
  std::array<std::int32_t, kMostAxes> axes{};
  std::array<std::int32_t, kMostHats> hats{};  ///< hundredths of a degree clockwise from ahead; -1 in the middle
  std::array<std::uint8_t, kMostButtons> buttons{};
};

/// The capabilities of an open controller.
struct ControllerCaps {
  std::int32_t flags = 0;  ///< 1 attached, 256 force feedback
  std::int32_t type = 0, axes = 0, buttons = 0, hats = 0;
};

/// Bits of a cooperative level: one of the first two with one of the others.
inline constexpr std::int32_t kExclusive = 1, kNonExclusive = 2, kForeground = 4, kBackground = 8;

class Controller {
 public:
  Controller(engine::EngineContext& context, std::shared_ptr<const ControllerInfo> info);
  virtual ~Controller() = default;
  Controller(const Controller&) = delete;
  Controller& operator=(const Controller&) = delete;

  const ControllerInfo& info() const { return *info_; }
  /// The device type's number: 20 joystick, 21 gamepad, 22 wheel, 23 flight stick, 28 other.
  std::int32_t type() const;
  /// 4 joystick, 5 gamepad.
  std::int16_t usage() const { return info_->kind == ControllerKind::Gamepad ? 5 : 4; }
  bool inUse() const { return inUse_; }

  /// Opens the device and sets its dead zones and ranges. @throws EngineError 5 for an impossible level, with the
  /// device's code when it is not attached
  void initialize(std::int32_t cooperativeLevel);
  /// Closes it. @return whether it was open
  bool unload();
  /// Takes in the device's state. A device that was lost is taken up again when it is back.
  /// @return whether the state was read
  bool update();
  bool isConnected() const;

  const JoyState& state() const { return state_; }
  const ControllerCaps& caps() const { return caps_; }
  const std::array<bool, kMostAxes>& axes() const { return axesPresent_; }

  /// The effects that the open device can play. @param type one of the filters
  std::vector<const EffectEntry*> effectsOf(std::int32_t type) const;
  /// Nothing when the device is not open. @throws EngineError with the device's code when it has no such effect
  std::shared_ptr<PlayedEffect> createEffect(const std::string& guid, const Effect& effect);
  /// As createEffect, with forces of the host's. @param samplePeriod microseconds @param samples of each channel
  /// @throws EngineError 5 for other channels than 1 or 2, 9 when there is less data
  std::shared_ptr<PlayedEffect> createCustomEffect(Effect effect, std::int32_t channels, std::int32_t samplePeriod,
                                                   std::int32_t samples, std::span<const std::int32_t> data);
  /// Nothing when the device is not open. @throws EngineError 5 for a command that does not exist
  void command(std::int32_t command);
  std::int32_t motorsState() const;

 private:
  /// The device's attachment in the last snapshot.
  const AttachedController* attachment() const;
  void open(const AttachedController& attached);
  void read(const ControllerState& raw);

  engine::EngineContext& context_;
  std::shared_ptr<const ControllerInfo> info_;
  bool inUse_ = false, lost_ = false;
  std::int32_t cooperativeLevel_ = 0;
  std::uint32_t attachmentId_ = 0;
  std::array<bool, kMostAxes> axesPresent_{};
  JoyState state_;
  ControllerCaps caps_;
  std::shared_ptr<Motors> motors_;
};

}  // namespace ql::input
