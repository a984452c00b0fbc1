// Where pixels sample their textures: generated and transformed coordinates, and sprites.
#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace ql::test {
namespace {

using device::PrimitiveType;

struct Corner {
  math::Vec3 position, normal;
  float u = 0, v = 0, s = 0, t = 0;
};
constexpr std::uint32_t kFormat = 0x212;  // position, normal, two coordinate sets

/// Red and green of a 256 × 256 texture are its coordinates; what a pixel shows is where it was sampled.
device::TextureId map(Scene& s) {
  std::vector<std::uint32_t> argb;
  for (std::uint32_t i = 0; i < 256 * 256; ++i) argb.push_back(0xFF000000 | (i & 255) << 16 | (i >> 8) << 8);
  return s.texture(256, 256, argb);
}

/// A rectangle over the screen, whose left and right sides lie at different depths and are seen in perspective. Its
/// values belong to the camera space point (x, y, z); the first set runs over it, the second one backwards.
struct Quad {
  math::Vec3 normal{0, 0, -1};
  float leftDepth = 1, rightDepth = 1;
  void draw(Scene& scene) const {
    const auto at = [&](float x, float y) {
      const float z = x < 0 ? leftDepth : rightDepth;
      const float u = (x + 1) / 2, v = (1 - y) / 2;
      return Corner{{x * z, y * z, z}, normal, u, v, 1 - u, 1 - v};
    };
    scene.draw(PrimitiveType::TriangleStrip, std::vector{at(-1, -1), at(-1, 1), at(1, -1), at(1, 1)}, kFormat);
  }
};

math::Mat4 withRow(int row, float a, float b, float c = 0, float d = 0) {
  math::Mat4 m = math::identity();
  float* const rows[] = {&m.m11, &m.m21, &m.m31, &m.m41};
  const float values[] = {a, b, c, d};
  std::copy(values, values + 4, rows[row - 1]);
  return m;
}

TEST(Coordinates, AreGeneratedAndTransformed) {
  struct Row {
    const char* name;
    std::uint32_t index, flags;
    math::Mat4 matrix;
    Quad quad;
    std::function<void(device::State&)> more;
    double u, v;  // expected at pixel (48, 16) of 64 × 64: half way right and up
  };
  const auto none = [](device::State&) {};
  const math::Mat4 moves = math::multiply(withRow(3, 0.125f, -0.125f, 1), withRow(4, 0.25f, 0.0625f, 0, 1));
  math::Mat4 byThird = math::identity(), byFourth = math::identity();
  byThird.m33 = 2;  // of the constant 1 of pairs
  byFourth.m34 = 4;
  byFourth.m44 = 0;
  // In the middle of the right half, seen in perspective from depth 1 to 3: 1 / z runs evenly.
  const double z = 1 / (1 + (1 / 3.0 - 1) * 0.75), across = (z - 1) / 2;  // share of the way from left to right
  // v there: only the lower right corner's is not 0, and it has a quarter of 1 / 3 in 1 / 2.
  const Quad flat, slanted{{0, 0, -1}, 1, 3};
  for (const Row& row : {
           Row{"set 0", 0, 0, moves, flat, none, 0.75, 0.25},
           Row{"set 1", 1, 0, moves, flat, none, 0.25, 0.75},
           Row{"no such set", 5, 0, moves, flat, none, 0, 0},
           Row{"no such set is not transformed", 5, 2, moves, flat, none, 0, 0},
           Row{"in perspective", 0, 0, moves, slanted, none, across, 1 / 6.0},
           Row{"moved by the third row", 0, 2, withRow(3, 0.125f, -0.125f, 1), flat, none, 0.875, 0.125},
           Row{"not by the fourth", 0, 2, withRow(4, 0.125f, 0.125f, 0, 1), flat, none, 0.75, 0.25},
           Row{"turned", 0, 2, math::rotationZ(std::asin(1.0f)), flat,
               [](device::State& s) { s.stages[0].addressU = code(device::Address::Wrap); }, 0.75, 0.75},
           Row{"the first alone", 0, 1, withRow(3, 0.125f, 0.5f, 1), flat, none, 0.875, 0},
           Row{"normal", 0x10000, 0, moves, {{0.6f, 0.8f, 0}}, none, 0.6, 0.8},
           Row{"normal of a scaled model",
               0x10001,
               0,
               moves,
               {{0.8f, 0.6f, 0}},
               [](device::State& s) {
                 s.world = math::scaling(2, 1, 1);
                 s.projection.m11 *= 0.5f;
               },
               0.4,
               0.6},
           Row{"normalised",
               0x10001,
               0,
               moves,
               {{0.8f, 0.6f, 0}},
               [](device::State& s) {
                 s.render.normalizeNormals = 1;
                 s.world = math::scaling(2, 1, 1);
                 s.projection.m11 *= 0.5f;
               },
               0.4 / std::hypot(0.4, 0.6),
               0.6 / std::hypot(0.4, 0.6)},
           Row{"position", 0x20000, 0, moves, flat, none, 0.5, 0.5},
           Row{"position, moved by the fourth row", 0x20000, 2, withRow(4, 0.25f, 0.125f, 0, 1), flat, none, 0.75,
               0.625},
           // A wall across the view turns the z of directions around and nothing else; between corners they run
           // straight.
           Row{"reflection", 0x30000, 0, moves, flat, none, 0.5 / std::sqrt(3.0), 0.5 / std::sqrt(3.0)},
           Row{"reflection of a far viewer",
               0x30000,
               0,
               moves,
               {{0.6f, 0, -0.8f}},
               [](device::State& s) { s.render.localViewer = 0; },
               2 * 0.8 * 0.6,
               0},
           Row{"projected by the second", 0, 0x102, withRow(3, 0, 0.75f, 1), flat, none, 0.75, 1},
           Row{"by the third", 0, 0x103, byThird, flat, none, 0.375, 0.125},
           Row{"by the fourth, per pixel", 0x20000, 0x104, byFourth, slanted, none, 0.125, 0.125},
           Row{"not projected", 0x20000, 4, math::scaling(0.25f, 0.25f, 1), slanted, none, 0.125 * z, 0.125 * z},
       }) {
    Scene scene(64, 64);
    scene.textures[0] = map(scene);
    scene.replaceByTexture();
    device::State& s = scene.state;
    s.stages[0].texCoordIndex = row.index;
    s.stages[0].textureTransformFlags = row.flags;
    s.stages[0].addressU = s.stages[0].addressV = code(device::Address::Clamp);
    s.stages[0].magFilter = s.stages[0].minFilter = code(device::Filter::Linear);
    s.textureTransforms[0] = row.matrix;
    s.projection = {};
    s.projection.m11 = s.projection.m22 = s.projection.m34 = 1;
    s.projection.m33 = 0.125f;
    s.projection.m44 = 0;
    row.more(s);
    row.quad.draw(scene);
    const std::uint32_t pixel = scene.pixel(48, 16);
    EXPECT_NEAR(pixel >> 16 & 255, std::min(row.u * 256 - 0.5, 255.0), 2) << row.name << ", u";
    EXPECT_NEAR(pixel >> 8 & 255, std::min(row.v * 256 - 0.5, 255.0), 2) << row.name << ", v";
  }
}

TEST(Coordinates, OnTheScreenAreFinished) {
  Scene scene(16, 16);
  scene.textures[0] = map(scene);
  scene.replaceByTexture();
  scene.state.stages[0].texCoordIndex = 0x20000;
  scene.state.stages[0].textureTransformFlags = 2;
  scene.state.textureTransforms[0] = math::scaling(0, 0, 0);
  scene.fill(0xFFFFFFFF);
  EXPECT_LE(difference(scene.pixel(8, 4), 0xFF804000), 1);
}

TEST(Coordinates, BothStagesHaveTheirOwn) {
  Scene scene(16, 16);
  scene.textures = {map(scene), map(scene)};
  scene.replaceByTexture();
  device::State& s = scene.state;
  s.stages[1] = s.stages[0];
  s.stages[1].colorOp = code(device::TextureOp::Add);
  s.stages[1].colorArg2 = code(device::TextureArg::Current);
  s.stages[0].texCoordIndex = 0x10000;
  s.stages[1].texCoordIndex = 0;
  s.stages[1].textureTransformFlags = 0x103;
  s.textureTransforms[1].m33 = 4;
  s.projection.m33 = 0.5f;
  Quad{{0.25f, 0.5f, 0}}.draw(scene);
  EXPECT_LE(difference(scene.pixel(8, 8), 0xFF000000 | (0x40 + 0x20) << 16 | (0x80 + 0x20) << 8), 1);
}

struct Extent {
  int left = 64, top = 64, right = -1, bottom = -1;
  int across() const { return right - left + 1; }
  int down() const { return bottom - top + 1; }
};
Extent extentOf(const std::vector<std::uint32_t>& pixels) {
  Extent e;
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 64; ++x)
      if (pixels[static_cast<std::size_t>(y * 64 + x)] != 0) {
        e.left = std::min(e.left, x);
        e.top = std::min(e.top, y);
        e.right = std::max(e.right, x);
        e.bottom = std::max(e.bottom, y);
      }
  return e;
}

