#include "platform/host/Fault.h"
#include "platform/images/Image.h"
#include "support/JpgFile.h"

#include <cstdlib>

#include <gmock/gmock.h>

namespace ql::images {
namespace {

constexpr int kWidth = 40, kHeight = 24;

/// A picture in four flat quarters, which survives coarse quantisation.
std::uint32_t quarter(int x, int y) {
  constexpr std::uint32_t kColors[4] = {0xFFE01010, 0xFF10D020, 0xFF2010C0, 0xFFF0F0F0};
  return kColors[(y < kHeight / 2 ? 0 : 2) + (x < kWidth / 2 ? 0 : 1)];
}

std::vector<std::byte> jpgFile(const std::vector<std::uint32_t>& pixels, int format, int sampling, int flags) {
  return test::jpgFile(pixels, kWidth, kHeight, format, sampling, flags);
}

std::vector<std::uint32_t> quarters() {
  std::vector<std::uint32_t> pixels;
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x) pixels.push_back(quarter(x, y));
  return pixels;
}

int farthestChannel(std::uint32_t a, std::uint32_t b) {
  int most = 0;
  for (int shift = 0; shift < 32; shift += 8)
    most = std::max(most, std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)));
  return most;
}

/// The centres of the four quarters, away from the edges that subsampling smears.
void expectQuarters(const Image& image, const char* name) {
  ASSERT_EQ(image.width, std::uint32_t{kWidth});
  ASSERT_EQ(image.height, std::uint32_t{kHeight});
  for (const int y : {4, kHeight - 4})
    for (const int x : {4, kWidth - 4})
      EXPECT_LE(farthestChannel(image.at(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)), quarter(x, y)),
                6)
          << name << x << ", " << y;
  EXPECT_FALSE(image.hasAlpha);
}

TEST(Jpg, DecodesBaselineAndProgressive) {
  struct Case {
    const char* name;
    int sampling, flags;
  };
  for (const Case& c :
       {Case{"full", TJSAMP_444, 0}, {"subsampled", TJSAMP_420, 0}, {"progressive", TJSAMP_420, TJFLAG_PROGRESSIVE}})
    expectQuarters(decode(jpgFile(quarters(), TJPF_BGRA, c.sampling, c.flags), ""), c.name);
  const Image grey = decode(jpgFile(quarters(), TJPF_BGRA, TJSAMP_GRAY, 0), "");
  const std::uint32_t p = grey.at(2, 2);
  EXPECT_EQ(p >> 24, 255u);
  EXPECT_EQ(p & 255, p >> 8 & 255);
  EXPECT_EQ(p & 255, p >> 16 & 255);
}

TEST(Jpg, FourInksBecomeColours) {
  // The writer declares inverted inks: 255 is none.
  std::vector<std::uint32_t> inks;
  for (const std::uint32_t p : quarters())
    inks.push_back(0xFF000000u | (p >> 16 & 255) | (p & 0xFF00) | (p & 255) << 16);
  expectQuarters(decode(jpgFile(inks, TJPF_CMYK, TJSAMP_444, 0), ""), "inks");
}

TEST(Jpg, RefusesWhatDoesNotAddUp) {
  using host::Fault;
  const std::vector<std::byte> good = jpgFile(quarters(), TJPF_BGRA, TJSAMP_420, 0);
  std::size_t frame = 2;
  while (good[frame] != std::byte{0xFF} || good[frame + 1] != std::byte{0xC0}) ++frame;
  struct Bad {
    const char* name;
    std::size_t at;
    int poke;
    Fault expect;
  };
  for (const Bad& b : {Bad{"height of tens of thousands", frame + 5, 0xFF, Fault::BadSize},
                       {"4096 rows and more, 10240 columns, in a few bytes", frame + 7, 0x28, Fault::TooLarge},
                       {"12-bit samples", frame + 4, 12, Fault::Unsupported},
                       {"a segment of length 0", frame + 3, 0, Fault::BadSize},
                       {"no components", frame + 9, 0, Fault::BadEncoding}}) {
    std::vector<std::byte> bad = good;
    bad[b.at] = static_cast<std::byte>(b.poke);
    if (b.expect == Fault::TooLarge) bad[frame + 5] = std::byte{0x10};
    try {
      decode(bad, "");
      ADD_FAILURE() << b.name;
    } catch (const host::FileFault& fault) {
      EXPECT_EQ(fault.id, b.expect) << b.name << ": " << fault.what();
    }
  }
}

TEST(Jpg, EveryPrefixFails) {
  for (const int flags : {0, TJFLAG_PROGRESSIVE}) {
    const std::vector<std::byte> good = jpgFile(quarters(), TJPF_BGRA, TJSAMP_420, flags);
    for (std::size_t n = 0; n < good.size(); ++n) {
      const std::vector<std::byte> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n));
      EXPECT_THROW(decode(cut, ""), host::FileFault) << n;
    }
  }
}

}  // namespace
}  // namespace ql::images
