#include "platform/opengl/Content.h"

#include <cmath>
#include <functional>

namespace ql::test {
namespace {

using device::LightType;

struct LitCorner {
  float x, y, z, nx, ny, nz;
  std::uint32_t diffuse, specular;
  float u, v;
};
constexpr std::uint32_t kFormat = 0x1D2;  // position, normal, diffuse, specular, one coordinate set

/// A rectangle across the view at depth z whose normals face the viewer. Camera space is model space: x to the right, y
/// upwards, z away from the viewer, who sits at 0 and sees -1 to 1.
void facingQuad(Scene& s, float z = 0.5f, math::Vec3 normal = {0, 0, -1}) {
  const auto at = [&](float x, float y) {
    return LitCorner{x, y, z, normal.x, normal.y, normal.z, 0xFF804020, 0xFF204080, (x + 1) / 2, (1 - y) / 2};
  };
  s.draw(PrimitiveType::TriangleStrip, std::vector{at(-1, -1), at(-1, 1), at(1, -1), at(1, 1)}, kFormat);
}

device::Light directional(math::Vec3 direction, math::Color4 diffuse) {
  device::Light light;
  light.direction = direction;
  light.diffuse = diffuse;
  return light;
}
device::Light pointAt(math::Vec3 position, float range = 100) {
  device::Light light;
  light.type = code(LightType::Point);
  light.position = position;
  light.range = range;
  light.attenuation0 = 1;
  return light;
}

struct Case {
  const char* name;
  std::function<void(Scene&)> set;
  double red, green, blue, alpha;  // expected in the middle, 0 to 1
};

void expectMiddle(const Case& row) {
  Scene s(hardware(), 32, 32);
  s.state.render.lighting = 1;
  s.state.render.colorVertex = 0;
  s.state.material.diffuse = {0.5f, 0.6f, 0.7f, 0.8f};
  s.state.material.ambient = {1, 1, 1, 1};
  row.set(s);
  facingQuad(s);
  const std::uint32_t pixel = s.pixel(15, 15);
  const double expected[] = {row.blue, row.green, row.red, row.alpha};
  for (int c = 0; c < 4; ++c)
    EXPECT_NEAR(static_cast<double>(pixel >> (8 * c) & 255), expected[c] * 255, 2.01) << row.name << ", channel " << c;
  hardware()->destroyTarget(s.target);
}

TEST_F(OpenGL, LightsAndMaterials) {
  const auto enable = [](Scene& s, std::size_t index, const device::Light& light) {
    s.state.lights[index] = light;
    s.state.lightEnabled[index] = true;
  };
  const double diagonal = std::sqrt(0.5), near = 4 / std::sqrt(18.0);
  for (const Case& row : {
           Case{"no light", [](Scene&) {}, 0, 0, 0, 0.8},
           Case{"global ambient times the material's", [](Scene& s) { s.state.render.ambient = 0xFF336699; }, 0.2, 0.4,
                0.6, 0.8},
           Case{"emissive",
                [](Scene& s) {
                  s.state.material.emissive = {0.1f, 0.2f, 0.3f, 0};
                },
                0.1, 0.2, 0.3, 0.8},
           Case{"directional",
                [&](Scene& s) {
                  enable(s, 7, directional({0, 0, 2}, {1, 1, 0.5f, 0}));
                },
                0.5, 0.6, 0.35, 0.8},
           Case{"slanted",
                [&](Scene& s) {
                  enable(s, 0, directional({1, 0, 1}, {1, 1, 1, 0}));
                },
                0.5 * diagonal, 0.6 * diagonal, 0.7 * diagonal, 0.8},
           Case{"from behind",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, -1}, {1, 1, 1, 0}));
                },
                0, 0, 0, 0.8},
           Case{"two lights and the last of all, clamped",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, 1}, {1, 0, 0, 0}));
                  enable(s, 50, directional({0, 0, 1}, {0.5f, 0.5f, 0, 0}));
                  enable(s, 100, directional({0, 0, 1}, {1, 0, 0.5f, 0}));
                },
                1, 0.3, 0.35, 0.8},
           Case{"disabled",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, 1}, {1, 1, 1, 0}));
                  s.state.lightEnabled[0] = false;
                },
                0, 0, 0, 0.8},
           Case{"a light's ambient",
                [&](Scene& s) {
                  device::Light light = directional({0, 0, -1}, {});
                  light.ambient = {0.25f, 0.5f, 0.75f, 0};
                  enable(s, 0, light);
                },
                0.25, 0.5, 0.75, 0.8},
           // Four units before the quad, whose corners lie 4.243 away: they are what is lit.
           Case{"point",
                [&](Scene& s) {
                  enable(s, 0, pointAt({0, 0, -3.5f}));
                },
                0.5 * near, 0.6 * near, 0.7 * near, 0.8},
           Case{"attenuated",
                [&](Scene& s) {
                  device::Light light = pointAt({0, 0, -3.5f});
                  light.attenuation0 = 1;
                  light.attenuation1 = 0.125f;
                  light.attenuation2 = 0.03125f;
                  enable(s, 0, light);
                  s.state.material.diffuse = {1, 1, 1, 1};
                },
                0.4505, 0.4505, 0.4505, 1},
           Case{"out of range",
                [&](Scene& s) {
                  enable(s, 0, pointAt({0, 0, -3.5f}, 3.9f));
                },
                0, 0, 0, 0.8},
           Case{"the view moves lights",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, 1}, {1, 1, 1, 0}));
                  s.state.world = math::rotationZ(0.5f);
                  s.state.view = math::multiply(math::rotationX(3.14159265f), math::translation(0, 0, 1));
                  s.state.material.diffuse = {1, 1, 1, 1};
                },
                1, 1, 1, 1},
           Case{"colours of the vertices",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, 1}, {1, 1, 1, 0}));
                  s.state.render.colorVertex = 1;
                  s.state.render.ambientMaterialSource = 2;
                  s.state.render.ambient = 0xFFFFFFFF;
                },
                (0x80 + 0x20) / 255.0, (0x40 + 0x40) / 255.0, (0x20 + 0x80) / 255.0, 1},
           Case{"long normals",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, 1}, {1, 1, 1, 0}));
                  s.state.world = math::scaling(2, 2, 1);
                  s.state.world.m33 = 2;
                  s.state.world.m43 = -0.5f;
                  s.state.material.diffuse = {1, 1, 1, 1};
                },
                0.5, 0.5, 0.5, 1},
           Case{"normalised",
                [&](Scene& s) {
                  enable(s, 0, directional({0, 0, 1}, {1, 1, 1, 0}));
                  s.state.world = math::scaling(2, 2, 1);
                  s.state.world.m33 = 2;
                  s.state.world.m43 = -0.5f;
                  s.state.render.normalizeNormals = 1;
                  s.state.material.diffuse = {1, 1, 1, 1};
                },
                1, 1, 1, 1},
       })
    expectMiddle(row);
}

