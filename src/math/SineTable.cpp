#include "math/SineTable.h"

#include <cmath>
#include <stdexcept>

namespace ql::math {
namespace {

constexpr double kTablePi = 3.1415;  // of the tables and of the half turn in headings
constexpr double kPi = 3.141592653;  // of the conversions

}  // namespace

SineTable::SineTable() {
  for (std::size_t i = 0; i < kEntries; ++i) {
    const double radians = static_cast<double>(i) / 4 * kTablePi / 180;
    cosines_[i] = static_cast<float>(std::cos(radians));
    sines_[i] = static_cast<float>(std::sin(radians));
  }
}

std::size_t SineTable::index(float degrees) {
  const float nearest = std::nearbyint(degrees * 4);  // halves to even
  if (!(nearest >= 0 && nearest < static_cast<float>(kEntries))) throw std::out_of_range("Subscript out of range");
  return static_cast<std::size_t>(nearest);
}

float degreesToRadians(float degrees) { return static_cast<float>(degrees * kPi / 180); }
float radiansToDegrees(float radians) { return static_cast<float>(radians * 180 / kPi); }

float directionToAngle(float vx, float vz) {
  if (vz == 0) throw std::domain_error("Division by zero");
  double angle = std::atan(static_cast<double>(vx) / vz);
  if (vz < 0) angle += kTablePi;
  return static_cast<float>(angle * 180 / kPi);
}

}  // namespace ql::math
