#include "Package.h"

#include "Textures.h"
#include "level/Wad3.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <stdexcept>

namespace ql::hl_maker {
namespace {

using maker::Picture;
using maker::Rgba;

constexpr int kSide = 128, kColors = 256;

/// Half as large, by averages; a hole where most of the four pixels are holes.
Picture halved(const Picture& from) {
  Picture to{from.width / 2, from.height / 2, {}};
  for (int y = 0; y < to.height; ++y)
    for (int x = 0; x < to.width; ++x) {
      int sums[3] = {}, opaque = 0;
      for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
        const Rgba& p = from.pixels[static_cast<std::size_t>((2 * y + dy) * from.width + 2 * x + dx)];
        if (p.a < 128) continue;
        ++opaque;
        sums[0] += p.r, sums[1] += p.g, sums[2] += p.b;
      }
      const auto mean = [&](int sum) {
        return static_cast<std::uint8_t>(opaque == 0 ? 0 : (sum + opaque / 2) / opaque);
      };
      to.pixels.push_back(
          {mean(sums[0]), mean(sums[1]), mean(sums[2]), static_cast<std::uint8_t>(opaque >= 2 ? 255 : 0)});
    }
  return to;
}

std::uint8_t channel(const Rgba& p, int which) { return which == 0 ? p.r : which == 1 ? p.g : p.b; }

/// Colours by median cut: the box of colours with the widest channel is parted at its middle, again and again.
std::vector<Rgba> chooseColors(std::vector<Rgba> pixels, std::size_t count) {
  struct Range {
    std::size_t first, last;
    int channel = 0, width = 0;
  };
  const auto measured = [&](std::size_t first, std::size_t last) {
    Range range{first, last};
    for (int c = 0; c < 3; ++c) {
      const auto [low, high] = std::minmax_element(
          pixels.begin() + static_cast<std::ptrdiff_t>(first), pixels.begin() + static_cast<std::ptrdiff_t>(last),
          [c](const Rgba& a, const Rgba& b) { return channel(a, c) < channel(b, c); });
      const int width = channel(*high, c) - channel(*low, c);
      if (width > range.width) range.width = width, range.channel = c;
    }
    return range;
  };
  std::vector<Range> ranges;
  if (!pixels.empty()) ranges.push_back(measured(0, pixels.size()));
  while (ranges.size() < count && !ranges.empty()) {
    const auto widest = std::max_element(ranges.begin(), ranges.end(),
                                         [](const Range& a, const Range& b) { return a.width < b.width; });
    if (widest->width == 0) break;
    const Range range = *widest;
    const auto begin = pixels.begin() + static_cast<std::ptrdiff_t>(range.first),
               end = pixels.begin() + static_cast<std::ptrdiff_t>(range.last);
    std::stable_sort(begin, end, [&](const Rgba& a, const Rgba& b) {
      return channel(a, range.channel) < channel(b, range.channel);
    });
    const std::size_t middle = range.first + (range.last - range.first) / 2;
    *widest = measured(range.first, middle);
    ranges.push_back(measured(middle, range.last));
  }
  std::vector<Rgba> colors;
  for (const Range& range : ranges) {
    std::size_t sums[3] = {};
    const std::size_t size = range.last - range.first;
    for (std::size_t i = range.first; i < range.last; ++i)
      for (int c = 0; c < 3; ++c) sums[c] += channel(pixels[i], c);
    const auto mean = [&](int c) { return static_cast<std::uint8_t>((sums[c] + size / 2) / size); };
    colors.push_back({mean(0), mean(1), mean(2), 255});
  }
  return colors;
}

std::uint8_t nearest(const std::vector<Rgba>& colors, const Rgba& p) {
  std::size_t best = 0;
  int least = -1;
  for (std::size_t i = 0; i < colors.size(); ++i) {
    int distance = 0;
    for (int c = 0; c < 3; ++c) {
      const int d = channel(colors[i], c) - channel(p, c);
      distance += d * d;
    }
    if (least < 0 || distance < least) least = distance, best = i;
  }
  return static_cast<std::uint8_t>(best);
}

Picture flat(int side, Rgba color) {
  return {side, side, std::vector<Rgba>(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), color)};
}

