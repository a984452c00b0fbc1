/// @file
/// Keyboard, mouse and controllers for a host.
#pragma once

#include "engine/EngineContext.h"
#include "input/Controllers.h"
#include "input/InputState.h"

#include <cstdint>
#include <memory>

namespace ql::input {

class InputEngine {
 public:
  /// Takes hold of keyboard and mouse. Without a 3D device a message box and the log say so, and nothing is set up.
  explicit InputEngine(engine::EngineContext& context, Controllers::Factory factory = {});
  /// Lets the devices go, unless another input engine has them by now.
  ~InputEngine();
  InputEngine(const InputEngine&) = delete;
  InputEngine& operator=(const InputEngine&) = delete;

  /// @throws EngineError 9 outside 0 to 255
  bool isKeyPressed(std::int32_t key) const;
  const InputState& state() const { return state_; }
  /// Makes a place the pointer's; motion goes on from there.
  void setMousePosition(std::int32_t x, std::int32_t y);
  /// Takes the devices anew, shared with other programs; those not asked for stay let go.
  void reAcquire(bool keyboard, bool mouse);
  void unloadDevices();
  void showControlPanel();
  bool isMouseConnected() const;
  /// Nothing when creation failed.
  const std::shared_ptr<Controllers>& controllers() const { return controllers_; }

  std::int32_t mouseSensitivity = 0;  ///< stored only; 1 after creation

 private:
  void setUp(Controllers::Factory factory);

  engine::EngineContext& context_;
  InputState& state_;
  bool hasDevices_ = false;
  std::shared_ptr<Controllers> controllers_;
};

}  // namespace ql::input
