#include "platform/opengl/Content.h"

#include <functional>
#include <initializer_list>
#include <string>

namespace ql::test {
namespace {

using device::Address;
using device::Blend;
using device::Compare;
using device::Filter;
using device::TextureArg;
using device::TextureOp;

/// One picture, and how far a channel may be apart inside areas.
struct Row {
  std::string name;
  std::function<void(Scene&)> draw;
  int limit = 2;
  device::Format format = device::Format::A8R8G8B8;
};

void expectAlike(std::initializer_list<Row> rows) {
  for (const Row& row : rows) {
    const Comparison c = onBoth(row.draw, row.limit, row.format);
    EXPECT_LE(c.worstInside, row.limit) << row.name << ": " << c;
    // Lines and points are nearly all edge.
    EXPECT_LE(c.edges, 40u) << row.name << ": " << c;
  }
}
void expectAlike(Row row) { expectAlike({row}); }

void background(Scene& s) {
  s.clear(0x80405060);
  device::State before = s.state;
  s.state.render = device::RenderStates();
  s.state.render.lighting = s.state.render.zEnable = 0;
  s.state.render.cullMode = 1;
  s.state.stages[0].colorOp = code(TextureOp::Disable);
  s.draw(
      PrimitiveType::TriangleFan,
      std::vector<ScreenVertex>{
          {0, 0, 0, 1, 0xFF103050}, {64, 0, 0, 1, 0x60F0C020}, {64, 48, 0, 1, 0xA020F0A0}, {0, 48, 0, 1, 0x208020F0}});
  s.state = before;
}

void texturedQuad(Scene& s) {
  background(s);
  s.textures = {smoothTexture(s), smoothTexture(s, 16)};
  for (device::StageStates& stage : s.state.stages) stage.minFilter = stage.magFilter = code(Filter::Linear);
  s.draw(PrimitiveType::TriangleFan, quad());
}

TEST_F(OpenGL, EveryTextureOperation) {
  for (std::uint32_t op = 2; op <= 26; ++op) {
    if (op == 17 || op == 22 || op == 23) continue;
    // What multiplies a difference of the filters by 4 may show it four times.
    const int limit = op == code(TextureOp::Modulate4x) || op == code(TextureOp::DotProduct3) ? 8 : 4;
    expectAlike({"colour operation " + std::to_string(op),
                 [op](Scene& s) {
                   s.state.stages[0].colorOp = op;
                   s.state.stages[0].colorArg0 = code(TextureArg::Specular);
                   texturedQuad(s);
                 },
                 limit});
    if (op == code(TextureOp::DotProduct3)) continue;
    expectAlike({"alpha operation " + std::to_string(op),
                 [op](Scene& s) {
                   s.state.stages[0].alphaOp = op;
                   s.state.stages[0].alphaArg2 = code(TextureArg::Diffuse);
                   s.state.stages[0].alphaArg0 = code(TextureArg::TextureFactor);
                   s.state.render.textureFactor = 0x60FFFFFF;
                   texturedQuad(s);
                 },
                 limit});
    expectAlike({"operation " + std::to_string(op) + " in the second stage",
                 [op](Scene& s) {
                   s.state.stages[1].colorOp = s.state.stages[1].alphaOp = op;
                   s.state.stages[1].texCoordIndex = 0;
                   s.state.stages[1].colorArg0 = s.state.stages[1].alphaArg0 = code(TextureArg::TextureFactor);
                   s.state.render.textureFactor = 0x90402080;
                   texturedQuad(s);
                 },
                 limit});
  }
}

TEST_F(OpenGL, EveryArgument) {
  for (std::uint32_t arg = 0; arg <= 4; ++arg)
    for (const std::uint32_t modifier :
         {0u, device::kArgComplement, device::kArgAlphaReplicate, device::kArgComplement | device::kArgAlphaReplicate})
      expectAlike({"argument " + std::to_string(arg | modifier), [=](Scene& s) {
                     s.state.render.textureFactor = 0x50A0F010;
                     s.state.stages[0].colorOp = s.state.stages[0].alphaOp = code(TextureOp::SelectArg2);
                     s.state.stages[0].colorArg2 = s.state.stages[0].alphaArg2 = arg | modifier;
                     texturedQuad(s);
                   }});
}

TEST_F(OpenGL, ColoursWithoutTextures) {
  const auto plain = [](Scene& s) {
    background(s);
    s.draw(PrimitiveType::TriangleFan, quad());
  };
  expectAlike({{"vertex colours", plain},
               {"flat",
                [&](Scene& s) {
                  s.state.render.shadeMode = 1;
                  plain(s);
                }},
               {"flat strip",
                [](Scene& s) {
                  background(s);
                  s.state.render.shadeMode = 1;
                  s.state.render.specularEnable = 1;
                  std::vector<ScreenVertex> strip = quad();
                  std::swap(strip[2], strip[3]);
                  s.draw(PrimitiveType::TriangleStrip, strip);
                }},
               {"specular added",
                [&](Scene& s) {
                  s.state.render.specularEnable = 1;
                  plain(s);
                }},
               {"no colours in the vertices",
                [](Scene& s) {
                  background(s);
                  struct Bare {
                    float x, y, z, rhw;
                  };
                  s.draw(PrimitiveType::TriangleList, std::vector<Bare>{{3, 3, 0, 1}, {60, 9, 0, 1}, {30, 40, 0, 1}},
                         device::fvf::kXyzRhw);
                }},
               {"colour mask", [&](Scene& s) {
                  s.state.render.colorWriteEnable = 0xA;
                  plain(s);
                }}});
}

TEST_F(OpenGL, EveryBlendFactorAndOperation) {
  for (std::uint32_t source = 1; source <= 13; ++source)
    for (std::uint32_t destination = 1; destination <= 11; ++destination)
      for (std::uint32_t op = 1; op <= (source == destination ? 5u : 1u); ++op)
        expectAlike(
            {"blend " + std::to_string(source) + ", " + std::to_string(destination) + " by " + std::to_string(op),
             [=](Scene& s) {
               s.state.render.alphaBlendEnable = 1;
               s.state.render.srcBlend = source;
               s.state.render.destBlend = destination;
               s.state.render.blendOp = op;
               background(s);
               s.draw(PrimitiveType::TriangleFan, quad());
             }});
  expectAlike({"a target without alpha has 1",
               [](Scene& s) {
                 background(s);
                 s.state.render.alphaBlendEnable = 1;
                 s.state.render.srcBlend = code(Blend::DestAlpha);
                 s.state.render.destBlend = code(Blend::InvDestAlpha);
                 s.draw(PrimitiveType::TriangleFan, quad());
               },
               2, device::Format::X8R8G8B8});
}

TEST_F(OpenGL, EveryComparison) {
  for (std::uint32_t function = 1; function <= 8; ++function) {
    expectAlike({"depth " + std::to_string(function), [=](Scene& s) {
                   background(s);
                   s.draw(PrimitiveType::TriangleFan, quad(1, 0.5f));
                   s.state.render.zFunc = function;
                   s.state.stages[0].colorArg2 = code(TextureArg::Specular);
                   for (const float z : {0.25f, 0.5f, 0.75f})
                     s.rectangle(z * 40, 10, z * 40 + 15, 40, 0xFF00FF00, z, 0xFFFF0000 | bitsOf(z) >> 8);
                 }});
    expectAlike({"alpha " + std::to_string(function), [=](Scene& s) {
                   background(s);
                   s.state.render.alphaTestEnable = 1;
                   s.state.render.alphaFunc = function;
                   s.state.render.alphaRef = 0x1A0;
                   for (const std::uint32_t alpha : {0x9F, 0xA0, 0xA1})
                     s.rectangle(static_cast<float>(alpha - 0x9F) * 20, 10, static_cast<float>(alpha - 0x9F) * 20 + 15,
                                 40, alpha << 24 | 0xC0B0A0);
                 }});
  }
}

TEST_F(OpenGL, Depth) {
  expectAlike({{"tested but not written",
                [](Scene& s) {
                  s.state.render.zWriteEnable = 0;
                  s.rectangle(0, 0, 40, 40, 0xFFFF0000, 0.2f);
                  s.state.render.zWriteEnable = 1;
                  s.rectangle(20, 10, 60, 45, 0xFF00FF00, 0.6f);
                }},
               {"off",
                [](Scene& s) {
                  s.rectangle(0, 0, 40, 40, 0xFFFF0000, 0.2f);
                  s.state.render.zEnable = 0;
                  s.rectangle(20, 10, 60, 45, 0xFF00FF00, 0.6f);
                }},
               {"biased over the same triangles",
                [](Scene& s) {
                  hall(s);
                  s.state.render.zBias = 1;
                  s.state.render.zFunc = code(Compare::Less);
                  s.state.render.shadeMode = 1;
                  hall(s);
                }},
               {"a second pass at equal depth",
                [](Scene& s) {
                  hall(s);
                  s.state.render.zFunc = code(Compare::Equal);
                  s.state.render.alphaBlendEnable = 1;
                  s.state.render.srcBlend = code(Blend::DestColor);
                  hall(s);
                }},
               {"the viewport's range",
                [](Scene& s) {
                  s.state.viewport = {8, 6, 40, 30, 0.5f, 0.75f};
                  hall(s);
                  s.state.viewport = {0, 0, 64, 48, 0, 1};
                  s.rectangle(30, 20, 64, 48, 0xFF00FF00, 0.74f);
                }},
               {"cleared in part", [](Scene& s) {
                  s.rectangle(0, 0, 64, 48, 0xFFFF0000, 0.2f);
                  const device::PixelRect rects[] = {{5, 5, 20, 10}, {30, 20, 50, 50}};
                  s.backEnd->clear(s.target, rects, device::kClearDepth, 0, 1);
                  s.backEnd->clear(s.target, std::span(rects, 1), device::kClearTarget, 0x80123456, 1);
                  s.rectangle(0, 8, 64, 40, 0xFF00FF00, 0.6f);
                }}});
}

TEST_F(OpenGL, CullingAndFilling) {
  for (std::uint32_t cull = 1; cull <= 3; ++cull)
    for (std::uint32_t fill = 1; fill <= 3; ++fill)
      expectAlike({"cull " + std::to_string(cull) + ", fill " + std::to_string(fill), [=](Scene& s) {
                     s.state.render.cullMode = cull;
                     s.state.render.fillMode = fill;
                     s.state.render.pointSize = bitsOf(3);
                     s.draw(PrimitiveType::TriangleList, std::vector<ScreenVertex>{{5, 5, 0.5f, 1, 0xFFFF0000},
                                                                                   {30, 9, 0.5f, 1, 0xFFFF0000},
                                                                                   {9, 40, 0.5f, 1, 0xFFFF0000},
                                                                                   {35, 5, 0.5f, 1, 0xFF00FF00},
                                                                                   {40, 40, 0.5f, 1, 0xFF00FF00},
                                                                                   {60, 9, 0.5f, 1, 0xFF00FF00}});
                     hall(s);
                   }});
}

TEST_F(OpenGL, LinesAndPoints) {
  std::vector<ScreenVertex> star;
  for (int i = 0; i < 16; ++i) {
    const float turn = static_cast<float>(i) * 0.3927f;
    star.push_back({32, 24, 0.5f, 1, 0xFFFFFFFF});
    star.push_back({32 + 20 * std::cos(turn), 24 + 20 * std::sin(turn), 0.5f, 1, 0xFFFF0000});
  }
  for (const std::uint32_t last : {0u, 1u})
    for (const PrimitiveType type : {PrimitiveType::LineList, PrimitiveType::LineStrip})
      expectAlike({"lines " + std::to_string(code(type)) + ", last pixel " + std::to_string(last), [=](Scene& s) {
                     s.state.render.lastPixel = last;
                     s.draw(type, star);
                   }});
  expectAlike({{"lines in space that pass the eye",
                [](Scene& s) {
                  hall(s);
                  s.state.render.zEnable = 0;
                  s.draw(PrimitiveType::LineList, std::vector<LitVertex>{{-1, 0.5f, -20, 0xFFFF0000},
                                                                         {2, 1, 30, 0xFF00FF00},
                                                                         {-30, 2, 6, 0xFF0000FF},
                                                                         {30, 1, 6, 0xFFFFFF00}});
                }},
               {"points of several sizes", [](Scene& s) {
                  struct Point {
                    float x, y, z, rhw, size;
                    std::uint32_t diffuse;
                  };
                  s.state.render.pointSizeMin = bitsOf(2);
                  s.draw(PrimitiveType::PointList,
                         std::vector<Point>{{10, 10, 0, 1, 1, 0xFFFF0000},
                                            {30, 10.5f, 0, 1, 7, 0xFF00FF00},
                                            {62, 24, 0, 1, 12, 0xFF0000FF},
                                            {20, 35, 0, 1, 200, 0xFFFFFFFF}},
                         device::fvf::kXyzRhw | device::fvf::kPointSize | device::fvf::kDiffuse);
                }}});
}

TEST_F(OpenGL, Fog) {
  for (const bool table : {false, true})
    for (std::uint32_t mode = 0; mode <= 3; ++mode)
      for (const std::uint32_t range : {0u, 1u})
        if (!table || mode != 0)
          expectAlike(
              {std::string(table ? "table" : "vertex") + " fog " + std::to_string(mode) + (range ? ", range" : ""),
               [=](Scene& s) {
                 s.state.render.fogEnable = 1;
                 s.state.render.fogColor = 0x00C06020;
                 (table ? s.state.render.fogTableMode : s.state.render.fogVertexMode) = mode;
                 s.state.render.rangeFogEnable = range;
                 s.state.render.fogStart = bitsOf(3);
                 s.state.render.fogEnd = bitsOf(30);
                 s.state.render.fogDensity = bitsOf(0.06f);
                 hall(s);
                 s.draw(PrimitiveType::TriangleFan, quad(1, 0));
               }});
}

TEST_F(OpenGL, AddressingAndFilters) {
  const auto tiled = [](Scene& s, float low, float high) {
    s.replaceByTexture();
    const auto at = [](float x, float y, float u, float v) { return ScreenVertex{x, y, 0.5f, 1, ~0u, 0, u, v}; };
    s.draw(PrimitiveType::TriangleFan, std::vector<ScreenVertex>{at(2, 2, low, low), at(60, 2, high, low),
                                                                 at(60, 46, high, high), at(2, 46, low, high)});
  };
  for (std::uint32_t u = 1; u <= 4; ++u)
    for (std::uint32_t v = 1; v <= 4; ++v)
      expectAlike({"address " + std::to_string(u) + ", " + std::to_string(v), [=](Scene& s) {
                     s.state.stages[0].addressU = u;
                     s.state.stages[0].addressV = v;
                     s.state.stages[0].borderColor = 0x80FF8000;
                     s.textures[0] = squaresTexture(s);
                     tiled(s, -1.013f, 2.017f);
                   }});
  for (std::uint32_t mag = 1; mag <= 2; ++mag)
    for (std::uint32_t min = 1; min <= 2; ++min)
      for (std::uint32_t mip = 0; mip <= 2; ++mip)
        for (const float scale : {0.4f, 3.0f, 9.3f})
          expectAlike({"filters " + std::to_string(mag) + std::to_string(min) + std::to_string(mip) + " at " +
                           std::to_string(scale),
                       [=](Scene& s) {
                         s.state.stages[0].magFilter = mag;
                         s.state.stages[0].minFilter = min;
                         s.state.stages[0].mipFilter = mip;
                         s.textures[0] = smoothTexture(s);
                         tiled(s, 0.013f, scale);
                       },
                       mip == 2 ? 6 : 4});
  expectAlike({{"level bias",
                [&](Scene& s) {
                  s.state.stages[0].mipFilter = code(Filter::Point);
                  s.state.stages[0].mipMapLodBias = bitsOf(2);
                  s.textures[0] = smoothTexture(s, 64);
                  tiled(s, 0.01f, 1.01f);
                }},
               {"largest level, without mips",
                [&](Scene& s) {
                  s.state.stages[0].maxMipLevel = 3;
                  s.textures[0] = smoothTexture(s);
                  tiled(s, 0.01f, 1.01f);
                }},
               {"largest level, with mips", [&](Scene& s) {
                  s.state.stages[0].maxMipLevel = 2;
                  s.state.stages[0].mipFilter = code(Filter::Point);
                  s.textures[0] = smoothTexture(s);
                  tiled(s, 0.01f, 1.01f);
                }}});
}

TEST_F(OpenGL, TextureFormats) {
  using device::Format;
  for (const Format format : {Format::X8R8G8B8, Format::R5G6B5, Format::X1R5G5B5, Format::A1R5G5B5, Format::A4R4G4B4,
                              Format::X4R4G4B4, Format::A8, Format::L8, Format::A8L8})
    expectAlike({"format " + std::to_string(code(format)), [=](Scene& s) {
                   background(s);
                   s.textures[0] = smoothTexture(s, 16, format);
                   s.replaceByTexture();
                   s.draw(PrimitiveType::TriangleFan, quad());
                 }});
}

TEST_F(OpenGL, TargetsOf16Bits) {
  using device::Format;
  for (const Format format : {Format::R5G6B5, Format::X1R5G5B5, Format::A1R5G5B5})
    for (const std::uint32_t dither : {0u, 1u}) {
      expectAlike({"format " + std::to_string(code(format)) + ", dither " + std::to_string(dither),
                   [=](Scene& s) {
                     s.clear(0x80123456);
                     s.state.render.ditherEnable = dither;
                     s.draw(PrimitiveType::TriangleFan, quad());
                   },
                   0, format});
      // Colours are rounded before they are blended there, here when they are read.
      expectAlike({"blended on " + std::to_string(code(format)),
                   [=](Scene& s) {
                     background(s);
                     s.state.render.alphaBlendEnable = 1;
                     s.state.render.srcBlend = code(Blend::SrcAlpha);
                     s.state.render.destBlend = code(Blend::InvSrcAlpha);
                     s.draw(PrimitiveType::TriangleFan, quad());
                   },
                   9, format});
    }
}

TEST_F(OpenGL, DrawsIntoTextures) {
  expectAlike(
      {{"a texture that was drawn",
        [](Scene& s) {
          const device::TextureId canvas = s.backEnd->createTexture({32, 32, 1, device::Format::A8R8G8B8, true});
          const device::TargetId screen = s.target;
          s.target = s.backEnd->createTextureTarget(canvas, 0);
          s.state.viewport = {0, 0, 32, 32, 0, 1};
          s.clear(0xFF2040C0);
          s.rectangle(4, 2, 20, 12, 0xFFFFFF00);
          s.target = screen;
          s.state.viewport = {0, 0, 64, 48, 0, 1};
          s.textures[0] = canvas;
          s.replaceByTexture();
          s.fill(0);
        }},
       {"a texture while it is drawn on", [](Scene& s) {
          const device::TextureId canvas = smoothTexture(s);
          const device::TargetId screen = s.target;
          s.target = s.backEnd->createTextureTarget(canvas, 0);
          s.state.viewport = {0, 0, 32, 32, 0, 1};
          s.textures[0] = canvas;
          s.replaceByTexture();
          s.rectangle(0, 0, 16, 16, 0);  // the whole picture in its own corner, twice
          s.rectangle(0, 0, 16, 16, 0);
          s.target = screen;
          s.state.viewport = {0, 0, 64, 48, 0, 1};
          s.fill(0);
        }}});
}

}  // namespace
}  // namespace ql::test
