// Texture stages: operations, arguments, defaults, coordinate sets.
#include "Scene.h"

#include <algorithm>
#include <array>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using device::PrimitiveType;
using device::TextureOp;

using Color = std::array<double, 4>;  // red, green, blue, alpha
Color unpacked(std::uint32_t c) {
  return {(c >> 16 & 255) / 255.0, (c >> 8 & 255) / 255.0, (c & 255) / 255.0, (c >> 24) / 255.0};
}

struct Arguments {
  Color diffuse, current, texture, factor, specular;
};

Color argument(std::uint32_t code, const Arguments& a) {
  const Color all[] = {a.diffuse, a.current, a.texture, a.factor, a.specular};
  Color c = all[code & 15];
  if (code & device::kArgAlphaReplicate) c = {c[3], c[3], c[3], c[3]};
  if (code & device::kArgComplement)
    for (double& x : c) x = 1 - x;
  return c;
}

double operation(TextureOp op, const Color& x0, const Color& x1, const Color& x2, const Arguments& a, std::size_t c) {
  const double p = x1[c], q = x2[c];
  const auto mix = [&](double f) { return p * f + q * (1 - f); };
  switch (op) {
    case TextureOp::SelectArg1:
      return p;
    case TextureOp::SelectArg2:
      return q;
    case TextureOp::Modulate:
      return p * q;
    case TextureOp::Modulate2x:
      return p * q * 2;
    case TextureOp::Modulate4x:
      return p * q * 4;
    case TextureOp::Add:
      return p + q;
    case TextureOp::AddSigned:
      return p + q - 0.5;
    case TextureOp::AddSigned2x:
      return (p + q - 0.5) * 2;
    case TextureOp::Subtract:
      return p - q;
    case TextureOp::AddSmooth:
      return p + q - p * q;
    case TextureOp::BlendDiffuseAlpha:
      return mix(a.diffuse[3]);
    case TextureOp::BlendTextureAlpha:
      return mix(a.texture[3]);
    case TextureOp::BlendFactorAlpha:
      return mix(a.factor[3]);
    case TextureOp::BlendTextureAlphaPremultiplied:
      return p + q * (1 - a.texture[3]);
    case TextureOp::BlendCurrentAlpha:
      return mix(a.current[3]);
    case TextureOp::ModulateAlphaAddColor:
      return p + x1[3] * q;
    case TextureOp::ModulateColorAddAlpha:
      return p * q + x1[3];
    case TextureOp::ModulateInvAlphaAddColor:
      return (1 - x1[3]) * q + p;
    case TextureOp::ModulateInvColorAddAlpha:
      return (1 - p) * q + x1[3];
    case TextureOp::DotProduct3: {
      double sum = 0;
      for (std::size_t i = 0; i < 3; ++i) sum += (x1[i] - 0.5) * (x2[i] - 0.5) * 4;
      return sum;
    }
    case TextureOp::MultiplyAdd:
      return x0[c] + p * q;
    case TextureOp::Lerp:
      return x0[c] * p + (1 - x0[c]) * q;
    case TextureOp::Disable:
      return a.current[c];
  }
  return 0;
}

// Each operation with each pair of arguments, in the second stage, where current is the first stage's result.
TEST(Stages, Operations) {
  constexpr std::uint32_t kDiffuse = 0xC080E040, kTexture = 0x50F03090, kFactor = 0x9020B0D0, kSpecular = 0x30507090,
                          kFirst = 0xA06010F0;
  constexpr std::uint32_t kArguments[] = {0, 1, 2, 3, 4, 0x10, 0x22, 0x31};
  for (std::uint32_t op = 2; op <= 26; ++op) {
    if (op == 17 || op == 22 || op == 23) continue;  // not offered
    for (const std::uint32_t arg1 : kArguments)
      for (const std::uint32_t arg2 : kArguments) {
        Scene scene(1, 1);
        scene.textures = {scene.texture(1, 1, {kFirst}), scene.texture(1, 1, {kTexture})};
        scene.replaceByTexture();
        scene.state.render.textureFactor = kFactor;
        auto& s = scene.state.stages[1];
        s.colorOp = s.alphaOp = op;
        s.colorArg0 = s.alphaArg0 = 3;
        s.colorArg1 = s.alphaArg1 = arg1;
        s.colorArg2 = s.alphaArg2 = arg2;
        scene.fill(kDiffuse, 0.5f, kSpecular);
        const Arguments a{unpacked(kDiffuse), unpacked(kFirst), unpacked(kTexture), unpacked(kFactor),
                          unpacked(kSpecular)};
        const auto kind = static_cast<TextureOp>(op);
        const Color x1 = argument(arg1, a), x2 = argument(arg2, a);
        const std::uint32_t got = scene.pixel(0, 0);
        const Color result = unpacked(got);
        for (std::size_t c = 0; c < 4; ++c)
          ASSERT_NEAR(result[c] * 255, std::clamp(operation(kind, a.factor, x1, x2, a, c), 0.0, 1.0) * 255,
                      kind == TextureOp::DotProduct3 ? 4 : 1.6)
              << "op " << op << std::hex << " arguments " << arg1 << ", " << arg2 << " channel " << c;
      }
  }
}

TEST(Stages, DefaultStateMultipliesByTheVertexColour) {
  struct Case {
    const char* name;
    bool textured;
    std::uint32_t alphaOp, expected;
  };
  constexpr Case kCases[] = {{"colour modulated, alpha of the texture", true, 2, 0x80408020},
                             {"both modulated", true, 4, 0x40408020},
                             {"untextured: the vertex colour", false, 2, 0x8080FF40},
                             {"untextured, modulated", false, 4, 0x8080FF40}};
  for (const Case& c : kCases) {
    Scene scene(2, 2);
    if (c.textured) scene.textures[0] = scene.texture(1, 1, {0x80808080});
    scene.state.stages[0].alphaOp = c.alphaOp;
    scene.fill(0x8080FF40);
    EXPECT_LE(difference(scene.pixel(0, 0), c.expected), 1) << c.name << std::hex << " " << scene.pixel(0, 0);
  }
}

TEST(Stages, CoordinateSetsAreChosenPerStage) {
  struct Two {
    float x, y, z, rhw, u0, v0, u1, v1;
  };
  for (const std::uint32_t set : {0u, 1u, 2u}) {
    Scene scene(4, 4);
    scene.textures[0] = scene.texture(2, 1, {0xFF0000FF, 0xFFFF0000});
    scene.replaceByTexture();
    scene.state.stages[0].texCoordIndex = set;
    scene.draw(
        PrimitiveType::TriangleList,
        std::vector<Two>{
            {-1, -1, 0, 1, 0.25f, 0, 0.75f, 0}, {20, -1, 0, 1, 0.25f, 0, 0.75f, 0}, {-1, 20, 0, 1, 0.25f, 0, 0.75f, 0}},
        device::fvf::kXyzRhw | 2 << device::fvf::kTextureCountShift);
    EXPECT_EQ(scene.pixel(1, 1), set == 1 ? 0xFFFF0000 : 0xFF0000FF) << set;  // a set that vertices lack reads 0, 0
  }
}

}  // namespace
}  // namespace ql::test
