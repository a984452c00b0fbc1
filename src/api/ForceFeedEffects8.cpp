#include "api/Collections.h"
#include "api/InputObjects.h"

#include <Quasarlens3D/GameController8.h>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using Detail::ForceFeedEffectObject;
using Detail::ForceFeedEffectsObject;

ForceFeedEffect8::ForceFeedEffect8() noexcept = default;
ForceFeedEffect8::ForceFeedEffect8(std::nullptr_t) noexcept : Handle(nullptr) {}

std::string ForceFeedEffect8::Key() const { return EffectName(); }
ForceFeedEffects8 ForceFeedEffect8::Parent() const {
  return call(*this, [](ForceFeedEffectObject& self) { return Access::make<ForceFeedEffects8>(self.parent.lock()); });
}
std::string ForceFeedEffect8::EffectName() const {
  return call(*this, [](ForceFeedEffectObject& self) { return std::string(self.entry->name); });
}
std::string ForceFeedEffect8::Guid() const {
  return call(*this, [](ForceFeedEffectObject& self) { return std::string(self.entry->guid); });
}
std::int32_t ForceFeedEffect8::EffectType() const {
  return call(*this, [](ForceFeedEffectObject& self) { return self.entry->type; });
}
std::int32_t ForceFeedEffect8::StaticParams() const {
  return call(*this, [](ForceFeedEffectObject& self) { return input::effectParameters(*self.entry); });
}
std::int32_t ForceFeedEffect8::DynamicParams() const { return StaticParams(); }

ForceFeedEffects8::ForceFeedEffects8() noexcept = default;
ForceFeedEffects8::ForceFeedEffects8(std::nullptr_t) noexcept : Handle(nullptr) {}

std::int32_t ForceFeedEffects8::Count() const {
  return call(*this, [](ForceFeedEffectsObject& self) { return self.list.count(); });
}
ForceFeedEffect8 ForceFeedEffects8::Item(std::int32_t Index) const {
  return call(*this, [&](ForceFeedEffectsObject& self) { return Access::make<ForceFeedEffect8>(self.list.at(Index)); });
}
ForceFeedEffect8 ForceFeedEffects8::Item(const std::string& Key) const {
  return call(*this, [&](ForceFeedEffectsObject& self) { return Access::make<ForceFeedEffect8>(self.list.at(Key)); });
}
void ForceFeedEffects8::Remove(std::int32_t Index) {
  call(*this, [&](ForceFeedEffectsObject& self) { self.list.remove(Index); });
}
void ForceFeedEffects8::Remove(const std::string& Key) {
  call(*this, [&](ForceFeedEffectsObject& self) { self.list.remove(Key); });
}
void ForceFeedEffects8::Clear() {
  call(*this, [](ForceFeedEffectsObject& self) { self.list.clear(); });
}
std::vector<ForceFeedEffect8> ForceFeedEffects8::NewEnum() const {
  return call(*this, [](ForceFeedEffectsObject& self) { return api::wrapAll<ForceFeedEffect8>(self.list.items()); });
}
GameController8 ForceFeedEffects8::Parent() const {
  return call(*this, [](ForceFeedEffectsObject& self) { return Access::make<GameController8>(self.parent.lock()); });
}

}  // namespace Quasarlens3D
