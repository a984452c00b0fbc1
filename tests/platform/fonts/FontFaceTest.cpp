#include "platform/fonts/FontFace.h"
#include "platform/fonts/FontFiles.h"
#include "platform/host/Files.h"
#include "support/SharedData.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <string_view>

#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>

namespace ql::fonts {
namespace {

/// Whether the fonts that the engine recommends are there; without them only the behaviour without fonts can be tested.
bool haveDejaVu() {
  FcPattern* wanted = FcNameParse(reinterpret_cast<const FcChar8*>("DejaVu Sans"));
  FcObjectSet* properties = FcObjectSetBuild(FC_FILE, nullptr);
  FcFontSet* found = FcFontList(nullptr, wanted, properties);
  const bool any = found != nullptr && found->nfont > 0;
  FcFontSetDestroy(found);
  FcObjectSetDestroy(properties);
  FcPatternDestroy(wanted);
  return any;
}

class InstalledFont : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!haveDejaVu()) GTEST_SKIP() << "skipped: DejaVu Sans is not installed";
  }
};

std::int32_t ink(const Glyph& glyph) { return std::accumulate(glyph.coverage.begin(), glyph.coverage.end(), 0); }

/// How far the ink's centre of the upper half lies to the right of the lower half's.
double slant(const Glyph& glyph) {
  double sums[2] = {}, weights[2] = {};
  for (std::int32_t y = 0; y < glyph.height; ++y)
    for (std::int32_t x = 0; x < glyph.width; ++x) {
      const int half = y < glyph.height / 2 ? 0 : 1;
      const double weight = glyph.coverage[static_cast<std::size_t>(y * glyph.width + x)];
      sums[half] += weight * x;
      weights[half] += weight;
    }
  return sums[0] / weights[0] - sums[1] / weights[1];
}

TEST_F(InstalledFont, GlyphsStandOnTheBaselineInTheLine) {
  for (const float points : {8.25f, 24.0f, 72.0f}) {
    const FontFace face({.points = points});
    const double pixels = points * 96 / 72;
    EXPECT_NEAR(face.lineHeight(), pixels * 1.17, pixels * 0.1 + 1);
    EXPECT_LT(face.ascent(), face.lineHeight());
    const Glyph capital = face.render(U'H');
    EXPECT_EQ(capital.coverage.size(), static_cast<std::size_t>(capital.width * capital.height));
    EXPECT_NEAR(capital.height, pixels * 0.73, 1.5);
    EXPECT_EQ(capital.top, capital.height) << "a capital ends at the baseline";
    EXPECT_LE(capital.top, face.ascent());
    EXPECT_GT(face.render(U'g').height, face.render(U'g').top) << "a descender goes below it";
    EXPECT_GT(face.render(U'W').advance, face.render(U'i').advance);
    const Glyph blank = face.render(U' ');
    EXPECT_TRUE(blank.coverage.empty());
    EXPECT_GT(blank.advance, 0);
    EXPECT_GE(face.underline().thickness, 1);
    EXPECT_LT(face.underline().below, face.lineHeight() - face.ascent() + 1);
  }
}

TEST_F(InstalledFont, WeightAndSlantAreFoundOrMade) {
  // DejaVu Sans has a bold and an oblique of its own; Liberation Mono from memory has neither, so they are made.
  std::vector<std::vector<std::byte>> sources(1);
  const auto single = test::sharedData() / "ttf/LiberationMono-Regular.ttf";
  if (test::haveSharedData()) sources.push_back(host::readFile(single.string()));
  for (const std::vector<std::byte>& file : sources) {
    const auto open = [&](bool bold, bool italic) {
      const FontRequest request{.points = 36, .bold = bold, .italic = italic};
      return file.empty() ? FontFace(request) : FontFace(request, file);
    };
    const Glyph plain = open(false, false).render(U'l'), bold = open(true, false).render(U'l');
    const Glyph italic = open(false, true).render(U'l');
    EXPECT_GT(ink(bold), ink(plain) * 5 / 4);
    EXPECT_GT(slant(italic), slant(plain) + 2);
  }
}

TEST_F(InstalledFont, FamiliesThatAreNotInstalledBecomeDejaVuSans) {
  const Glyph expected = FontFace({.face = "DejaVu Sans", .points = 20}).render(U'Q');
  for (const char* face : {"No Such Family", "", "\xFF\xFE", "dejavu sans"})
    EXPECT_EQ(FontFace({.face = face, .points = 20}).render(U'Q').coverage, expected.coverage) << face;
}

