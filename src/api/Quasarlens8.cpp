#include "api/Guard.h"
#include "api/InputObjects.h"
#include "engine/Engine.h"
#include "input/InputState.h"

#include <Quasarlens3D/Quasarlens8.h>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using Detail::EngineObject;

Quasarlens8::Quasarlens8() : Handle(api::create<EngineObject>()) {}
Quasarlens8::Quasarlens8(std::nullptr_t) noexcept : Handle(nullptr) {}

Boolean Quasarlens8::Console() const {
  return call(*this, [](EngineObject& self) { return self.context->console; });
}
void Quasarlens8::Console(Boolean OnOff) {
  call(*this, [&](EngineObject& self) { self.context->console = OnOff; });
}
Boolean Quasarlens8::DisplayFPS() const {
  return call(*this, [](EngineObject& self) { return self.context->displayFps; });
}
void Quasarlens8::DisplayFPS(Boolean OnOff) {
  call(*this, [&](EngineObject& self) { self.context->displayFps = OnOff; });
}

void Quasarlens8::EnableHardwareTL(Boolean OnOff) {
  call(*this, [&](EngineObject& self) { engine::enableHardwareTransform(*self.context, OnOff); });
}

void Quasarlens8::GetVideoMode(ByRef<std::int32_t> width, ByRef<std::int32_t> height,
                               ByRef<std::int32_t> Format) const {
  call(*this, [&](EngineObject& self) {
    const device::PresentParameters& parameters = self.context->presentParameters;
    *width = static_cast<std::int32_t>(parameters.backBufferWidth);
    *height = static_cast<std::int32_t>(parameters.backBufferHeight);
    *Format = static_cast<std::int32_t>(parameters.backBufferFormat);
  });
}

void Quasarlens8::Init3DFullscreen(std::int32_t width, std::int32_t height, std::int32_t BPP) {
  SetEngineMode(width, height, BPP, True);
  Initialize(engine::kFullScreen);
}
Boolean Quasarlens8::Init3DWindowedMode(std::intptr_t formHandle) { return Initialize(formHandle); }
Boolean Quasarlens8::InitCurrentVideoMode() { return Initialize(engine::kFullScreen); }
Boolean Quasarlens8::Initialize(std::intptr_t hwnd) {
  return call(*this, [&](EngineObject& self) { return engine::initialize(*self.context, hwnd); });
}

Boolean Quasarlens8::ResizeDevice() {
  const bool acted = call(*this, [](EngineObject& self) { return engine::resizeDevice(*self.context); });
  // Outside the guard: what a handler throws is the host's own.
  if (acted) Access::raise(Access::live(*this).restoreObjectsAfterResize);
  return acted;
}
void Quasarlens8::ResetDevice() {
  call(*this, [](EngineObject& self) { engine::resetDevice(*self.context); });
}
void Quasarlens8::SetEngineMode(std::int32_t width, std::int32_t height, std::int32_t BPP, Boolean Hardware,
                                std::int16_t Adapter) {
  call(*this, [&](EngineObject& self) { engine::setEngineMode(*self.context, width, height, BPP, Hardware, Adapter); });
}

Boolean Quasarlens8::ShowDriverDialog() {
  return call(*this, [](EngineObject& self) { return engine::showDriverDialog(*self.context); });
}

void Quasarlens8::Clear() {
  call(*this, [](EngineObject& self) { engine::clear(*self.context); });
}
void Quasarlens8::RenderToScreen() {
  call(*this, [](EngineObject& self) { engine::renderToScreen(*self.context); });
  api::raiseControllerChanges();
}
float Quasarlens8::GetFPS() const {
  return call(*this, [](EngineObject& self) { return self.context->framesPerSecond; });
}
std::int32_t Quasarlens8::TimeElapsed() const {
  return call(*this, [](EngineObject& self) { return self.context->elapsedMs; });
}
std::int32_t Quasarlens8::TickCount() const {
  return call(*this, [](EngineObject& self) { return static_cast<std::int32_t>(self.context->ticks()); });
}
void Quasarlens8::Pause(std::int32_t milliseconds) {
  const auto pump = [&](EngineObject& self) {
    const bool reached = engine::pauseStep(*self.context, milliseconds);
    input::pumpedMessages(*self.context);
    return reached;
  };
  for (bool reached = false; !reached;) {
    reached = call(*this, pump);
    api::raiseControllerChanges();
  }
}
void Quasarlens8::ScreenShot(const std::string& file) {
  call(*this, [&](EngineObject& self) { engine::screenShot(*self.context, file); });
}
void Quasarlens8::SetWindowTitle(const std::string& Title) {
  call(*this, [&](EngineObject& self) { engine::internalWindow(*self.context).setTitle(Title); });
}
void Quasarlens8::Start2D() {
  call(*this, [](EngineObject& self) { engine::start2D(*self.context); });
}

void Quasarlens8::OpenPAKFile(const std::string& Filename) {
  call(*this, [&](EngineObject& self) { self.context->pak.open(Filename); });
}
void Quasarlens8::ClosePAKFile() {
  call(*this, [](EngineObject& self) { self.context->pak.close(); });
}
void Quasarlens8::SetSearchDirectory(ByRef<std::string> Path) {
  call(*this, [&](EngineObject& self) { self.context->pak.setSearchDirectory(*Path); });
}

Boolean Quasarlens8::CloseRequested() const {
  return call(*this, [](EngineObject& self) {
    return self.context->focusWindow && self.context->focusWindow->closeRequested();
  });
}

Event<>& Quasarlens8::RestoreObjectsAfterResize() const {
  return call(*this, [](EngineObject& self) -> Event<>& { return self.restoreObjectsAfterResize; });
}

}  // namespace Quasarlens3D
