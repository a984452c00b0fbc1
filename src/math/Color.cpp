#include "math/Vector.h"

#include <stdexcept>

namespace ql::math {
namespace {

/// A component as an integer: times 255, rounded to nearest, halves to even.
std::int32_t scaled(float component) {
  const float value = component * 255.0f;
  if (std::isnan(value)) throw std::domain_error("a colour component is not a number");
  constexpr float kTwoTo31 = 2147483648.0f;
  if (value >= kTwoTo31 || value < -kTwoTo31) throw std::overflow_error("a colour component overflows 32 bits");
  return static_cast<std::int32_t>(std::lrint(value));
}

}  // namespace

std::int32_t packColor(const Color4& color) {
  const std::int32_t r = scaled(color.r), g = scaled(color.g), b = scaled(color.b), a = scaled(color.a);
  if (r > 255 || g > 255 || b > 255 || a > 255) return 0;
  const auto byte = [](std::int32_t value) { return static_cast<std::uint32_t>(value < 0 ? 0 : value); };
  return static_cast<std::int32_t>(byte(a) << 24 | byte(r) << 16 | byte(g) << 8 | byte(b));
}

Color4 unpackColor(std::uint32_t argb) {
  const auto component = [argb](int shift) { return static_cast<float>(argb >> shift & 0xFF) / 255.0f; };
  return {component(16), component(8), component(0), component(24)};
}

}  // namespace ql::math
