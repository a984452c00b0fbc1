// Costs of drawing on the screen: 5,000 textured rectangles and 2,000 characters against the same triangles in one draw
// per texture; and of a render surface against the same scene on a screen of its size; and
// how long reading a picture waits.
#include "render/Screen.h"

#include "engine/Engine.h"
#include "level/Level.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/software/SoftwareBackEnd.h"
#include "platform/utility/StateGuard.h"
#include "render/Camera.h"
#include "render/RenderSurface.h"
#include "render/Subsystems.h"
#include "support/TestPlatform.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;
using Vertex = Quasarlens3D::TransformedLitVertex;

/// An engine on one of the devices, without a display.
struct Machine {
  test::TestMachine machine;
  std::unique_ptr<engine::EngineContext> context;

  Machine(bool hardware, std::int32_t width, std::int32_t height) {
    machine.backEnds.clear();
    const auto type = hardware ? device::DeviceType::Hardware : device::DeviceType::Reference;
    machine.backEnds[type] = [hardware](const device::PresentParameters& parameters) {
      return hardware ? std::shared_ptr<device::BackEnd>(opengl::createBackEnd(parameters))
                      : std::shared_ptr<device::BackEnd>(software::createBackEnd());
    };
    context = std::make_unique<engine::EngineContext>(machine.platform());
    engine::startEngine(*context);
    render::startSubsystems(*context);
    engine::setEngineMode(*context, width, height, 32, hardware, 0);
    context->console = false;
    ready = engine::initialize(*context, engine::kFullScreen);
  }
  bool ready = false;

  std::vector<std::byte> picture() const {
    const auto& size = context->presentParameters;
    return context->device->getBackBuffer(0)->read({0, 0, size.backBufferWidth, size.backBufferHeight});
  }
  void wait() const { benchmark::DoNotOptimize(context->device->getBackBuffer(0)->read({0, 0, 1, 1})); }
};

// --- Rectangles and text

/// Triangles with one texture.
struct Batch {
  std::shared_ptr<device::Texture> texture;
  device::Filter filter;
  std::vector<Vertex> vertices;
};

class Overlay {
 public:
  explicit Overlay(bool hardware) : machine_(hardware, 1024, 768) {
    if (!machine_.ready) return;
    device::Device& device = *machine_.context->device;
    texture_ = device.createTexture(32, 32, 1, 0, device::Format::A8R8G8B8, device::Pool::Managed);
    std::vector<std::uint32_t> pixels;
    for (std::uint32_t i = 0; i < 1024; ++i) pixels.push_back(0x80FFFFFF ^ i * 0x1F3571);
    texture_->writeLevel(0, std::as_bytes(std::span(pixels)));
    screen_ = std::make_unique<render::Screen>(*machine_.context);
    for (int i = 0; i < 2000; ++i) text_ += static_cast<char>('!' + i * 7 % 90);
    gather();
  }
  bool ready() const { return machine_.ready; }
  /// Whether both ways give the same picture: no channel may differ by more than a step or two of rounding.
  bool sameAtOnce() {
    frame(&Overlay::drawAll);
    const std::vector<std::byte> expected = machine_.picture();
    frame(&Overlay::drawAtOnce);
    const std::vector<std::byte> got = machine_.picture();
    return std::ranges::equal(got, expected, [](std::byte a, std::byte b) {
      return std::abs(std::to_integer<int>(a) - std::to_integer<int>(b)) <= 2;
    });
  }

  void drawAll() {
    for (int i = 0; i < 5000; ++i) {
      const auto x = static_cast<float>(i % 100 * 10), y = static_cast<float>(i / 100 * 15);
      screen_->drawTexture(texture_, {x, y, x + 20, y + 15}, -1, true);
    }
    for (int line = 0; line < 40; ++line)
      screen_->drawText(text_.substr(static_cast<std::size_t>(line) * 50, 50), 8, 8 + line * 18, -1, "");
  }
  void drawAtOnce() {
    device::Device& device = *machine_.context->device;
    for (const Batch& batch : batches_) {
      utility::StateGuard guard(device);
      guard.overlay(batch.texture, batch.filter);
      device.drawPrimitiveUP(device::PrimitiveType::TriangleList, static_cast<std::uint32_t>(batch.vertices.size() / 3),
                             std::as_bytes(std::span(batch.vertices)), sizeof(Vertex));
    }
  }
  void frame(void (Overlay::*draw)()) {
    engine::clear(*machine_.context);
    (this->*draw)();
    engine::renderToScreen(*machine_.context);
    machine_.wait();
  }

 private:
  void gather();

  Machine machine_;
  std::shared_ptr<device::Texture> texture_;
  std::unique_ptr<render::Screen> screen_;
  std::string text_;
  std::vector<Batch> batches_;
};

/// Collects the triangles of all draws, by texture.
struct Gatherer : device::CallSink {
  explicit Gatherer(device::Device& of) : device(of) {}
  void call(std::string_view name, std::span<const device::CallValue> values) override {
    if (name != "DrawPrimitiveUP") return;
    const auto bytes = std::get<std::span<const std::byte>>(values[2]);
    std::vector<Vertex> vertices(bytes.size() / sizeof(Vertex));
    std::memcpy(vertices.data(), bytes.data(), bytes.size());
    std::vector<Vertex>& all = batchOf(device.getTexture(0)).vertices;
    const bool strip =
        std::get<std::int64_t>(values[0]) == static_cast<std::int64_t>(device::PrimitiveType::TriangleStrip);
    if (!strip) all.insert(all.end(), vertices.begin(), vertices.end());
    for (const std::size_t i : {0, 1, 2, 2, 1, 3})
      if (strip) all.push_back(vertices[i]);
  }
  Batch& batchOf(const std::shared_ptr<device::Texture>& texture) {
    for (Batch& batch : batches)
      if (batch.texture == texture) return batch;
    const auto filter = static_cast<device::Filter>(device.getTextureStageState(0, device::StageState::MagFilter));
    return batches.emplace_back(Batch{texture, filter, {}});
  }
  device::Device& device;
  std::vector<Batch> batches;
};

