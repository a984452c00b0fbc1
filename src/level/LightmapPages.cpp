#include "level/LightmapPages.h"

#include "level/Lightmap.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace ql::level {
namespace {

constexpr std::uint32_t kEdge = 1;  // texels around each lightmap that repeat its outermost ones
/// The smallest side that a lightmap is drawn with.
constexpr std::uint32_t kGrownSide = kSmallestLightmapSide;

/// Four channels of 16 bits in one number: sums and products by small numbers stay in their lanes.
using Lanes = std::uint64_t;
constexpr Lanes lanesOf(std::uint16_t pixel) {
  const auto channel = [&](unsigned shift, unsigned bits) {
    const std::uint32_t value = pixel >> shift & ((1U << bits) - 1);
    return Lanes{value << (8 - bits) | value >> (2 * bits - 8)};
  };
  return channel(11, 5) << 32 | channel(5, 6) << 16 | channel(0, 5);
}

/// The nearest values of 5 and 6 bits to those of 8.
template <unsigned kBits>
constexpr std::array<std::uint16_t, 256> narrowed() {
  std::array<std::uint16_t, 256> out{};
  constexpr std::uint32_t kLimit = (1U << kBits) - 1, kFull = 255;
  for (std::uint32_t i = 0; i < out.size(); ++i) out[i] = static_cast<std::uint16_t>((i * kLimit + kFull / 2) / kFull);
  return out;
}
constexpr auto kFiveBits = narrowed<5>(), kSixBits = narrowed<6>();

std::uint16_t pixelOf(Lanes lanes) {
  const auto channel = [&](unsigned lane) { return static_cast<std::uint8_t>(lanes >> (16 * lane + 8)); };
  return static_cast<std::uint16_t>(kFiveBits[channel(2)] << 11 | kSixBits[channel(1)] << 5 | kFiveBits[channel(0)]);
}

/// The two luxels that a texel of a grown side lies between: the first, and sixteenths of the second.
struct Between {
  std::uint32_t first = 0, second = 0, part = 0;
};
constexpr std::uint32_t kParts = 16;

/// For a texel of a side that grows from `from` to 8 luxels, the luxels' outermost centres being its ends.
Between between(std::uint32_t texel, std::uint32_t from, std::uint32_t to) {
  if (from == to) return {texel, texel, 0};
  const std::uint32_t at = (2 * texel + 1) * from, half = kParts / 2;  // sixteenths, from the first luxel's near end
  if (at <= half) return {};
  const std::uint32_t first = std::min((at - half) / kParts, from - 1);
  return {first, std::min(first + 1, from - 1), first + 1 < from ? (at - half) % kParts : 0};
}

/// Draws lightmaps on pages.
class Painter {
 public:
  explicit Painter(std::span<const std::byte> lighting) : lighting_(lighting) {}

  void paint(LightmapPage& page, const LightmapPlace& place, const HlLightmap& light) {
    std::uint16_t* out = &page.pixels[std::size_t{place.y} * page.width + place.x];
    const std::span<const std::byte> rgb = lighting_.subspan(light.offset, std::size_t{light.width} * light.height * 3);
    if (light.width == place.width && light.height == place.height)
      for (std::size_t y = 0; y < light.height; ++y)
        brightenPixels(rgb.subspan(y * light.width * 3, std::size_t{light.width} * 3), out + y * page.width);
    else
      grow(rgb, light, place, out, page.width);
  }

 private:
  void grow(std::span<const std::byte> rgb, const HlLightmap& light, const LightmapPlace& place, std::uint16_t* out,
            std::size_t pitch) {
    const std::size_t luxels = rgb.size() / 3;
    pixels_.resize(luxels);
    brightenPixels(rgb, pixels_.data());
    wide_.resize(std::size_t{place.width} * light.height);
    for (std::uint32_t x = 0; x < place.width; ++x) {
      const Between at = between(x, light.width, place.width);
      for (std::size_t y = 0; y < light.height; ++y) {
        const std::uint16_t* row = &pixels_[y * light.width];
        wide_[y * place.width + x] = lanesOf(row[at.first]) * (kParts - at.part) + lanesOf(row[at.second]) * at.part;
      }
    }
    constexpr Lanes kHalf = 0x0080'0080'0080;
    for (std::uint32_t y = 0; y < place.height; ++y, out += pitch) {
      const Between at = between(y, light.height, place.height);
      const Lanes* upper = &wide_[std::size_t{at.first} * place.width];
      const Lanes* lower = &wide_[std::size_t{at.second} * place.width];
      for (std::size_t x = 0; x < place.width; ++x)
        out[x] = pixelOf(upper[x] * (kParts - at.part) + lower[x] * at.part + kHalf);
    }
  }

