/// @file
/// A level object on an engine whose device draws nothing, in a folder of its own.
#pragma once

#include "engine/Engine.h"
#include "level/Level.h"
#include "support/TemporaryFolder.h"
#include "support/TestPlatform.h"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace ql::level {

class RunningLevel : public testing::Test {
 protected:
  using Lines = std::vector<std::string>;

  RunningLevel() {
    engine::startEngine(context);
    engine::initialize(context, engine::kOwnWindow);
    level = std::make_unique<Level>(context);
  }
  ~RunningLevel() override {
    if (context.device) context.device->setCallSink(nullptr);
  }

  /// Writes a level file and loads it, without the loading panel; the log holds what the load says.
  void loadBytes(const std::vector<std::byte>& file, std::string name, const LoadOptions& options = {}) {
    context.console = false;
    test::put(name, {reinterpret_cast<const char*>(file.data()), file.size()});
    machine.clearLog();
    level->load(name, options);
  }
  /// Device calls of one Render.
  Lines render() {
    recorder.clear();
    context.facesThisFrame = 0;
    context.device->beginScene();
    context.device->setCallSink(&recorder);
    level->render();
    context.device->setCallSink(nullptr);
    context.device->endScene();
    return recorder.lines();
  }
  /// Those of one Render with some names.
  Lines render(std::initializer_list<std::string_view> calls) {
    render();
    return recorder.lines(calls);
  }
  Lines draws() { return render({"DrawPrimitive"}); }

  test::TemporaryFolder folder;
  test::TestMachine machine;
  engine::EngineContext context{machine.platform()};
  recording::Recorder recorder;
  std::unique_ptr<Level> level;
};

}  // namespace ql::level
