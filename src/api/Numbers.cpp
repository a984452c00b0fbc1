#include "api/Numbers.h"

#include "engine/EngineError.h"

#include <cmath>
#include <limits>

namespace ql::api {
namespace {

[[noreturn]] void overflow() { throw engine::EngineError(engine::kOverflow, "Overflow"); }

double rounded(double value, double least, double most) {
  const double nearest = std::nearbyint(value);
  if (!(nearest >= least && nearest <= most)) overflow();
  return nearest;
}

constexpr double kLeast = std::numeric_limits<std::int32_t>::min(), kMost = std::numeric_limits<std::int32_t>::max();

}  // namespace

float toSingle(double value) {
  const float single = static_cast<float>(value);
  if (std::isinf(single) && !std::isinf(value)) overflow();
  return single;
}

std::int32_t toInteger(double value) { return static_cast<std::int32_t>(rounded(value, kLeast, kMost)); }

std::int32_t toPackedColor(double value) {
  constexpr double kMostUnsigned = std::numeric_limits<std::uint32_t>::max();
  return static_cast<std::int32_t>(static_cast<std::int64_t>(rounded(value, kLeast, kMostUnsigned)));
}

std::int16_t toShort(std::int32_t value) {
  if (value != static_cast<std::int16_t>(value)) overflow();
  return static_cast<std::int16_t>(value);
}

float checked(float result) {
  if (std::isinf(result)) overflow();
  if (std::isnan(result)) throw engine::EngineError(engine::kInvalidArgument, "Invalid argument: not a number");
  return result;
}

math::Vec3 checked(const math::Vec3& result) {
  checked(result.x);
  checked(result.y);
  checked(result.z);
  return result;
}

}  // namespace ql::api
