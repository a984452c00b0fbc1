#include "platform/opengl/Table.h"

#include <cmath>
#include <utility>

namespace ql::test {
namespace {

using device::Light;
using device::LightType;

struct BumpVertex {
  math::Vec3 position, normal;
  std::uint32_t diffuse, specular;
  float u, v;
};
constexpr std::uint32_t kFormat = 0x1D2;

Light lamp(LightType type) {
  Light light;
  light.type = code(type);
  light.diffuse = {1, 0.8f, 0.5f, 1};
  light.position = {-1.2f, 1.5f, -2.5f};
  light.direction = {1.2f, -1.4f, 2.5f};
  light.range = 10;
  light.attenuation0 = 1;
  light.theta = 0.5f;
  light.phi = 1.1f;
  light.falloff = 1;
  return light;
}

void lit(Scene& s) {
  s.clear(0xFF203040);
  s.state.render.lighting = 1;
  s.state.render.colorVertex = 0;
  s.state.render.ambient = 0xFF202020;
  s.state.material = {{0.9f, 0.8f, 0.7f, 1}, {1, 1, 1, 1}, {0.8f, 0.8f, 0.8f, 1}, {}, 12};
}

constexpr std::pair<LightType, const char*> kTypes[] = {
    {LightType::Point, "point"}, {LightType::Spot, "spot"}, {LightType::Directional, "directional"}};

Row lightRow(std::string name, LightType type, void (*set)(Light&, Scene&)) {
  return {std::move(name), [=](Scene& s) {
            lit(s);
            s.state.lights[3] = lamp(type);
            s.state.lightEnabled[3] = true;
            set(s.state.lights[3], s);
            cushion(s);
          }};
}

}  // namespace

void cushion(Scene& s) {
  s.state.view = math::lookAt({0, 0.5f, -3}, {0, 0, 0}, {0, 1, 0});
  s.state.projection = math::perspective(1.0f, 48.0f / 64.0f, 0.5f, 60);
  constexpr int kSide = 12;
  const auto at = [](int x, int y) {
    const float a = (static_cast<float>(x) / kSide - 0.5f) * 2.4f, b = (static_cast<float>(y) / kSide - 0.5f) * 2.4f;
    const math::Vec3 normal{std::sin(a) * std::cos(b), std::sin(b), -std::cos(a) * std::cos(b)};
    const auto shade = static_cast<std::uint32_t>(x * 20);
    return BumpVertex{normal,
                      normal,
                      0xC0000000 | shade << 16 | 0x8040,
                      0x80203040 + shade,
                      static_cast<float>(x) / kSide,
                      static_cast<float>(y) / kSide};
  };
  std::vector<BumpVertex> triangles;
  for (int y = 0; y < kSide; ++y)
    for (int x = 0; x < kSide; ++x)
      triangles.insert(triangles.end(),
                       {at(x, y), at(x, y + 1), at(x + 1, y), at(x + 1, y), at(x, y + 1), at(x + 1, y + 1)});
  s.draw(PrimitiveType::TriangleList, triangles, kFormat);
}

Group lights() {
  Group out{"lights", "Lights", "Lit at vertices on both devices.", {}};
  for (const auto& [type, name] : kTypes) {
    const std::string of = name;
    out.rows.push_back(lightRow(of, type, [](Light&, Scene&) {}));
    out.rows.push_back(lightRow(of + ": highlight", type, [](Light& l, Scene& s) {
      l.diffuse = {0.2f, 0.2f, 0.2f, 0};
      l.specular = {1, 1, 0.5f, 0};
      s.state.render.specularEnable = 1;
      s.state.render.specularMaterialSource = 0;
    }));
    out.rows.push_back(lightRow(of + ": ambient", type, [](Light& l, Scene&) { l.ambient = {0, 0.3f, 0.4f, 0}; }));
  }
  const auto add = [&](const char* name, LightType type, void (*set)(Light&, Scene&)) {
    out.rows.push_back(lightRow(name, type, set));
  };
  add("constant attenuation", LightType::Point, [](Light& l, Scene&) { l.attenuation0 = 2; });
  add("linear attenuation", LightType::Point, [](Light& l, Scene&) { l.attenuation1 = 0.4f; });
  add("quadratic attenuation", LightType::Point, [](Light& l, Scene&) { l.attenuation2 = 0.2f; });
  add("no attenuation at all", LightType::Point, [](Light& l, Scene&) { l.attenuation0 = 0; });
  add("range", LightType::Point, [](Light& l, Scene&) { l.range = 2.6f; });
  add("a wide spot", LightType::Spot, [](Light& l, Scene&) { l.phi = 2.5f; });
  add("a spot without a soft edge", LightType::Spot, [](Light& l, Scene&) { l.theta = l.phi = 0.6f; });
  add("falloff of a spot", LightType::Spot, [](Light& l, Scene&) {
    l.phi = 1.4f;
    l.falloff = 4;
  });
  add("a spot that attenuates", LightType::Spot, [](Light& l, Scene&) { l.attenuation1 = 0.3f; });
  add("a direction of another length", LightType::Directional, [](Light& l, Scene&) { l.direction = {0, 0, 9}; });
  add("switched off", LightType::Directional, [](Light&, Scene& s) { s.state.lightEnabled[3] = false; });
  add("a turned and scaled world", LightType::Point, [](Light&, Scene& s) {
    s.state.world = math::multiply(math::scaling(1.2f, 0.6f, 1), math::rotationZ(0.6f));
    s.state.render.normalizeNormals = 1;
  });
  out.rows.push_back({"nine lights", [](Scene& s) {
                        lit(s);
                        for (std::size_t i = 0; i < 9; ++i) {
                          Light light = lamp(kTypes[i % 3].first);
                          const float turn = static_cast<float>(i) * 0.7f;
                          light.position = {2 * std::cos(turn), 2 * std::sin(turn), -2};
                          light.direction = {-std::cos(turn), -std::sin(turn), 1};
                          light.diffuse = {i % 2 ? 0.3f : 0.0f, i % 3 ? 0.2f : 0.0f, 0.25f, 0};
                          s.state.lights[i * 11] = light;
                          s.state.lightEnabled[i * 11] = true;
                        }
                        cushion(s);
                      }});
  for (Row& row : out.rows) row.faults = 3;
  return out;
}

Group materials() {
  Group out{"materials", "Materials and the states of lighting", "", {}};
  const auto add = [&](std::string name, std::function<void(Scene&)> set) {
    out.rows.push_back({std::move(name), [set = std::move(set)](Scene& s) {
                          lit(s);
                          s.state.lights[0] = lamp(LightType::Directional);
                          s.state.lights[0].diffuse = {0.5f, 0.45f, 0.3f, 0};
                          s.state.lights[0].specular = {0.5f, 0.5f, 0.4f, 0};
                          s.state.lights[0].ambient = {0.05f, 0.05f, 0.1f, 0};
                          s.state.lightEnabled[0] = true;
                          set(s);
                          cushion(s);
                        }});
  };
  add("diffuse", [](Scene& s) { s.state.material.diffuse = {1, 0.2f, 0.1f, 0.5f}; });
  add("ambient", [](Scene& s) {
    s.state.material.ambient = {0, 1, 0, 1};
    s.state.render.ambient = 0xFF80FF40;
  });
  add("emissive", [](Scene& s) { s.state.material.emissive = {0, 0.2f, 0.5f, 0}; });
  for (const float power : {0.0f, 1.0f, 8.0f, 60.0f})
    add("highlight of power " + std::to_string(static_cast<int>(power)), [power](Scene& s) {
      s.state.render.specularEnable = 1;
      s.state.render.specularMaterialSource = 0;
      s.state.material.power = power;
    });
  add("highlights off", [](Scene& s) { s.state.render.specularMaterialSource = 0; });
  add("a distant viewer", [](Scene& s) {
    s.state.render.specularEnable = 1;
    s.state.render.specularMaterialSource = 0;
    s.state.render.localViewer = 0;
  });
  add("no global ambient", [](Scene& s) { s.state.render.ambient = 0; });
  add("white global ambient", [](Scene& s) { s.state.render.ambient = ~0u; });
  add("flat", [](Scene& s) { s.state.render.shadeMode = 1; });
  add("long normals", [](Scene& s) { s.state.world = math::scaling(0.6f, 0.6f, 0.6f); });
  add("normalised", [](Scene& s) {
    s.state.world = math::scaling(0.6f, 0.6f, 0.6f);
    s.state.render.normalizeNormals = 1;
  });
  add("textured", [](Scene& s) {
    s.textures[0] = smoothTexture(s);
    smoothFilters(s);
    s.state.render.specularEnable = 1;
    s.state.render.specularMaterialSource = 0;
  });
  add("in fog", [](Scene& s) {
    s.state.render.fogEnable = 1;
    s.state.render.fogVertexMode = 3;
    s.state.render.fogEnd = bitsOf(4);
    s.state.render.fogColor = 0x00804020;
  });
  constexpr const char* kSources[] = {"the material", "diffuse vertex colours", "specular vertex colours"};
  constexpr std::pair<const char*, std::uint32_t device::RenderStates::*> kParts[] = {
      {"diffuse", &device::RenderStates::diffuseMaterialSource},
      {"ambient", &device::RenderStates::ambientMaterialSource},
      {"specular", &device::RenderStates::specularMaterialSource},
      {"emissive", &device::RenderStates::emissiveMaterialSource}};
  for (const auto& [part, source] : kParts)
    for (std::uint32_t from = 0; from <= 2; ++from)
      add(std::string(part) + " from " + kSources[from], [source = source, from](Scene& s) {
        device::RenderStates& r = s.state.render;
        r.colorVertex = 1;
        r.specularEnable = 1;
        r.ambient = 0xFF303030;
        r.diffuseMaterialSource = r.specularMaterialSource = 0;
        r.*source = from;
      });
  add("vertex colours off", [](Scene& s) {
    s.state.render.diffuseMaterialSource = 1;
    s.state.render.colorVertex = 0;
  });
  add("lighting off", [](Scene& s) { s.state.render.lighting = 0; });
  for (Row& row : out.rows) row.faults = 3, row.limit = 4;
  return out;
}

Group sprites() {
  Group out{"sprites", "Points and sprites", "", {}};
  const auto add = [&](std::string name, void (*set)(device::RenderStates&)) {
    out.rows.push_back({std::move(name),
                        [=](Scene& s) {
                          s.textures[0] = smoothTexture(s, 16);
                          smoothFilters(s);
                          device::RenderStates& r = s.state.render;
                          r.pointSize = bitsOf(15);
                          set(r);
                          s.state.view = math::lookAt({0, 1, -4}, {0, 0, 0}, {0, 1, 0});
                          s.state.projection = math::perspective(1.2f, 48.0f / 64.0f, 0.5f, 60);
                          s.draw(PrimitiveType::PointList,
                                 std::vector<LitVertex>{{-1.5f, 0, 0, 0xFFFF8080, 0, 0.3f, 0.6f},
                                                        {1, 0.5f, 1, 0xFF80FF80, 0, 0.1f, 0.2f},
                                                        {0, -1, 4, 0xFF8080FF, 0, 0.9f, 0.5f},
                                                        {3.2f, 0, 0, ~0u, 0, 0.5f, 0.5f}});
                        },
                        4, device::Format::A8R8G8B8, 60, 2});
  };
  add("points", [](device::RenderStates&) {});
  add("sprites", [](device::RenderStates& r) { r.pointSpriteEnable = 1; });
  add("one pixel each", [](device::RenderStates& r) { r.pointSize = bitsOf(1); });
  add("a share of the viewport", [](device::RenderStates& r) {
    r.pointSpriteEnable = r.pointScaleEnable = 1;
    r.pointSize = bitsOf(0.3f);
  });
  add("by the root of the distance", [](device::RenderStates& r) {
    r.pointSpriteEnable = r.pointScaleEnable = 1;
    r.pointSize = bitsOf(0.8f);
    r.pointScaleA = bitsOf(0);
    r.pointScaleB = bitsOf(1);
  });
  add("by the distance", [](device::RenderStates& r) {
    r.pointSpriteEnable = r.pointScaleEnable = 1;
    r.pointScaleA = bitsOf(0);
    r.pointScaleC = bitsOf(1);
  });
  add("by the distance, untextured points", [](device::RenderStates& r) {
    r.pointScaleEnable = 1;
    r.pointScaleA = bitsOf(0);
    r.pointScaleC = bitsOf(1);
  });
  add("at least", [](device::RenderStates& r) {
    r.pointSpriteEnable = 1;
    r.pointSize = bitsOf(2);
    r.pointSizeMin = bitsOf(9);
  });
  add("at most", [](device::RenderStates& r) {
    r.pointSpriteEnable = 1;
    r.pointSizeMax = bitsOf(6);
  });
  add("sprites added", [](device::RenderStates& r) {
    r.pointSpriteEnable = 1;
    r.alphaBlendEnable = 1;
    r.srcBlend = r.destBlend = code(device::Blend::One);
    r.zWriteEnable = 0;
  });
  out.rows.push_back({"sizes of their own", [](Scene& s) {
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
                      }});
  return out;
}

}  // namespace ql::test