TEST_F(InstalledFont, AnySizeIsTakenAndBounded) {
  for (const float points :
       {0.0f, -5.0f, 1e9f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
    const FontFace face({.points = points});
    const Glyph glyph = face.render(U'A');
    EXPECT_GE(glyph.advance, 0) << points;
    EXPECT_LE(glyph.width, static_cast<std::int32_t>(kMaxPoints * 2)) << points;
    EXPECT_GE(face.lineHeight(), 1) << points;
  }
}

TEST_F(InstalledFont, PairsAreKerned) {
  const FontFace face({.points = 48});
  EXPECT_LT(face.kerning(U'A', U'V'), -2);
  EXPECT_EQ(face.kerning(U'H', U'H'), 0);
  EXPECT_EQ(face.kerning(U'A', 0x10FFFF), 0) << "no such character";
  EXPECT_EQ(face.kerning(U'e', 0x0301), 0) << "an accent stands where its glyph puts it";
}

/// A font whose directory no longer tells of a table.
std::vector<std::byte> withoutTable(std::vector<std::byte> font, std::string_view tag) {
  constexpr std::size_t kFirst = 12, kEntry = 16;
  const std::size_t count = std::to_integer<std::size_t>(font[4]) << 8 | std::to_integer<std::size_t>(font[5]);
  for (std::size_t at = kFirst; at < kFirst + count * kEntry; at += kEntry)
    if (std::memcmp(&font[at], tag.data(), tag.size()) == 0) font[at] = std::byte{'~'};
  return font;
}

TEST_F(InstalledFont, PairsAreKernedByTheFeatureOrTheOlderTable) {
  const std::vector<std::byte> font = host::readFile(findFont({})->path);
  const FontRequest request{.points = 30};
  const FontFace whole(request, font), feature(request, withoutTable(font, "kern"));
  const FontFace table(request, withoutTable(font, "GPOS")),
      neither(request, withoutTable(withoutTable(font, "kern"), "GPOS"));
  for (const auto& [left, right] : {std::pair(U'A', U'V'), {U'T', U'o'}, {U'L', U'T'}, {U'f', U'i'}, {U'P', U'.'}}) {
    const std::int32_t apart = whole.kerning(left, right);
    EXPECT_EQ(feature.kerning(left, right), apart);
    EXPECT_EQ(table.kerning(left, right), apart);
    EXPECT_EQ(neither.kerning(left, right), 0);
  }
  EXPECT_LT(whole.kerning(U'T', U'o'), -3);
}

/// The area within closed lines, holes counting against it.
double area(const std::vector<Contour>& contours) {
  double sum = 0;
  for (const Contour& contour : contours)
    for (std::size_t i = 0; i < contour.size(); ++i) {
      const OutlinePoint a = contour[i], b = contour[(i + 1) % contour.size()];
      sum += (static_cast<double>(a.x) * b.y - static_cast<double>(b.x) * a.y) / 2;
    }
  return std::abs(sum);
}

TEST_F(InstalledFont, OutlinesCoverWhatBitmapsCover) {
  const FontFace face({.points = 96});
  for (const char32_t character : {U'O', U'B', U'i', U'&'}) {
    const std::vector<Contour> fine = face.outline(character, 0.1f), coarse = face.outline(character, 4.0f);
    const double covered = ink(face.render(character)) / 255.0;
    EXPECT_NEAR(area(fine), covered, covered * 0.03) << static_cast<int>(character);
    std::size_t finePoints = 0, coarsePoints = 0;
    for (const Contour& contour : fine) finePoints += contour.size();
    for (const Contour& contour : coarse) coarsePoints += contour.size();
    EXPECT_GE(finePoints, coarsePoints);
  }
  EXPECT_EQ(face.outline(U'O', 0.5f).size(), 2u) << "outside and hole";
  EXPECT_TRUE(face.outline(U' ', 0.5f).empty());
}

void expectEmptyGlyphs(const FontFace& face, const char* name) {
  const Glyph glyph = face.render(U'A');
  EXPECT_TRUE(glyph.coverage.empty()) << name;
  EXPECT_EQ(glyph.width, 0) << name;
  EXPECT_EQ(glyph.advance, 8) << name << ": half of 16 pixels";
  EXPECT_GE(face.lineHeight(), face.ascent()) << name;
  EXPECT_TRUE(face.outline(U'A', 1).empty()) << name;
  EXPECT_EQ(face.kerning(U'A', U'V'), 0) << name;
}

TEST(FontFace, WithoutAnyFontEveryGlyphIsEmpty) {
  FcConfig* before = FcConfigReference(nullptr);
  FcConfig* const none = FcConfigCreate();  // knows no font
  FcConfigSetCurrent(none);
  FcConfigDestroy(none);
  expectEmptyGlyphs(FontFace({.points = 12, .bold = true, .italic = true}), "nothing installed");
  FcConfigSetCurrent(before);
  FcConfigDestroy(before);
  expectEmptyGlyphs(FontFace({.points = 12}, {}), "an empty file");
}

TEST(FontFace, DamagedFontFilesRenderSomethingOrNothing) {
  QL_NEED_SHARED_DATA();
  std::size_t seen = 0;
  for (const std::filesystem::path& path : test::sharedFiles("hostile/ttf")) {
    if (path.extension() != ".ttf") continue;
    SCOPED_TRACE(path.string());
    const std::vector<std::byte> file = host::readFile(path.string());
    for (const float points : {9.0f, 200.0f}) {
      const FontFace face({.points = points, .bold = true, .italic = true}, file);
      EXPECT_GE(face.lineHeight(), 1);
      for (char32_t c = 32; c < 300; ++c) {
        const Glyph glyph = face.render(c);
        EXPECT_EQ(glyph.coverage.size(),
                  static_cast<std::size_t>(glyph.width) * static_cast<std::size_t>(glyph.height));
        face.outline(c, 1);
        EXPECT_LE(std::abs(face.kerning(c, 332 - c)), static_cast<std::int32_t>(2 * points));
      }
    }
    ++seen;
  }
  EXPECT_GT(seen, 5u);
}

TEST(Characters, AreUtf8OrElseWindows1252) {
  EXPECT_EQ(characters("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), U"a\u00E9\u20AC\U0001F600");
  EXPECT_EQ(characters("\x80 caf\xE9"), U"\u20AC caf\u00E9");
  EXPECT_EQ(characters("\xE2\x82"), U"\u00E2\u201A") << "half a sequence";
  EXPECT_EQ(characters(""), U"");
}

}  // namespace
}  // namespace ql::fonts
