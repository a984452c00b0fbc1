/// @file
/// What programs that draw have in common on their command lines.
#pragma once

#include <cstdint>
#include <string>

namespace walk {

inline constexpr int kMostFrames = 1'000'000;

struct PictureSize {
  std::int32_t width = 0, height = 0;
};
/// --size. @throws Failure Usage when it is not WIDTHxHEIGHT, Limit beyond what a device draws
PictureSize parseSize(const std::string& text);

}  // namespace walk
