/// @file
/// The game controllers of an input engine.
#pragma once

#include "engine/EngineContext.h"
#include "input/Controller.h"
#include "input/KeyedCollection.h"

#include <functional>
#include <memory>
#include <vector>

namespace ql::input {

/// The controllers by instance number ("{...}"), in the order of the machine.
class Controllers {
 public:
  /// Makes a controller; a host's front makes objects of its own.
  using Factory = std::function<std::shared_ptr<Controller>(std::shared_ptr<const ControllerInfo>)>;
  Controllers(engine::EngineContext& context, Factory factory);

  KeyedCollection<Controller>& list() { return list_; }
  /// Fills the list anew with what is attached. Controllers from before are no longer updated.
  void enumerate();
  /// Compares with the snapshot before: any difference is a notification. Called after every refresh.
  void notice(const Snapshot& now);
  /// The controllers to update, once a notification, in order; empty without one.
  std::vector<std::shared_ptr<Controller>> due();

 private:
  engine::EngineContext& context_;
  Factory factory_;
  KeyedCollection<Controller> list_;
  std::vector<AttachedController> before_;
  bool notified_ = false;
};

}  // namespace ql::input
