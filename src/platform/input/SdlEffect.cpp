#include "platform/input/SdlEffect.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace ql::input {
namespace {

constexpr std::int32_t kMicrosecondsPerMillisecond = 1000, kHalfTurn = 18'000;
constexpr std::size_t kMostSamples = std::numeric_limits<std::uint16_t>::max();

constexpr std::pair<EffectKind, unsigned> kTypes[] = {
    {EffectKind::Constant, SDL_HAPTIC_CONSTANT},
    {EffectKind::Ramp, SDL_HAPTIC_RAMP},
    {EffectKind::Square, SDL_HAPTIC_CUSTOM},
    {EffectKind::Sine, SDL_HAPTIC_SINE},
    {EffectKind::Triangle, SDL_HAPTIC_TRIANGLE},
    {EffectKind::SawtoothUp, SDL_HAPTIC_SAWTOOTHUP},
    {EffectKind::SawtoothDown, SDL_HAPTIC_SAWTOOTHDOWN},
    {EffectKind::Spring, SDL_HAPTIC_SPRING},
    {EffectKind::Damper, SDL_HAPTIC_DAMPER},
    {EffectKind::Inertia, SDL_HAPTIC_INERTIA},
    {EffectKind::Friction, SDL_HAPTIC_FRICTION},
    {EffectKind::Custom, SDL_HAPTIC_CUSTOM},
    {EffectKind::Rumble, SDL_HAPTIC_LEFTRIGHT},
};

template <class To>
To clampTo(std::int64_t value) {
  return static_cast<To>(
      std::clamp<std::int64_t>(value, std::numeric_limits<To>::min(), std::numeric_limits<To>::max()));
}

std::uint32_t length(std::int32_t microseconds) {
  if (microseconds < 0) return SDL_HAPTIC_INFINITY;
  return static_cast<std::uint32_t>(microseconds / kMicrosecondsPerMillisecond);
}
std::uint16_t time(std::int32_t microseconds) {
  return clampTo<std::uint16_t>(microseconds / kMicrosecondsPerMillisecond);
}
std::int32_t scaled(std::int32_t force, std::int32_t full) {
  return static_cast<std::int32_t>(std::int64_t{std::clamp(force, -kFullForce, kFullForce)} * full / kFullForce);
}
/// -10000 to 10000 as -32767 to 32767.
std::int16_t force(std::int32_t value) { return static_cast<std::int16_t>(scaled(value, 0x7FFF)); }
/// 0 to 10000 as 0 to 65535.
std::uint16_t level(std::int32_t value) { return static_cast<std::uint16_t>(scaled(std::max(value, 0), 0xFFFF)); }

SDL_HapticDirection direction(const Effect& effect) {
  SDL_HapticDirection out{};
  out.type = SDL_HAPTIC_POLAR;
  out.dir[0] = ((effect.direction % (2 * kHalfTurn)) + 2 * kHalfTurn) % (2 * kHalfTurn);
  return out;
}

/// What all kinds but rumbles have.
template <class T>
void fillCommon(T& out, const Effect& effect) {
  out.direction = direction(effect);
  out.length = length(effect.duration);
  out.delay = time(effect.delay);
  out.button =
      effect.triggerButton < 0 ? std::uint16_t{0} : clampTo<std::uint16_t>(std::int64_t{effect.triggerButton} + 1);
  out.interval = time(effect.triggerInterval);
}
template <class T>
void fillEnvelope(T& out, const Effect& effect) {
  if (!effect.useEnvelope) return;
  const Envelope& envelope = effect.envelope;
  out.attack_length = time(envelope.attackTime);
  out.attack_level = static_cast<std::uint16_t>(scaled(std::max(envelope.attackLevel, 0), 0x7FFF));
  out.fade_length = time(envelope.fadeTime);
  out.fade_level = static_cast<std::uint16_t>(scaled(std::max(envelope.fadeLevel, 0), 0x7FFF));
}

void fillCondition(SDL_HapticCondition& out, const Effect& effect, std::int32_t gain) {
  fillCommon(out, effect);
  for (std::size_t i = 0; i < effect.conditions.size(); ++i) {
    const Condition& condition = effect.conditions[i];
    out.right_sat[i] = level(condition.positiveSaturation);
    out.left_sat[i] = level(condition.negativeSaturation);
    out.right_coeff[i] = force(scaled(condition.positiveCoefficient, gain));
    out.left_coeff[i] = force(scaled(condition.negativeCoefficient, gain));
    out.deadband[i] = level(condition.deadBand);
    out.center[i] = force(condition.center);
  }
}

unsigned typeOf(EffectKind kind) {
  for (const auto& [ours, type] : kTypes)
    if (ours == kind) return type;
  return 0;
}

}  // namespace

