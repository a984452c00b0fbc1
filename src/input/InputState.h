/// @file
/// What the frame loop and the input engine share.
#pragma once

#include "engine/EngineContext.h"
#include "platform/input/Machine.h"

#include <array>
#include <cstdint>
#include <memory>

namespace ql::input {

class Controllers;

/// The sampled state: context.get<InputState>().
struct InputState {
  std::shared_ptr<Machine> machine = std::make_shared<NoMachine>();
  bool ready = false;           ///< an input engine works: devices are sampled every frame
  const void* owner = nullptr;  ///< the input engine that made the devices
  std::weak_ptr<Controllers> controllers;

  bool keyboardAcquired = false, mouseAcquired = false;
  bool foregroundOnly = false;  ///< devices are silent without focus
  KeyTable keyState{};
  MouseTotals mouseRaw;
  std::int32_t offsetX = 0, offsetY = 0;      ///< mouseRaw minus these is the absolute position
  std::int32_t previousX = 0, previousY = 0;  ///< mouseRaw of the sample before
  std::int32_t absoluteX = 0, absoluteY = 0;  ///< clamped to the back buffer
  std::int32_t relativeX = 0, relativeY = 0;  ///< since the sample before

  /// What was pressed at any refresh since the last sample.
  KeyTable pressedKeys{};
  std::array<std::uint8_t, 4> pressedButtons{};
};

/// Joins input to an engine: sampling after each presented frame, sessions. Call it once per context.
void startInput(engine::EngineContext& context, std::shared_ptr<Machine> machine);
/// Takes in the devices as they are now and notifies the controllers.
const Snapshot& refreshInput(engine::EngineContext& context);
/// Refreshes unless nobody needs it; for whoever pumped messages outside a frame.
void pumpedMessages(engine::EngineContext& context);
/// One sample of keyboard and mouse.
void sampleInput(engine::EngineContext& context);
/// Goes on with other devices; the mouse stands where it stood.
void replaceMachine(engine::EngineContext& context, std::shared_ptr<Machine> machine);
/// Writes down where the pointer is.
void publishPointer(engine::EngineContext& context);

/// The difference of two totals, which may have wrapped.
inline std::int32_t difference(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

}  // namespace ql::input
