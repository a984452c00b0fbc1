/// @file
/// An engine with its rendering resources on a test machine, in a folder of its own.
#pragma once

#include "engine/Engine.h"
#include "render/Subsystems.h"
#include "support/PictureFiles.h"
#include "support/TemporaryFolder.h"
#include "support/TestPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::test {

struct RenderTest : testing::Test {
  TemporaryFolder folder;  ///< current while the test runs
  TestMachine machine;
  recording::Recorder recorder;
  engine::EngineContext context{machine.platform()};

  void SetUp() override {
    engine::startEngine(context);
    render::startSubsystems(context);
    context.direct3D->setCallSink(&recorder);
    ASSERT_TRUE(engine::initialize(context, engine::kFullScreen));
    forget();
  }
  void TearDown() override {
    if (context.device) context.device->setCallSink(nullptr);
  }
  void forget() {
    recorder.clear();
    machine.clearLog();
  }
  /// A 24-bit picture file of one colour (0xRRGGBB).
  void picture(const std::string& name, std::int32_t width, std::int32_t height, std::uint32_t color) const {
    FileBytes rows;
    for (std::int32_t y = 0; y < height; ++y) {
      for (std::int32_t x = 0; x < width; ++x) rows.put(color, 3);
      rows.zeros(static_cast<std::size_t>(width % 4));
    }
    const std::vector<std::byte> file = bmpFile({.width = width, .height = height}, rows.take());
    put(name, {reinterpret_cast<const char*>(file.data()), file.size()});
  }
};

}  // namespace ql::test
