#include "platform/fonts/FontFiles.h"
#include "platform/software/SoftwareBackEnd.h"
#include "render/Background.h"
#include "render/Effects.h"
#include "render/RenderTest.h"
#include "render/Screen.h"
#include "render/Sprites.h"
#include "render/TextureTable.h"
#include "support/Golden.h"

#include <optional>

namespace ql::render {
namespace {

constexpr std::int32_t kWidth = 320, kHeight = 240;

constexpr std::int32_t argb(std::uint32_t color) { return static_cast<std::int32_t>(color); }
constexpr std::int32_t kRed = argb(0xFFFF0000), kWhite = -1;

struct Pictures : test::RenderTest {
  std::optional<Screen> screen;
  Pictures() {
    context.platform.backEnds[device::DeviceType::Reference] = [](const device::PresentParameters&) {
      return std::shared_ptr<device::BackEnd>(software::createBackEnd({.threads = 1}));
    };
  }
  void SetUp() override {
    engine::setEngineMode(context, kWidth, kHeight, 32, false, 0);
    RenderTest::SetUp();
    screen.emplace(context);
  }
  /// What is on the screen after drawing on a colour.
  images::Image picture(std::uint32_t background, const std::function<void()>& draw) {
    context.backgroundColor = argb(background);
    engine::clear(context);
    draw();
    engine::renderToScreen(context);
    images::Image image;
    image.width = kWidth;
    image.height = kHeight;
    image.pixels.resize(std::size_t{kWidth} * kHeight);
    device::toArgb(device::Format::A8R8G8B8, context.device->getBackBuffer(0)->read({0, 0, kWidth, kHeight}),
                   image.pixels);
    return image;
  }
  /// A texture of the table: a bordered disc on a transparent ground, with a mark in its upper left.
  std::shared_ptr<device::Texture> disc() {
    const std::int16_t slot = allocateTextureSlot(context);
    TextureEntry& entry = context.get<TextureTable>().entries.at(slot);
    constexpr int kSide = 32;
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < kSide; ++y)
      for (int x = 0; x < kSide; ++x) {
        const int distance = (2 * x - kSide + 1) * (2 * x - kSide + 1) + (2 * y - kSide + 1) * (2 * y - kSide + 1);
        const bool mark = x < 8 && y < 8;
        pixels.push_back(mark                       ? 0xFFFF2020
                         : distance > kSide * kSide ? 0x00FFFFFF
                         : distance > 27 * 27       ? 0xFF203040
                         : (x / 4 + y / 4) % 2      ? 0xFF40A0F0
                                                    : 0xC0F0E0A0);
      }
    entry.texture = context.device->createTexture(kSide, kSide, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
    entry.texture->writeLevel(0, std::as_bytes(std::span(pixels)));
    entry.name = "disc";
    return entry.texture;
  }
};

TEST_F(Pictures, CornersAndEdgesAreExactToThePixel) {
  struct Rectangle {
    std::int32_t left, top, right, bottom;  // filled columns and rows, without the last
  };
  struct Case {
    const char* name;
    std::function<void()> draw;
    std::vector<Rectangle> filled;
  };
  const auto texture = context.device->createTexture(1, 1, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
  const std::uint32_t texel = 0xFFFF0000;
  texture->writeLevel(0, std::as_bytes(std::span(&texel, 1)));
  const Case cases[] = {
      {"box",
       [&] {
         screen->drawBox({10, 10, 20, 15}, kRed);
       },
       {{10, 10, 21, 11}, {10, 15, 21, 16}, {10, 10, 11, 16}, {20, 10, 21, 16}}},
      {"box drawn backwards",
       [&] {
         screen->drawBox({20, 15, 10, 10}, kRed);
       },
       {{10, 10, 21, 11}, {10, 15, 21, 16}, {10, 10, 11, 16}, {20, 10, 21, 16}}},
      {"filled box",
       [&] {
         screen->drawFilledBox({10, 12, 20, 15}, kRed, false);
       },
       {{10, 12, 20, 15}}},
      {"filled box drawn backwards",
       [&] {
         screen->drawFilledBox({20, 15, 10, 12}, kRed, false);
       },
       {{10, 12, 20, 15}}},
      {"one pixel",
       [&] {
         screen->drawFilledBox({7, 8, 8, 9}, kRed, true);
       },
       {{7, 8, 8, 9}}},
      {"nothing",
       [&] {
         screen->drawFilledBox({7, 8, 7, 20}, kRed, false);
       },
       {}},
      {"from middle to middle",
       [&] {
         screen->drawFilledBox({6.5f, 7.5f, 8.5f, 9.5f}, kRed, false);
       },
       {{7, 8, 9, 10}}},
      {"neighbours share no pixel and leave none out",
       [&] {
         screen->drawFilledBox({0, 0, 33, 10}, argb(0x80FF0000), true);
         screen->drawFilledBox({33, 0, 50, 10}, argb(0x80FF0000), true);
         screen->drawFilledBox({0, 0, 50, 10}, kRed, false);
       },
       {{0, 0, 50, 10}}},
      {"the whole screen",
       [&] {
         screen->drawFilledBox({0, 0, kWidth, kHeight}, kRed, false);
       },
       {{0, 0, kWidth, kHeight}}},
      {"beyond the screen",
       [&] {
         screen->drawFilledColorBox({-50, -50, 5000, 3}, {kRed, kRed, kRed, kRed}, false);
       },
       {{0, 0, kWidth, 3}}},
      {"texture",
       [&] {
         screen->drawTexture(texture, {40, 50, 60, 57}, kWhite, false);
       },
       {{40, 50, 60, 57}}},
      {"part of a texture",
       [&] {
         screen->drawPartTexture(texture, {40, 50, 60, 57}, {0, 0, 1, 1}, kWhite, true);
       },
       {{40, 50, 60, 57}}},
      {"point", [&] { screen->drawPoint(319, 239, kRed); }, {{319, 239, 320, 240}}},
      {"horizontal line",
       [&] {
         screen->drawLine({5, 9, 9, 9}, kRed);
       },
       {{5, 9, 10, 10}}},
      {"vertical line",
       [&] {
         screen->drawLine({5, 9, 5, 4}, kRed);
       },
       {{5, 4, 6, 10}}},
  };
  for (const Case& row : cases) {
    const images::Image image = picture(0xFF000000, row.draw);
    int wrong = 0;
    for (std::int32_t y = 0; y < kHeight; ++y)
      for (std::int32_t x = 0; x < kWidth; ++x) {
        bool inside = false;
        for (const Rectangle& at : row.filled) inside |= x >= at.left && x < at.right && y >= at.top && y < at.bottom;
        const std::uint32_t pixel = image.pixels[static_cast<std::size_t>(y * kWidth + x)] & 0xFFFFFF;
        if (pixel != (inside ? 0xFF0000u : 0u) && ++wrong <= 3)
          ADD_FAILURE() << row.name << ": (" << x << ", " << y << ") is " << std::hex << pixel;
      }
  }
}

TEST_F(Pictures, OfShapesTexturesAndSprites) {
  const auto texture = disc();
  const std::int16_t sprite = loadSprite(context, "disc", "");
  EXPECT_TRUE(test::matchesGolden(
      picture(0xFF304860,
              [&] {
                screen->drawFilledColorBox(
                    {8, 8, 152, 72}, {argb(0xFF777700), argb(0xFF007700), argb(0xFF007777), argb(0xFF770000)}, true);
                screen->drawBox({8, 8, 152, 72}, argb(0xFF00FF00));
                screen->drawFilledBox({24, 24, 64, 96}, argb(0x80FFFFFF), true);
                screen->drawFilledBox({72, 24, 112, 96}, argb(0x80FFFFFF), false);
                for (int i = 0; i < 12; ++i) {
                  const float angle = static_cast<float>(i) * 0.5236f;
                  screen->drawLine({120, 120, 120 + 36 * std::cos(angle), 120 + 36 * std::sin(angle)},
                                   argb(0xFFFFC000 + 16u * static_cast<std::uint32_t>(i)));
                  screen->drawPoint(120 + 40 * std::cos(angle), 120 + 40 * std::sin(angle), kWhite);
                }
                screen->drawTexture(texture, {168, 8, 232, 72}, kWhite, false);
                screen->drawTexture(texture, {240, 8, 304, 72}, argb(0xFF80FF80), true);
                screen->drawPartTexture(texture, {168, 80, 232, 112}, {0.25f, 0.25f, 0.75f, 0.5f}, kWhite, true);
                screen->drawPartTexture(texture, {304, 112, 240, 80}, {0, 0, 2, 1}, kWhite, true);  // turned round
                screen->setBlending(2, 5);
                screen->drawFilledBox({140, 40, 200, 60}, argb(0xFF404040), true);
                for (int i = 0; i < 4; ++i) {
                  scaleSprite(context, sprite, {0.5f + 0.5f * static_cast<float>(i), 1});
                  rotateSprite(context, sprite, {16, 16}, 30.0f * static_cast<float>(i));
                  drawSprite(context, sprite, 16 + 72 * i, 184);
                }
              }),
      "screen-shapes"));
}

TEST_F(Pictures, OfTextInThreeFacesSizesAndStyles) {
  const auto slanted = fonts::findFont({.face = "DejaVu Serif", .points = 12, .italic = true});
  if (!slanted || !slanted->italic) GTEST_SKIP() << "fonts-dejavu-extra is not installed: slants would be made";
  const char* const faces[] = {"DejaVu Sans", "DejaVu Serif", "DejaVu Sans Mono"};
  UserFonts& fonts = screen->userFonts();
  for (int face = 0; face < 3; ++face) {
    fonts.create("", {.face = faces[face], .points = 8});
    fonts.create("", {.face = faces[face], .points = 12, .bold = true});
    fonts.create("", {.face = faces[face], .points = 12, .italic = true});
    fonts.create("", {.face = faces[face], .points = 20, .underline = true});
  }
  EXPECT_TRUE(test::matchesGolden(
      picture(0xFF101018,
              [&] {
                const auto font = [](int face, int style) { return "userfont" + std::to_string(face * 4 + style); };
                for (int face = 0; face < 3; ++face) {
                  const int top = 4 + face * 62;
                  screen->drawText("The quick brown fox: 0123456789", 6, top, kWhite, font(face, 1));
                  screen->drawText("AVATAR To. LT", 6, top + 14, argb(0xFFFFC040), font(face, 2));
                  screen->drawText("\xC4\xE9\xF1\xFC\xDF \x80 \x93quoted\x94", 150, top + 14, argb(0xFF80FFC0),
                                   font(face, 3));
                  screen->drawText("\xE2\x82\xAC Underlined gjpqy", 6, top + 30, argb(0xC0A0C0FF), font(face, 4));
                }
                screen->drawText("The system font,\nin two lines.", 6, 194, kWhite, "");
                screen->drawText("cut at the edge", 260, 200, kWhite, font(0, 2));
              }),
      "screen-text"));
}

TEST_F(Pictures, OfABackgroundUnderAFadeAndAFlash) {
  test::FileBytes rows;
  for (std::uint32_t y = 0; y < 4; ++y)
    for (std::uint32_t x = 0; x < 4; ++x) rows.put((x * 80) << 16 | (y * 80) << 8 | 0x40, 3);
  const std::vector<std::byte> file = test::bmpFile({.width = 4, .height = 4}, rows.take());
  test::put("ground.bmp", {reinterpret_cast<const char*>(file.data()), file.size()});
  loadBackground(context, "ground.bmp");
  context.get<Background>().enabled = true;
  const auto at = [](const images::Image& image, std::int32_t x, std::int32_t y) {
    return image.pixels[static_cast<std::size_t>(y * kWidth + x)] & 0xFFFFFF;
  };
  const images::Image plain = picture(0xFF000000, [] {});
  EXPECT_EQ(at(plain, 0, 0), 0x00F040u) << "the picture's last row is its upper one";
  EXPECT_EQ(at(plain, kWidth - 1, kHeight - 1), 0xF00040u) << "to the last column and row";

  machine.clock->now += 100;
  startFade(context, Fade::Out, 200);
  const images::Image faded = picture(0xFF000000, [] {});
  EXPECT_EQ(at(faded, 0, 0), 0x007820u);
  EXPECT_EQ(at(faded, kWidth - 1, kHeight - 1), 0x780020u);
  machine.clock->now += 100;
  startFlash(context, 1, 1, 1);
  const images::Image flashed = picture(0xFF000000, [&] { screen->drawFilledBox({0, 0, 9, 9}, 0, false); });
  EXPECT_EQ(at(flashed, 0, 0), 0xCCCCCCu);
  EXPECT_EQ(at(flashed, 20, 0), 0xCCFCD9u);
}

}  // namespace
}  // namespace ql::render
