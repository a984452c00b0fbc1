// The cases of bench/peers/ drawn by our own software renderer through the device, as a host's drawing reaches it:
// 16 full-screen layers in several states, and a million small triangles. With --pictures DIR the pictures are kept, to
// be compared with the peers'.
#include "Arguments.h"
#include "common/Cases.h"
#include "common/Report.h"
#include "platform/device/Device.h"
#include "platform/software/SoftwareBackEnd.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;
using device::RenderState;
using device::StageState;
using peers::Size;

/// The vertex of format 0x142 (position, diffuse, one pair of coordinates).
struct Vertex {
  float x, y, z;
  std::uint32_t color;
  float u, v;
};
constexpr std::uint32_t kVertexFormat = 0x142;

Vertex vertex(const peers::Corner& corner, std::uint32_t color) {
  return {corner.x, corner.y, corner.z, color, corner.u, corner.v};
}

std::uint32_t bits(float value) { return std::bit_cast<std::uint32_t>(value); }

device::PresentParameters parameters(Size size) {
  device::PresentParameters out;
  out.backBufferWidth = static_cast<std::uint32_t>(size.width);
  out.backBufferHeight = static_cast<std::uint32_t>(size.height);
  out.backBufferFormat = device::Format::X8R8G8B8;
  return out;
}

/// A device on the software renderer that draws one case again and again.
class Painter {
 public:
  Painter(Size size, unsigned threads)
      : device(software::createBackEnd({threads}), device::DeviceType::Reference, parameters(size)),
        opaque(texture(peers::kOpaque)),
        half(texture(peers::kHalf)) {
    device.setRenderState(RenderState::Lighting, 0);
    device.setRenderState(RenderState::CullMode, 1);
    for (std::uint32_t stage = 0; stage < 2; ++stage) {
      device.setTextureStageState(stage, StageState::MinFilter, 2);
      device.setTextureStageState(stage, StageState::MagFilter, 2);
      device.setTextureStageState(stage, StageState::MipFilter, 1);
      device.setTextureStageState(stage, StageState::TexCoordIndex, 0);
    }
    device.setTexture(0, opaque);
    device.setVertexShader(kVertexFormat);
  }

  void useVertices(const std::vector<Vertex>& vertices) {
    const std::span<const std::byte> bytes = std::as_bytes(std::span(vertices));
    vertices_ = device.createVertexBuffer(bytes.size(), 0, kVertexFormat, device::Pool::Default);
    vertices_->write(0, bytes);
    device.setStreamSource(0, vertices_, sizeof(Vertex));
  }
  /// @param draws of so many triangles each, one after another in the vertex buffer
  void frame(std::uint32_t draws, std::uint32_t triangles) {
    device.clear({}, device::kClearTarget | device::kClearDepth, peers::kBackground, 1, 0);
    device.beginScene();
    for (std::uint32_t i = 0; i < draws; ++i)
      device.drawPrimitive(device::PrimitiveType::TriangleList, i * triangles * 3, triangles);
    device.endScene();
    device.present();
  }
  std::vector<std::uint32_t> pixels() {
    const auto surface = device.getBackBuffer(0);
    const device::LockedRect locked = surface->lock({}, true);
    const device::PresentParameters& size = device.presentParameters();
    std::vector<std::uint32_t> out(std::size_t{size.backBufferWidth} * size.backBufferHeight);
    for (std::size_t row = 0; row < size.backBufferHeight; ++row)
      std::memcpy(&out[row * size.backBufferWidth], &locked.bytes[row * locked.pitch],
                  std::size_t{size.backBufferWidth} * 4);
    surface->unlock();
    return out;
  }

  device::Device device;
  std::shared_ptr<device::Texture> opaque, half;

 private:
  std::shared_ptr<device::Texture> texture(std::uint32_t alpha) {
    const std::vector<peers::Level> levels = peers::texture(alpha);
    const auto side = static_cast<std::uint32_t>(levels.front().side);
    auto made = device.createTexture(side, side, static_cast<std::uint32_t>(levels.size()), 0, device::Format::A8R8G8B8,
                                     device::Pool::Managed);
    for (std::size_t i = 0; i < levels.size(); ++i)
      made->writeLevel(static_cast<std::uint32_t>(i), std::as_bytes(std::span(levels[i].pixels)));
    return made;
  }

  std::shared_ptr<device::VertexBuffer> vertices_;
};

void fillLayers(Painter& painter, bool tilted, std::uint32_t color) {
  painter.device.setRenderState(RenderState::ZEnable, 0);
  std::vector<Vertex> vertices;
  for (int i = 0; i < peers::kLayers; ++i) {
    const auto corners = peers::layer(i, tilted);
    for (const std::size_t corner : {0, 1, 2, 0, 2, 3}) vertices.push_back(vertex(corners[corner], color));
  }
  painter.useVertices(vertices);
}

void fillOpaque(Painter& painter) { fillLayers(painter, false, 0xFFFFFFFF); }

