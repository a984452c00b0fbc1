// Costs of draw calls on both devices: many small draws of equal state against the same triangles in one, and draws
// with a change of state between them.
#include "platform/device/DeviceError.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/software/SoftwareBackEnd.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;

constexpr std::uint32_t kWidth = 1024, kHeight = 768, kFans = 10'000;

struct Vertex {
  float x, y, z, rhw;
  std::uint32_t diffuse, specular;
  float u, v;
};
constexpr std::uint32_t kFormat = 0x1C4;

std::shared_ptr<device::BackEnd> backEnd(bool hardware) {
  try {
    if (hardware) return opengl::createBackEnd({});
    return software::createBackEnd();
  } catch (const device::DeviceError&) {
    return nullptr;
  }
}

enum class Grouping { Fans, Lists, OneList, FansWithChanges };

/// Draws a grid of small quadrilaterals.
class Grid {
 public:
  explicit Grid(std::shared_ptr<device::BackEnd> with) : backEnd_(std::move(with)) {
    target_ = backEnd_->createTarget(kWidth, kHeight, device::Format::X8R8G8B8);
    state_.render.lighting = state_.render.zEnable = 0;
    state_.render.cullMode = 1;
    state_.viewport = {0, 0, kWidth, kHeight, 0, 1};
    for (std::uint32_t i = 0; i < kFans; ++i) {
      const auto x = static_cast<float>(i % 125 * 8), y = static_cast<float>(i / 125 * 9);
      const auto corner = [&](float dx, float dy) {
        return Vertex{x + dx, y + dy, 0.5f, 1, 0xFF000000 | i * 97, 0, 0, 0};
      };
      const Vertex a = corner(0, 0), b = corner(6, 0), c = corner(6, 7), d = corner(0, 7);
      fans_.insert(fans_.end(), {a, b, c, d});
      list_.insert(list_.end(), {a, b, c, a, c, d});
    }
  }

  void frame(Grouping grouping) {
    backEnd_->clear(target_, {}, device::kClearTarget, 0, 1);
    const std::span<const Vertex> fans = fans_, list = list_;
    if (grouping == Grouping::OneList) {
      draw(device::PrimitiveType::TriangleList, list, kFans * 2);
    } else {
      for (std::uint32_t i = 0; i < kFans; ++i) {
        if (grouping == Grouping::FansWithChanges) {
          state_.render.alphaBlendEnable = i & 1;
          ++version_;
        }
        if (grouping == Grouping::Lists)
          draw(device::PrimitiveType::TriangleList, list.subspan(i * 6, 6), 2);
        else
          draw(device::PrimitiveType::TriangleFan, fans.subspan(i * 4, 4), 2);
      }
    }
    benchmark::DoNotOptimize(backEnd_->readPixels(target_, {0, 0, 1, 1}));
  }
  std::vector<std::byte> picture() { return backEnd_->readPixels(target_, {0, 0, kWidth, kHeight}); }

 private:
  void draw(device::PrimitiveType type, std::span<const Vertex> vertices, std::uint32_t primitives) {
    device::DrawPacket packet;
    packet.target = target_;
    packet.state = &state_;
    packet.stateVersion = version_;
    packet.primitive = type;
    packet.primitiveCount = primitives;
    packet.vertexCount = static_cast<std::uint32_t>(vertices.size());
    packet.vertexFormat = kFormat;
    packet.stride = sizeof(Vertex);
    packet.vertices = std::as_bytes(vertices);
    backEnd_->draw(packet);
  }

  std::shared_ptr<device::BackEnd> backEnd_;
  device::TargetId target_{};
  device::State state_;
  std::uint64_t version_ = 1;
  std::vector<Vertex> fans_, list_;
};

void draws(benchmark::State& state, bool hardware, Grouping grouping) {
  const std::shared_ptr<device::BackEnd> made = backEnd(hardware);
  if (!made) {
    state.SkipWithError("no such device here");
    return;
  }
  Grid grid(made);
  grid.frame(Grouping::OneList);
  const std::vector<std::byte> expected = grid.picture();
  grid.frame(grouping);
  if (grid.picture() != expected) {
    state.SkipWithError("pictures differ");
    return;
  }
  for (auto _ : state) grid.frame(grouping);
  state.counters["draws"] = benchmark::Counter(kFans, benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK_CAPTURE(draws, ref_one_list, false, Grouping::OneList)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(draws, ref_10000_lists, false, Grouping::Lists)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(draws, ref_10000_fans, false, Grouping::Fans)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(draws, ref_10000_changes, false, Grouping::FansWithChanges)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(draws, hal_one_list, true, Grouping::OneList)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(draws, hal_10000_lists, true, Grouping::Lists)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(draws, hal_10000_fans, true, Grouping::Fans)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(draws, hal_10000_changes, true, Grouping::FansWithChanges)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