TEST_F(OpenGL, Highlights) {
  const auto shine = [](Scene& s, float power) {
    s.state.lights[0] = directional({0, 0, 1}, {});
    s.state.lights[0].specular = {1, 0.5f, 0.25f, 0};
    s.state.lightEnabled[0] = true;
    s.state.render.specularEnable = 1;
    s.state.render.specularMaterialSource = 0;
    s.state.material.specular = {1, 1, 1, 0};
    s.state.material.power = power;
  };
  // At the corners, (1, 1, 0.5) and the like, the half vector of the ways to the light and to the viewer at 0.
  const double corner = std::pow(4 / 3.0 / std::sqrt(8 / 3.0), 5.0);
  expectMiddle({"towards the viewer", [&](Scene& s) { shine(s, 5); }, corner, corner / 2, corner / 4, 0.8});
  expectMiddle({"switched off",
                [&](Scene& s) {
                  shine(s, 5);
                  s.state.render.specularEnable = 0;
                },
                0, 0, 0, 0.8});
  // A light from 60 degrees aside: the half vector lies at 30.
  const double turned = std::pow(std::cos(3.14159265 / 6), 10.0);
  expectMiddle({"aside",
                [&](Scene& s) {
                  shine(s, 10);
                  s.state.render.localViewer = 0;
                  s.state.lights[0].direction = {std::sqrt(3.0f), 0, 1};
                },
                turned, turned / 2, turned / 4, 0.8});
}

