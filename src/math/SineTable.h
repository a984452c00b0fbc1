/// @file
/// Sines and cosines by table, in quarter degrees.
#pragma once

#include <array>
#include <cstddef>

namespace ql::math {

/// 1441 entries each, entry i for i / 4 degrees, converted with the constant 3.1415.
class SineTable {
 public:
  SineTable();
  /// @param degrees 0 to 360; the nearest quarter degree is used, halves to the even neighbour
  /// @throws std::out_of_range outside the table (below -0.125 or above 360.125 degrees)
  float cosine(float degrees) const { return cosines_[index(degrees)]; }
  float sine(float degrees) const { return sines_[index(degrees)]; }

 private:
  static constexpr std::size_t kEntries = 1441;
  static std::size_t index(float degrees);
  std::array<float, kEntries> cosines_{};
  std::array<float, kEntries> sines_{};
};

float degreesToRadians(float degrees);
float radiansToDegrees(float radians);
/// Heading in degrees of the direction (vx, vz): from +z towards +x; (-90, 90) for vz > 0, (90, 270) for vz < 0.
/// @throws std::domain_error when vz is 0 (division by zero)
float directionToAngle(float vx, float vz);

}  // namespace ql::math
