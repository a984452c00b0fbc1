#include "input/Motors.h"

#include "engine/EngineError.h"
#include "input/DeviceCodes.h"

#include <algorithm>
#include <utility>

namespace ql::input {

void Motors::command(std::int32_t command) {
  switch (command) {
    case kMotorsReset:
      device_->stopAll();
      for (const auto& [effect, number] : effects_) device_->destroy(number);
      effects_.clear();
      if (paused_) device_->pause(false);
      paused_ = false;
      on_ = true;
      device_->setGain(kFullForce);
      break;
    case kMotorsStopAll:
      device_->stopAll();
      break;
    case kMotorsPause:
    case kMotorsContinue:
      if (device_->pause(command == kMotorsPause)) paused_ = command == kMotorsPause;
      break;
    case kMotorsOn:
    case kMotorsOff:
      on_ = command == kMotorsOn;
      device_->setGain(on_ ? kFullForce : 0);
      break;
    default:
      throw engine::EngineError(engine::kInvalidArgument, "no command of motors: " + std::to_string(command));
  }
}

std::int32_t Motors::state() const {
  const bool runs = std::any_of(effects_.begin(), effects_.end(),
                                [&](const auto& effect) { return device_->running(effect.second); });
  return (effects_.empty() ? kStateEmpty : 0) | (runs ? 0 : kStateStopped) | (paused_ ? kStatePaused : 0) |
         (on_ ? kStateOn : kStateOff);
}

PlayedEffect::PlayedEffect(const std::shared_ptr<Motors>& motors, const EffectEntry& entry, Effect effect)
    : motors_(motors), entry_(entry) {
  if (!motors->plays(entry.kind)) throw deviceError(kDeviceNotRegistered, "the controller has no such effect");
  effect.kind = entry.kind;
  const int number = motors->device_->create(effect);
  if (number < 0) throw deviceError(kDeviceFull, "the controller took no further effect");
  motors->effects_[this] = number;
}

template <class Action>
bool PlayedEffect::act(Action&& action) const {
  const std::shared_ptr<Motors> owner = motors_.lock();
  if (!owner) return false;
  const auto found = owner->effects_.find(this);
  return found != owner->effects_.end() && action(*owner->device_, found->second);
}

PlayedEffect::~PlayedEffect() {
  act([](ForceFeedback& device, int number) {
    device.destroy(number);
    return true;
  });
  if (const std::shared_ptr<Motors> owner = motors_.lock()) owner->effects_.erase(this);
}

bool PlayedEffect::start(std::int32_t iterations) {
  return act([&](ForceFeedback& device, int number) {
    return device.start(number, iterations < 0 ? kForever : std::max(iterations, 1));
  });
}
void PlayedEffect::stop() {
  act([](ForceFeedback& device, int number) {
    device.stop(number);
    return true;
  });
}
bool PlayedEffect::playing() const {
  return act([](const ForceFeedback& device, int number) { return device.running(number); });
}
bool PlayedEffect::change(Effect effect) {
  effect.kind = entry_.kind;
  return act([&](ForceFeedback& device, int number) { return device.change(number, effect); });
}

}  // namespace ql::input
