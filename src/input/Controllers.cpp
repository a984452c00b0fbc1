#include "input/Controllers.h"

#include "input/InputState.h"

#include <algorithm>
#include <utility>

namespace ql::input {

Controllers::Controllers(engine::EngineContext& context, Factory factory)
    : context_(context), factory_(std::move(factory)) {
  if (!factory_)
    factory_ = [this](std::shared_ptr<const ControllerInfo> info) {
      return std::make_shared<Controller>(context_, std::move(info));
    };
}

void Controllers::enumerate() {
  list_.clear();
  context_.get<InputState>().machine->listControllers();
  for (const AttachedController& attached : refreshInput(context_).controllers)
    list_.add(factory_(attached.info), attached.info->instanceGuid);
}

void Controllers::notice(const Snapshot& now) {
  const bool same = std::equal(now.controllers.begin(), now.controllers.end(), before_.begin(), before_.end(),
                               [](const AttachedController& a, const AttachedController& b) {
                                 return a.info->id == b.info->id && a.state == b.state;
                               });
  if (same) return;
  before_ = now.controllers;
  notified_ = true;
}

std::vector<std::shared_ptr<Controller>> Controllers::due() {
  return std::exchange(notified_, false) ? list_.items() : std::vector<std::shared_ptr<Controller>>{};
}

}  // namespace ql::input