void fillAlpha(Painter& painter) {
  fillOpaque(painter);
  painter.device.setTexture(0, painter.half);
  painter.device.setRenderState(RenderState::AlphaBlendEnable, 1);
  painter.device.setRenderState(RenderState::SrcBlend, 5);
  painter.device.setRenderState(RenderState::DestBlend, 6);
}

void fillTwoTextures(Painter& painter) {
  fillOpaque(painter);
  painter.device.setTexture(1, painter.half);
  painter.device.setTextureStageState(1, StageState::ColorOp, 4);
  painter.device.setTextureStageState(1, StageState::AlphaOp, 4);
}

void fillColourFogAlphaTest(Painter& painter) {
  fillLayers(painter, false, peers::kLayerColor);
  device::Device& device = painter.device;
  device.setTextureStageState(0, StageState::AlphaOp, 4);
  device.setRenderState(RenderState::AlphaTestEnable, 1);
  device.setRenderState(RenderState::AlphaFunc, 5);
  device.setRenderState(RenderState::AlphaRef, peers::kAlphaReference);
  device.setRenderState(RenderState::FogEnable, 1);
  device.setRenderState(RenderState::FogVertexMode, 3);
  device.setRenderState(RenderState::FogStart, bits(peers::kFogStart));
  device.setRenderState(RenderState::FogEnd, bits(peers::kFogEnd));
  device.setRenderState(RenderState::FogColor, peers::kFogColor);
}

void fillTilted(Painter& painter) {
  fillLayers(painter, true, 0xFFFFFFFF);
  math::Mat4 projection = math::scaling(1, 1, 0.5f);
  projection.m34 = 1;
  projection.m44 = 0;
  painter.device.setTransform(device::Transform::Projection, projection);
}

void smallTriangles(Painter& painter) {
  const std::vector<std::uint16_t> indices = peers::sheetIndices();
  std::vector<Vertex> vertices;
  for (int i = 0; i < peers::kSheets; ++i) {
    const std::vector<peers::Corner> corners = peers::sheet(i);
    for (const std::uint16_t index : indices) vertices.push_back(vertex(corners[index], 0xFFFFFFFF));
  }
  painter.useVertices(vertices);
}

struct Case {
  const char* name;
  void (*prepare)(Painter&);
  std::uint32_t draws, trianglesPerDraw;
};
constexpr std::uint32_t kLayers = peers::kLayers;
const Case kCases[] = {
    {"fill-opaque", fillOpaque, kLayers, 2},
    {"fill-alpha", fillAlpha, kLayers, 2},
    {"fill-two-textures", fillTwoTextures, kLayers, 2},
    {"fill-colour-fog-alpha-test", fillColourFogAlphaTest, kLayers, 2},
    {"fill-tilted", fillTilted, kLayers, 2},
    {"triangles", smallTriangles, peers::kSheets, peers::kSheetIndices / 3},
};

std::vector<std::uint32_t> picture(const Case& which, Size size, unsigned threads) {
  Painter painter(size, threads);
  which.prepare(painter);
  painter.frame(which.draws, which.trianglesPerDraw);
  return painter.pixels();
}

/// Nothing of the background is left, and the number of threads makes no difference.
const char* faultOf(const Case& which, const std::vector<std::uint32_t>& pixels, Size size) {
  const auto isBackground = [](std::uint32_t pixel) { return ((pixel ^ peers::kBackground) & 0xFFFFFF) == 0; };
  if (std::any_of(pixels.begin(), pixels.end(), isBackground)) return "not every pixel is drawn";
  return pixels == picture(which, size, 1) ? nullptr : "pictures differ with the number of threads";
}

void run(benchmark::State& state, const Case& which, Size size, unsigned threads, const std::string& pictures) {
  const std::vector<std::uint32_t> pixels = picture(which, size, threads);
  if (const char* fault = faultOf(which, pixels, size)) {
    state.SkipWithError(fault);
    return;
  }
  if (!pictures.empty()) peers::writePicture(pictures + "/ours-" + which.name + ".ppm", size, pixels);
  Painter painter(size, threads);
  which.prepare(painter);
  peers::Times times;
  for (auto _ : state)
    times.push_back(peers::milliseconds([&] { painter.frame(which.draws, which.trianglesPerDraw); }));
  state.counters["min_ms"] = peers::smallest(times);
  state.counters["median_ms"] = peers::median(times);
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string, std::less<>> options{{"pictures", ""}};
  if (!bench::readArguments(argc, argv, options)) return 2;
  for (const Case& which : kCases)
    for (const Size size : peers::kSizes)
      for (const unsigned threads : {1u, 2u}) {
        const std::string name = std::string(which.name) + "/" + std::to_string(size.width) + "x" +
                                 std::to_string(size.height) + "/threads:" + std::to_string(threads);
        benchmark::RegisterBenchmark(name.c_str(),
                                     [&which, size, threads, &options](benchmark::State& state) {
                                       run(state, which, size, threads, options["pictures"]);
                                     })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
      }
  benchmark::RunSpecifiedBenchmarks();
}
