// Whole levels on the hardware device and on the reference device.
#include "platform/images/Image.h"
#include "support/RunProgram.h"
#include "support/SharedData.h"
#include "support/TemporaryFolder.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

namespace fs = std::filesystem;

constexpr int kNoDevice = 5;

/// The mean difference of a channel of two pictures, 0 to 255.
double meanDifference(const images::Image& a, const images::Image& b) {
  if (a.pixels.size() != b.pixels.size() || a.pixels.empty()) return 255;
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i)
    for (int shift = 0; shift < 24; shift += 8)
      sum += static_cast<std::uint64_t>(
          std::abs(static_cast<int>(a.pixels[i] >> shift & 255) - static_cast<int>(b.pixels[i] >> shift & 255)));
  return static_cast<double>(sum) / (3.0 * static_cast<double>(a.pixels.size()));
}

bool blank(const images::Image& image) {
  for (const std::uint32_t pixel : image.pixels)
    if (pixel != image.pixels[0]) return false;
  return true;
}

images::Image pictureOf(const fs::path& file) {
  const std::string text = contents(file);
  return images::decode(bytesOf(text), file.string());
}

/// Flies through a level on both devices. @return false: there is no hardware device
bool fliesAlike(const fs::path& level, const fs::path& base) {
  const std::string start = std::string("env -u DISPLAY -u WAYLAND_DISPLAY ") + QL_WALK + " " + quoted(level.string()) +
                            " --base " + quoted(base.string()) + " --frames 21 --every 5 --size 320x240 --quiet";
  const int code = runProgram(start + " --device hal --out hal").code;
  if (code == kNoDevice) return false;
  EXPECT_EQ(code, 0) << level;
  EXPECT_EQ(runProgram(start + " --device ref --out ref").code, 0) << level;
  for (const char* name : {"frame-0000.png", "frame-0005.png", "frame-0010.png", "frame-0015.png", "frame-0020.png"}) {
    const images::Image hal = pictureOf(fs::path("hal") / name), ref = pictureOf(fs::path("ref") / name);
    EXPECT_LT(meanDifference(hal, ref), 1) << level << " " << name;
    EXPECT_FALSE(blank(ref)) << level << " " << name;
  }
  return true;
}

TEST(BothDevices, DrawTheDemoLevelAlike) {
  const TemporaryFolder folder;
  const fs::path assets = QL_ASSETS_DIR;
  if (!fs::exists(assets / "maps/court.bsp")) GTEST_SKIP() << "no demo level";
  if (!fliesAlike(assets / "maps/court.bsp", assets)) GTEST_SKIP() << "no OpenGL 3.3 on this machine";
}

TEST(BothDevices, DrawRealLevelsAlike) {
  QL_NEED_SHARED_DATA();
  const TemporaryFolder folder;
  for (const char* name : {"aggressor", "wrackdm17"}) {
    const fs::path base = sharedData() / "q3bsp" / name;
    const fs::path level = base / "maps" / (std::string(name) + ".bsp");
    if (fs::exists(level) && !fliesAlike(level, base)) GTEST_SKIP() << "no OpenGL 3.3 on this machine";
  }
}

}  // namespace
}  // namespace ql::test
