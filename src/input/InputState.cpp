#include "input/InputState.h"

#include "engine/PointerState.h"
#include "input/Controllers.h"
#include "input/Sessions.h"

#include <utility>

namespace ql::input {
namespace {

/// The absolute position along one axis. At an edge the offset moves along, so that turning back acts at once.
std::int32_t clamped(std::int32_t raw, std::int32_t& offset, std::int32_t size) {
  const std::int32_t position = difference(raw, offset);
  if (position < 0) {
    offset = raw;
    return 0;
  }
  if (position > size) {
    offset = difference(raw, size);
    return size;
  }
  return position;
}

void endFrame(engine::EngineContext& context) {
  InputState& state = context.get<InputState>();
  if (state.ready)
    sampleInput(context);
  else if (!state.controllers.expired())
    refreshInput(context);
  endSessionFrame(context);
}

}  // namespace

void startInput(engine::EngineContext& context, std::shared_ptr<Machine> machine) {
  if (machine) context.get<InputState>().machine = std::move(machine);
  context.frameSteps.add(engine::FrameStage::Input, [&context] { endFrame(context); });
  context.releaseSteps.add(engine::ReleaseStage::Materials, [&context] {
    stopSession(context);
    context.get<InputState>().machine->grabMouse(false);
    context.get<InputState>().ready = false;
  });
}

const Snapshot& refreshInput(engine::EngineContext& context) {
  InputState& state = context.get<InputState>();
  const Snapshot& now = state.machine->refresh();
  for (std::size_t i = 0; i < now.keys.size(); ++i) state.pressedKeys[i] |= now.keys[i];
  for (std::size_t i = 0; i < now.mouse.buttons.size(); ++i) state.pressedButtons[i] |= now.mouse.buttons[i];
  if (const std::shared_ptr<Controllers> controllers = state.controllers.lock()) controllers->notice(now);
  return now;
}

void pumpedMessages(engine::EngineContext& context) {
  if (!context.get<InputState>().controllers.expired()) refreshInput(context);
}

void sampleInput(engine::EngineContext& context) {
  InputState& state = context.get<InputState>();
  const Snapshot& now = refreshInput(context);
  const bool heard = now.focus || !state.foregroundOnly;
  if (state.keyboardAcquired) state.keyState = heard ? state.pressedKeys : KeyTable{};
  if (state.mouseAcquired && heard) {
    state.mouseRaw = now.mouse;
    state.mouseRaw.buttons = state.pressedButtons;
  } else {
    state.mouseRaw.buttons = {};
  }
  state.pressedKeys = {};
  state.pressedButtons = {};
  state.absoluteX =
      clamped(state.mouseRaw.x, state.offsetX, static_cast<std::int32_t>(context.presentParameters.backBufferWidth));
  state.absoluteY =
      clamped(state.mouseRaw.y, state.offsetY, static_cast<std::int32_t>(context.presentParameters.backBufferHeight));
  state.relativeX = difference(state.mouseRaw.x, std::exchange(state.previousX, state.mouseRaw.x));
  state.relativeY = difference(state.mouseRaw.y, std::exchange(state.previousY, state.mouseRaw.y));
  publishPointer(context);
}

void replaceMachine(engine::EngineContext& context, std::shared_ptr<Machine> machine) {
  InputState& state = context.get<InputState>();
  const MouseTotals before = state.machine->snapshot().mouse, now = machine->snapshot().mouse;
  state.machine = std::move(machine);
  const std::int32_t x = difference(now.x, before.x), y = difference(now.y, before.y);
  for (std::int32_t* value : {&state.mouseRaw.x, &state.offsetX, &state.previousX}) *value = difference(*value, -x);
  for (std::int32_t* value : {&state.mouseRaw.y, &state.offsetY, &state.previousY}) *value = difference(*value, -y);
}

void publishPointer(engine::EngineContext& context) {
  const InputState& state = context.get<InputState>();
  context.get<engine::PointerState>() = {state.absoluteX, state.absoluteY, true};
}

}  // namespace ql::input
