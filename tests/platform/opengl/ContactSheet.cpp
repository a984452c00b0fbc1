#include "platform/opengl/ContactSheet.h"

#include "support/JpgFile.h"

#include <array>
#include <string>

namespace ql::test {
namespace {

constexpr std::uint32_t kGap = 2, kSpace = 18;  // between pictures; beside a scene, for its number
constexpr std::uint32_t kPaper = 0xFFE8E8E8, kInk = 0xFF303030;

// Digits of 3 × 5 pixels, rows from the top, the left pixel in the highest bit.
constexpr std::array<std::uint16_t, 10> kDigits = {
    0b111101101101111, 0b010110010010111, 0b111001111100111, 0b111001111001111, 0b101101111001001,
    0b111100111001111, 0b111100111101111, 0b111001010010010, 0b111101111101111, 0b111101111001111};

}  // namespace

ContactSheet::ContactSheet(std::uint32_t columns, std::uint32_t pictures, std::size_t scenes)
    : columns_(columns), cellWidth_(pictures * (kSceneWidth + kGap) + (pictures > 1 ? kSpace : 0)) {
  const auto rows = static_cast<std::uint32_t>((scenes + columns - 1) / columns);
  image_.width = columns * cellWidth_;
  image_.height = rows * (kSceneHeight + kGap);
  image_.pixels.assign(std::size_t{image_.width} * image_.height, kPaper);
}

ContactSheet::Place ContactSheet::placeOf(std::uint32_t scene) const {
  return {scene % columns_ * cellWidth_, scene / columns_ * (kSceneHeight + kGap)};
}

void ContactSheet::add(const std::vector<std::vector<std::uint32_t>>& pictures) {
  Place at = placeOf(count_++);
  if (pictures.size() > 1) at.x += kSpace;
  for (const std::vector<std::uint32_t>& picture : pictures) {
    for (std::uint32_t y = 0; y < kSceneHeight; ++y)
      for (std::uint32_t x = 0; x < kSceneWidth; ++x)
        image_.at(at.x + x, at.y + y) = picture[y * kSceneWidth + x] | 0xFF000000;
    at.x += kSceneWidth + kGap;
  }
}

std::vector<std::byte> ContactSheet::jpg() const {
  images::Image labelled = image_;
  for (std::uint32_t scene = 0; scene < count_; ++scene) {
    Place at = placeOf(scene);
    at.x += 2;
    for (const char digit : std::to_string(scene + 1)) {
      for (std::uint32_t i = 0; i < 15; ++i)
        if (kDigits[static_cast<std::size_t>(digit - '0')] >> (14 - i) & 1)
          labelled.at(at.x + i % 3, at.y + 2 + i / 3) = kInk;
      at.x += 4;
    }
  }
  return jpgFile(labelled.pixels, static_cast<int>(labelled.width), static_cast<int>(labelled.height), TJPF_BGRX,
                 TJSAMP_420, 0, 72);
}

}  // namespace ql::test
