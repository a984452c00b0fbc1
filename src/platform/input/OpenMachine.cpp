#include "platform/input/OpenMachine.h"

#include "platform/input/SdlMachine.h"

namespace ql::input {

std::unique_ptr<Machine> openMachine() {
  if (std::unique_ptr<Machine> machine = SdlMachine::open()) return machine;
  return std::make_unique<NoMachine>();
}

}  // namespace ql::input