struct SizedPoint {
  math::Vec3 position;
  float size;
};
constexpr std::uint32_t kSizedFormat = 0x22;

TEST(Points, AreAsLargeAsTheirStatesSay) {
  struct Row {
    const char* name;
    std::uint32_t scales;
    float size, least, most, a, b, c;
    float own;  // in the vertex; 0: none
    math::Vec3 at;
  };
  for (const Row& row : {
           Row{"size", 0, 10, 1, 64, 1, 0, 0, 0, {0, 0, 0.5f}},
           Row{"the vertex's own", 0, 10, 1, 64, 1, 0, 0, 20, {0, 0, 0.5f}},
           Row{"at most", 0, 10, 1, 8, 1, 0, 0, 20, {0, 0, 0.5f}},
           Row{"at least", 0, 1, 6, 64, 1, 0, 0, 0, {0, 0, 0.5f}},
           Row{"never more than 64", 0, 500, 1, 500, 1, 0, 0, 0, {0, 0, 0.5f}},
           Row{"least above most", 0, 1, 12, 4, 1, 0, 0, 0, {0, 0, 0.5f}},
           Row{"not a number", 0, 10, 4, 64, 1, 0, 0, std::nanf(""), {0, 0, 0.5f}},
           Row{"scaled, constant", 1, 0.25f, 1, 64, 1, 0, 0, 0, {0, 0, 0.5f}},
           Row{"scaled, the vertex's own", 1, 1, 1, 64, 1, 0, 0, 0.125f, {0, 0, 0.5f}},
           Row{"scaled by the distance", 1, 0.25f, 1, 64, 0, 4, 0, 0, {0, 0, 0.5f}},
           Row{"scaled by its square", 1, 0.25f, 1, 64, 0, 0, 16, 0, {0, 0, 0.5f}},
           Row{"scaled by all", 1, 0.5f, 1, 64, 1, 2, 8, 0, {0, 0, 0.5f}},
           Row{"the distance is not the depth", 1, 0.5f, 1, 64, 0, 0, 4, 0, {0.125f, -0.25f, 0.25f}},
           Row{"scaled, at most", 1, 0.9f, 1, 16, 0.5f, 0, 0, 0, {0, 0, 0.5f}},
           Row{"nothing to divide by", 1, 0.25f, 1, 64, 0, 0, 0, 0, {0, 0, 0.5f}},
       }) {
    Scene scene(64, 64);
    device::RenderStates& r = scene.state.render;
    r.pointScaleEnable = row.scales;
    r.pointSize = bitsOf(row.size);
    r.pointSizeMin = bitsOf(row.least);
    r.pointSizeMax = bitsOf(row.most);
    r.pointScaleA = bitsOf(row.a);
    r.pointScaleB = bitsOf(row.b);
    r.pointScaleC = bitsOf(row.c);
    if (row.own != 0)
      scene.draw(PrimitiveType::PointList, std::vector{SizedPoint{row.at, row.own}}, kSizedFormat);
    else
      scene.draw(PrimitiveType::PointList, std::vector{row.at}, 0x2);
    double size = row.own != 0 ? row.own : row.size;
    const double d = std::hypot(row.at.x, row.at.y, row.at.z), shrink = row.a + row.b * d + row.c * d * d;
    if (row.scales) size *= 64 * (shrink > 0 ? std::sqrt(1 / shrink) : 1);
    const double least = std::min(row.least, 64.0f);
    size = std::isnan(size) ? least : std::clamp(size, least, std::max(least, std::min<double>(row.most, 64)));
    const Extent e = extentOf(scene.pixels());
    EXPECT_NEAR(e.across(), size, 0.51) << row.name;
    EXPECT_NEAR(e.down(), size, 0.51) << row.name;
    EXPECT_NEAR((e.left + e.right + 1) / 2.0, 32 + row.at.x * 32, 0.51) << row.name;
    EXPECT_NEAR((e.top + e.bottom + 1) / 2.0, 32 - row.at.y * 32, 0.51) << row.name;
  }
}

