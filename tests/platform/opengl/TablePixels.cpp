#include "platform/opengl/Table.h"

#include <cmath>

namespace ql::test {

using device::Blend;
using device::Compare;
using device::TextureArg;

namespace {

constexpr const char* kFactors[] = {"",
                                    "zero",
                                    "one",
                                    "source colour",
                                    "inverse source colour",
                                    "source alpha",
                                    "inverse source alpha",
                                    "destination alpha",
                                    "inverse destination alpha",
                                    "destination colour",
                                    "inverse destination colour",
                                    "source alpha, saturated",
                                    "both source alpha",
                                    "both inverse source alpha"};
constexpr const char* kComparisons[] = {
    "", "never", "less", "equal", "less or equal", "greater", "not equal", "greater or equal", "always"};

void blend(Scene& s, std::uint32_t source, std::uint32_t destination, std::uint32_t op = 1) {
  s.state.render.alphaBlendEnable = 1;
  s.state.render.srcBlend = source;
  s.state.render.destBlend = destination;
  s.state.render.blendOp = op;
}

Row blended(std::string name, std::uint32_t source, std::uint32_t destination, std::uint32_t op = 1) {
  return {std::move(name), [=](Scene& s) {
            blend(s, source, destination, op);
            background(s);
            s.draw(PrimitiveType::TriangleFan, quad());
          }};
}

}  // namespace

Group blending() {
  Group out{"blending", "Blending and colour masks", "", {}};
  for (std::uint32_t factor = 1; factor <= 13; ++factor) {
    out.rows.push_back(blended("source: " + std::string(kFactors[factor]), factor, code(Blend::One)));
    if (factor <= 11)
      out.rows.push_back(blended("destination: " + std::string(kFactors[factor]), code(Blend::SrcAlpha), factor));
  }
  constexpr const char* kOps[] = {"", "add", "subtract", "subtract reversed", "smaller", "larger"};
  for (std::uint32_t op = 1; op <= 5; ++op)
    out.rows.push_back(blended(kOps[op], code(Blend::SrcAlpha), code(Blend::DestColor), op));
  out.rows.push_back(blended("modulate, as lightmaps", code(Blend::DestColor), code(Blend::Zero)));
  out.rows.push_back({"a target without alpha has 1",
                      [](Scene& s) {
                        background(s);
                        blend(s, code(Blend::DestAlpha), code(Blend::InvDestAlpha));
                        s.draw(PrimitiveType::TriangleFan, quad());
                      },
                      2, device::Format::X8R8G8B8});
  for (std::uint32_t mask = 0; mask < 16; ++mask)
    if (mask < 9 || mask == 10 || mask == 15)
      out.rows.push_back({"channels " + std::to_string(mask), [mask](Scene& s) {
                            s.state.render.colorWriteEnable = mask;
                            background(s);
                            s.draw(PrimitiveType::TriangleFan, quad());
                          }});
  return out;
}

Group comparisons() {
  Group out{"comparisons", "Depth and alpha tests", "", {}};
  for (std::uint32_t function = 1; function <= 8; ++function) {
    out.rows.push_back({"depth: " + std::string(kComparisons[function]), [=](Scene& s) {
                          background(s);
                          s.draw(PrimitiveType::TriangleFan, quad(1, 0.5f));
                          s.state.render.zFunc = function;
                          for (const float z : {0.25f, 0.5f, 0.75f})
                            s.rectangle(z * 72 - 14, 10, z * 72 + 1, 40, 0xFF00FF00, z);
                        }});
    out.rows.push_back({"alpha: " + std::string(kComparisons[function]), [=](Scene& s) {
                          background(s);
                          s.state.render.alphaTestEnable = 1;
                          s.state.render.alphaFunc = function;
                          s.state.render.alphaRef = 0x1A0;
                          for (const std::uint32_t alpha : {0x9F, 0xA0, 0xA1})
                            s.rectangle(static_cast<float>(alpha - 0x9F) * 20, 10,
                                        static_cast<float>(alpha - 0x9F) * 20 + 15, 40, alpha << 24 | 0xC0B0A0);
                        }});
  }
  for (const std::uint32_t reference : {0u, 1u, 0x80u, 0xFFu})
    out.rows.push_back({"alpha reference " + std::to_string(reference), [=](Scene& s) {
                          background(s);
                          s.state.render.alphaTestEnable = 1;
                          s.state.render.alphaFunc = code(Compare::GreaterEqual);
                          s.state.render.alphaRef = reference;
                          s.draw(PrimitiveType::TriangleFan, quad());
                        }});
  out.rows.insert(out.rows.end(), {{"depth tested but not written",
                                    [](Scene& s) {
                                      s.state.render.zWriteEnable = 0;
                                      s.rectangle(0, 0, 40, 40, 0xFFFF0000, 0.2f);
                                      s.state.render.zWriteEnable = 1;
                                      s.rectangle(20, 10, 60, 45, 0xFF00FF00, 0.6f);
                                    }},
                                   {"depth off",
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
                                   {"the largest bias",
                                    [](Scene& s) {
                                      s.rectangle(0, 0, 40, 40, 0xFFFF0000, 0.5f);
                                      s.state.render.zBias = 16;
                                      s.rectangle(20, 10, 60, 45, 0xFF00FF00, 0.50002f);
                                      s.rectangle(10, 20, 30, 30, 0xFF0000FF, 0.501f);
                                    }},
                                   {"a second pass at equal depth",
                                    [](Scene& s) {
                                      hall(s);
                                      s.state.render.zFunc = code(Compare::Equal);
                                      blend(s, code(Blend::DestColor), code(Blend::Zero));
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
                                      s.backEnd->clear(s.target, std::span(rects, 1), device::kClearTarget, 0x80123456,
                                                       1);
                                      s.rectangle(0, 8, 64, 40, 0xFF00FF00, 0.6f);
                                    }}});
  return out;
}

Group primitives() {
  Group out{"primitives", "Primitives, culling, filling, shading", "Lines and points are nearly all edge.", {}};
  constexpr const char* kCulls[] = {"", "all sides", "clockwise culled", "counter-clockwise culled"};
  constexpr const char* kFills[] = {"", "points", "lines", "solid"};
  for (std::uint32_t cull = 1; cull <= 3; ++cull)
    for (std::uint32_t fill = 1; fill <= 3; ++fill)
      out.rows.push_back({std::string(kCulls[cull]) + ", " + kFills[fill], [=](Scene& s) {
                            s.state.render.cullMode = cull;
                            s.state.render.fillMode = fill;
                            s.state.render.pointSize = bitsOf(3);
                            s.draw(PrimitiveType::TriangleList,
                                   std::vector<ScreenVertex>{{5, 5, 0.5f, 1, 0xFFFF0000},
                                                             {30, 9, 0.5f, 1, 0xFFFF0000},
                                                             {9, 40, 0.5f, 1, 0xFFFF0000},
                                                             {35, 5, 0.5f, 1, 0xFF00FF00},
                                                             {40, 40, 0.5f, 1, 0xFF00FF00},
                                                             {60, 9, 0.5f, 1, 0xFF00FF00}});
                            hall(s);
                          }});
  std::vector<ScreenVertex> star;
  for (int i = 0; i < 16; ++i) {
    const float turn = static_cast<float>(i) * 0.3927f;
    star.push_back({32, 24, 0.5f, 1, 0xFFFFFFFF});
    star.push_back({32 + 20 * std::cos(turn), 24 + 20 * std::sin(turn), 0.5f, 1, 0xFFFF0000});
  }
  for (const std::uint32_t last : {0u, 1u})
    for (const PrimitiveType type : {PrimitiveType::LineList, PrimitiveType::LineStrip})
      out.rows.push_back({std::string(type == PrimitiveType::LineList ? "lines" : "a line strip") +
                              (last ? "" : " without last pixels"),
                          [=](Scene& s) {
                            s.state.render.lastPixel = last;
                            s.draw(type, star);
                          }});
  out.rows.insert(out.rows.end(),
                  {{"lines in space that pass the eye",
                    [](Scene& s) {
                      hall(s);
                      s.state.render.zEnable = 0;
                      s.draw(PrimitiveType::LineList, std::vector<LitVertex>{{-1, 0.5f, -20, 0xFFFF0000},
                                                                             {2, 1, 30, 0xFF00FF00},
                                                                             {-30, 2, 6, 0xFF0000FF},
                                                                             {30, 1, 6, 0xFFFFFF00}});
                    }},
                   {"flat",
                    [](Scene& s) {
                      background(s);
                      s.state.render.shadeMode = 1;
                      s.draw(PrimitiveType::TriangleFan, quad());
                    }},
                   {"flat strip with specular colours",
                    [](Scene& s) {
                      background(s);
                      s.state.render.shadeMode = 1;
                      s.state.render.specularEnable = 1;
                      std::vector<ScreenVertex> strip = quad();
                      std::swap(strip[2], strip[3]);
                      s.draw(PrimitiveType::TriangleStrip, strip);
                    }},
                   {"specular added",
                    [](Scene& s) {
                      background(s);
                      s.state.render.specularEnable = 1;
                      s.draw(PrimitiveType::TriangleFan, quad());
                    }},
                   {"no colours in the vertices", [](Scene& s) {
                      background(s);
                      struct Bare {
                        float x, y, z, rhw;
                      };
                      s.draw(PrimitiveType::TriangleList,
                             std::vector<Bare>{{3, 3, 0, 1}, {60, 9, 0, 1}, {30, 40, 0, 1}}, device::fvf::kXyzRhw);
                    }}});
  return out;
}

Group narrowTargets() {
  using device::Format;
  Group out{
      "narrow",
      "Targets of 16 bits, and dither",
      "Colours are rounded alike, dithered or not. Blending rounds before and after on the reference device, when "
      "pixels are read on the hardware device: one step of the format.",
      {}};
  constexpr std::pair<Format, const char*> kFormats[] = {
      {Format::R5G6B5, "565"}, {Format::X1R5G5B5, "555"}, {Format::A1R5G5B5, "1555"}};
  for (const auto& [format, name] : kFormats) {
    for (const std::uint32_t dither : {0u, 1u}) {
      const std::string label = std::string(name) + (dither ? ", dithered" : "");
      out.rows.push_back({label,
                          [dither](Scene& s) {
                            s.clear(0x80123456);
                            s.state.render.ditherEnable = dither;
                            s.draw(PrimitiveType::TriangleFan, quad());
                          },
                          0, format});
      out.rows.push_back({label + ", a hall in fog",
                          [dither](Scene& s) {
                            s.state.render.ditherEnable = dither;
                            s.state.render.fogEnable = 1;
                            s.state.render.fogTableMode = 3;
                            s.state.render.fogEnd = bitsOf(30);
                            s.state.render.fogColor = 0x00C06020;
                            hall(s);
                          },
                          9, format});
    }
    out.rows.push_back({std::string(name) + ", blended",
                        [](Scene& s) {
                          background(s);
                          blend(s, code(Blend::SrcAlpha), code(Blend::InvSrcAlpha));
                          s.draw(PrimitiveType::TriangleFan, quad());
                        },
                        9, format});
  }
  out.rows.push_back({"8 bits are never dithered", [](Scene& s) {
                        s.state.render.ditherEnable = 1;
                        s.draw(PrimitiveType::TriangleFan, quad());
                      }});
  return out;
}

Group fog() {
  Group out{"fog", "Fog", "", {}};
  constexpr const char* kModes[] = {"by the vertices' alpha", "exponential", "exponential squared", "linear"};
  for (const bool table : {false, true})
    for (std::uint32_t mode = 0; mode <= 3; ++mode)
      for (const std::uint32_t range : {0u, 1u})
        if (!table || mode != 0)
          out.rows.push_back(
              {std::string(table ? "by pixel, " : "by vertex, ") + kModes[mode] + (range ? ", true distances" : ""),
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
  out.rows.push_back({"blended and fogged", [](Scene& s) {
                        background(s);
                        blend(s, code(Blend::SrcAlpha), code(Blend::One));
                        s.state.render.fogEnable = 1;
                        s.state.render.fogVertexMode = 3;
                        s.state.render.fogEnd = bitsOf(20);
                        s.state.render.fogColor = 0x000040C0;
                        hall(s);
                      }});
  return out;
}

}  // namespace ql::test
