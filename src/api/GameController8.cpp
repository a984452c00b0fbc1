#include "api/Collections.h"
#include "api/InputObjects.h"
#include "engine/Engine.h"

#include <Quasarlens3D/GameController8.h>

#include <algorithm>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using Detail::GameControllerObject;

namespace {

constexpr char kNoDriver[] = "{00000000-0000-0000-0000-000000000000}";
constexpr char kDriver[] = "{7B3C1E52-0D84-4A6F-9C25-E18F4D60A937}";

/// Runs an operation; what fails is told by OnError, too.
template <class Operation>
auto telling(const std::shared_ptr<GameControllerObject>& self, const std::string& location, Operation&& operation) {
  try {
    return operation();
  } catch (const Error& error) {
    if (self) Access::raise(self->onError, error.Number(), std::string(error.what()), location);
    throw;
  }
}

void fillState(auto& out, const input::JoyState& state) {
  const auto& a = state.axes;
  out.x = a[0];
  out.y = a[1];
  out.z = a[2];
  out.RotationX = a[3];
  out.RotationY = a[4];
  out.RotationZ = a[5];
  out.Slider0 = a[6];
  out.Slider1 = a[7];
  out.PointOfView0 = state.hats[0];
  out.PointOfView1 = state.hats[1];
  out.PointOfView2 = state.hats[2];
  out.PointOfView3 = state.hats[3];
  std::copy_n(state.buttons.begin(), out.Buttons.size(), out.Buttons.begin());
}

input::Condition conditionOf(const QL_EFFECT_CONDITION& given) {
  return {given.Offset,
          given.PositiveCoefficient,
          given.NegativeCoefficient,
          given.PositiveSaturation,
          given.NegativeSaturation,
          given.DeadBand};
}

input::Effect effectOf(const QL_EFFECT_INFO& info) {
  input::Effect effect;
  effect.duration = info.Duration;
  effect.delay = info.StartDelay;
  effect.gain = info.Gain;
  effect.triggerButton = info.TriggerButton;
  effect.triggerInterval = info.TriggerRepeatInterval;
  effect.direction = info.Direction;
  effect.useEnvelope = info.UseEnvelope;
  effect.envelope = {info.AttackLevel, info.AttackTime, info.FadeLevel, info.FadeTime};
  effect.magnitude = info.Magnitude;
  effect.weakMagnitude = info.WeakMagnitude;
  effect.rampStart = info.RampStart;
  effect.rampEnd = info.RampEnd;
  effect.offset = info.Offset;
  effect.phase = info.Phase;
  effect.period = info.Period;
  effect.conditions = {conditionOf(info.ConditionX), conditionOf(info.ConditionY)};
  return effect;
}

ForceEffectObject wrapEffect(std::shared_ptr<input::PlayedEffect> effect) {
  if (!effect) return {};
  auto object = std::make_shared<Detail::PlayedEffectObject>();
  object->effect = std::move(effect);
  return Access::make<ForceEffectObject>(std::move(object));
}

}  // namespace

InputDeviceObject::InputDeviceObject() noexcept = default;

ForceEffectObject::ForceEffectObject() noexcept = default;
ForceEffectObject::ForceEffectObject(std::nullptr_t) noexcept : Handle(nullptr) {}
Boolean ForceEffectObject::Start(std::int32_t Iterations) {
  return call(*this, [&](Detail::PlayedEffectObject& self) { return Boolean(self.effect->start(Iterations)); });
}
void ForceEffectObject::Stop() {
  call(*this, [](Detail::PlayedEffectObject& self) { self.effect->stop(); });
}
Boolean ForceEffectObject::IsPlaying() const {
  return call(*this, [](Detail::PlayedEffectObject& self) { return Boolean(self.effect->playing()); });
}
Boolean ForceEffectObject::SetParameters(const QL_EFFECT_INFO& EffectInfo) {
  return call(*this,
              [&](Detail::PlayedEffectObject& self) { return Boolean(self.effect->change(effectOf(EffectInfo))); });
}
std::string ForceEffectObject::GetEffectGuid() const {
  return call(*this, [](Detail::PlayedEffectObject& self) { return std::string(self.effect->entry().guid); });
}

GameController8::GameController8() noexcept = default;
GameController8::GameController8(std::nullptr_t) noexcept : Handle(nullptr) {}

std::string GameController8::Key() const { return GuidInstance(); }
std::string GameController8::ProductName() const {
  return call(*this, [](GameControllerObject& self) { return self.info().product; });
}
std::string GameController8::InstanceName() const {
  return call(*this, [](GameControllerObject& self) { return self.info().instance; });
}
std::string GameController8::GuidProduct() const {
  return call(*this, [](GameControllerObject& self) { return self.info().productGuid; });
}
std::string GameController8::GuidInstance() const {
  return call(*this, [](GameControllerObject& self) { return self.info().instanceGuid; });
}
std::string GameController8::FFDriver() const {
  return call(*this,
              [](GameControllerObject& self) { return std::string(self.info().forceFeedback ? kDriver : kNoDriver); });
}
std::int32_t GameController8::ControllerType() const {
  return call(*this, [](GameControllerObject& self) { return self.type(); });
}
std::int16_t GameController8::UsagePage() const {
  return call(*this, [](GameControllerObject&) { return std::int16_t{1}; });
}
std::int16_t GameController8::Usage() const {
  return call(*this, [](GameControllerObject& self) { return self.usage(); });
}
InputDeviceObject GameController8::DirectInputDevice() const {
  return call(*this, [](GameControllerObject& self) { return Access::make<InputDeviceObject>(self.device); });
}
Boolean GameController8::InUse() const {
  return call(*this, [](GameControllerObject& self) { return Boolean(self.inUse()); });
}
std::int32_t GameController8::DataFormat() const {
  return call(*this, [](GameControllerObject& self) { return self.dataFormat; });
}
void GameController8::DataFormat(std::int32_t Format) {
  call(*this, [&](GameControllerObject& self) {
    if (Format != eDIJoyStick1 && Format != eDIJoyStick2)
      throw engine::EngineError(engine::kInvalidArgument, "no data format: " + std::to_string(Format));
    self.dataFormat = Format;
  });
}

