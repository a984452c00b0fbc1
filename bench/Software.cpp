// Fill rates, triangle rates and vertex rates of the software renderer at 1024 x 768, bilinear with mip maps. Every
// picture is compared with the one of the portable code on one thread before it is timed.
#include "platform/software/SoftwareBackEnd.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

constexpr std::uint32_t kWidth = 1024, kHeight = 768;
constexpr int kLayers = 16;

struct Vertex {
  float x, y, z;
  std::uint32_t diffuse, specular;
  float u, v;
};

class Renderer {
 public:
  explicit Renderer(const software::Options& options) : backEnd_(software::createBackEnd(options)) {
    target_ = backEnd_->createTarget(kWidth, kHeight, device::Format::X8R8G8B8);
    state.viewport = {0, 0, kWidth, kHeight, 0, 1};
    state.render.lighting = 0;
    state.render.cullMode = 1;
    for (auto& stage : state.stages) {
      stage.minFilter = stage.magFilter = 2;
      stage.mipFilter = 1;
      stage.texCoordIndex = 0;
    }
    state.stages[0].colorOp = state.stages[0].alphaOp = 2;
    textures_ = {noise(255), noise(128)};
  }

  device::State state;

  void draw(const std::vector<Vertex>& vertices, bool two = false) {
    device::DrawPacket packet;
    packet.target = target_;
    packet.state = &state;
    packet.stateVersion = version;
    packet.textures = {textures_[state.render.alphaBlendEnable ? 1 : 0], two ? textures_[1] : device::TextureId::None};
    packet.primitiveCount = static_cast<std::uint32_t>(vertices.size() / 3);
    packet.vertexCount = static_cast<std::uint32_t>(vertices.size());
    packet.vertexFormat = 0x1C2;
    packet.stride = sizeof(Vertex);
    packet.vertices = std::as_bytes(std::span(vertices));
    backEnd_->draw(packet);
  }
  /// Draws a scene's vertices from a buffer, which is made at the first call.
  template <class V>
  void drawBuffer(device::PrimitiveType type, std::uint32_t format, std::uint32_t primitives,
                  const std::vector<V>& vertices) {
    if (buffer_ == device::BufferId::None) {
      buffer_ = backEnd_->createBuffer(vertices.size() * sizeof(V));
      backEnd_->uploadBuffer(buffer_, 0, std::as_bytes(std::span(vertices)));
    }
    device::DrawPacket packet;
    packet.target = target_;
    packet.state = &state;
    packet.stateVersion = version;
    packet.textures = {textures_[0], device::TextureId::None};
    packet.primitive = type;
    packet.primitiveCount = primitives;
    packet.vertexCount = static_cast<std::uint32_t>(vertices.size());
    packet.vertexFormat = format;
    packet.stride = sizeof(V);
    packet.buffer = buffer_;
    backEnd_->draw(packet);
  }
  void clear() { backEnd_->clear(target_, {}, 3, 0xFF29293D, 1); }
  void finish() { backEnd_->present(target_, nullptr); }
  std::vector<std::byte> pixels() { return backEnd_->readPixels(target_, {0, 0, kWidth, kHeight}); }

  std::uint64_t version = 1;

 private:
  device::TextureId noise(std::uint32_t alpha) {
    const auto id = backEnd_->createTexture({256, 256, 9, device::Format::A8R8G8B8, false});
    std::uint32_t random = 1;
    for (std::uint32_t level = 0; level < 9; ++level) {
      std::vector<std::uint32_t> texels(std::size_t{256u >> level} * (256u >> level));
      for (std::uint32_t& texel : texels) {
        random = random * 1664525 + 1013904223;
        texel = alpha << 24 | random >> 8;
      }
      backEnd_->uploadTexture(id, level, std::as_bytes(std::span(texels)));
    }
    return id;
  }

  std::unique_ptr<device::BackEnd> backEnd_;
  device::TargetId target_{};
  std::array<device::TextureId, 2> textures_{};
  device::BufferId buffer_{};
};