  std::span<const std::byte> lighting_;
  std::vector<std::uint16_t> pixels_;
  std::vector<Lanes> wide_;
};

/// Repeats a lightmap's outermost texels around it.
void repeatEdges(LightmapPage& page, const LightmapPlace& place) {
  const std::size_t pitch = page.width;
  std::uint16_t* first = &page.pixels[place.y * pitch + place.x];
  std::uint16_t* row = first;
  for (std::uint32_t y = 0; y < place.height; ++y, row += pitch) {
    row[-1] = row[0];
    row[place.width] = row[place.width - 1];
  }
  std::copy_n(first - 1, place.width + 2 * kEdge, first - 1 - pitch);
  std::copy_n(row - pitch - 1, place.width + 2 * kEdge, row - 1);
}

/// Rows of lightmaps, the highest first, each row as high as its first.
class Shelves {
 public:
  Shelves(std::vector<LightmapPage>& pages, std::uint32_t side) : pages_(pages), side_(side) {}

  void place(LightmapPlace& place) {
    const std::uint32_t width = place.width + 2 * kEdge, height = place.height + 2 * kEdge;
    if (pages_.empty() || width > side_ - x_) {
      top_ += shelf_;
      x_ = shelf_ = 0;
      if (pages_.empty() || height > side_ - top_) {
        finish();
        pages_.push_back({side_, 0, false, {}});
        top_ = 0;
      }
      shelf_ = height;
    }
    place.page = pages_.size() - 1;
    place.x = x_ + kEdge;
    place.y = top_ + kEdge;
    x_ += width;
  }
  /// Ends the page that is being filled.
  void finish() {
    if (!pages_.empty()) pages_.back().height = std::bit_ceil(top_ + shelf_);
  }

 private:
  std::vector<LightmapPage>& pages_;
  std::uint32_t side_;
  std::uint32_t x_ = 0, top_ = 0, shelf_ = 0;
};

}  // namespace

LightmapPages makeLightmapPages(std::span<const std::byte> lighting, std::span<const HlLightmap> lightmaps,
                                std::uint32_t largestSide) {
  LightmapPages out;
  out.places.resize(lightmaps.size());
  const std::uint32_t most = std::bit_floor(std::min(kLightmapPageSide, largestSide));
  std::vector<std::size_t> order, alone;
  std::uint64_t area = 0;
  std::uint32_t widest = 0;
  for (std::size_t i = 0; i < lightmaps.size(); ++i) {
    LightmapPlace& place = out.places[i];
    place.width = std::max(lightmaps[i].width, kGrownSide);
    place.height = std::max(lightmaps[i].height, kGrownSide);
    const std::uint32_t width = place.width + 2 * kEdge, height = place.height + 2 * kEdge;
    const bool fits = width <= most && height <= most;
    (fits ? order : alone).push_back(i);
    if (!fits) continue;
    area += std::uint64_t{width} * height;
    widest = std::max({widest, width, height});
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return out.places[a].height > out.places[b].height; });
  const auto square = static_cast<std::uint32_t>(std::ceil(std::sqrt(static_cast<double>(area))));
  Shelves shelves(out.pages, std::min(std::bit_ceil(std::max(square, widest)), most));
  for (const std::size_t i : order) shelves.place(out.places[i]);
  shelves.finish();
  for (LightmapPage& page : out.pages) page.pixels.resize(std::size_t{page.width} * page.height);

  Painter painter(lighting);
  for (const std::size_t i : order) {
    painter.paint(out.pages[out.places[i].page], out.places[i], lightmaps[i]);
    repeatEdges(out.pages[out.places[i].page], out.places[i]);
  }
  for (const std::size_t i : alone) {
    LightmapPlace& place = out.places[i];
    place.page = out.pages.size();
    LightmapPage& page = out.pages.emplace_back(LightmapPage{place.width, place.height, true, {}});
    page.pixels.resize(std::size_t{page.width} * page.height);
    painter.paint(page, place, lightmaps[i]);
  }
  return out;
}

void usePages(HlFaces& faces, const LightmapPages& pages) {
  for (FaceRecord& face : faces.records) {
    if (face.lightmap < 0) continue;
    const LightmapPlace& place = pages.places[static_cast<std::size_t>(face.lightmap)];
    const LightmapPage& page = pages.pages[place.page];
    face.lightmap = static_cast<std::int32_t>(place.page);
    const auto toPage = [](float& coordinate, std::uint32_t at, std::uint32_t size, std::uint32_t side) {
      coordinate = (static_cast<float>(at) + coordinate * static_cast<float>(size)) / static_cast<float>(side);
    };
    for (std::size_t i = face.firstVertex; i < std::size_t{face.firstVertex} + face.triangleCount + 2; ++i) {
      toPage(faces.vertices[i].tu1, place.x, place.width, page.width);
      toPage(faces.vertices[i].tv1, place.y, place.height, page.height);
    }
  }
}

}  // namespace ql::level
