/// @file
/// An engine on a test machine, with its device calls recorded.
#pragma once

#include "engine/Engine.h"
#include "platform/recording/NullBackEnd.h"
#include "support/TestPlatform.h"

#include <string>
#include <vector>

namespace ql::test {

struct RunningEngine {
  TestMachine machine;
  recording::Recorder recorder;
  engine::EngineContext context;

  explicit RunningEngine(TestMachine on = {}) : machine(std::move(on)), context(machine.platform()) {
    engine::startEngine(context);
    context.direct3D->setCallSink(&recorder);
  }
  ~RunningEngine() {
    if (context.device) context.device->setCallSink(nullptr);
  }
  /// Calls of the device since the last time this was asked.
  std::vector<std::string> newCalls() {
    std::vector<std::string> lines = recorder.lines();
    recorder.clear();
    return lines;
  }
};

/// A back end with chosen capabilities.
struct CapableBackEnd : recording::NullBackEnd {
  explicit CapableBackEnd(std::uint32_t flags, std::uint32_t stages = 2) {
    capabilities_.deviceFlags = flags;
    capabilities_.maxSimultaneousTextures = stages;
    capabilities_.maxPointSize = 256;
  }
};
inline device::BackEndFactory capable(std::uint32_t flags, std::uint32_t stages = 2) {
  return [=](const device::PresentParameters&) { return std::make_shared<CapableBackEnd>(flags, stages); };
}
/// A machine that says it has a device and fails to make it.
inline std::shared_ptr<device::BackEnd> broken(const device::PresentParameters&) {
  throw device::DeviceError(device::kErrorNotAvailable, "no device today");
}

}  // namespace ql::test
