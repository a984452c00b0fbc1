/// @file
/// What a walk measured.
#pragma once

#include <Quasarlens3D/InternalObjects8.h>

#include <cstdint>
#include <string>
#include <vector>

namespace walk {

struct FrameReport {
  double ms = 0;
  Quasarlens3D::FrameStatistics statistics;
  float framesPerSecond = 0;         ///< as the engine counts them, by its clock
  std::vector<std::string> overlay;  ///< what stood over the picture
};

struct Report {
  std::string level, device;
  std::int32_t width = 0, height = 0;
  double loadMs = 0;
  std::vector<FrameReport> frames;

  /// The frame time that a part of the frames does not exceed; 0 without frames. @param part 0 to 1
  double quantile(double part) const;
  /// Whether the frames' statistics tell how the device's work went; the hardware device does not know.
  bool tellsOfWork() const { return device == "ref"; }
  /// Pretty-printed JSON, with the process's peak of memory as of now.
  std::string json() const;
};

}  // namespace walk
