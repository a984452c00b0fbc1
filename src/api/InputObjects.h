/// @file
/// What the handles of input refer to.
#pragma once

#include "api/Objects.h"
#include "input/InputEngine.h"
#include "input/KeyedCollection.h"

#include <Quasarlens3D/Event.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace Quasarlens3D::Detail {

struct MouseCursorsObject;
struct InputEngineObject;
struct GameControllerObject;

struct MouseCursorObject : ObjectBase {
  std::string key;
  std::shared_ptr<ql::device::Surface> surface;
  std::weak_ptr<MouseCursorsObject> parent;
};
struct MouseCursorsObject : ObjectBase {
  ql::input::KeyedCollection<MouseCursorObject> list;
  std::weak_ptr<InputEngineObject> parent;
};

struct ForceFeedEffectsObject;
struct ForceFeedEffectObject : ObjectBase {
  const ql::input::EffectEntry* entry = nullptr;
  std::weak_ptr<ForceFeedEffectsObject> parent;
};
struct ForceFeedEffectsObject : ObjectBase {
  ql::input::KeyedCollection<ForceFeedEffectObject> list;
  std::weak_ptr<GameControllerObject> parent;
};
struct InputDeviceHandleObject : ObjectBase {
  std::weak_ptr<GameControllerObject> controller;
};
struct PlayedEffectObject : ObjectBase {
  std::shared_ptr<ql::input::PlayedEffect> effect;
};

struct GameControllerObject : ObjectBase, ql::input::Controller {
  explicit GameControllerObject(std::shared_ptr<const ql::input::ControllerInfo> info)
      : Controller(*context, std::move(info)) {}
  std::int32_t dataFormat = 3;
  std::shared_ptr<ForceFeedEffectsObject> effects = std::make_shared<ForceFeedEffectsObject>();
  std::shared_ptr<InputDeviceHandleObject> device;
  Event<> change, initialized, unInitialized;
  Event<std::int32_t, const std::string&, const std::string&> onError;
};
struct GameControllersObject : ObjectBase {
  std::shared_ptr<ql::input::Controllers> controllers;
  std::weak_ptr<InputEngineObject> parent;
};

struct InputEngineObject : ObjectBase {
  ql::input::InputEngine engine{*context, [](std::shared_ptr<const ql::input::ControllerInfo> info) {
                                  auto made = std::make_shared<GameControllerObject>(std::move(info));
                                  made->effects->parent = made;
                                  return made;
                                }};
  std::shared_ptr<GameControllersObject> controllers;  ///< nothing when the creation failed; so the next one
  std::shared_ptr<MouseCursorsObject> cursors;
  std::shared_ptr<ql::device::Surface> cursor;
};

}  // namespace Quasarlens3D::Detail

namespace ql::api {

/// Updates the controllers when any had something new, and raises their events. Call it outside the guard: what a
/// handler throws is the host's own.
void raiseControllerChanges();

}  // namespace ql::api
