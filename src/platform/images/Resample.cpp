#include "platform/images/Image.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ql::images {
namespace {

/// The source pixels behind one target pixel along one axis, and their weights, which add up to 1.
struct Taps {
  std::uint32_t first = 0;
  std::vector<float> weights;
};

/// Shrinking: the part of each source pixel that the target pixel covers.
Taps coveredBy(std::uint32_t target, std::uint32_t from, std::uint32_t to) {
  const double scale = static_cast<double>(from) / to;
  const double begin = target * scale, end = std::min((target + 1) * scale, static_cast<double>(from));
  Taps taps{.first = static_cast<std::uint32_t>(begin), .weights = {}};
  for (std::uint32_t i = taps.first; i < end && i < from; ++i)
    taps.weights.push_back(static_cast<float>((std::min(i + 1.0, end) - std::max<double>(i, begin)) / scale));
  return taps;
}

/// Growing: the two source pixels whose centres lie around the target pixel's centre.
Taps around(std::uint32_t target, std::uint32_t from, std::uint32_t to) {
  const double at = std::clamp((target + 0.5) * from / to - 0.5, 0.0, from - 1.0);
  const auto first = std::min(static_cast<std::uint32_t>(at), from - 1);
  const auto part = static_cast<float>(at - first);
  Taps taps{.first = first, .weights = {1 - part}};
  if (part > 0) taps.weights.push_back(part);
  return taps;
}

std::vector<Taps> tapsFor(std::uint32_t from, std::uint32_t to) {
  std::vector<Taps> taps;
  taps.reserve(to);
  for (std::uint32_t i = 0; i < to; ++i) taps.push_back(to < from ? coveredBy(i, from, to) : around(i, from, to));
  return taps;
}

using Channels = std::array<float, 4>;

void resampleRow(std::span<const std::uint32_t> row, std::span<const Taps> columns, std::span<Channels> out) {
  for (std::size_t x = 0; x < columns.size(); ++x) {
    Channels sum{};
    for (std::size_t i = 0; i < columns[x].weights.size(); ++i) {
      const std::uint32_t pixel = row[columns[x].first + i];
      const float weight = columns[x].weights[i];
      for (std::uint32_t c = 0; c < 4; ++c) sum[c] += weight * static_cast<float>(pixel >> (8 * c) & 255);
    }
    out[x] = sum;
  }
}

std::uint32_t packed(const Channels& sum) {
  std::uint32_t pixel = 0;
  for (std::uint32_t c = 0; c < 4; ++c)
    pixel |= static_cast<std::uint32_t>(std::clamp(sum[c] + 0.5f, 0.0f, 255.0f)) << (8 * c);
  return pixel;
}

}  // namespace

Image resample(const Image& image, std::uint32_t width, std::uint32_t height) {
  if (width == image.width && height == image.height) return image;
  Image out{.width = width, .height = height, .pixels = {}, .hasAlpha = image.hasAlpha};
  out.pixels.assign(std::size_t{width} * height, 0);
  if (image.pixels.empty()) return out;
  const std::vector<Taps> columns = tapsFor(image.width, width), rows = tapsFor(image.height, height);
  // Neighbouring target rows share at most two source rows; two slots keep those from being filtered twice.
  struct Slot {
    std::uint32_t source = UINT32_MAX;
    std::vector<Channels> row;
  };
  std::array<Slot, 2> slots;
  for (Slot& slot : slots) slot.row.resize(width);
  const auto filteredRow = [&](std::uint32_t y) -> const std::vector<Channels>& {
    Slot& slot = slots[y % 2];
    if (slot.source != y) {
      resampleRow(std::span(image.pixels).subspan(std::size_t{y} * image.width, image.width), columns, slot.row);
      slot.source = y;
    }
    return slot.row;
  };
  std::vector<Channels> sum(width);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::ranges::fill(sum, Channels{});
    for (std::uint32_t i = 0; i < rows[y].weights.size(); ++i) {
      const std::vector<Channels>& row = filteredRow(rows[y].first + i);
      const float weight = rows[y].weights[i];
      for (std::uint32_t x = 0; x < width; ++x)
        for (std::uint32_t c = 0; c < 4; ++c) sum[x][c] += weight * row[x][c];
    }
    for (std::uint32_t x = 0; x < width; ++x) out.at(x, y) = packed(sum[x]);
  }
  return out;
}

Image halve(const Image& image) {
  if (image.pixels.empty()) return image;
  Image out{.width = std::max(1u, image.width / 2),
            .height = std::max(1u, image.height / 2),
            .pixels = {},
            .hasAlpha = image.hasAlpha};
  out.pixels.resize(std::size_t{out.width} * out.height);
  // Two channels at a time, each in the lower half of 16 bits, so that four of them add up without touching.
  constexpr std::uint32_t kEven = 0x00FF00FF, kHalf = 0x00020002;
  for (std::uint32_t y = 0; y < out.height; ++y) {
    const std::uint32_t* upper = &image.pixels[std::size_t{2 * y} * image.width];
    const std::uint32_t* lower = &image.pixels[std::size_t{std::min(2 * y + 1, image.height - 1)} * image.width];
    for (std::uint32_t x = 0; x < out.width; ++x) {
      const std::uint32_t left = 2 * x, right = std::min(2 * x + 1, image.width - 1);
      std::uint32_t even = kHalf, odd = kHalf;
      for (const std::uint32_t p : {upper[left], upper[right], lower[left], lower[right]}) {
        even += p & kEven;
        odd += p >> 8 & kEven;
      }
      out.at(x, y) = (even >> 2 & kEven) | (odd >> 2 & kEven) << 8;
    }
  }
  return out;
}

}  // namespace ql::images
