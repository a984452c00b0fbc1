#include "Frames.h"

#include "common/Options.h"
#include "platform/device/Resources.h"
#include "platform/recording/Replayer.h"
#include "platform/recording/Trace.h"
#include "support/TemporaryFolder.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace ql::bench {
namespace {

namespace engine = Quasarlens3D;
namespace fs = std::filesystem;

/// Keeps packets instead of drawing them.
class Catcher final : public recording::NullBackEnd {
 public:
  explicit Catcher(Walk& walk) : walk_(walk) {}
  device::TextureId createTexture(const device::TextureDescription& description) override {
    const device::TextureId id = NullBackEnd::createTexture(description);
    walk_.textures[id] = {description, {}};
    walk_.textures[id].levels.resize(description.levels);
    return id;
  }
  void uploadTexture(device::TextureId texture, std::uint32_t level, std::span<const std::byte> pixels) override {
    walk_.textures.at(texture).levels[level].assign(pixels.begin(), pixels.end());
  }
  device::BufferId createBuffer(std::size_t bytes) override {
    const device::BufferId id = NullBackEnd::createBuffer(bytes);
    walk_.buffers[id].resize(bytes);
    return id;
  }
  void uploadBuffer(device::BufferId buffer, std::size_t offset, std::span<const std::byte> bytes) override {
    std::copy(bytes.begin(), bytes.end(), walk_.buffers.at(buffer).begin() + static_cast<std::ptrdiff_t>(offset));
  }
  void clear(device::TargetId, std::span<const device::PixelRect>, std::uint32_t, std::uint32_t color, float) override {
    frame_.clearColor = color;
  }
  void draw(const device::DrawPacket& packet) override {
    if (!state_ || version_ != packet.stateVersion) state_ = std::make_shared<device::State>(*packet.state);
    version_ = packet.stateVersion;
    frame_.draws.push_back({packet, state_, {packet.vertices.begin(), packet.vertices.end()}});
  }
  void present(device::TargetId, device::Window*) override {
    if (!frame_.draws.empty()) walk_.frames.push_back(std::move(frame_));
    frame_ = {};
  }

 private:
  Walk& walk_;
  Frame frame_;
  std::shared_ptr<const device::State> state_;
  std::uint64_t version_ = 0;
};

void record(const fs::path& trace) {
  const std::string assets = QL_ASSETS_DIR;
  const auto time = std::make_shared<std::uint32_t>(10'000);
  engine::Quasarlens8 quasarlens;
  engine::InternalObjects8 internals;
  internals.SetClock([time] { return *time; });
  internals.StartTrace(trace.string());
  engine::Scene8().SetViewFrustum(73.7398f, 16384);
  quasarlens.SetEngineMode(kWidth, kHeight, 32, engine::False);
  quasarlens.Initialize(0);
  quasarlens.Console(engine::False);
  std::string base = assets;
  quasarlens.SetSearchDirectory(base);
  engine::BSPTree8 level;
  level.SetCurvePrecision(engine::QL_CURVE_HIGH);
  level.Load("maps/court.bsp");
  engine::Camera8 camera;
  for (const peers::Pose& pose : peers::readPoses(assets + "/maps/court-poses.json")) {
    camera.SetCamera(pose.eye[0], pose.eye[1], pose.eye[2], pose.look[0], pose.look[1], pose.look[2]);
    for (const bool draws : {false, true}) {  // culling uses the planes of the frame before
      quasarlens.Clear();
      if (draws) level.Render();
      quasarlens.RenderToScreen();
      *time += 2001;
    }
  }
  internals.StopTrace();
}

}  // namespace

Walk demoWalk() {
  const fs::path current = fs::current_path();
  const test::TemporaryFolder home;
  for (const char* variable : {"XDG_CONFIG_HOME", "XDG_STATE_HOME"}) setenv(variable, home.path().c_str(), 1);
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY"}) unsetenv(variable);
  const fs::path file = home.path() / "walk.qltrace";
  record(file);
  Walk walk;
  const recording::Trace trace = recording::Trace::open(file);
  recording::Replayer replayer(trace, device::DeviceType::Reference,
                               [&](const device::PresentParameters&) { return std::make_shared<Catcher>(walk); });
  while (replayer.nextFrame()) {
  }
  fs::current_path(current);
  return walk;
}

}  // namespace ql::bench