/// Iron bars with holes between them.
Picture grate() {
  Picture iron = maker::paintTexture(*maker::findRecipe("iron"));
  while (iron.width > 64) iron = halved(iron);
  for (int y = 0; y < iron.height; ++y)
    for (int x = 0; x < iron.width; ++x)
      if (x % 16 >= 4 && y % 32 >= 5) iron.pixels[static_cast<std::size_t>(y * iron.width + x)].a = 0;
  return iron;
}

/// Daylight in the air, bluer at the top.
Picture daylight() {
  constexpr int kRows = 64;
  Picture light{kRows, kRows, {}};
  for (int y = 0; y < kRows; ++y) {
    const auto between = [y](int top, int bottom) {
      return static_cast<std::uint8_t>(top + (bottom - top) * y / (kRows - 1));
    };
    light.pixels.insert(light.pixels.end(), kRows, {between(168, 230), between(199, 230), between(230, 219), 255});
  }
  return light;
}

Picture pictureOf(const std::string& name) {
  if (name == "sky") return flat(16, {96, 144, 208, 255});
  if (name == "aaatrigger") return flat(16, {224, 112, 32, 255});
  if (name == "{grate") return grate();
  if (name == "daylight") return daylight();
  const maker::TextureRecipe* recipe = maker::findRecipe(name[0] == '!' ? name.substr(1) : name);
  if (recipe == nullptr) throw std::runtime_error("no texture is called " + name);
  Picture picture = maker::paintTexture(*recipe);
  for (Rgba& p : picture.pixels) p.a = 255;
  while (picture.width > kSide) picture = halved(picture);
  return picture;
}

}  // namespace

IndexedTexture makeTexture(const std::string& name) {
  Picture picture = pictureOf(name);
  IndexedTexture texture{name, picture.width, picture.height, {}, {}};
  const bool cutOut = name[0] == level::kCutOutMark;
  std::vector<Rgba> opaque;
  std::copy_if(picture.pixels.begin(), picture.pixels.end(), std::back_inserter(opaque),
               [](const Rgba& p) { return p.a >= 128; });
  const std::vector<Rgba> colors = chooseColors(std::move(opaque), kColors - 1);
  for (const Rgba& color : colors)
    for (int c = 0; c < 3; ++c) texture.palette.push_back(channel(color, c));
  texture.palette.resize(kColors * 3);
  texture.palette.back() = 255;  // the last colour is the blue of holes
  for (Bytes& level : texture.levels) {
    for (const Rgba& p : picture.pixels) level.push_back(cutOut && p.a < 128 ? std::uint8_t{255} : nearest(colors, p));
    picture = halved(picture);
  }
  return texture;
}

Bytes encodePackage(const std::vector<IndexedTexture>& textures) {
  Bytes file, directory;
  const auto number = [](Bytes& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
  };
  const auto name16 = [](Bytes& out, const std::string& name) {
    for (std::size_t i = 0; i < 16; ++i)
      out.push_back(i < name.size() ? static_cast<std::uint8_t>(name[i]) : std::uint8_t{0});
  };
  file.resize(12);
  for (const IndexedTexture& texture : textures) {
    const auto start = static_cast<std::uint32_t>(file.size());
    name16(file, texture.name);
    number(file, static_cast<std::uint32_t>(texture.width));
    number(file, static_cast<std::uint32_t>(texture.height));
    std::uint32_t at = sizeof(level::MipTexture);
    for (const Bytes& level : texture.levels) {
      number(file, at);
      at += static_cast<std::uint32_t>(level.size());
    }
    for (const Bytes& level : texture.levels) file.insert(file.end(), level.begin(), level.end());
    file.insert(file.end(), {0, 1});  // 256 colours
    file.insert(file.end(), texture.palette.begin(), texture.palette.end());
    file.insert(file.end(), 2, 0);
    const auto size = static_cast<std::uint32_t>(file.size()) - start;
    for (const std::uint32_t value : {start, size, size, std::uint32_t{level::kWadTexture}}) number(directory, value);
    name16(directory, texture.name);
  }
  Bytes header{'W', 'A', 'D', '3'};
  number(header, static_cast<std::uint32_t>(textures.size()));
  number(header, static_cast<std::uint32_t>(file.size()));
  std::copy(header.begin(), header.end(), file.begin());
  file.insert(file.end(), directory.begin(), directory.end());
  return file;
}

}  // namespace ql::hl_maker
