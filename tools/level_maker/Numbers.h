#pragma once

#include <cstdint>

/// Elementary functions that give the same bits on every machine. The C library picks code by CPU (fused multiply-add
/// or not), so its sine, power and exponential may differ in the last place; the maker's files are compared byte by
/// byte, so it uses these instead. Accurate to about 1e-13.
namespace ql::maker {

inline constexpr double kPi = 3.14159265358979323846;

double sine(double radians);
double cosine(double radians);
/// Angle of the vector (x, y) in radians, -pi to pi; 0 for the zero vector.
double angleOf(double y, double x);
double exponential(double x);
/// Natural logarithm; x must be above 0.
double logarithm(double x);
/// base to the exponent; 0 for a base of 0 or less.
double power(double base, double exponent);

/// Mixes the bits of an integer (a fixed avalanche function).
constexpr std::uint32_t mixBits(std::uint32_t v) {
  v ^= v >> 16U;
  v *= 0x7FEB352DU;
  v ^= v >> 15U;
  v *= 0x846CA68BU;
  v ^= v >> 16U;
  return v;
}

/// A fixed number in [0, 1) for up to three integers.
constexpr double hashUnit(std::uint32_t a, std::uint32_t b = 0, std::uint32_t c = 0) {
  return static_cast<double>(mixBits(a + 0x9E3779B9U * mixBits(b + 0x85EBCA6BU * mixBits(c + 17U)))) / 4294967296.0;
}

/// Part `index` of the van der Corput sequence in a prime base, in [0, 1): evenly spread sample positions.
constexpr double radicalInverse(std::uint32_t index, std::uint32_t base) {
  double result = 0.0;
  double digit = 1.0 / static_cast<double>(base);
  while (index > 0) {
    result += digit * static_cast<double>(index % base);
    index /= base;
    digit /= static_cast<double>(base);
  }
  return result;
}

}  // namespace ql::maker
