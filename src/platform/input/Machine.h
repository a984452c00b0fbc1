/// @file
/// The input devices of the machine: one picture of the state of all, and what they can be told.
#pragma once

#include "platform/input/ForceFeedback.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ql::input {

inline constexpr std::uint8_t kPressed = 128;  ///< a key's or button's byte; 0 when it is not pressed
inline constexpr std::int32_t kWheelNotch = 120;
inline constexpr std::size_t kMostAxes = 8, kMostButtons = 128, kMostHats = 4;  ///< of one controller

/// By scan code.
using KeyTable = std::array<std::uint8_t, 256>;

/// Running totals of the mouse's motion, and its buttons: left, right, middle, the first of the thumb.
struct MouseTotals {
  std::int32_t x = 0, y = 0;  ///< pixels, or the device's counts while it is grabbed; they wrap
  std::int32_t z = 0;         ///< the wheel, 120 a notch away from the user
  std::array<std::uint8_t, 4> buttons{};
  bool operator==(const MouseTotals&) const = default;
};

enum class ControllerKind : std::uint8_t { Joystick, Gamepad, Wheel, FlightStick, Supplement };

/// What a controller is; fixed while it is attached.
struct ControllerInfo {
  std::uint32_t id = 0;                   ///< of this attachment, never used again
  std::string product, instance;          ///< names
  std::string productGuid, instanceGuid;  ///< "{...}"; the instance's is the same when a device comes back
  ControllerKind kind = ControllerKind::Joystick;
  std::uint8_t axes = 0, buttons = 0, hats = 0;
  bool forceFeedback = false;
  bool operator==(const ControllerInfo&) const = default;
};

/// What a controller's device says, without any adjustment.
struct ControllerState {
  std::array<std::int16_t, kMostAxes> axes{};  ///< in the middle 0
  std::bitset<kMostButtons> buttons;
  std::array<std::uint8_t, kMostHats> hats{};  ///< bits: 1 up, 2 right, 4 down, 8 left
  bool operator==(const ControllerState&) const = default;
};

struct AttachedController {
  std::shared_ptr<const ControllerInfo> info;
  ControllerState state;
};

/// All devices at one moment. A key or button that was pressed and let go since the picture before counts as pressed.
struct Snapshot {
  bool focus = false;  ///< the user's input goes to this program
  KeyTable keys{};
  MouseTotals mouse;
  std::vector<AttachedController> controllers;  ///< attached ones, oldest first; empty until they were asked for

  const AttachedController* find(std::uint32_t id) const {
    for (const AttachedController& controller : controllers)
      if (controller.info->id == id) return &controller;
    return nullptr;
  }
};

/// The devices. Without focus no key and no button is pressed and the mouse stands still.
class Machine {
 public:
  virtual ~Machine() = default;
  /// Takes in the state of all devices as it is now. Window messages are pumped elsewhere.
  virtual const Snapshot& refresh() = 0;
  /// As of the last refresh.
  virtual const Snapshot& snapshot() const = 0;
  virtual bool mouseConnected() const = 0;
  /// Keeps the mouse for this program while it has the focus: the pointer disappears, motion never ends at an edge.
  virtual void grabMouse(bool on) = 0;
  /// Opens the desktop's settings of mouse and keyboard. @return false when there are none
  virtual bool showControlPanel() = 0;
  /// From now on snapshots list the controllers.
  virtual void listControllers() = 0;
  /// The motors of an attached controller; nothing when it has none.
  virtual std::unique_ptr<ForceFeedback> openForceFeedback(std::uint32_t id) = 0;
};

/// A machine without any device.
class NoMachine final : public Machine {
 public:
  const Snapshot& refresh() override { return snapshot_; }
  const Snapshot& snapshot() const override { return snapshot_; }
  bool mouseConnected() const override { return false; }
  void grabMouse(bool) override {}
  bool showControlPanel() override { return false; }
  void listControllers() override {}
  std::unique_ptr<ForceFeedback> openForceFeedback(std::uint32_t) override { return nullptr; }

 private:
  Snapshot snapshot_;
};

}  // namespace ql::input
