#include "api/Context.h"

#include "api/Objects.h"
#include "engine/Engine.h"
#include "input/InputState.h"
#include "mesh/MeshDraw.h"
#include "platform/input/OpenMachine.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/software/SoftwareBackEnd.h"
#include "platform/window/OpenDisplay.h"
#include "render/Subsystems.h"
#include "render/scene/Scene.h"

#include <utility>

namespace ql::api {
namespace {

struct Process {
  std::shared_ptr<device::Display> display;
  std::shared_ptr<input::Machine> inputDevices;
  std::shared_ptr<engine::EngineContext> current;
  bool engineStarted = false;  ///< in the current context
};

/// Never freed: a host's static objects may be destroyed after ours.
Process& process() {
  static Process& instance = *std::make_unique<Process>().release();
  return instance;
}

engine::Platform machine() {
  Process& self = process();
  if (!self.display) self.display = window::openDisplay();
  if (!self.inputDevices) self.inputDevices = input::openMachine();
  engine::Platform platform;
  platform.display = self.display;
  platform.backEnds[device::DeviceType::Hardware] = opengl::createBackEnd;
  platform.backEnds[device::DeviceType::Reference] = [](const device::PresentParameters&) {
    return std::shared_ptr<device::BackEnd>(software::createBackEnd());
  };
  return platform;
}

std::shared_ptr<engine::EngineContext> makeContext() {
  auto made = std::make_shared<engine::EngineContext>(machine());
  engine::EngineContext& context = *made;
  input::startInput(context, process().inputDevices);
  render::startSubsystems(context);
  mesh::startMeshes(context);
  render::scene::startScenes(context);
  context.releaseSteps.add(engine::ReleaseStage::Level, [&context] { context.get<KeptAlive>().level.reset(); });
  return made;
}

}  // namespace

const std::shared_ptr<engine::EngineContext>& context() {
  Process& self = process();
  if (!self.current) self.current = makeContext();
  return self.current;
}

std::shared_ptr<engine::EngineContext> startContext() {
  Process& self = process();
  if (self.engineStarted) {
    endContext(self.current);
    self.current = makeContext();
  }
  std::shared_ptr<engine::EngineContext> started = context();
  engine::startEngine(*started);
  self.engineStarted = true;
  return started;
}

void endContext(const std::shared_ptr<engine::EngineContext>& ended) {
  if (ended == process().current) engine::releaseEngine(*ended);
}

}  // namespace ql::api
