#include "api/Collections.h"
#include "api/Guard.h"
#include "api/InputObjects.h"

#include <Quasarlens3D/InputEngine8.h>

#include <utility>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using Detail::MouseCursorObject;
using Detail::MouseCursorsObject;

MouseCursor8::MouseCursor8() : Handle(api::create<MouseCursorObject>()) {}
MouseCursor8::MouseCursor8(std::nullptr_t) noexcept : Handle(nullptr) {}

std::string MouseCursor8::Key() const {
  return call(*this, [](MouseCursorObject& self) { return self.key; });
}
void MouseCursor8::Key(const std::string& Name) {
  call(*this, [&](MouseCursorObject& self) { self.key = Name; });
}
SurfaceObject MouseCursor8::MCursor() const {
  return call(*this, [](MouseCursorObject& self) { return api::wrapSurface(self.surface); });
}
void MouseCursor8::MCursor(const SurfaceObject& Surface) {
  call(*this, [&](MouseCursorObject& self) { self.surface = api::surfaceOf(Surface); });
}
MouseCursors8 MouseCursor8::Parent() const {
  return call(*this, [](MouseCursorObject& self) { return Access::make<MouseCursors8>(self.parent.lock()); });
}

MouseCursors8::MouseCursors8() noexcept = default;
MouseCursors8::MouseCursors8(std::nullptr_t) noexcept : Handle(nullptr) {}

MouseCursor8 MouseCursors8::Add(const SurfaceObject& MCursor, const std::string& Key) {
  return call(*this, [&](MouseCursorsObject& self) {
    auto made = std::make_shared<MouseCursorObject>();
    made->key = Key;
    made->surface = api::surfaceOf(MCursor);
    made->parent = Access::pointer(*this);
    self.list.add(made, Key);
    return Access::make<MouseCursor8>(std::move(made));
  });
}
std::int32_t MouseCursors8::Count() const {
  return call(*this, [](MouseCursorsObject& self) { return self.list.count(); });
}
MouseCursor8 MouseCursors8::Item(std::int32_t Index) const {
  return call(*this, [&](MouseCursorsObject& self) { return Access::make<MouseCursor8>(self.list.at(Index)); });
}
MouseCursor8 MouseCursors8::Item(const std::string& Key) const {
  return call(*this, [&](MouseCursorsObject& self) { return Access::make<MouseCursor8>(self.list.at(Key)); });
}
void MouseCursors8::Remove(std::int32_t Index) {
  call(*this, [&](MouseCursorsObject& self) { self.list.remove(Index); });
}
void MouseCursors8::Remove(const std::string& Key) {
  call(*this, [&](MouseCursorsObject& self) { self.list.remove(Key); });
}
void MouseCursors8::Clear() {
  call(*this, [](MouseCursorsObject& self) { self.list.clear(); });
}
std::vector<MouseCursor8> MouseCursors8::NewEnum() const {
  return call(*this, [](MouseCursorsObject& self) { return api::wrapAll<MouseCursor8>(self.list.items()); });
}
InputEngine8 MouseCursors8::Parent() const {
  return call(*this, [](MouseCursorsObject& self) { return Access::make<InputEngine8>(self.parent.lock()); });
}

}  // namespace Quasarlens3D
