#include "platform/opengl/Table.h"

namespace ql::test {

using device::TextureArg;
using device::TextureOp;

namespace {

// What multiplies a difference of the filters by 4 may show it four times.
int limitOf(std::uint32_t op) {
  return op == code(TextureOp::Modulate4x) || op == code(TextureOp::DotProduct3) ? 8 : 4;
}

constexpr const char* kOperations[] = {"",
                                       "disable",
                                       "select 1",
                                       "select 2",
                                       "modulate",
                                       "modulate 2x",
                                       "modulate 4x",
                                       "add",
                                       "add signed",
                                       "add signed 2x",
                                       "subtract",
                                       "add smooth",
                                       "blend diffuse alpha",
                                       "blend texture alpha",
                                       "blend factor alpha",
                                       "blend texture alpha, premultiplied",
                                       "blend current alpha",
                                       "",
                                       "modulate alpha, add colour",
                                       "modulate colour, add alpha",
                                       "modulate inverse alpha, add colour",
                                       "modulate inverse colour, add alpha",
                                       "",
                                       "",
                                       "dot product",
                                       "multiply, add",
                                       "interpolate"};
constexpr const char* kArguments[] = {"diffuse", "current", "texture", "factor", "specular"};

std::string argument(std::uint32_t arg) {
  std::string name = kArguments[arg & device::kArgSelectMask];
  if (arg & device::kArgComplement) name += ", complement";
  if (arg & device::kArgAlphaReplicate) name += ", alpha";
  return name;
}

}  // namespace

Group stageOperations() {
  Group out{"operations",
            "Texture operations",
            "Filters may round a texel by 1 or 2, which an operation may double; times 4 and dot products show more.",
            {}};
  out.rows.push_back({"no texture: colour of the vertices", [](Scene& s) {
                        background(s);
                        s.draw(PrimitiveType::TriangleFan, quad());
                      }});
  out.rows.push_back({"first stage disabled", [](Scene& s) {
                        s.state.stages[0].colorOp = code(TextureOp::Disable);
                        texturedQuad(s);
                      }});
  for (std::uint32_t op = 2; op < std::size(kOperations); ++op) {
    const std::string name = kOperations[op];
    if (name.empty()) continue;  // bump maps
    out.rows.push_back({"colour: " + name,
                        [op](Scene& s) {
                          s.state.stages[0].colorOp = op;
                          s.state.stages[0].colorArg0 = code(TextureArg::Specular);
                          texturedQuad(s);
                        },
                        limitOf(op)});
    out.rows.push_back({"second stage: " + name,
                        [op](Scene& s) {
                          s.state.stages[1].colorOp = s.state.stages[1].alphaOp = op;
                          s.state.stages[1].texCoordIndex = 0;
                          s.state.stages[1].colorArg0 = s.state.stages[1].alphaArg0 = code(TextureArg::TextureFactor);
                          s.state.render.textureFactor = 0x90402080;
                          texturedQuad(s);
                        },
                        limitOf(op)});
    if (op == code(TextureOp::DotProduct3)) continue;
    out.rows.push_back({"alpha: " + name,
                        [op](Scene& s) {
                          s.state.render.alphaBlendEnable = 1;  // shows alpha in the colours
                          s.state.render.srcBlend = code(device::Blend::SrcAlpha);
                          s.state.render.destBlend = code(device::Blend::InvSrcAlpha);
                          s.state.stages[0].alphaOp = op;
                          s.state.stages[0].alphaArg2 = code(TextureArg::Diffuse);
                          s.state.stages[0].alphaArg0 = code(TextureArg::TextureFactor);
                          s.state.render.textureFactor = 0x60FFFFFF;
                          texturedQuad(s);
                        },
                        limitOf(op)});
  }
  return out;
}

Group stageArguments() {
  Group out{"arguments", "Arguments of the operations", "", {}};
  for (std::uint32_t arg = 0; arg <= 4; ++arg)
    for (const std::uint32_t modifier :
         {0u, device::kArgComplement, device::kArgAlphaReplicate, device::kArgComplement | device::kArgAlphaReplicate})
      for (const bool second : {false, true}) {
        if (second && modifier == (device::kArgComplement | device::kArgAlphaReplicate)) continue;
        out.rows.push_back({(second ? "second stage: " : "") + argument(arg | modifier),
                            [=](Scene& s) {
                              s.state.render.textureFactor = 0x50A0F010;
                              device::StageStates& stage = s.state.stages[second ? 1 : 0];
                              stage.colorOp = code(second ? TextureOp::AddSigned : TextureOp::SelectArg2);
                              stage.alphaOp = code(TextureOp::SelectArg2);
                              stage.colorArg1 = code(TextureArg::Current);
                              stage.colorArg2 = stage.alphaArg2 = arg | modifier;
                              stage.texCoordIndex = 0;
                              texturedQuad(s);
                            },
                            second ? 4 : 2});
      }
  out.rows.push_back({"factor in the place of a third argument", [](Scene& s) {
                        s.state.render.textureFactor = 0xFF804020;
                        s.state.stages[0].colorOp = code(TextureOp::Lerp);
                        s.state.stages[0].colorArg0 = code(TextureArg::TextureFactor);
                        texturedQuad(s);
                      }});
  out.rows.push_back({"a texture that nobody set is white", [](Scene& s) {
                        background(s);
                        s.state.stages[0].colorOp = code(TextureOp::SelectArg1);
                        s.state.stages[0].colorArg1 = code(TextureArg::Texture);
                        s.draw(PrimitiveType::TriangleFan, quad());
                      }});
  return out;
}

}  // namespace ql::test