std::vector<Vertex> layer(float z, std::uint32_t diffuse) {
  const auto corner = [&](float x, float y) {
    return Vertex{x, y, z, diffuse, 0, (x + 1) * 0.5f * 3.3f, (1 - y) * 0.5f * 2.5f};
  };
  const Vertex a = corner(-1, 1), b = corner(1, 1), c = corner(1, -1), d = corner(-1, -1);
  return {a, b, c, a, c, d};
}

void opaque(Renderer& r, bool two = false) {
  for (int i = 0; i < kLayers; ++i) r.draw(layer(0.9f - 0.02f * static_cast<float>(i), 0xFFFFFFFF), two);
}

// 31 sheets of 128 x 128 x 2 triangles of about 6 pixels.
void smallTriangles(Renderer& r) {
  static const std::vector<std::vector<Vertex>> sheets = [] {
    std::vector<std::vector<Vertex>> out;
    for (int k = 0; k < 31; ++k) {
      std::vector<Vertex>& sheet = out.emplace_back();
      const auto corner = [&](int i, int j) {
        const float x = static_cast<float>(i) / 128, y = static_cast<float>(j) / 128;
        return Vertex{static_cast<float>(k % 2 - 1) + x,
                      static_cast<float>(k / 2 % 2 - 1) + y,
                      0.9f - static_cast<float>(k) * 0.02f,
                      0xFFFFFFFF,
                      0,
                      x * 4,
                      y * 4};
      };
      for (int j = 0; j < 128; ++j)
        for (int i = 0; i < 128; ++i)
          for (const auto& [di, dj] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 0}, {1, 1}, {0, 1}})
            sheet.push_back(corner(i + di, j + dj));
    }
    return out;
  }();
  for (const auto& sheet : sheets) r.draw(sheet);
}

// 4096 draws of two triangles, each under a state of its own, as a scene of many faces makes them.
void drawCalls(Renderer& r) {
  for (int i = 0; i < 4096; ++i) {
    const float x = static_cast<float>(i % 64) / 32 - 1, y = 1 - static_cast<float>(i / 64) / 32, side = 1.0f / 32;
    const auto corner = [&](float u, float v) { return Vertex{x + u * side, y - v * side, 0.5f, 0xFFFFFFFF, 0, u, v}; };
    r.state.render.alphaRef = static_cast<std::uint32_t>(i) & 0xFF;
    ++r.version;
    r.draw({corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 0), corner(1, 1), corner(0, 1)});
  }
}

constexpr std::uint32_t kVertices = 1000000;

// A wavy sheet whose triangles are lit and transformed like any other. Most lie left of the viewport, so that hardly
// anything but the vertices is timed; the rest shows in the picture that is compared.
struct SheetVertex {
  float x, y, z, nx, ny, nz;
};
void litVertices(Renderer& r) {
  static const std::vector<SheetVertex> sheet = [] {
    std::vector<SheetVertex> out;
    for (std::uint32_t i = 0; i < kVertices; ++i) {
      const float x = static_cast<float>(i % 1000) / 1000, y = static_cast<float>(i / 1000) / 1000;
      const float slope = std::cos(x * 40) * 0.5f, length = std::sqrt(slope * slope + 1);
      const float left = i < 20000 ? 0.5f : 5.0f;
      out.push_back({x - left, y * 2 - 1, 0.5f, slope / length, 0, -1 / length});
    }
    return out;
  }();
  r.drawBuffer(device::PrimitiveType::TriangleStrip, 0x12, kVertices - 2, sheet);
}