void GameController8::Initialize(std::int32_t CoOpLevel) {
  const std::shared_ptr<GameControllerObject> self = Access::pointer(*this);  // lives through its handlers
  telling(self, "Initialize", [&] {
    call(*this, [&](GameControllerObject& object) {
      object.initialize(CoOpLevel);
      object.device = std::make_shared<Detail::InputDeviceHandleObject>();
    });
    RefreshForceFeedEffects(ql_ALL);
  });
  Access::raise(self->initialized);
}
void GameController8::UnloadController() {
  const std::shared_ptr<GameControllerObject> self = Access::pointer(*this);
  const bool wasOpen = call(*this, [](GameControllerObject& object) {
    object.device.reset();
    object.effects->list.clear();
    return object.unload();
  });
  if (wasOpen) Access::raise(self->unInitialized);
}
void GameController8::Poll() {
  call(*this, [](GameControllerObject& self) {
    self.context->platform.display->pump();
    input::refreshInput(*self.context);
  });
  api::raiseControllerChanges();
}

QL_JOYSTATE GameController8::ControllerState() const {
  return call(*this, [](GameControllerObject& self) {
    QL_JOYSTATE state;
    fillState(state, self.state());
    return state;
  });
}
QL_JOYSTATE2 GameController8::ControllerStateAdvanced() const {
  return call(*this, [](GameControllerObject& self) {
    QL_JOYSTATE2 state;
    fillState(state, self.state());
    return state;
  });
}
QL_CONTROLLER_CAPS GameController8::Capabilities() const {
  return call(*this, [](GameControllerObject& self) {
    const input::ControllerCaps& caps = self.caps();
    return QL_CONTROLLER_CAPS{caps.flags, caps.type, caps.axes, caps.buttons, caps.hats};
  });
}
std::array<Boolean, 8> GameController8::GetAxis() const {
  return call(*this, [](GameControllerObject& self) {
    std::array<Boolean, 8> axes;
    std::copy(self.axes().begin(), self.axes().end(), axes.begin());
    return axes;
  });
}
std::int32_t GameController8::GetButtonCount() const {
  return call(*this, [](GameControllerObject& self) { return self.caps().buttons; });
}
Boolean GameController8::IsConnected() const {
  return call(*this, [](GameControllerObject& self) { return Boolean(self.isConnected()); });
}

void GameController8::RefreshForceFeedEffects(std::int32_t eEffectType) {
  call(*this, [&](GameControllerObject& self) {
    self.effects->list.clear();
    for (const input::EffectEntry* entry : self.effectsOf(eEffectType)) {
      auto effect = std::make_shared<Detail::ForceFeedEffectObject>();
      effect->entry = entry;
      effect->parent = self.effects;
      self.effects->list.add(std::move(effect), std::string(entry->name));
    }
  });
}
ForceFeedEffects8 GameController8::ForceFeedEffects() const {
  return call(*this, [](GameControllerObject& self) { return Access::make<ForceFeedEffects8>(self.effects); });
}
ForceEffectObject GameController8::CreateForceFeedEffect(const std::string& EffectGuid,
                                                         const QL_EFFECT_INFO& EffectInfo) {
  return telling(Access::pointer(*this), "CreateForceFeedEffect", [&] {
    return call(*this, [&](GameControllerObject& self) {
      return wrapEffect(self.createEffect(EffectGuid, effectOf(EffectInfo)));
    });
  });
}
ForceEffectObject GameController8::CreateCustomForceFeedEffect(const QL_EFFECT_INFO& EffectInfo, std::int32_t Channels,
                                                               std::int32_t SamplePeriod, std::int32_t nSamples,
                                                               const std::vector<std::int32_t>& SampleData) {
  return telling(Access::pointer(*this), "CreateCustomForceFeedEffect", [&] {
    return call(*this, [&](GameControllerObject& self) {
      return wrapEffect(self.createCustomEffect(effectOf(EffectInfo), Channels, SamplePeriod, nSamples, SampleData));
    });
  });
}
std::int32_t GameController8::SendForceFeedbackCommand(std::int32_t Flags) {
  call(*this, [&](GameControllerObject& self) { self.command(Flags); });
  return 0;
}
std::int32_t GameController8::GetForceFeedbackState() const {
  return call(*this, [](GameControllerObject& self) { return self.motorsState(); });
}

Event<>& GameController8::Change() const {
  return call(*this, [](GameControllerObject& self) -> Event<>& { return self.change; });
}
Event<>& GameController8::Initialized() const {
  return call(*this, [](GameControllerObject& self) -> Event<>& { return self.initialized; });
}
Event<>& GameController8::UnInitialized() const {
  return call(*this, [](GameControllerObject& self) -> Event<>& { return self.unInitialized; });
}
Event<std::int32_t, const std::string&, const std::string&>& GameController8::OnError() const {
  return call(*this, [](GameControllerObject& self) -> Event<std::int32_t, const std::string&, const std::string&>& {
    return self.onError;
  });
}

}  // namespace Quasarlens3D
