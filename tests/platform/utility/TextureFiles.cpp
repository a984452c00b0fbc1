// Pictures on their way from files and memory into textures and surfaces.
#include "platform/utility/TextureFiles.h"

#include "support/FakeDisplay.h"
#include "support/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <fstream>

#include <gtest/gtest.h>

using namespace ql::device;
using namespace ql::utility;
using ql::test::parameters;
using ql::test::raw;

namespace {

struct TextureFiles : ::testing::Test {
  ql::test::TemporaryFolder folder;
  std::shared_ptr<ql::test::SpyBackEnd> spy = std::make_shared<ql::test::SpyBackEnd>();
  Device device{spy, DeviceType::Reference, parameters(64, 48)};

  static void file(const std::string& name, std::span<const std::byte> bytes) {
    std::ofstream out(name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  /// A picture from rows of 0xAARRGGBB, from the top; 32 bits with alpha or 24 bits without.
  static void picture(const std::string& name, std::uint32_t width, std::vector<std::uint32_t> pixels, bool alpha) {
    ql::test::FileBytes data;
    for (const std::uint32_t pixel : pixels) data.put(pixel, alpha ? 4 : 3);
    ql::test::TgaFields fields;
    fields.width = width;
    fields.height = static_cast<std::uint32_t>(pixels.size()) / width;
    fields.bits = alpha ? 32 : 24;
    fields.descriptor = alpha ? 32 + 8 : 32;
    file(name, ql::test::tgaFile(fields, data.take()));
  }
  static std::vector<std::uint32_t> level(const Texture& texture, std::uint32_t number) {
    const std::vector<std::byte> bytes = texture.readLevel(number);
    std::vector<std::uint32_t> argb(bytes.size() / bytesPerPixel(texture.description().format));
    toArgb(texture.description().format, bytes, argb);
    return argb;
  }
  std::uint32_t codeOf(const std::string& name) {
    try {
      createTextureFromFile(device, name, {});
    } catch (const DeviceError& error) {
      EXPECT_NE(*error.what(), '\0');
      return error.code;
    }
    return 0;
  }
};

using Colors = std::vector<std::uint32_t>;

TEST_F(TextureFiles, RequirementsBecomeWhatTheDeviceHas) {
  struct Row {
    std::uint32_t width, height, levels, format, usage;
    std::uint32_t gotWidth, gotHeight, gotLevels, gotFormat;
  };
  constexpr std::uint32_t kAny = 0xFFFFFFFF;
  const Row rows[] = {
      {256, 256, 1, 23, 0, 256, 256, 1, 23}, {256, 256, 1, 26, 0, 256, 256, 1, 26},
      {kAny, 0, 0, 21, 0, 256, 256, 9, 21},  {5000, 100, 0, 21, 0, 4096, 100, 13, 21},
      {100, 60, 99, 22, 0, 100, 60, 7, 22},  {1, 1, 0, 20, 0, 1, 1, 1, 22},
      {8, 8, 2, 41, 0, 8, 8, 2, 21},         {8, 8, 2, 0, 0, 8, 8, 2, 21},
      {8, 8, 2, 0x31545844, 0, 8, 8, 2, 21}, {8, 8, 2, 80, 0, 8, 8, 2, 21},
      {8, 8, 2, 52, 0, 8, 8, 2, 51},         {8, 8, 2, 26, 1, 8, 8, 2, 21},
      {8, 8, 2, 23, 1, 8, 8, 2, 23},         {8, 8, 2, 50, 1, 8, 8, 2, 22},
  };
  for (const Row& r : rows) {
    const auto got = checkTextureRequirements(device, {r.width, r.height, r.levels, Format{r.format}, r.usage});
    EXPECT_EQ(got.width, r.gotWidth);
    EXPECT_EQ(got.height, r.gotHeight);
    EXPECT_EQ(got.levels, r.gotLevels);
    EXPECT_EQ(static_cast<std::uint32_t>(got.format), r.gotFormat) << "asked " << r.format << " usage " << r.usage;
  }
}

TEST_F(TextureFiles, FaultsCarryTheDevicesCodes) {
  file("noise.bmp", raw({'B', 'M', 1, 2, 3}));
  file("empty.tga", {});
  EXPECT_EQ(codeOf("missing.bmp"), kErrorNotFound);
  EXPECT_EQ(codeOf(""), kErrorNotFound);
  EXPECT_EQ(codeOf("noise.bmp"), kErrorInvalidData);
  EXPECT_EQ(codeOf("empty.tga"), kErrorInvalidData);
  EXPECT_FALSE(pictureSize("missing.bmp"));
  EXPECT_FALSE(pictureSize("noise.bmp"));
  picture("fine.tga", 3, Colors(6, 0xFF808080), false);
  ASSERT_TRUE(pictureSize("fine.tga"));
  EXPECT_EQ(pictureSize("FINE.TGA")->height, 2u);
}

TEST_F(TextureFiles, SizesAndFullChains) {
  picture("p.tga", 4, {0xFFFF0000, 0xFFFF0000, 0xFF0000FF, 0xFF0000FF, 0xFFFF0000, 0xFFFF0000, 0xFF0000FF, 0xFF0000FF},
          false);
  TextureFileOptions own;
  const auto texture = createTextureFromFile(device, "p.tga", own);
  EXPECT_EQ(texture->description().width, 4u);
  ASSERT_EQ(texture->levelCount(), 3u);
  EXPECT_EQ(level(*texture, 1), (Colors{0xFFFF0000, 0xFF0000FF}));
  EXPECT_EQ(level(*texture, 2), (Colors{0xFF800080}));

  spy->caps().maxTextureWidth = 2;
  const auto small = createTextureFromFile(device, "p.tga", own);
  EXPECT_EQ(small->description().width, 2u);
  EXPECT_EQ(level(*small, 0), (Colors{0xFFFF0000, 0xFF0000FF, 0xFFFF0000, 0xFF0000FF}));

  TextureFileOptions asked;
  asked.width = 1;
  asked.levels = 1;
  asked.format = Format::R5G6B5;
  const auto narrow = createTextureFromFile(device, "p.tga", asked);
  EXPECT_EQ(narrow->description().height, 2u) << "the other side stays the file's own";
  EXPECT_EQ(level(*narrow, 0), (Colors{0xFF840084, 0xFF840084}));
}

TEST_F(TextureFiles, ColorKeysMatchExactlyAndKeepEdgesClean) {
  picture("key.tga", 4, {0x00000000, 0x00FF0000, 0x00010000, 0x00000000}, false);
  TextureFileOptions options;
  options.colorKey = 0xFF000000;
  options.levels = 1;
  options.format = Format::A4R4G4B4;
  EXPECT_EQ(level(*createTextureFromFile(device, "key.tga", options), 0), (Colors{0, 0xFFFF0000, 0xFF000000, 0}));
  options.format = Format::A8R8G8B8;
  options.colorKey = 0xFFFF0000;
  EXPECT_EQ(level(*createTextureFromFile(device, "key.tga", options), 0),
            (Colors{0xFF000000, 0, 0xFF010000, 0xFF000000}));

  // A key of black around white: wherever something shows it is white, in every size and level.
  picture("edge.tga", 4, {0, 0, 0xFFFFFF, 0xFFFFFF, 0, 0, 0xFFFFFF, 0, 0, 0, 0, 0, 0, 0, 0, 0}, false);
  for (const std::int32_t side : {2, 4, 9}) {
    TextureFileOptions edge;
    edge.colorKey = 0xFF000000;
    edge.width = edge.height = side;
    const auto texture = createTextureFromFile(device, "edge.tga", edge);
    bool partly = false;
    for (std::uint32_t number = 0; number < texture->levelCount(); ++number)
      for (const std::uint32_t pixel : level(*texture, number)) {
        const std::uint32_t alpha = pixel >> 24;
        partly |= alpha != 0 && alpha != 255;
        EXPECT_EQ(pixel & 0xFFFFFF, alpha == 0 ? 0 : 0xFFFFFFu) << "side " << side << " level " << number;
      }
    EXPECT_TRUE(partly) << side;
  }

  // With alpha of its own a picture's transparent pixels keep their colours, and a key means all four channels.
  picture("alpha.tga", 2, {0x00FF0000, 0xFF000000}, true);
  TextureFileOptions alpha;
  alpha.levels = 1;
  EXPECT_EQ(level(*createTextureFromFile(device, "alpha.tga", alpha), 0), (Colors{0x00FF0000, 0xFF000000}));
  alpha.colorKey = 0xFFFF0000;
  EXPECT_EQ(level(*createTextureFromFile(device, "alpha.tga", alpha), 0), (Colors{0x00FF0000, 0xFF000000}));
  alpha.format = Format::A1R5G5B5;
  alpha.colorKey = 0xFF000000;
  EXPECT_EQ(level(*createTextureFromFile(device, "alpha.tga", alpha), 0), (Colors{0x00FF0000, 0}));
}

TEST_F(TextureFiles, StoredLevelsServeWhenTheyFit) {
  ql::test::DdsFields fields;
  fields.width = fields.height = 4;
  fields.levels = 2;
  fields.flags = 0x41;
  fields.bits = 32;
  fields.red = 0xFF0000, fields.green = 0xFF00, fields.blue = 0xFF, fields.alpha = 0xFF000000;
  ql::test::FileBytes data;
  for (int i = 0; i < 16; ++i) data.u32(0xFF00FF00);
  for (int i = 0; i < 4; ++i) data.u32(0xFFFF0000);
  file("levels.dds", ql::test::ddsFile(fields, data.take()));
  const auto stored = createTextureFromFile(device, "levels.dds", {});
  EXPECT_EQ(level(*stored, 1), Colors(4, 0xFFFF0000));
  EXPECT_EQ(level(*stored, 2), Colors(1, 0xFFFF0000)) << "what the file lacks comes from its last level";
  TextureFileOptions larger;
  larger.width = larger.height = 8;
  EXPECT_EQ(level(*createTextureFromFile(device, "levels.dds", larger), 2), Colors(4, 0xFF00FF00));
  TextureFileOptions one;
  one.levels = 1;
  EXPECT_EQ(createTextureFromFile(device, "levels.dds", one)->levelCount(), 1u);
}

TEST_F(TextureFiles, CacheKnowsWhenAFileChanged) {
  const auto age = [](const char* name, std::chrono::seconds by) {
    std::filesystem::last_write_time(name, std::filesystem::file_time_type::clock::now() - by);
  };
  PictureCache cache(39);  // room for one of the pictures
  const auto color = [&](const char* name) {
    return level(*createTextureFromFile(device, name, {}, &cache), 0).front();
  };
  picture("a.tga", 2, Colors(4, 0xFF0000FF), false);
  EXPECT_EQ(color("a.tga"), 0xFF0000FF);
  picture("a.tga", 2, Colors(4, 0xFF00FF00), false);
  EXPECT_EQ(color("a.tga"), 0xFF00FF00) << "a fresh file may change again at once";
  EXPECT_EQ(cache.size(), 0u);
  age("a.tga", std::chrono::seconds(100));
  color("a.tga");
  EXPECT_EQ(color("A.TGA"), 0xFF00FF00);
  EXPECT_EQ(cache.hits(), 1u);
  picture("a.tga", 2, Colors(4, 0xFFFF0000), false);
  age("a.tga", std::chrono::seconds(50));
  EXPECT_EQ(color("a.tga"), 0xFFFF0000);
  EXPECT_EQ(cache.hits(), 1u);
  picture("b.tga", 2, Colors(6, 0xFF123456), false);
  age("b.tga", std::chrono::seconds(50));
  color("b.tga");
  EXPECT_EQ(cache.size(), 24u) << "the older picture made room";
  color("a.tga");
  EXPECT_EQ(cache.hits(), 1u);
  std::filesystem::remove("a.tga");
  EXPECT_THROW(color("a.tga"), DeviceError);
}

TEST_F(TextureFiles, SurfacesFromMemoryAndFiles) {
  const auto surface = device.createImageSurface(2, 2, Format::X8R8G8B8);
  // Rows of 2 pixels of 565 with 3 bytes between them; the last row needs no gap.
  const auto rows = raw({0x00, 0xF8, 0xE0, 0x07, 9, 9, 9, 0x1F, 0x00, 0xFF, 0xFF});
  loadSurfaceFromMemory(*surface, rows, 7, Format::R5G6B5, 2, 2);
  EXPECT_EQ(surface->read({0, 0, 2, 2}), raw({0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0}));
  struct Row {
    std::uint32_t pitch, width, height;
  };
  const Row refused[] = {{8, 2, 2}, {3, 2, 2}, {7, 2, 3}, {0xFFFFFFFF, 2, 2}, {4, 0, 1}, {4, 1, 0x80000000}};
  for (const Row& row : refused)
    EXPECT_THROW(loadSurfaceFromMemory(*surface, rows, row.pitch, Format::R5G6B5, row.width, row.height), DeviceError);

  picture("two.tga", 2, {0xFF0000, 0x0000FF}, false);
  const auto scaled = device.createImageSurface(4, 1, Format::R5G6B5);
  loadSurfaceFromFile(*scaled, "two.tga", 0);
  EXPECT_EQ(scaled->read({0, 0, 1, 1}), raw({0x00, 0xF8}));
  EXPECT_EQ(scaled->read({3, 0, 1, 1}), raw({0x1F, 0x00}));
  scaled->lock();
  EXPECT_THROW(loadSurfaceFromFile(*scaled, "two.tga", 0), DeviceError);
  EXPECT_THROW(loadSurfaceFromFile(*surface, "none.tga", 0), DeviceError);
}

TEST_F(TextureFiles, BitmapsToTheByte) {
  const auto pixelsOf = [](const std::vector<std::byte>& bitmap) {
    return std::vector<std::byte>(bitmap.begin() + 54, bitmap.end());
  };
  // 3 x 2: rows of 9 bytes, unpadded, bottom row first.
  const auto surface = device.createImageSurface(3, 2, Format::R5G6B5);
  surface->write({0, 0, 3, 2}, raw({0xFF, 0xFF, 0x00, 0xF8, 0xE0, 0x07, 0x1F, 0x00, 0x20, 0x00, 0x00, 0x08}));
  const std::vector<std::byte> bitmap = bitmapFromSurface(*surface);
  EXPECT_EQ(std::vector<std::byte>(bitmap.begin(), bitmap.begin() + 54),
            raw({'B', 'M', 72, 0, 0, 0, 0, 0,  0, 0, 54, 0,  0, 0, 40, 0,  0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1,
                 0,   24,  0,  0, 0, 0, 0, 18, 0, 0, 0,  50, 0, 0, 0,  50, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(pixelsOf(bitmap), raw({248, 0, 0, 0, 4, 0, 0, 0, 8, 248, 252, 248, 0, 0, 248, 0, 252, 0}));

  const auto texture = device.createTexture(1, 2, 0, 0, Format::A4R4G4B4, Pool::Managed);
  texture->writeLevel(0, raw({0x21, 0x03, 0xFF, 0xFF}));
  saveTextureToFile("saved.bmp", *texture);
  const std::string saved = ql::test::contents("saved.bmp");
  ASSERT_EQ(saved.size(), 60u);
  const auto bytes = ql::test::bytesOf(saved);
  EXPECT_EQ(pixelsOf({bytes.begin(), bytes.end()}), raw({255, 255, 255, 0x11, 0x22, 0x33}));

  const auto wide = device.createImageSurface(1, 1, Format::A8R8G8B8);
  wide->write({0, 0, 1, 1}, raw({1, 2, 3, 0}));
  EXPECT_EQ(pixelsOf(bitmapFromSurface(*wide)), raw({1, 2, 3}));
}

}  // namespace
