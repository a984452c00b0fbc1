// Files that nobody here wrote, against what independent readers say of them.
#include "platform/host/Fault.h"
#include "platform/host/Files.h"
#include "platform/images/Image.h"
#include "support/SharedData.h"

#include <chrono>
#include <cmath>
#include <fstream>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ql::images {
namespace {

using nlohmann::json;

/// Where we differ from the reader that stated the facts, and why.
const std::map<std::string, const char*> kMeansThatDiffer = {
    {"bmp/pal4rle.bmp", "the other reader loses literals of four bits; ours equals pal4.bmp"},
};
constexpr double kMeanTolerance = 0.7;  // five and six bits are widened by repetition, there by rounding down

json channels(const Image& image, std::uint32_t x, std::uint32_t y) {
  const std::uint32_t p = image.at(x, y);
  return {p >> 16 & 255, p >> 8 & 255, p & 255, p >> 24};
}

void expectNear(const json& got, const json& want, double tolerance, const std::string& what) {
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_NEAR(got[i].get<double>(), want[i].get<double>(), tolerance) << what << " channel " << i;
}

std::vector<double> meanOf(const Image& image) {
  std::vector<double> sums(4);
  for (const std::uint32_t p : image.pixels) {
    sums[0] += p >> 16 & 255;
    sums[1] += p >> 8 & 255;
    sums[2] += p & 255;
    sums[3] += p >> 24;
  }
  for (double& sum : sums) sum /= static_cast<double>(image.pixels.size());
  return sums;
}

TEST(RealPictures, AgreeWithIndependentReaders) {
  QL_NEED_SHARED_DATA();
  const json manifest = json::parse(std::ifstream(test::sharedData() / "MANIFEST.json"));
  std::set<std::string> formats;
  for (const json& entry : manifest["files"]) {
    const std::string format = entry["format"], name = entry["file"];
    if (format != "bmp" && format != "jpg" && format != "tga" && format != "png" && format != "dds") continue;
    SCOPED_TRACE(name);
    formats.insert(format);
    const std::vector<std::byte> bytes = host::readFile((test::sharedData() / name).string());
    Image image;
    ASSERT_NO_THROW(image = decode(bytes, name));
    const json& facts = entry["facts"].contains("size") ? entry["facts"] : entry["facts"].value("gm", json::object());
    if (!facts.contains("size")) continue;  // no other reader could; it decodes, and was looked at
    EXPECT_EQ(image.width, facts["size"][0]);
    EXPECT_EQ(image.height, facts["size"][1]);
    const ImageInfo info = inspect(bytes, name);
    EXPECT_EQ(info.width, image.width);
    EXPECT_EQ(info.height, image.height);
    if (kMeansThatDiffer.contains(name)) continue;
    if (facts.contains("mean_rgba")) expectNear(meanOf(image), facts["mean_rgba"], kMeanTolerance, "mean");
    const double tolerance = format == "jpg" ? 6 : 1;
    const std::uint32_t right = image.width - 1, bottom = image.height - 1;
    expectNear(channels(image, 0, 0), facts["pixels"]["tl"], tolerance, "top left");
    expectNear(channels(image, right, 0), facts["pixels"]["tr"], tolerance, "top right");
    expectNear(channels(image, 0, bottom), facts["pixels"]["bl"], tolerance, "bottom left");
    expectNear(channels(image, right, bottom), facts["pixels"]["br"], tolerance, "bottom right");
  }
  EXPECT_EQ(formats.size(), 5u);
}

TEST(RealPictures, OnePictureInSeveralEncodings) {
  QL_NEED_SHARED_DATA();
  const auto load = [](const std::string& name) {
    return decode(host::readFile((test::sharedData() / name).string()), name).pixels;
  };
  for (const auto& [a, b] : {std::pair{"bmp/pal4.bmp", "bmp/pal4rle.bmp"},
                             {"bmp/pal8.bmp", "bmp/pal8rle.bmp"},
                             {"bmp/pal8.bmp", "bmp/pal8topdown.bmp"},
                             {"bmp/pal8.bmp", "bmp/pal8os2.bmp"},
                             {"bmp/rgb24.bmp", "bmp/rgb32bf.bmp"},
                             {"bmp/hopper.bmp", "png/hopper.png"},
                             {"bmp/hopper.bmp", "dds/hopper.dds"},
                             {"tga/200x32_rgba_bl_rle.tga", "tga/200x32_rgba_tl_raw.tga"},
                             {"tga/200x32_p_bl_raw.tga", "tga/200x32_p_tl_rle.tga"}})
    EXPECT_EQ(load(a), load(b)) << a << ", " << b;
}

TEST(RealPictures, DamagedOnesEndInAPictureOrAFault) {
  QL_NEED_SHARED_DATA();
  std::size_t seen = 0;
  for (const char* folder : {"hostile/bmp", "hostile/jpg", "hostile/tga", "hostile/png", "hostile/dds"})
    for (const std::filesystem::path& path : test::sharedFiles(folder)) {
      if (path.extension() == ".json") continue;
      SCOPED_TRACE(path.string());
      const std::vector<std::byte> bytes = host::readFile(path.string());
      const auto start = std::chrono::steady_clock::now();
      try {
        for (const Image& level : decodeLevels(bytes, path.string()))
          EXPECT_EQ(level.pixels.size(), std::size_t{level.width} * level.height);
      } catch (const host::FileFault&) {
      }
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
      ++seen;
    }
  EXPECT_GT(seen, 100u);
}

}  // namespace
}  // namespace ql::images
