/// @file
/// The force-feedback effects that hosts can name.
#pragma once

#include "platform/input/ForceFeedback.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ql::input {

/// Filters of effect types.
inline constexpr std::int32_t kAllEffects = 0, kConstantEffects = 1, kRampEffects = 2, kPeriodicEffects = 3,
                              kConditionEffects = 4, kCustomEffects = 5, kHardwareEffects = 255;

struct EffectEntry {
  EffectKind kind;
  std::string_view name;
  std::string_view guid;      ///< "{...}"
  std::string_view guidName;  ///< which hosts may write instead
  std::int32_t type;          ///< one of the filters
};

/// All effects, in the order in which devices list them.
std::span<const EffectEntry> effectTable();
/// By its number or the number's name, whatever the letter case; null when there is none.
const EffectEntry* findEffect(std::string_view guid);

/// What an effect's parameters are, as bits: duration 1, sample period 2, gain 4, trigger button 8, trigger interval
/// 16, direction 64, envelope 128, the type's own 256, start delay 512.
std::int32_t effectParameters(const EffectEntry& effect);

}  // namespace ql::input
