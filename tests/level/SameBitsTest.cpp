// A level's picture is the same to the bit for any number of threads and any code for pixels.
#include "engine/Engine.h"
#include "level/Level.h"
#include "platform/software/SoftwareBackEnd.h"
#include "platform/utility/TextureFiles.h"
#include "render/Camera.h"
#include "render/Subsystems.h"
#include "support/SharedData.h"
#include "support/TestPlatform.h"

#include <cmath>
#include <filesystem>
#include <utility>

#include <gtest/gtest.h>

namespace ql::level {
namespace {

namespace fs = std::filesystem;
using Pictures = std::vector<std::vector<std::byte>>;

/// The view from a level's player start, turning once, each picture freshly culled.
Pictures turnAround(const fs::path& base, const std::string& file, const software::Options& options) {
  const fs::path before = fs::current_path();
  fs::current_path(base);
  test::TestMachine machine;
  machine.backEnds[device::DeviceType::Reference] = [&options](const device::PresentParameters&) {
    return std::shared_ptr<device::BackEnd>(software::createBackEnd(options));
  };
  Pictures pictures;
  {
    engine::EngineContext context{machine.platform()};
    engine::startEngine(context);
    render::startSubsystems(context);
    context.fieldOfView = 1.3f;
    context.farPlane = 6000;
    machine.display->hostWindows[7] = std::make_shared<test::MachineWindow>();
    machine.display->hostWindows[7]->size = {320, 240};
    engine::setEngineMode(context, 320, 240, 32, false, 0);
    engine::initialize(context, 7);
    Level level(context);
    std::string name = file;
    level.load(name, {});
    const math::Vec3 eye = math::add(level.startPosition(), {0, 26, 0});
    for (int view = 0; view < 5; ++view) {
      const float angle = 1.3f * static_cast<float>(view);
      render::setCamera(context, eye, math::add(eye, {std::cos(angle), -0.2f, std::sin(angle)}));
      for (const bool drawn : {false, true}) {
        engine::clear(context);
        if (drawn) level.render();
        engine::renderToScreen(context);
        machine.clock->now += 2001;
      }
      device::Device& device = *context.device;
      const auto backBuffer = device.getBackBuffer(0);
      const device::SurfaceDescription size = backBuffer->description();
      const auto copy = device.createImageSurface(size.width, size.height, size.format);
      device.copyRects(backBuffer, {}, copy, {});
      pictures.push_back(utility::bitmapFromSurface(*copy));
    }
  }
  fs::current_path(before);
  return pictures;
}

TEST(SameBits, OfLevelsForAnyThreadsAndPixelCode) {
  std::vector<std::pair<fs::path, std::string>> levels;
  if (fs::exists(fs::path(QL_ASSETS_DIR) / "maps/court.bsp")) levels.emplace_back(QL_ASSETS_DIR, "maps/court.bsp");
  for (const fs::path& file : test::sharedFiles("q3bsp"))
    if (file.extension() == ".bsp")
      levels.emplace_back(file.parent_path().parent_path(), "maps/" + file.filename().string());
  if (levels.empty()) GTEST_SKIP() << "skipped: no levels";
  using enum software::Kernels;
  for (const auto& [base, file] : levels) {
    SCOPED_TRACE(file);
    const Pictures reference = turnAround(base, file, {1, Portable});
    ASSERT_NE(reference[0], reference[2]);  // there is something to see
    for (const software::Options& options :
         {software::Options{1, Sse4}, {2, Avx2}, {1, Avx512}, {2, Auto}, {3, Auto}, {4, Portable}, {8, Auto}})
      if (software::hasKernels(options.kernels)) {
        EXPECT_TRUE(turnAround(base, file, options) == reference)
            << options.threads << " threads, pixel code " << static_cast<int>(options.kernels);
      }
  }
}

}  // namespace
}  // namespace ql::level
