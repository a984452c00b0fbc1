/// @file
/// How much of its own colour something keeps at a distance.
#pragma once

#include "platform/software/Numeric.h"
#include "platform/software/Pipeline.h"

namespace ql::software {

/// 1 without fog, 0 when fog hides everything. @param distance from the eye, world units
inline float fogFactor(const Fog& fog, float distance) {
  switch (fog.mode) {
    case device::FogMode::Exp:
      return expNegative(distance * fog.density);
    case device::FogMode::Exp2: {
      const float x = distance * fog.density;
      return expNegative(x * x);
    }
    case device::FogMode::Linear:
      return clampTo((fog.end - distance) * fog.scale, 0.0f, 1.0f);
    case device::FogMode::None:
      break;
  }
  return 1;
}

}  // namespace ql::software
