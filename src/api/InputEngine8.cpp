#include "api/Collections.h"
#include "api/Guard.h"
#include "api/InputObjects.h"
#include "api/Numbers.h"

#include <Quasarlens3D/InputEngine8.h>

#include <utility>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using Detail::InputEngineObject;

namespace {

std::shared_ptr<InputEngineObject> createInputEngine() {
  auto made = api::create<InputEngineObject>();
  if (!made->engine.controllers()) return made;
  made->controllers = std::make_shared<Detail::GameControllersObject>();
  made->controllers->controllers = made->engine.controllers();
  made->controllers->parent = made;
  made->cursors = std::make_shared<Detail::MouseCursorsObject>();
  made->cursors->parent = made;
  return made;
}

}  // namespace

InputEngine8::InputEngine8() : Handle(createInputEngine()) {}
InputEngine8::InputEngine8(std::nullptr_t) noexcept : Handle(nullptr) {}

Boolean InputEngine8::IsKeyPressed(std::int32_t Key) const {
  return call(*this, [&](InputEngineObject& self) { return Boolean(self.engine.isKeyPressed(Key)); });
}
void InputEngine8::GetMouseState(ByRef<std::int32_t> mx, ByRef<std::int32_t> my, ByRef<std::int16_t> b1,
                                 ByRef<std::int16_t> b2, ByRef<std::int16_t> b3,
                                 ByRef<std::int32_t> IntelliMouseRoll) const {
  call(*this, [&](InputEngineObject& self) {
    const input::InputState& state = self.engine.state();
    *mx = state.relativeX;
    *my = state.relativeY;
    *b1 = state.mouseRaw.buttons[0];
    *b2 = state.mouseRaw.buttons[1];
    *b3 = state.mouseRaw.buttons[2];
    *IntelliMouseRoll = state.mouseRaw.z;
  });
}
void InputEngine8::GetAbsMouseState(ByRef<std::int32_t> mx, ByRef<std::int32_t> my, ByRef<std::int16_t> b1,
                                    ByRef<std::int16_t> b2) const {
  call(*this, [&](InputEngineObject& self) {
    const input::InputState& state = self.engine.state();
    *mx = state.absoluteX;
    *my = state.absoluteY;
    *b1 = state.mouseRaw.buttons[0];
    *b2 = state.mouseRaw.buttons[1];
  });
}
void InputEngine8::SetMousePosition(std::int32_t x, std::int32_t y) {
  call(*this, [&](InputEngineObject& self) { self.engine.setMousePosition(x, y); });
}
std::int32_t InputEngine8::MouseSensitivity() const {
  return call(*this, [](InputEngineObject& self) { return self.engine.mouseSensitivity; });
}
void InputEngine8::MouseSensitivity(std::int32_t Sens) {
  call(*this, [&](InputEngineObject& self) { self.engine.mouseSensitivity = Sens; });
}
void InputEngine8::SetMouseSensitivity(float Sens) {
  call(*this,
       [&](InputEngineObject& self) { self.engine.mouseSensitivity = api::toInteger(static_cast<double>(Sens)); });
}

void InputEngine8::ReAcquire(Boolean bKeyboard, Boolean bMouse) {
  call(*this, [&](InputEngineObject& self) { self.engine.reAcquire(bKeyboard, bMouse); });
}
void InputEngine8::UnloadDevices() {
  call(*this, [](InputEngineObject& self) { self.engine.unloadDevices(); });
}
void InputEngine8::ShowControlPanel(std::intptr_t /*hwnd*/) {
  call(*this, [](InputEngineObject& self) { self.engine.showControlPanel(); });
}
Boolean InputEngine8::IsMouseConnected() const {
  return call(*this, [](InputEngineObject& self) { return Boolean(self.engine.isMouseConnected()); });
}

GameControllers8 InputEngine8::GameControllers() const {
  return call(*this, [](InputEngineObject& self) { return Access::make<GameControllers8>(self.controllers); });
}
MouseCursors8 InputEngine8::MouseCursors() const {
  return call(*this, [](InputEngineObject& self) { return Access::make<MouseCursors8>(self.cursors); });
}
SurfaceObject InputEngine8::MouseCursor() const {
  return call(*this, [](InputEngineObject& self) { return api::wrapSurface(self.cursor); });
}
void InputEngine8::SetMouseCursor(const MouseCursor8& CurrentMouseCursor) {
  call(*this, [&](InputEngineObject& self) { self.cursor = Access::live(CurrentMouseCursor).surface; });
}
Boolean InputEngine8::CreateMouseCursorFromFile(const std::string& /*file*/) {
  return call(*this, [](InputEngineObject&) { return True; });
}
void InputEngine8::RenderMouse() {
  call(*this, [](InputEngineObject&) {});
}

}  // namespace Quasarlens3D
