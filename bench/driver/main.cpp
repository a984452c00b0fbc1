// The demo walk through the hardware device and through OpenGL written by hand for it: the same faces in the same
// order. The pictures are compared before anything is timed.
#include "ByHand.h"
#include "Frames.h"
#include "platform/device/DeviceError.h"
#include "platform/opengl/OpenGLBackEnd.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <memory>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;
using bench::kHeight;
using bench::kWidth;

/// The walk on the hardware device's renderer.
class Ours {
 public:
  explicit Ours(const bench::Walk& walk) : walk_(walk), backEnd_(opengl::createBackEnd({})) {
    target_ = backEnd_->createTarget(kWidth, kHeight, device::Format::X8R8G8B8);
    for (const auto& [id, texture] : walk.textures) {
      textures_[id] = backEnd_->createTexture(texture.description);
      for (std::uint32_t level = 0; level < texture.levels.size(); ++level)
        if (!texture.levels[level].empty()) backEnd_->uploadTexture(textures_[id], level, texture.levels[level]);
    }
    for (const auto& [id, bytes] : walk.buffers) {
      buffers_[id] = backEnd_->createBuffer(bytes.size());
      backEnd_->uploadBuffer(buffers_[id], 0, bytes);
    }
    textures_[device::TextureId::None] = device::TextureId::None;
    buffers_[device::BufferId::None] = device::BufferId::None;
  }
  void frame(std::size_t index) {
    const bench::Frame& frame = walk_.frames[index];
    backEnd_->clear(target_, {}, device::kClearTarget | device::kClearDepth, frame.clearColor, 1);
    for (const bench::Draw& draw : frame.draws) {
      device::DrawPacket packet = draw.packet;
      packet.target = target_;
      packet.state = draw.state.get();
      packet.vertices = draw.vertices;
      packet.buffer = buffers_.at(packet.buffer);
      for (device::TextureId& texture : packet.textures) texture = textures_.at(texture);
      backEnd_->draw(packet);
    }
    benchmark::DoNotOptimize(backEnd_->readPixels(target_, {0, 0, 1, 1}));
  }
  std::vector<std::uint32_t> picture() {
    const std::vector<std::byte> bytes = backEnd_->readPixels(target_, {0, 0, kWidth, kHeight});
    std::vector<std::uint32_t> out(bytes.size() / 4);
    std::memcpy(out.data(), bytes.data(), bytes.size());
    return out;
  }
  const opengl::DriverCalls& calls() const { return opengl::driverCalls(*backEnd_); }

 private:
  const bench::Walk& walk_;
  std::shared_ptr<device::BackEnd> backEnd_;
  device::TargetId target_{};
  std::map<device::TextureId, device::TextureId> textures_;
  std::map<device::BufferId, device::BufferId> buffers_;
};

/// Mean difference of the colour channels, of 255.
double meanDifference(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    for (const int shift : {0, 8, 16})
      sum += std::abs(static_cast<int>(a[i] >> shift & 255) - static_cast<int>(b[i] >> shift & 255));
  return sum / static_cast<double>(a.size()) / 3;
}

template <class Renderer>
void walkThrough(benchmark::State& state, Renderer& renderer, std::size_t frames) {
  for (auto _ : state)
    for (std::size_t i = 0; i < frames; ++i) renderer.frame(i);
  state.counters["frames"] = static_cast<double>(frames);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  try {
    const bench::Walk walk = bench::demoWalk();
    if (walk.frames.empty()) throw std::runtime_error("the walk draws nothing");
    Ours ours(walk);
    bench::ByHand byHand(walk);
    double worst = 0;
    for (std::size_t i = 0; i < walk.frames.size(); ++i) {
      ours.frame(i);
      byHand.frame(i);
      worst = std::max(worst, meanDifference(ours.picture(), byHand.picture()));
    }
    if (worst > 0.5) throw std::runtime_error("pictures differ by " + std::to_string(worst) + " of 255");
    const opengl::DriverCalls before = ours.calls();
    std::size_t packets = 0;
    for (std::size_t i = 0; i < walk.frames.size(); ++i) {
      ours.frame(i);
      packets += walk.frames[i].draws.size();
    }
    const auto frames = walk.frames.size();
    std::fprintf(stderr, "%zu frames; of each: %zu packets, %llu draws, %llu state changes; pictures differ by %.4f\n",
                 frames, packets / frames,
                 static_cast<unsigned long long>((ours.calls().draws - before.draws) / frames),
                 static_cast<unsigned long long>((ours.calls().states - before.states) / frames), worst);
    benchmark::RegisterBenchmark("demo_walk/by_hand", [&](benchmark::State& s) { walkThrough(s, byHand, frames); })
        ->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime()
        ->UseRealTime();
    benchmark::RegisterBenchmark("demo_walk/hardware_device",
                                 [&](benchmark::State& s) { walkThrough(s, ours, frames); })
        ->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime()
        ->UseRealTime();
    benchmark::RunSpecifiedBenchmarks();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench_driver: %s\n", error.what());
    return 5;
  }
}
