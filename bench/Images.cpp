// Decoding of one 512 × 512 texture in every format, and what is done with it afterwards. "copy" is the floor: the same
// pixels from memory to memory.
#include "platform/images/Image.h"
#include "support/JpgFile.h"
#include "support/PictureFiles.h"

#include <cmath>
#include <random>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;
using images::Image;
constexpr std::uint32_t kSide = 512;

/// Smooth shades with some noise: neither trivial nor impossible to compress.
Image texture(bool alpha) {
  std::mt19937 random(1);
  Image image{.width = kSide, .height = kSide, .pixels = {}, .hasAlpha = alpha};
  for (std::uint32_t y = 0; y < kSide; ++y)
    for (std::uint32_t x = 0; x < kSide; ++x) {
      const auto wave = static_cast<std::uint32_t>(120 + 100 * std::sin(x * 0.02) * std::cos(y * 0.03));
      const std::uint32_t noise = static_cast<std::uint32_t>(random()) & 7;
      image.pixels.push_back((alpha ? (x & 255) << 24 : 0xFF000000u) | wave << 16 | (x / 2 + noise) / 2 << 8 | y / 2);
    }
  return image;
}

struct Source {
  const char* name;
  std::vector<std::byte> file;
  Image expected;  ///< empty where the format loses something
};

std::vector<std::byte> bottomUp(const Image& image, std::size_t bytes) {
  test::FileBytes out;
  for (std::uint32_t y = 0; y < kSide; ++y)
    for (std::uint32_t x = 0; x < kSide; ++x) out.put(image.at(x, kSide - 1 - y), bytes);
  return out.take();
}

/// Packets of at most 128 pixels: runs where neighbours are equal, bare pixels elsewhere.
std::vector<std::byte> packets(const Image& image) {
  test::FileBytes out;
  const auto& pixels = image.pixels;
  for (std::size_t at = 0; at < pixels.size();) {
    std::size_t run = 1;
    while (run < 128 && at + run < pixels.size() && pixels[at + run] == pixels[at]) ++run;
    out.u8(run > 1 ? 0x80 | (run - 1) : 0).u32(pixels[at]);
    at += run;
  }
  return out.take();
}

std::vector<std::byte> noiseBlocks(std::size_t bytes) {
  std::mt19937 random(2);
  std::vector<std::byte> out(bytes);
  for (std::byte& b : out) b = static_cast<std::byte>(random());
  return out;
}

std::vector<Source> sources() {
  const Image opaque = texture(false), alpha = texture(true);
  const auto jpg = [&](int flags) {
    return test::jpgFile(opaque.pixels, static_cast<int>(kSide), static_cast<int>(kSide), TJPF_BGRA, TJSAMP_420, flags);
  };
  const auto dds = [](const char* code, std::size_t blockBytes) {
    return test::ddsFile({.width = kSide, .height = kSide, .code = code},
                         noiseBlocks(kSide / 4 * (kSide / 4) * blockBytes));
  };
  const test::TgaFields tga{.type = 2, .width = kSide, .height = kSide, .bits = 32, .descriptor = 8};
  return {{"a.bmp 24", images::encodeBmp(opaque), opaque},
          {"a.tga 32", test::tgaFile(tga, bottomUp(alpha, 4)), alpha},
          {"a.tga packed",
           test::tgaFile({.type = 10, .width = kSide, .height = kSide, .bits = 32, .descriptor = 40}, packets(alpha)),
           alpha},
          {"a.jpg baseline", jpg(0), {}},
          {"a.jpg progressive", jpg(TJFLAG_PROGRESSIVE), {}},
          {"a.png 24", images::encodePng(opaque), opaque},
          {"a.png 32", images::encodePng(alpha), alpha},
          {"a.dds DXT1", dds("DXT1", 8), {}},
          {"a.dds DXT5", dds("DXT5", 16), {}}};
}

void decodeTexture(benchmark::State& state, const Source& source) {
  const std::string_view name = std::string_view(source.name).substr(0, 5);
  const Image first = images::decode(source.file, name);
  if (first.width != kSide || first.height != kSide) state.SkipWithError("wrong size");
  if (!source.expected.pixels.empty() && first.pixels != source.expected.pixels) state.SkipWithError("wrong pixels");
  for (auto _ : state) benchmark::DoNotOptimize(images::decode(source.file, name));
  state.SetItemsProcessed(state.iterations() * kSide * kSide);
}

void copyPixels(benchmark::State& state) {
  const Image image = texture(true);
  for (auto _ : state) benchmark::DoNotOptimize(std::vector<std::uint32_t>(image.pixels));
  state.SetItemsProcessed(state.iterations() * kSide * kSide);
}
BENCHMARK(copyPixels);

void halveChain(benchmark::State& state) {
  const Image image = texture(true);
  for (auto _ : state)
    for (Image level = images::halve(image); level.width > 1; level = images::halve(level))
      benchmark::DoNotOptimize(level.pixels.data());
  state.SetItemsProcessed(state.iterations() * kSide * kSide);
}
BENCHMARK(halveChain);

void resampleTo(benchmark::State& state) {
  const Image image = texture(true);
  const auto side = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(images::resample(image, side, side));
  state.SetItemsProcessed(state.iterations() * kSide * kSide);
}
BENCHMARK(resampleTo)->Arg(256)->Arg(300)->Arg(1024);

const bool registered = [] {
  static const std::vector<Source> kSources = sources();
  for (const Source& source : kSources)
    benchmark::RegisterBenchmark(source.name, [&source](benchmark::State& state) { decodeTexture(state, source); });
  return true;
}();

}  // namespace
