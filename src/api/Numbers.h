/// @file
/// Numbers between hosts and the engine: what does not fit is an error, never a wrong value.
#pragma once

#include "math/Vector.h"

#include <cstdint>

namespace ql::api {

/// @throws EngineError 6 when a finite number is beyond a single's range (all below: beyond the type's range)
float toSingle(double value);
/// Rounded to nearest, halves to even.
std::int32_t toInteger(double value);
/// As toInteger; unsigned notation of a packed colour is accepted too.
std::int32_t toPackedColor(double value);
std::int16_t toShort(std::int32_t value);

/// A result as it is. @throws EngineError 6 for an infinity, 5 for what is not a number
float checked(float result);
math::Vec3 checked(const math::Vec3& result);

}  // namespace ql::api
