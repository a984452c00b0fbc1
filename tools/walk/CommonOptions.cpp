#include "CommonOptions.h"

#include "Failure.h"

#include <cstdio>

#include <fmt/format.h>

namespace walk {

PictureSize parseSize(const std::string& text) {
  constexpr int kLargestSide = 16384;
  int width = 0, height = 0, end = 0;
  if (std::sscanf(text.c_str(), "%6dx%6d%n", &width, &height, &end) != 2 ||
      static_cast<std::size_t>(end) != text.size() || width < 1 || height < 1)
    throw Failure(ExitCode::Usage, fmt::format("--size: '{}' is not WIDTHxHEIGHT", text));
  if (width > kLargestSide || height > kLargestSide)
    throw Failure(ExitCode::Limit, fmt::format("--size: {} exceeds {} pixels a side", text, kLargestSide));
  return {width, height};
}

}  // namespace walk
