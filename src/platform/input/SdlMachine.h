/// @file
/// The machine's input devices through SDL.
#pragma once

#include "platform/input/Machine.h"
#include "platform/input/SdlControllers.h"
#include "platform/input/XPointer.h"

#include <bitset>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

union SDL_Event;

namespace ql::input {

/// Learns from SDL's events, whoever pumps them, what keys and buttons do; an X server is asked for the pointer, too,
/// since windows of a host keep some events to themselves.
class SdlMachine final : public Machine {
 public:
  /// Nothing when SDL cannot start.
  static std::unique_ptr<SdlMachine> open();
  ~SdlMachine() override;
  SdlMachine(const SdlMachine&) = delete;
  SdlMachine& operator=(const SdlMachine&) = delete;

  const Snapshot& refresh() override;
  const Snapshot& snapshot() const override { return snapshot_; }
  bool mouseConnected() const override;
  void grabMouse(bool on) override { grab_ = on; }
  bool showControlPanel() override;
  void listControllers() override { controllers_.start(); }
  std::unique_ptr<ForceFeedback> openForceFeedback(std::uint32_t id) override {
    return controllers_.openForceFeedback(id);
  }

 private:
  static constexpr std::size_t kPlaces = 512, kButtons = 4;  ///< of keys, by SDL's number; of mouse buttons
  /// What events told. "Tapped" is what went down since the last refresh.
  struct Told {
    std::bitset<kPlaces> keys, tappedKeys;
    std::bitset<kButtons> buttons, tappedButtons;
    std::int32_t motionX = 0, motionY = 0;
    double wheel = 0;  ///< notches
    std::vector<ButtonTap> controllerButtons;
  };

  SdlMachine();
  static int watch(void* self, SDL_Event* event);
  void take(const SDL_Event& event);
  Told takeTold();
  void refreshKeys(const Told& told);
  void refreshMouse(const Told& told);
  void followGrab();
  XPointer* pointer();

  std::mutex mutex_;  ///< of told_: a host may push events from any thread
  Told told_;
  Snapshot snapshot_;
  SdlControllers controllers_;
  bool grab_ = false, grabbed_ = false;
  bool pointerSought_ = false;
  std::unique_ptr<XPointer> pointer_;  ///< where the display is an X server
  double wheelRest_ = 0;               ///< of a unit
};

}  // namespace ql::input
