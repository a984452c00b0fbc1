/// @file
/// Joysticks and gamepads through SDL.
#pragma once

#include "platform/input/Machine.h"

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

struct _SDL_Joystick;  // NOLINT(bugprone-reserved-identifier): the name is not ours

namespace ql::input {

/// A button that went down.
struct ButtonTap {
  std::uint32_t controller;
  std::uint8_t button;
};

/// The attached controllers. All are kept open while they are attached.
class SdlControllers {
 public:
  SdlControllers() = default;
  SdlControllers(const SdlControllers&) = delete;
  SdlControllers& operator=(const SdlControllers&) = delete;

  /// Starts SDL's part; a second time does nothing.
  void start();
  /// Lets the devices tell what happened to them, and takes in those that came or went.
  void update();
  /// Writes the controllers as they are now. @param taps buttons that count as pressed
  void read(std::vector<AttachedController>& out, std::span<const ButtonTap> taps) const;
  std::unique_ptr<ForceFeedback> openForceFeedback(std::uint32_t id) const;

 private:
  struct Device {
    std::shared_ptr<_SDL_Joystick> joystick;
    std::shared_ptr<const ControllerInfo> info;
    std::size_t ordinal = 0;  ///< among devices of the same product
  };
  void attach(int index, std::uint32_t id);

  std::shared_ptr<void> subsystem_;  ///< SDL's part, once it is started; every open joystick keeps it, too
  bool queueIsOurs_ = false;
  std::map<std::uint32_t, Device> devices_;  ///< by SDL's instance number
};

}  // namespace ql::input