TEST(Points, AsSpritesShowTheirWholeTextures) {
  for (const bool sprite : {true, false})
    for (const std::uint32_t projected : {0u, 0x103u}) {
      Scene scene(64, 64);
      scene.textures[0] = map(scene);
      scene.replaceByTexture();
      scene.state.render.pointSpriteEnable = sprite;
      scene.state.render.pointSize = bitsOf(32);
      scene.state.stages[0].textureTransformFlags = projected;
      scene.state.textureTransforms[0].m33 = 1;
      const LitVertex vertex{0, 0, 0.5f, 0xFFFFFFFF, 0, 0.25f, 0.5f};
      scene.draw(PrimitiveType::PointList, std::vector{vertex});
      const std::vector<std::uint32_t> pixels = scene.pixels();
      for (const auto& [x, y] : {std::pair{16u, 16u}, {47u, 16u}, {16u, 47u}, {40u, 24u}}) {
        const std::uint32_t shown = sprite ? 0xFF000000 | (x - 16) * 8 << 16 | (y - 16) * 8 << 8 : 0xFF408000;
        EXPECT_LE(difference(pixels[y * 64 + x], shown), 1) << sprite << " " << projected << " at " << x << ", " << y;
      }
      // Triangles that are shown by their corners keep their coordinates.
      scene.clear(0);
      scene.state.render.fillMode = code(device::FillMode::Point);
      scene.draw(PrimitiveType::TriangleList, std::vector(3, vertex));
      scene.draw(PrimitiveType::TriangleList,
                 std::vector<LitVertex>{vertex, {0, 1, 0.5f, 0, 0, 0.25f, 0.5f}, {1, 0, 0.5f, 0, 0, 0.25f, 0.5f}});
      EXPECT_LE(difference(scene.pixel(20, 40), 0xFF408000), 1);
    }
}

}  // namespace
}  // namespace ql::test
