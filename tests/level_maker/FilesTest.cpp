#include "Picture.h"
#include "TestLevels.h"
#include "Textures.h"

#include <cstring>

#include <gtest/gtest.h>
#include <turbojpeg.h>

namespace ql::maker::test {
namespace {

std::int32_t intAt(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  std::int32_t v = 0;
  std::memcpy(&v, bytes.data() + at, 4);
  return v;
}

std::vector<std::int32_t> lump(const std::vector<std::uint8_t>& bsp, std::size_t index) {
  std::vector<std::int32_t> words(static_cast<std::size_t>(intAt(bsp, 12 + index * 8)) / 4);
  std::memcpy(words.data(), bsp.data() + intAt(bsp, 8 + index * 8), words.size() * 4);
  return words;
}

std::vector<std::uint8_t> bspOf(const std::string& text, unsigned threads) {
  MakeOptions options;
  options.threads = threads;
  options.quality = Quality::Draft;
  MadeLevel made = makeStructure(parseDescription(text), options);
  makeLight(made, std::vector<Vec3>(made.level.materials.size(), Vec3{0.4, 0.4, 0.4}), options);
  return made.bsp;
}

TEST(BspFile, IsTheSameForEveryThreadCount) {
  const auto one = bspOf(twoRooms("light 60 60 90 power=80\nlight 600 60 90 power=80 colour=0.4,0.6,1\n"), 1);
  EXPECT_EQ(one, bspOf(twoRooms("light 60 60 90 power=80\nlight 600 60 90 power=80 colour=0.4,0.6,1\n"), 3));
}

/// Follows every reference of the file: each must stay inside the lump it points to.
TEST(BspFile, ReferencesStayInside) {
  const auto bsp = bspOf(
      oneRoom("gem 40 200 60 8 20 sky\nbox 200 20 0 230 50 30 stone detail\nbox 204 24 30 226 46 36 stone detail\n"),
      2);
  ASSERT_EQ(std::string(bsp.begin(), bsp.begin() + 4), "IBSP");
  ASSERT_EQ(intAt(bsp, 4), 46);
  std::size_t end = 8 + 17 * 8;
  for (std::size_t i = 0; i < 17; ++i) {
    EXPECT_GE(static_cast<std::size_t>(intAt(bsp, 8 + i * 8)), end) << "lump " << i;
    end = static_cast<std::size_t>(intAt(bsp, 8 + i * 8) + intAt(bsp, 12 + i * 8));
    ASSERT_LE(end, bsp.size()) << "lump " << i;
  }
  const auto count = [&](std::size_t index, int size) { return intAt(bsp, 12 + index * 8) / size; };
  const int textures = count(1, 72);
  const int planes = count(2, 16);
  const int nodes = count(3, 36);
  const int leaves = count(4, 48);
  const int leafFaces = count(5, 4);
  const int leafBrushes = count(6, 4);
  const int brushes = count(8, 12);
  const int sides = count(9, 8);
  const int vertices = count(10, 44);
  const int meshVertices = count(11, 4);
  const int faces = count(13, 104);
  const int pages = count(14, 49152);
  EXPECT_EQ(planes % 2, 0);
  EXPECT_EQ(count(7, 40), 1);

  const auto leafWords = lump(bsp, 4);
  EXPECT_EQ(leafWords[0], -1);
  int clusters = 0;
  for (int i = 0; i < leaves; ++i) {
    const std::int32_t* l = &leafWords[static_cast<std::size_t>(i * 12)];
    clusters = std::max(clusters, l[0] + 1);
    EXPECT_TRUE(l[8] >= 0 && l[8] + l[9] <= leafFaces && l[10] >= 0 && l[10] + l[11] <= leafBrushes) << "leaf " << i;
    if (i > 0) {
      EXPECT_TRUE(l[2] < l[5] && l[3] < l[6] && l[4] < l[7]) << "leaf " << i << " has an empty box";
    }
  }
  const auto visibility = lump(bsp, 16);
  EXPECT_EQ(visibility[0], clusters);
  EXPECT_EQ(visibility[1], (clusters + 7) / 8);
  EXPECT_EQ(intAt(bsp, 12 + 16 * 8), 8 + visibility[0] * visibility[1]);

  const auto nodeWords = lump(bsp, 3);
  std::vector<int> parents(static_cast<std::size_t>(nodes));
  for (int i = 0; i < nodes; ++i) {
    const std::int32_t* n = &nodeWords[static_cast<std::size_t>(i * 9)];
    EXPECT_TRUE(n[0] >= 0 && n[0] < planes);
    for (const std::int32_t child : {n[1], n[2]}) {
      ASSERT_TRUE(child < nodes && ~child < leaves) << "node " << i;
      if (child >= 0) ++parents[static_cast<std::size_t>(child)];
    }
  }
  for (int i = 0; i < nodes; ++i) EXPECT_EQ(parents[static_cast<std::size_t>(i)], i == 0 ? 0 : 1) << "node " << i;

  const auto faceWords = lump(bsp, 13);
  const auto meshWords = lump(bsp, 11);
  std::array<int, 5> kinds{};
  for (int i = 0; i < faces; ++i) {
    const std::int32_t* f = &faceWords[static_cast<std::size_t>(i * 26)];
    EXPECT_TRUE(f[0] >= 0 && f[0] < textures && f[7] >= -1 && f[7] < pages) << "face " << i;
    ASSERT_TRUE(f[2] >= 1 && f[2] <= 3) << "face " << i;
    ++kinds[static_cast<std::size_t>(f[2])];
    ASSERT_TRUE(f[3] >= 0 && f[3] + f[4] <= vertices && f[5] >= 0 && f[5] + f[6] <= meshVertices) << "face " << i;
    EXPECT_EQ(f[6] % 3, 0);
    EXPECT_EQ(f[6] == 0, f[2] == 2) << "face " << i;
    for (int k = f[5]; k < f[5] + f[6]; ++k)
      ASSERT_TRUE(meshWords[static_cast<std::size_t>(k)] >= 0 && meshWords[static_cast<std::size_t>(k)] < f[4]);
    if (f[2] == 2) {
      EXPECT_TRUE(f[24] % 2 == 1 && f[25] % 2 == 1 && f[24] * f[25] == f[4]) << "patch " << i;
    }
  }
  EXPECT_GT(kinds[1], 0);
  EXPECT_GT(kinds[2], 0);
  EXPECT_GT(kinds[3], 0);
  std::vector<bool> inLeaf(static_cast<std::size_t>(faces));
  for (const std::int32_t f : lump(bsp, 5)) inLeaf.at(static_cast<std::size_t>(f)) = true;
  EXPECT_EQ(std::count(inLeaf.begin(), inLeaf.end(), false), 0) << "a face lies in no leaf and is never drawn";
  for (const std::int32_t b : lump(bsp, 6)) EXPECT_TRUE(b >= 0 && b < brushes);
  const auto brushWords = lump(bsp, 8);
  for (int i = 0; i < brushes; ++i)
    EXPECT_TRUE(brushWords[static_cast<std::size_t>(i * 3)] + brushWords[static_cast<std::size_t>(i * 3 + 1)] <= sides);
}

// What a description says, and the line that is at fault.
struct Bad {
  const char* name;
  const char* text;
  int line;
};
class BadDescription : public testing::TestWithParam<Bad> {};

TEST_P(BadDescription, NamesTheLine) {
  const std::string text = std::string("material m plaster\nbox 0 0 0 9 9 9 m\n") + GetParam().text;
  try {
    parseDescription(text);
    FAIL() << "accepted";
  } catch (const DescriptionFault& fault) {
    EXPECT_EQ(fault.line(), GetParam().line) << fault.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    , BadDescription,
    testing::Values(Bad{"UnknownCommand", "bax 1 2 3\n", 3}, Bad{"UnknownMaterial", "box 0 0 0 1 1 1 nope\n", 3},
                    Bad{"NotANumber", "\nbox 0 0 x 1 1 1 m\n", 4}, Bad{"Infinite", "box 0 0 0 1 1 inf m\n", 3},
                    Bad{"Huge", "box 0 0 0 1 1 1e30 m\n", 3}, Bad{"TurnedBox", "box 5 0 0 1 1 1 m\n", 3},
                    Bad{"TooFewWords", "light 1 2\n", 3}, Bad{"EvenProfile", "revolve 0 0 0 m 0,1 1,1 2,1 3,1\n", 3},
                    Bad{"DentedOutline", "prism 0 9 m 0,0 9,0 9,9 8,1\n", 3}, Bad{"OpenBlock", "mirror x {\n", 3},
                    Bad{"StrayBrace", "}\n", 3}, Bad{"EndlessUse", "define a {\nuse a 0 0 0\n}\nuse a 0 0 0\n", 4},
                    Bad{"Explosion", "repeat 1000 1 0 0 {\nrepeat 1000 0 1 0 {\nlight 0 0 0\n}\n}\n", 4},
                    Bad{"DefineWithoutBlock", "define a\n", 3}, Bad{"PathInName", "level ../up\n", 3},
                    Bad{"PathInTexture", "material x ../../etc\n", 3},
                    Bad{"QuotesInEntity", "entity {\nmessage say \"hi\"\n}\n", 4}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Pictures, AreWrittenAsTheyShould) {
  Picture picture{16, 4, std::vector<Rgba>(64)};
  for (std::size_t i = 0; i < 64; ++i)
    picture.pixels[i] = {static_cast<std::uint8_t>(i < 20 ? 200 : i * 3), 50, 90,
                         static_cast<std::uint8_t>(i / 16 * 60)};
  const auto plain = encodeTarga(picture, TargaKind::Plain24);
  ASSERT_EQ(plain.size(), 18U + 64 * 3);
  EXPECT_EQ(plain[18 + 2], picture.pixels[48].r) << "the first row of the file is the bottom one";
  // Unpack the packets again.
  const auto packed = encodeTarga(picture, TargaKind::RunLength32);
  std::vector<Rgba> rows;
  for (std::size_t at = 18; at < packed.size();) {
    const std::uint8_t head = packed[at++];
    for (int i = 0; i <= (head & 127); ++i) {
      rows.push_back({packed[at + 2], packed[at + 1], packed[at], packed[at + 3]});
      if (head < 128) at += 4;
    }
    if (head >= 128) at += 4;
  }
  ASSERT_EQ(rows.size(), 64U);
  for (std::size_t y = 0; y < 4; ++y)
    for (std::size_t x = 0; x < 16; ++x) EXPECT_EQ(rows[(3 - y) * 16 + x], picture.pixels[y * 16 + x]);
  EXPECT_LT(packed.size(), 18U + 64 * 4);
}

TEST(Textures, RepeatWithoutASeam) {
  for (const char* name : {"stone", "brick", "plaster", "flags", "mosaic", "planks", "roof", "marble", "grass", "water",
                           "copper", "cornice"}) {
    const TextureRecipe* recipe = findRecipe(name);
    ASSERT_NE(recipe, nullptr) << name;
    const Picture p = paintTexture(*recipe);
    const auto step = [&](int x0, int x1) {  // average difference between two columns
      double sum = 0;
      for (int y = 0; y < p.height; ++y) {
        const Rgba& a = p.pixels[static_cast<std::size_t>(y * p.width + x0)];
        const Rgba& b = p.pixels[static_cast<std::size_t>(y * p.width + x1)];
        sum += std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b);
      }
      return sum / p.height;
    };
    double largest = 0;
    for (int x = 0; x + 1 < p.width; ++x) largest = std::max(largest, step(x, x + 1));
    EXPECT_LE(step(p.width - 1, 0), largest * 1.3 + 1.0) << name << " has a seam";
  }
}

}  // namespace
}  // namespace ql::maker::test