void Overlay::gather() {
  device::Device& device = *machine_.context->device;
  Gatherer gatherer(device);
  engine::clear(*machine_.context);
  device.setCallSink(&gatherer);
  drawAll();
  device.setCallSink(nullptr);
  engine::renderToScreen(*machine_.context);
  batches_ = std::move(gatherer.batches);
}

void overlay(benchmark::State& state, bool hardware, void (Overlay::*draw)()) {
  Overlay overlay(hardware);
  if (!overlay.ready()) return state.SkipWithError("no such device here");
  if (!overlay.sameAtOnce()) return state.SkipWithError("pictures differ");
  for (auto _ : state) overlay.frame(draw);
}

// --- Render surfaces

/// The demo level, once a frame: on a screen of the surface's size, or on the surface before an empty frame.
class SurfaceScene {
 public:
  explicit SurfaceScene(bool hardware) : machine_(hardware, kSide, kSide) {
    if (!machine_.ready) return;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(QL_ASSETS_DIR);
    level_ = std::make_unique<level::Level>(*machine_.context);
    std::string file = "maps/court.bsp";
    level_->load(file, {});
    std::filesystem::current_path(before);
    std::int32_t width = kSide, height = kSide;
    surface_ = std::make_unique<render::RenderSurface>(*machine_.context, width, height);
    const math::Vec3 eye = level_->startPosition(), look = math::add(eye, {100, 0, 0});
    render::setCamera(*machine_.context, eye, look);
    surface_->setCamera(eye, look);
    machine_.context->projectionMatrix =
        math::perspective(machine_.context->fieldOfView, 1, 1, 500);  // as the surface's
    machine_.context->device->setTransform(device::Transform::Projection, machine_.context->projectionMatrix);
    onScreen();
    machine_.machine.clock->now += 2001;
  }
  bool ready() const { return machine_.ready; }
  void onScreen() {
    engine::clear(*machine_.context);
    level_->render();
    engine::renderToScreen(*machine_.context);
    machine_.wait();
  }
  void onSurface() {
    surface_->startRender();
    level_->render();
    surface_->endRender();
    emptyFrame();
  }
  /// Both in one frame, as a mirror has it.
  void onBoth() {
    surface_->startRender();
    level_->render();
    surface_->endRender();
    onScreen();
  }
  /// Draws on the screen and takes the time until a part of the picture can be read. @return seconds
  double read(const device::PixelRect& part) {
    engine::clear(*machine_.context);
    level_->render();
    const auto before = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(machine_.context->device->getBackBuffer(0)->read(part));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
    engine::renderToScreen(*machine_.context);
    machine_.wait();
    return took.count();
  }
  void emptyFrame() {
    engine::clear(*machine_.context);
    engine::renderToScreen(*machine_.context);
    machine_.wait();
  }

 private:
  static constexpr std::int32_t kSide = 512;
  Machine machine_;
  std::unique_ptr<level::Level> level_;
  std::unique_ptr<render::RenderSurface> surface_;
};

void surface(benchmark::State& state, bool hardware, void (SurfaceScene::*draw)()) {
  SurfaceScene scene(hardware);
  if (!scene.ready()) return state.SkipWithError("no such device here");
  for (auto _ : state) (scene.*draw)();
}

void reading(benchmark::State& state, bool hardware, const device::PixelRect& part) {
  SurfaceScene scene(hardware);
  if (!scene.ready()) return state.SkipWithError("no such device here");
  for (auto _ : state) state.SetIterationTime(scene.read(part));
}

const auto registered = [] {
  for (const bool hardware : {false, true}) {
    const std::string device = hardware ? "hal" : "ref";
    const auto add = [&](const std::string& name, auto&& run) {
      benchmark::RegisterBenchmark((name + "/" + device).c_str(), run)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("overlay/one_draw_per_texture", [=](benchmark::State& s) { overlay(s, hardware, &Overlay::drawAtOnce); });
    add("overlay/5000_rectangles_40_texts", [=](benchmark::State& s) { overlay(s, hardware, &Overlay::drawAll); });
    add("surface/on_screen", [=](benchmark::State& s) { surface(s, hardware, &SurfaceScene::onScreen); });
    add("surface/on_surface", [=](benchmark::State& s) { surface(s, hardware, &SurfaceScene::onSurface); });
    add("surface/on_both", [=](benchmark::State& s) { surface(s, hardware, &SurfaceScene::onBoth); });
    for (const std::uint32_t side : {1u, 512u})
      benchmark::RegisterBenchmark(("surface/read/" + std::to_string(side) + "/" + device).c_str(), reading, hardware,
                                   device::PixelRect{0, 0, side, side})
          ->Unit(benchmark::kMillisecond)
          ->UseManualTime();
    add("surface/empty_frame", [=](benchmark::State& s) { surface(s, hardware, &SurfaceScene::emptyFrame); });
  }
  return true;
}();

}  // namespace
