/// @file
/// Replaying on a kind of device, pictures in files, and how far two of them are apart.
#pragma once

#include "Options.h"
#include "platform/images/Image.h"
#include "platform/recording/Replayer.h"

#include <filesystem>

namespace ql::trace {

/// A replayer on a device of this kind. It may throw DeviceError (not available) from its first frame on.
std::unique_ptr<recording::Replayer> replayerOn(DeviceKind kind, const recording::Trace& trace);

/// @throws Failure Unreadable, here and below
void makeFolder(const std::filesystem::path& folder);
void writePicture(const std::filesystem::path& file, images::Image picture);

images::Image imageOf(const recording::FramePicture& picture);

struct Difference {
  double mean = 0;  ///< of all channels but alpha, of 255
  int largest = 0;
  images::Image picture;  ///< the largest difference of each pixel's channels, 8 times, as grey
};
/// Pictures of different sizes differ everywhere.
Difference differenceOf(const images::Image& a, const images::Image& b);

}  // namespace ql::trace