void twoLights(device::State& s, bool specular) {
  s.render.lighting = 1;
  s.render.specularEnable = specular;
  s.material.specular = {1, 1, 1, 1};
  s.material.power = 20;
  s.stages[0].colorOp = s.stages[0].alphaOp = 1;
  s.lights[0].direction = {0.5f, -1, 1};
  s.lights[0].specular = {1, 1, 1, 1};
  s.lights[1] = s.lights[0];
  s.lights[1].type = 1;
  s.lights[1].position = {0, 1, -1};
  s.lights[1].range = 100;
  s.lights[1].attenuation0 = 1;
  s.lights[1].attenuation1 = 0.25f;
  s.lightEnabled[0] = s.lightEnabled[1] = true;
}

// Textured sprites of about 4 pixels that shrink with the distance.
constexpr std::uint32_t kSprites = 200000;
void sprites(Renderer& r) {
  static const std::vector<Vertex> points = [] {
    std::vector<Vertex> out;
    std::uint32_t random = 7;
    const auto next = [&random] {
      random = random * 1664525 + 1013904223;
      return static_cast<float>(random >> 8) / 16777216.0f;
    };
    for (std::uint32_t i = 0; i < kSprites; ++i) {
      const float x = next() * 2 - 1, y = next() * 2 - 1, z = next();
      out.push_back({x, y, z, 0xFF000000 | random >> 8, 0, 0, 0});
    }
    return out;
  }();
  r.drawBuffer(device::PrimitiveType::PointList, 0x1C2, kSprites, points);
}

