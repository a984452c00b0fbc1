#include "input/EffectTable.h"

#include "platform/host/Files.h"

#include <algorithm>

namespace ql::input {
namespace {

constexpr EffectEntry kEffects[] = {
    {EffectKind::Constant, "Constant", "{13541C20-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_ConstantForce",
     kConstantEffects},
    {EffectKind::Ramp, "Ramp", "{13541C21-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_RampForce", kRampEffects},
    {EffectKind::Square, "Square", "{13541C22-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Square", kPeriodicEffects},
    {EffectKind::Sine, "Sine", "{13541C23-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Sine", kPeriodicEffects},
    {EffectKind::Triangle, "Triangle", "{13541C24-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Triangle", kPeriodicEffects},
    {EffectKind::SawtoothUp, "Sawtooth up", "{13541C25-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_SawtoothUp",
     kPeriodicEffects},
    {EffectKind::SawtoothDown, "Sawtooth down", "{13541C26-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_SawtoothDown",
     kPeriodicEffects},
    {EffectKind::Spring, "Spring", "{13541C27-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Spring", kConditionEffects},
    {EffectKind::Damper, "Damper", "{13541C28-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Damper", kConditionEffects},
    {EffectKind::Inertia, "Inertia", "{13541C29-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Inertia", kConditionEffects},
    {EffectKind::Friction, "Friction", "{13541C2A-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_Friction", kConditionEffects},
    {EffectKind::Custom, "Custom", "{13541C2B-8E33-11D0-9AD0-00A0C9A06E35}", "GUID_CustomForce", kCustomEffects},
    {EffectKind::Rumble, "Rumble", "{51E8D3A0-6B1F-4C57-8E0B-2F7A9C4D1E35}", "GUID_Rumble", kHardwareEffects},
};

enum Parameter : std::int32_t {
  kDuration = 1,
  kSamplePeriod = 2,
  kGain = 4,
  kTriggerButton = 8,
  kTriggerInterval = 16,
  kDirection = 64,
  kEnvelope = 128,
  kOwn = 256,
  kStartDelay = 512
};

}  // namespace

std::span<const EffectEntry> effectTable() { return kEffects; }

const EffectEntry* findEffect(std::string_view guid) {
  const auto found = std::find_if(std::begin(kEffects), std::end(kEffects), [&](const EffectEntry& effect) {
    return host::equalIgnoringCase(effect.guid, guid) || host::equalIgnoringCase(effect.guidName, guid);
  });
  return found == std::end(kEffects) ? nullptr : found;
}

std::int32_t effectParameters(const EffectEntry& effect) {
  constexpr std::int32_t kUsual = kDuration | kGain | kOwn;
  if (effect.kind == EffectKind::Rumble) return kUsual;
  constexpr std::int32_t kPlayed = kUsual | kTriggerButton | kTriggerInterval | kDirection | kStartDelay;
  if (effect.type == kConditionEffects) return kPlayed;
  return kPlayed | kEnvelope | (effect.kind == EffectKind::Custom ? kSamplePeriod : 0);
}

}  // namespace ql::input
