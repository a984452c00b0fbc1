/// @file
/// Reference pictures. Programs that include this link the module platform_images.
#pragma once

#include "platform/images/Image.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace ql::test {

inline void writeBytes(const std::filesystem::path& path, std::span<const std::byte> bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// The largest difference of any colour channel; alpha does not count.
inline std::uint32_t channelDifference(std::uint32_t a, std::uint32_t b) {
  std::uint32_t most = 0;
  for (const int shift : {0, 8, 16}) {
    const std::uint32_t x = a >> shift & 255, y = b >> shift & 255;
    most = std::max(most, x > y ? x - y : y - x);
  }
  return most;
}

/// Whether a picture equals tests/golden/NAME.png, no channel of any pixel differing by more than a limit. A failure
/// leaves the picture and the difference (times 8) in golden-failures/ of the build folder. With QL_UPDATE_GOLDEN set
/// in the environment the picture becomes the reference: look at it before committing it.
inline testing::AssertionResult matchesGolden(images::Image picture, const std::string& name, std::uint32_t limit = 0) {
  for (std::uint32_t& pixel : picture.pixels) pixel |= 0xFF000000;
  const std::filesystem::path reference = std::filesystem::path(QL_GOLDEN_DIR) / (name + ".png");
  const std::filesystem::path failures = QL_GOLDEN_FAILURES;
  if (std::getenv("QL_UPDATE_GOLDEN") != nullptr) writeBytes(reference, images::encodePng(picture));
  std::ifstream in(reference, std::ios::binary);
  if (!in) {
    writeBytes(failures / (name + ".png"), images::encodePng(picture));
    return testing::AssertionFailure() << "no reference " << reference << "; the picture is in " << failures;
  }
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  const images::Image expected = images::decode(std::as_bytes(std::span(text)), reference.string());
  if (expected.width != picture.width || expected.height != picture.height)
    return testing::AssertionFailure() << name << ": " << picture.width << "x" << picture.height
                                       << ", the reference is " << expected.width << "x" << expected.height;
  images::Image difference = picture;
  std::size_t beyond = 0;
  std::uint32_t largest = 0;
  for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
    const std::uint32_t d = channelDifference(picture.pixels[i], expected.pixels[i]);
    largest = std::max(largest, d);
    if (d > limit) ++beyond;
    const std::uint32_t grey = std::min<std::uint32_t>(255, d * 8);
    difference.pixels[i] = 0xFF000000 | grey << 16 | grey << 8 | grey;
  }
  if (beyond == 0) return testing::AssertionSuccess();
  writeBytes(failures / (name + ".png"), images::encodePng(picture));
  writeBytes(failures / (name + "-difference.png"), images::encodePng(difference));
  return testing::AssertionFailure() << name << ": " << beyond << " pixels differ by more than " << limit
                                     << ", the most by " << largest << "; see " << failures;
}

}  // namespace ql::test
