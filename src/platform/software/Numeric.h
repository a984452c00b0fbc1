/// @file
/// The arithmetic that every pixel path shares. Each function has one exact result on every machine, so that paths of
/// different vector width draw the same bits: only additions, multiplications, divisions and conversions that are fixed
/// by IEEE 754, in a fixed order.
#pragma once

#include <bit>
#include <cstdint>
#include <limits>

namespace ql::software {

/// The nearest integer, halves to even. Not a number and everything outside 32 bits give the lowest integer.
inline std::int32_t roundToInt(float x) {
  constexpr float kLimit = 2147483648.0f, kHalf = 0.5f, kPastHalf = 0.50000006f;
  const float below = x < kLimit ? x : -kLimit;
  const float inside = below >= -kLimit ? below : -kLimit;
  const std::int32_t whole = static_cast<std::int32_t>(inside);
  const float rest = inside - static_cast<float>(whole);  // exact
  const float tie = whole & 1 ? kHalf : kPastHalf;
  return whole + (rest >= tie ? 1 : 0) - (rest <= -tie ? 1 : 0);
}

/// An integer within low to high; by value, which suits vectors.
inline std::int32_t clampTo(std::int32_t x, std::int32_t low, std::int32_t high) {
  const std::int32_t above = x > low ? x : low;
  return above < high ? above : high;
}

/// x within low to high; low for not a number.
inline float clampTo(float x, float low, float high) {
  const float above = x > low ? x : low;
  return above < high ? above : high;
}

/// A product of two values 0 to 255 divided by 255, to nearest. @param x at most 65025: the steps fit 16 bits, so that
/// loops over it stay in lanes of 16 bits
inline std::uint16_t div255(std::uint32_t x) {
  const auto t = static_cast<std::uint16_t>(x + 128);
  return static_cast<std::uint16_t>(static_cast<std::uint16_t>(t + (t >> 8)) >> 8);
}

/// e to the power of -x for x of at least 0 (others count as 0), to about 1e-6 of the result.
inline float expNegative(float x) {
  const float t = clampTo(x, 0.0f, 80.0f) * 1.44269504f;  // as a power of two
  const std::int32_t whole = static_cast<std::int32_t>(t);
  const float f = (t - static_cast<float>(whole)) * -0.693147181f;  // -ln 2 to 0
  float series = 1.0f / 5040;
  series = series * f + 1.0f / 720;
  series = series * f + 1.0f / 120;
  series = series * f + 1.0f / 24;
  series = series * f + 1.0f / 6;
  series = series * f + 0.5f;
  series = series * f + 1.0f;
  series = series * f + 1.0f;
  return series * std::bit_cast<float>((127 - whole) << 23);
}

/// The logarithm to base 2 in 1/256, straight between powers of two. Negative values and not a number give some value.
inline std::int32_t log2Times256(float x) { return (std::bit_cast<std::int32_t>(x) - 0x3F800000) >> 15; }

}  // namespace ql::software
