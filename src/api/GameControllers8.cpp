#include "api/Collections.h"
#include "api/InputObjects.h"

#include <Quasarlens3D/InputEngine8.h>

#include <memory>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using Detail::GameControllerObject;
using Detail::GameControllersObject;

namespace {

GameController8 wrap(const std::shared_ptr<input::Controller>& controller) {
  return Access::make<GameController8>(std::static_pointer_cast<GameControllerObject>(controller));
}

}  // namespace

GameControllers8::GameControllers8() noexcept = default;
GameControllers8::GameControllers8(std::nullptr_t) noexcept : Handle(nullptr) {}

void GameControllers8::GetControllers() {
  call(*this, [](GameControllersObject& self) { self.controllers->enumerate(); });
}
std::int32_t GameControllers8::Count() const {
  return call(*this, [](GameControllersObject& self) { return self.controllers->list().count(); });
}
GameController8 GameControllers8::Item(std::int32_t Index) const {
  return call(*this, [&](GameControllersObject& self) { return wrap(self.controllers->list().at(Index)); });
}
GameController8 GameControllers8::Item(const std::string& Key) const {
  return call(*this, [&](GameControllersObject& self) { return wrap(self.controllers->list().at(Key)); });
}
void GameControllers8::Remove(std::int32_t Index) {
  call(*this, [&](GameControllersObject& self) { self.controllers->list().remove(Index); });
}
void GameControllers8::Remove(const std::string& Key) {
  call(*this, [&](GameControllersObject& self) { self.controllers->list().remove(Key); });
}
void GameControllers8::Clear() {
  call(*this, [](GameControllersObject& self) { self.controllers->list().clear(); });
}
std::vector<GameController8> GameControllers8::NewEnum() const {
  return call(*this, [](GameControllersObject& self) {
    std::vector<GameController8> handles;
    handles.reserve(static_cast<std::size_t>(self.controllers->list().count()));
    for (const auto& controller : self.controllers->list().items()) handles.push_back(wrap(controller));
    return handles;
  });
}
InputEngine8 GameControllers8::Parent() const {
  return call(*this, [](GameControllersObject& self) { return Access::make<InputEngine8>(self.parent.lock()); });
}

}  // namespace Quasarlens3D

namespace ql::api {

void raiseControllerChanges() {
  // Kept, since the engine may end in a handler; its controllers keep their context.
  const std::shared_ptr<input::Controllers> controllers = context()->get<input::InputState>().controllers.lock();
  if (!controllers) return;
  for (const std::shared_ptr<input::Controller>& controller : guard([&] { return controllers->due(); }))
    if (guard([&] { return controller->update(); }))
      Access::raise(static_cast<Quasarlens3D::Detail::GameControllerObject&>(*controller).change);
}

}  // namespace ql::api
