#include "engine/EngineContext.h"

namespace ql::engine {

EngineContext::EngineContext(Platform machine)
    : platform(std::move(machine)), log(platform.logFile), pak(log), settings("Quasarlens8", "Driver") {}

EngineContext::~EngineContext() = default;

device::Device& EngineContext::requireDevice() const {
  if (!device) throw EngineError(kNotSet, "Object variable not set: there is no device yet");
  return *device;
}

}  // namespace ql::engine
