#include "input/InputEngine.h"

#include <utility>

namespace ql::input {
namespace {

constexpr char kTooEarly[] = "The Input Engine methods can't be called before the 3D Engine Init !";

void restartMouse(InputState& state, const MouseTotals& now) {
  state.mouseRaw = now;
  state.offsetX = state.previousX = now.x;
  state.offsetY = state.previousY = now.y;
}

}  // namespace

InputEngine::InputEngine(engine::EngineContext& context, Controllers::Factory factory)
    : context_(context), state_(context.get<InputState>()) {
  context.log.write("INPUT : Global initialization");
  if (!context.deviceReady) {
    context.platform.display->messageBox("ERROR QL8", kTooEarly);
    context.log.write("INPUT ERROR : The 3D engine must be initialized before.");
    return;
  }
  try {
    setUp(std::move(factory));
  } catch (...) {
    const engine::EngineError error = engine::currentError();
    context.log.write(std::string("INPUT ERROR : Class_Initialize (") + error.what() + " error " +
                      std::to_string(error.number) + ")");
  }
}

void InputEngine::setUp(Controllers::Factory factory) {
  state_.ready = false;
  state_.owner = this;
  hasDevices_ = true;
  const bool exclusive = context_.fullScreen;
  state_.foregroundOnly = exclusive;
  state_.keyState = state_.pressedKeys = {};
  state_.pressedButtons = {};
  if (exclusive) context_.log.write("INPUT : Key Exclusive ");
  state_.keyboardAcquired = true;
  context_.log.write("INPUT : Keyboard Acquired");

  if (exclusive) context_.log.write("INPUT : Mouse Exclusive");
  state_.machine->grabMouse(exclusive);
  state_.mouseAcquired = true;
  restartMouse(state_, refreshInput(context_).mouse);
  state_.absoluteX = state_.absoluteY = state_.relativeX = state_.relativeY = 0;
  publishPointer(context_);
  context_.log.write("INPUT : ABS Mouse Acquired");

  controllers_ = std::make_shared<Controllers>(context_, std::move(factory));
  state_.controllers = controllers_;
  mouseSensitivity = 1;
  state_.ready = true;
}

InputEngine::~InputEngine() {
  controllers_.reset();
  if (state_.owner != this) return;
  unloadDevices();
  state_.owner = nullptr;
  state_.ready = false;
}

bool InputEngine::isKeyPressed(std::int32_t key) const {
  if (key < 0 || static_cast<std::size_t>(key) >= state_.keyState.size())
    throw engine::EngineError(engine::kSubscript, "no scan code: " + std::to_string(key));
  return state_.keyState[static_cast<std::size_t>(key)] != 0;
}

void InputEngine::setMousePosition(std::int32_t x, std::int32_t y) {
  state_.absoluteX = x;
  state_.absoluteY = y;
  state_.offsetX = difference(state_.mouseRaw.x, x);
  state_.offsetY = difference(state_.mouseRaw.y, y);
  if (state_.ready) publishPointer(context_);
}

void InputEngine::reAcquire(bool keyboard, bool mouse) {
  if (!hasDevices_) return;
  unloadDevices();
  state_.foregroundOnly = context_.focusWindow == nullptr;
  state_.keyboardAcquired = keyboard;
  state_.mouseAcquired = mouse;
  if (mouse) restartMouse(state_, refreshInput(context_).mouse);
}

void InputEngine::unloadDevices() {
  state_.machine->grabMouse(false);
  state_.keyboardAcquired = state_.mouseAcquired = false;
  state_.keyState = {};
  state_.mouseRaw.buttons = {};
}

void InputEngine::showControlPanel() {
  if (hasDevices_ && !state_.machine->showControlPanel())
    context_.log.write("INPUT : This desktop has no control panel for mouse and keyboard");
}

bool InputEngine::isMouseConnected() const { return hasDevices_ && state_.machine->mouseConnected(); }

}  // namespace ql::input
