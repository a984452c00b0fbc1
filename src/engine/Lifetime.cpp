#include "engine/Engine.h"
#include "engine/Stages.h"
#include "engine/Tracing.h"

namespace ql::engine {
namespace {

template <class Step>
void ignoringErrors(Step&& step) {
  try {
    step();
  } catch (...) {  // an engine that goes away tells nobody
  }
}

}  // namespace

void startEngine(EngineContext& context) {
  context.log.start();
  context.direct3D = std::make_unique<device::Direct3D>(context.platform.display, context.platform.backEnds);
  context.console = true;
}

void releaseEngine(EngineContext& context) {
  for (const ReleaseStage stage : {ReleaseStage::Materials, ReleaseStage::Textures, ReleaseStage::Screen,
                                   ReleaseStage::Scene, ReleaseStage::Level, ReleaseStage::Landscape})
    ignoringErrors([&] { context.releaseSteps.run(stage); });
  ignoringErrors([&] { stopTrace(context); });
  ignoringErrors([&] { stopStages(context); });
  context.systemFont.reset();
  context.device.reset();
  context.direct3D.reset();
  context.deviceReady = context.inFrame = false;
  context.presentParameters.deviceWindow.reset();
  context.focusWindow.reset();
  context.internalWindow.reset();
}

}  // namespace ql::engine
