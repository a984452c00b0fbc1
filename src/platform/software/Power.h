/// @file
/// Powers that are the same bits on every machine: no function of a mathematics library, which may round as it likes.
#pragma once

#include "platform/software/Numeric.h"

#include <bit>
#include <cstdint>

namespace ql::software {

/// The logarithm to base 2 of a number from 1e-37 to 1e37 (others count as the nearer end), to about 1e-7.
inline float log2Of(float x) {
  constexpr std::int32_t kRootOfHalf = 0x3F3504F3;
  const auto bits = std::bit_cast<std::int32_t>(clampTo(x, 1e-37f, 1e37f));
  const std::int32_t whole = (bits - kRootOfHalf) >> 23;
  const float m = std::bit_cast<float>(bits - (whole << 23));  // 0.707 to 1.414
  const float s = (m - 1.0f) / (m + 1.0f), square = s * s;
  float series = 1.0f / 9;
  series = series * square + 1.0f / 7;
  series = series * square + 1.0f / 5;
  series = series * square + 1.0f / 3;
  series = series * square + 1.0f;
  return static_cast<float>(whole) + s * series * 2.88539008f;
}

/// 2 to the power of x, within -126 to 126.
inline float exp2Of(float x) {
  const float t = clampTo(x, -126.0f, 126.0f);
  const std::int32_t whole = static_cast<std::int32_t>(t + 127.5f) - 127;
  const float f = (t - static_cast<float>(whole)) * 0.693147181f;  // -ln 2 / 2 to ln 2 / 2
  float series = 1.0f / 720;
  series = series * f + 1.0f / 120;
  series = series * f + 1.0f / 24;
  series = series * f + 1.0f / 6;
  series = series * f + 0.5f;
  series = series * f + 1.0f;
  series = series * f + 1.0f;
  return series * std::bit_cast<float>((whole + 127) << 23);
}

/// x to the power of y for x of at least 0, to about 1e-5 of the result for y up to 100.
inline float power(float x, float y) { return exp2Of(log2Of(x) * y); }

}  // namespace ql::software