// Bytes that one thread copies in a second, read and written counted: the best of some runs.
double copyRate() {
  static const double best = [] {
    constexpr std::size_t kBytes = std::size_t{64} << 20;
    const std::vector<char> from(kBytes, 1);
    std::vector<char> to(kBytes);
    double seconds = 1;
    for (int i = 0; i < 8; ++i) {
      const auto start = std::chrono::steady_clock::now();
      std::memcpy(to.data(), from.data(), kBytes);
      benchmark::DoNotOptimize(to.data());
      benchmark::ClobberMemory();
      seconds = std::min(seconds, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return 2.0 * kBytes / seconds;
  }();
  return best;
}

struct Scene {
  const char* name;
  void (*state)(device::State&);
  void (*draw)(Renderer&);
  double pixels, triangles;  // of a frame
  double vertices = 0;
  double bytes = 0;  // that a vertex moves at least: itself, its record written and read again
};

constexpr double kFill = static_cast<double>(kWidth) * kHeight * kLayers;

void blended(device::State& s, std::uint32_t source, std::uint32_t destination) {
  s.render.zWriteEnable = 0;
  s.render.alphaBlendEnable = 1;
  s.render.srcBlend = source;
  s.render.destBlend = destination;
}

const Scene kScenes[] = {
    {"opaque", [](device::State& s) { s.render.zEnable = 0; }, [](Renderer& r) { opaque(r); }, kFill, 0},
    {"opaque_depth", [](device::State&) {}, [](Renderer& r) { opaque(r); }, kFill, 0},
    {"alpha",
     [](device::State& s) {
       s.render.zEnable = 0;
       blended(s, 5, 6);
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"multiply",
     [](device::State& s) {
       s.render.zEnable = 0;
       blended(s, 9, 1);
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"colour",
     [](device::State& s) {
       s.render.zEnable = 0;
       s.stages[0].colorOp = s.stages[0].alphaOp = 4;
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"two_textures",
     [](device::State& s) {
       s.render.zEnable = 0;
       s.stages[1].colorOp = 5;
       s.stages[1].alphaOp = 2;
     },
     [](Renderer& r) { opaque(r, true); }, kFill, 0},
    {"colour_fog_alpha_test",
     [](device::State& s) {
       s.stages[0].colorOp = s.stages[0].alphaOp = 4;
       s.render.zEnable = 0;
       s.render.alphaTestEnable = 1;
       s.render.alphaFunc = 5;
       s.render.fogEnable = 1;
       s.render.fogVertexMode = 3;
       s.render.fogEnd = std::bit_cast<std::uint32_t>(2.0f);
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"trilinear",
     [](device::State& s) {
       s.render.zEnable = 0;
       s.stages[0].mipFilter = 2;
       s.stages[0].mipMapLodBias = std::bit_cast<std::uint32_t>(2.0f);
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"add",
     [](device::State& s) {
       s.render.zEnable = 0;
       blended(s, 2, 2);
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"general_stage",
     [](device::State& s) {
       s.render.zEnable = 0;
       s.stages[0].colorOp = 7;
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"mirrored",
     [](device::State& s) {
       s.render.zEnable = 0;
       s.stages[0].addressU = 2;
     },
     [](Renderer& r) { opaque(r); }, kFill, 0},
    {"small_triangles", [](device::State&) {}, smallTriangles, 0, 31.0 * 128 * 128 * 2},
    {"draw_calls", [](device::State&) {}, drawCalls, 0, 4096 * 2},
    {"transformed_vertices", [](device::State& s) { s.stages[0].colorOp = 1; }, litVertices, 0, 0, kVertices,
     24 + 2 * 48},
    {"lit_vertices", [](device::State& s) { twoLights(s, false); }, litVertices, 0, 0, kVertices, 24 + 2 * 48},
    {"lit_vertices_highlights", [](device::State& s) { twoLights(s, true); }, litVertices, 0, 0, kVertices,
     24 + 2 * 64},
    {"point_sprites",
     [](device::State& s) {
       s.render.pointSpriteEnable = s.render.pointScaleEnable = 1;
       s.render.pointSize = std::bit_cast<std::uint32_t>(0.005f);
       s.render.pointScaleC = std::bit_cast<std::uint32_t>(0.5f);
     },
     sprites, 0, 0, kSprites, 28 + 2 * 48},
};

std::vector<std::byte> picture(const Scene& scene, const software::Options& options) {
  Renderer r(options);
  scene.state(r.state);
  r.clear();
  scene.draw(r);
  return r.pixels();
}

// The picture of the portable code, which takes long and is drawn once.
const std::vector<std::byte>& expected(const Scene& scene) {
  static std::map<const Scene*, std::vector<std::byte>> kept;
  std::vector<std::byte>& out = kept[&scene];
  if (out.empty()) out = picture(scene, {1, software::Kernels::Portable});
  return out;
}

void run(benchmark::State& state, const Scene& scene, const software::Options& options) {
  if (picture(scene, options) != expected(scene)) {
    state.SkipWithError("pictures differ");
    return;
  }
  Renderer r(options);
  scene.state(r.state);
  for (auto _ : state) {
    r.clear();
    scene.draw(r);
    r.finish();
  }
  const auto rate = [&](double perFrame) {
    return benchmark::Counter(perFrame * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
  };
  if (scene.pixels > 0) state.counters["Mpixels/s"] = rate(scene.pixels);
  if (scene.vertices > 0) {
    state.counters["Mvertices/s"] = rate(scene.vertices);
    // Against what one thread copies.
    state.counters["of_copying"] =
        benchmark::Counter(scene.vertices * scene.bytes / copyRate(), benchmark::Counter::kIsIterationInvariantRate);
  }
  if (scene.triangles > 0) state.counters["Mtriangles/s"] = rate(scene.triangles);
}

// With the best code on one thread and two, and with all other code on one.
const bool kRegistered = [] {
  const auto add = [](const Scene& scene, const std::string& name, const software::Options& options) {
    benchmark::RegisterBenchmark((scene.name + name + "/threads:" + std::to_string(options.threads)).c_str(),
                                 [&scene, options](benchmark::State& s) { run(s, scene, options); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  };
  for (const Scene& scene : kScenes)
    for (const unsigned threads : {1u, 2u}) add(scene, "", {threads});
  for (const auto& [name, kernels] : {std::pair{"/portable", software::Kernels::Portable},
                                      {"/sse4", software::Kernels::Sse4},
                                      {"/avx2", software::Kernels::Avx2}})
    for (const Scene& scene : kScenes)
      if (software::hasKernels(kernels)) add(scene, name, {1, kernels});
  return true;
}();

}  // namespace