TEST_F(OpenGL, SpotCones) {
  // Between the cones, the light falls off: the angles are seen as distances on a wall one unit before the light.
  Scene s(hardware(), 64, 64);
  s.state.render.lighting = 1;
  s.state.render.colorVertex = 0;
  s.state.material.diffuse = {1, 1, 1, 1};
  device::Light light = pointAt({0, 0, -0.5f});
  light.type = code(LightType::Spot);
  light.direction = {0, 0, 3};
  light.theta = 2 * std::atan(0.3f);
  light.phi = 2 * std::atan(0.7f);
  light.falloff = 1;
  s.state.lights[0] = light;
  s.state.lightEnabled[0] = true;
  std::vector<LitCorner> grid;
  for (int y = -16; y < 16; ++y)
    for (int x = -16; x < 16; ++x)
      for (const auto& [dx, dy] : {std::pair{0, 0}, {0, 1}, {1, 0}, {1, 0}, {0, 1}, {1, 1}})
        grid.push_back({static_cast<float>(x + dx) / 16, static_cast<float>(y + dy) / 16, 0.5f, 0, 0, -1, 0, 0, 0, 0});
  s.draw(PrimitiveType::TriangleList, grid, kFormat);
  const std::vector<std::uint32_t> pixels = s.pixels();
  for (int x = 33; x < 64; ++x) {
    const double aside = (x - 32) / 32.0, cosine = 1 / std::sqrt(1 + aside * aside);
    const double inner = 1 / std::sqrt(1.09), outer = 1 / std::sqrt(1.49);
    const double cone = cosine > inner ? 1 : cosine <= outer ? 0 : (cosine - outer) / (inner - outer);
    const double expected = 255 * cone * cosine;
    const int tolerance = std::abs(aside - 0.3) < 0.08 || std::abs(aside - 0.7) < 0.08 ? 25 : 3;
    EXPECT_NEAR(pixels[32 * 64 + static_cast<std::size_t>(x)] & 255, expected, tolerance) << x;
  }
}

/// Red and green of a 256 × 256 texture are its coordinates; what a pixel shows is where it was sampled.
TEST_F(OpenGL, GeneratedAndTransformedCoordinates) {
  struct Row {
    const char* name;
    std::uint32_t index, flags;
    std::function<void(device::State&)> set;
    math::Vec3 normal;
    double u, v;  // expected in pixel (24, 8) of 32 × 32: model x 0.5, y 0.5
  };
  const auto moved = [](device::State& s) {
    s.textureTransforms[0] = math::identity();
    s.textureTransforms[0].m31 = 0.125f;  // the third row moves pairs of coordinates
    s.textureTransforms[0].m32 = -0.125f;
    s.textureTransforms[0].m41 = 0.25f;  // the fourth one generated triples
    s.textureTransforms[0].m42 = 0.125f;
  };
  const auto divided = [](device::State& s) {
    s.textureTransforms[0] = math::identity();
    s.textureTransforms[0].m33 = 2;
    s.textureTransforms[0].m34 = 4;
    s.textureTransforms[0].m44 = 0;
  };
  const math::Vec3 towards{0, 0, -1}, tilted{0.6f, 0, -0.8f};
  for (const Row& row : {
           Row{"the vertex's own", 0, 0, moved, towards, 0.75, 0.25},
           Row{"moved", 0, 2, moved, towards, 0.875, 0.125},
           Row{"only the first is transformed", 0, 1, moved, towards, 0.875, 0},
           Row{"camera-space position", 0x20000, 0, moved, towards, 0.5, 0.5},
           Row{"camera-space position, moved", 0x20000, 2, moved, towards, 0.8125, 0.5625},
           Row{"position in camera space", 0x20000, 0,
               [](device::State& s) {
                 s.view = math::translation(0.25f, 0, 0);
                 s.projection = math::translation(-0.25f, 0, 0);
               },
               towards, 0.75, 0.5},
           Row{"normal", 0x10000, 0, moved, tilted, 0.6, 0},
           // A corner is seen in the direction (1, 1, 0.5) / 1.5; a wall across the view turns only z.
           Row{"reflection", 0x30000, 0, moved, towards, 1 / 3.0, 1 / 3.0},
           Row{"projected by the third", 0, 0x103, divided, towards, 0.375, 0.125},
           Row{"projected by the fourth", 0, 0x104, divided, towards, 0.1875, 0.0625},
           Row{"not projected", 0, 3, divided, towards, 0.75, 0.25},
       }) {
    Scene s(hardware(), 32, 32);
    std::vector<std::uint32_t> argb;
    for (std::uint32_t i = 0; i < 256 * 256; ++i) argb.push_back(0xFF000000 | (i & 255) << 16 | (i >> 8) << 8);
    s.textures[0] = s.texture(256, 256, argb);
    s.replaceByTexture();
    s.state.stages[0].texCoordIndex = row.index;
    s.state.stages[0].textureTransformFlags = row.flags;
    s.state.stages[0].addressU = s.state.stages[0].addressV = code(device::Address::Clamp);
    row.set(s.state);
    facingQuad(s, 0.5f, row.normal);
    const std::uint32_t pixel = s.pixel(24, 8);
    EXPECT_NEAR(pixel >> 16 & 255, row.u * 255, 2) << row.name;
    EXPECT_NEAR(pixel >> 8 & 255, row.v * 255, 2) << row.name;
    hardware()->destroyTexture(s.textures[0]);
    hardware()->destroyTarget(s.target);
  }
}

