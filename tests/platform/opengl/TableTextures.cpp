#include "platform/opengl/Table.h"

#include <random>

namespace ql::test {

using device::Filter;

Group addressing() {
  Group out{"addressing", "Texture addressing", "", {}};
  constexpr const char* kNames[] = {"", "wrap", "mirror", "clamp", "border"};
  for (std::uint32_t u = 1; u <= 4; ++u)
    for (std::uint32_t v = 1; v <= 4; ++v)
      out.rows.push_back({std::string(kNames[u]) + ", " + kNames[v], [=](Scene& s) {
                            s.state.stages[0].addressU = u;
                            s.state.stages[0].addressV = v;
                            s.state.stages[0].borderColor = 0x80FF8000;
                            s.textures[0] = squaresTexture(s);
                            tiled(s, -1.013f, 2.017f);
                          }});
  return out;
}

Group filtering() {
  Group out{
      "filters",
      "Texture filters and levels",
      "Between two levels, the level is chosen per 4 × 4 pixels by the reference device and per 2 × 2 by drivers.",
      {}};
  constexpr const char* kNames[] = {"none", "point", "linear", "anisotropic"};
  for (std::uint32_t mag = 1; mag <= 2; ++mag)
    for (std::uint32_t min = 1; min <= 2; ++min)
      for (std::uint32_t mip = 0; mip <= 2; ++mip)
        for (const auto& [scale, size] :
             {std::pair(0.4f, "larger"), std::pair(3.0f, "smaller"), std::pair(9.3f, "much smaller")}) {
          // What a filter is not asked for is one scene alone.
          if (scale < 1 ? min != mag || mip != 1 : mag != 1) continue;
          out.rows.push_back({std::string(size) + ": " + kNames[scale < 1 ? mag : min] + ", levels " + kNames[mip],
                              [=, repeats = scale](Scene& s) {
                                s.state.stages[0].magFilter = mag;
                                s.state.stages[0].minFilter = min;
                                s.state.stages[0].mipFilter = mip;
                                s.textures[0] = smoothTexture(s);
                                tiled(s, 0.013f, repeats);
                              },
                              mip == 2 ? 6 : 4});
        }
  out.rows.insert(out.rows.end(), {{"level bias",
                                    [](Scene& s) {
                                      s.state.stages[0].mipFilter = code(Filter::Point);
                                      s.state.stages[0].mipMapLodBias = bitsOf(2);
                                      s.textures[0] = smoothTexture(s, 64);
                                      tiled(s, 0.01f, 1.01f);
                                    }},
                                   {"level bias, to larger ones",
                                    [](Scene& s) {
                                      s.state.stages[0].mipFilter = code(Filter::Point);
                                      s.state.stages[0].mipMapLodBias = bitsOf(-1);
                                      s.textures[0] = smoothTexture(s, 64);
                                      tiled(s, 0.01f, 4.01f);
                                    }},
                                   {"largest level, without mips",
                                    [](Scene& s) {
                                      s.state.stages[0].maxMipLevel = 3;
                                      s.textures[0] = smoothTexture(s);
                                      tiled(s, 0.01f, 1.01f);
                                    }},
                                   {"largest level, with mips",
                                    [](Scene& s) {
                                      s.state.stages[0].maxMipLevel = 2;
                                      s.state.stages[0].mipFilter = code(Filter::Point);
                                      s.textures[0] = smoothTexture(s);
                                      tiled(s, 0.01f, 1.01f);
                                    }},
                                   {"anisotropic, of degree 1",
                                    [](Scene& s) {
                                      s.state.stages[0].minFilter = s.state.stages[0].magFilter =
                                          code(Filter::Anisotropic);
                                      s.state.stages[0].mipFilter = code(Filter::Point);
                                      s.textures[0] = smoothTexture(s);
                                      tiled(s, 0.01f, 3.01f);
                                    },
                                    4},
                                   {"a second texture by its own filters",
                                    [](Scene& s) {
                                      s.textures = {smoothTexture(s), smoothTexture(s, 64)};
                                      s.state.stages[0].minFilter = s.state.stages[0].magFilter = code(Filter::Linear);
                                      s.state.stages[1].mipFilter = code(Filter::Point);
                                      s.state.stages[1].colorOp = code(device::TextureOp::Modulate2x);
                                      s.state.stages[1].texCoordIndex = 0;
                                      tiled(s, 0.01f, 4.01f);
                                    },
                                    4}});
  return out;
}

Group textureFormats() {
  using device::Format;
  Group out{"formats", "Texture formats", "", {}};
  constexpr std::pair<Format, const char*> kFormats[] = {
      {Format::A8R8G8B8, "8888"}, {Format::X8R8G8B8, "888"},
      {Format::R5G6B5, "565"},    {Format::X1R5G5B5, "555"},
      {Format::A1R5G5B5, "1555"}, {Format::A4R4G4B4, "4444"},
      {Format::X4R4G4B4, "444"},  {Format::A8, "alpha"},
      {Format::L8, "luminance"},  {Format::A8L8, "luminance and alpha"}};
  for (const auto& [format, name] : kFormats)
    out.rows.push_back({name, [format = format](Scene& s) {
                          background(s);
                          s.textures[0] = smoothTexture(s, 16, format);
                          s.replaceByTexture();
                          s.state.render.alphaBlendEnable = 1;
                          s.state.render.srcBlend = code(device::Blend::SrcAlpha);
                          s.state.render.destBlend = code(device::Blend::InvSrcAlpha);
                          s.draw(PrimitiveType::TriangleFan, quad());
                        }});
  return out;
}

Group coordinates() {
  Group out{"coordinates",
            "Texture coordinates: sets, generated, transformed",
            "Where coordinates leave the texture, a pixel may take its other side.",
            {}};
  constexpr const char* kSources[] = {"the vertex's", "normal", "position", "reflection"};
  std::mt19937 random(7);
  const auto number = [&] { return static_cast<float>(random() % 201) / 100 - 1; };
  for (std::uint32_t generated = 0; generated <= 3; ++generated)
    for (const std::uint32_t flags : {0u, 1u, 2u, 3u, 4u, 0x102u, 0x103u, 0x104u}) {
      math::Mat4 matrix = math::identity();
      for (float* m :
           {&matrix.m11, &matrix.m12, &matrix.m21, &matrix.m22, &matrix.m31, &matrix.m32, &matrix.m41, &matrix.m42})
        *m += number() * 0.4f;
      matrix.m13 = matrix.m14 = matrix.m23 = matrix.m24 = 0.1f;
      matrix.m33 = matrix.m34 = 2;
      matrix.m43 = matrix.m44 = 4;
      // Coordinates whose second divides run away where it is 0.
      if (flags == 0x102) matrix.m12 = matrix.m22 = 0.05f, matrix.m32 = matrix.m42 = 2;
      const std::string transformed = flags == 0 ? "" : ", " + std::to_string(flags & 7) + " transformed";
      out.rows.push_back({std::string(kSources[generated]) + transformed + (flags & 0x100 ? ", projected" : ""),
                          [=](Scene& s) {
                            s.clear(0xFF203040);
                            s.state.stages[0].texCoordIndex = generated << 16;
                            s.state.stages[0].textureTransformFlags = flags;
                            smoothFilters(s);
                            s.state.textureTransforms[0] = matrix;
                            s.textures[0] = smoothTexture(s);
                            s.replaceByTexture();
                            cushion(s);
                          },
                          8, device::Format::A8R8G8B8, 120, 3});
    }
  for (const std::uint32_t set : {0u, 1u})
    out.rows.push_back({"the second stage by set " + std::to_string(set),
                        [set](Scene& s) {
                          struct TwoSets {
                            float x, y, z, rhw;
                            std::uint32_t diffuse;
                            float u0, v0, u1, v1;
                          };
                          s.textures = {smoothTexture(s), smoothTexture(s, 16)};
                          smoothFilters(s);
                          s.state.stages[1].colorOp = code(device::TextureOp::AddSigned);
                          s.state.stages[1].texCoordIndex = set;
                          s.state.textureTransforms[1] = math::scaling(2, 3, 1);
                          s.state.stages[1].textureTransformFlags = 2;
                          s.draw(PrimitiveType::TriangleFan,
                                 std::vector<TwoSets>{{6, 4, 0, 1, ~0u, 0, 0, 1, 1},
                                                      {58, 8, 0, 1, ~0u, 1, 0, 1, 0},
                                                      {54, 44, 0, 1, ~0u, 1, 1, 0, 0},
                                                      {9, 40, 0, 1, ~0u, 0, 1, 0, 1}},
                                 device::fvf::kXyzRhw | device::fvf::kDiffuse | 2u << device::fvf::kTextureCountShift);
                        },
                        4});
  return out;
}

Group drawnTextures() {
  Group out{"targets", "Drawing into textures", "A colour between two steps of a narrow format may take either.", {}};
  const auto into = [](Scene& s, device::TextureId canvas, std::uint32_t level, const std::function<void()>& draw) {
    const device::TargetId screen = s.target;
    const math::Viewport viewport = s.state.viewport;
    const auto side = static_cast<std::int32_t>(32u >> level);
    s.target = s.backEnd->createTextureTarget(canvas, level);
    s.state.viewport = {0, 0, side, side, 0, 1};
    draw();
    s.target = screen;
    s.state.viewport = viewport;
  };
  out.rows.insert(
      out.rows.end(),
      {{"a texture that was drawn",
        [=](Scene& s) {
          const device::TextureId canvas = s.backEnd->createTexture({32, 32, 1, device::Format::A8R8G8B8, true});
          into(s, canvas, 0, [&] {
            s.clear(0xFF2040C0);
            s.rectangle(4, 2, 20, 12, 0xFFFFFF00);
          });
          s.textures[0] = canvas;
          s.replaceByTexture();
          s.fill(0);
        }},
       {"its depth is its own",
        [=](Scene& s) {
          s.rectangle(0, 0, 40, 40, 0xFF800000, 0.1f);  // nearer than what follows
          const device::TextureId canvas = s.backEnd->createTexture({32, 32, 1, device::Format::X8R8G8B8, true});
          into(s, canvas, 0, [&] {
            s.clear(0xFF2040C0);
            s.rectangle(4, 2, 20, 12, 0xFFFFFF00, 0.5f);
            s.rectangle(10, 8, 30, 30, 0xFF00FF00, 0.6f);
          });
          s.state.render.zFunc = code(device::Compare::Greater);
          s.textures[0] = canvas;
          s.replaceByTexture();
          s.fill(0, 0.3f);
        }},
       {"a narrow texture, dithered",
        [=](Scene& s) {
          const device::TextureId canvas = s.backEnd->createTexture({32, 32, 1, device::Format::R5G6B5, true});
          s.state.render.ditherEnable = 1;
          into(s, canvas, 0, [&] {
            s.clear(0);
            s.draw(PrimitiveType::TriangleFan, std::vector<ScreenVertex>{{0, 0, 0, 1, 0xFF103050},
                                                                         {32, 0, 0, 1, 0xFFF0C020},
                                                                         {32, 32, 0, 1, 0xFF20F0A0},
                                                                         {0, 32, 0, 1, 0xFF8020F0}});
          });
          s.textures[0] = canvas;
          s.replaceByTexture();
          s.fill(0);
        },
        9},
       {"a smaller level",
        [=](Scene& s) {
          const device::TextureId canvas = s.backEnd->createTexture({32, 32, 2, device::Format::A8R8G8B8, true});
          for (const std::uint32_t level : {0u, 1u})
            into(s, canvas, level, [&] { s.clear(level ? 0xFF00C000 : 0xFFC00000); });
          s.textures[0] = canvas;
          s.state.stages[0].mipFilter = code(Filter::Point);
          s.replaceByTexture();
          s.rectangle(0, 0, 32, 32, 0);
          s.rectangle(36, 4, 52, 20, 0);
        }},
       {"a texture while it is drawn on", [=](Scene& s) {
          const device::TextureId canvas = smoothTexture(s);
          into(s, canvas, 0, [&] {
            s.textures[0] = canvas;
            s.replaceByTexture();
            s.rectangle(0, 0, 16, 16, 0);  // the whole picture in its own corner, twice
            s.rectangle(0, 0, 16, 16, 0);
          });
          s.fill(0);
        }}});
  return out;
}

}  // namespace ql::test