std::uint32_t kindsOf(unsigned supported) {
  std::uint32_t kinds = 0;
  for (const auto& [kind, type] : kTypes)
    if ((supported & type) != 0) kinds |= effectBit(kind);
  return kinds;
}

SdlEffect::SdlEffect(const Effect& effect) {
  const std::int32_t gain = std::clamp(effect.gain, 0, kFullForce);
  value.type = static_cast<std::uint16_t>(typeOf(effect.kind));
  const auto own = [&](std::int32_t magnitude) { return force(scaled(magnitude, gain)); };
  switch (effect.kind) {
    case EffectKind::Constant:
      fillCommon(value.constant, effect);
      fillEnvelope(value.constant, effect);
      value.constant.level = own(effect.magnitude);
      break;
    case EffectKind::Ramp:
      fillCommon(value.ramp, effect);
      fillEnvelope(value.ramp, effect);
      value.ramp.start = own(effect.rampStart);
      value.ramp.end = own(effect.rampEnd);
      break;
    case EffectKind::Sine:
    case EffectKind::Triangle:
    case EffectKind::SawtoothUp:
    case EffectKind::SawtoothDown:
      fillCommon(value.periodic, effect);
      fillEnvelope(value.periodic, effect);
      value.periodic.period = time(effect.period);
      value.periodic.magnitude = own(effect.magnitude);
      value.periodic.offset = own(effect.offset);
      value.periodic.phase = static_cast<std::uint16_t>(((effect.phase % 36'000) + 36'000) % 36'000);
      break;
    case EffectKind::Spring:
    case EffectKind::Damper:
    case EffectKind::Inertia:
    case EffectKind::Friction:
      fillCondition(value.condition, effect, gain);
      break;
    case EffectKind::Square:  // SDL has no such wave: a custom one of two samples
    case EffectKind::Custom: {
      std::vector<std::int32_t> forces = effect.samples;
      std::int32_t samplePeriod = effect.samplePeriod, channels = std::clamp(effect.channels, 1, 2);
      if (effect.kind == EffectKind::Square) {
        forces = {effect.offset + effect.magnitude, effect.offset - effect.magnitude};
        samplePeriod = effect.period / 2;
        channels = 1;
      }
      const auto each = static_cast<std::size_t>(channels);
      const std::size_t count = std::min(forces.size() / each, kMostSamples / each);
      for (std::size_t i = 0; i < count * each; ++i) samples.push_back(static_cast<std::uint16_t>(own(forces[i])));
      fillCommon(value.custom, effect);
      fillEnvelope(value.custom, effect);
      value.custom.channels = static_cast<std::uint8_t>(channels);
      value.custom.period = time(samplePeriod);
      value.custom.samples = static_cast<std::uint16_t>(count);
      value.custom.data = samples.data();
      break;
    }
    case EffectKind::Rumble:
      value.leftright.length = length(effect.duration);
      value.leftright.large_magnitude = level(scaled(effect.magnitude, gain));
      value.leftright.small_magnitude = level(scaled(effect.weakMagnitude, gain));
      break;
  }
}

}  // namespace ql::input