TEST_F(OpenGL, PointSpritesShrinkWithDistance) {
  struct Row {
    const char* name;
    std::uint32_t scale;
    float size, a, b, c;
    float z;
    int expected;  // pixels across
  };
  for (const Row& row :
       {Row{"unscaled", 0, 9, 1, 0, 0, 0.5f, 9}, Row{"a share of the viewport", 1, 0.25f, 1, 0, 0, 0.5f, 8},
        Row{"by distance", 1, 0.25f, 0, 0, 1, 0.5f, 16}, Row{"by its square root", 1, 0.25f, 0, 1, 0, 0.25f, 16},
        Row{"at most", 1, 1, 0, 0, 1, 0.1f, 20}, Row{"at least", 1, 0.001f, 1, 0, 0, 0.5f, 2}}) {
    Scene s(hardware(), 32, 32);
    s.textures[0] = s.texture(2, 2, {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF});
    s.replaceByTexture();
    device::RenderStates& r = s.state.render;
    r.pointSpriteEnable = 1;
    r.pointScaleEnable = row.scale;
    r.pointSize = bitsOf(row.size);
    r.pointSizeMin = bitsOf(2);
    r.pointSizeMax = bitsOf(20);
    r.pointScaleA = bitsOf(row.a);
    r.pointScaleB = bitsOf(row.b);
    r.pointScaleC = bitsOf(row.c);
    s.draw(PrimitiveType::PointList, std::vector<LitVertex>{{0, 0, row.z}});
    const std::vector<std::uint32_t> pixels = s.pixels();
    int across = 0, down = 0;
    for (std::size_t i = 0; i < 32; ++i) {
      across += pixels[16 * 32 + i] != 0;
      down += pixels[i * 32 + 16] != 0;
    }
    EXPECT_NEAR(across, row.expected, 1) << row.name;
    EXPECT_NEAR(down, row.expected, 1) << row.name;
    if (row.expected < 8) continue;
    const auto at = [&](int dx, int dy) { return pixels[static_cast<std::size_t>((16 + dy) * 32 + 16 + dx)]; };
    EXPECT_EQ(at(-3, -3), 0xFFFF0000u) << row.name << ": the picture's first row is on top";
    EXPECT_EQ(at(2, -3), 0xFF00FF00u) << row.name;
    EXPECT_EQ(at(-3, 2), 0xFF0000FFu) << row.name;
    hardware()->destroyTarget(s.target);
  }
}

}  // namespace
}  // namespace ql::test
