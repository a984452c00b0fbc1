/// @file
/// What the public handles refer to.
#pragma once

#include "api/Context.h"
#include "engine/EngineContext.h"
#include "level/Level.h"
#include "math/SineTable.h"
#include "platform/device/Resources.h"
#include "render/RenderSurface.h"
#include "render/Screen.h"
#include "render/TextureTable.h"
#include "render/scene/Scene.h"

#include <Quasarlens3D/Event.h>

#include <memory>

namespace Quasarlens3D::Detail {

/// Every object knows the context that it was made in.
struct ObjectBase {
  std::shared_ptr<ql::engine::EngineContext> context = ql::api::context();
};

struct EngineObject {
  EngineObject() = default;
  EngineObject(const EngineObject&) = delete;
  EngineObject& operator=(const EngineObject&) = delete;
  ~EngineObject() { ql::api::endContext(context); }

  std::shared_ptr<ql::engine::EngineContext> context = ql::api::startContext();
  Event<> restoreObjectsAfterResize;
};

struct TextureFactoryObject : ObjectBase {};
struct MaterialFactoryObject : ObjectBase {
  bool local = false;
};
struct InternalsObject : ObjectBase {};
struct TextureHandleObject : ObjectBase {
  std::shared_ptr<ql::render::TextureHandle> handle;
};
struct CameraObject : ObjectBase {
  float eyeHeight = 10;  ///< world units
};
struct SceneObject : ObjectBase {
  std::shared_ptr<ql::render::scene::Scene> scene = ql::render::scene::createScene(*context);
};
struct ScreenObject : ObjectBase {
  ql::render::Screen screen{*context};
};
struct EffectObject : ObjectBase {};
struct RenderSurfaceObject : ObjectBase {
  std::unique_ptr<ql::render::RenderSurface> surface;
};
struct LevelObject : ObjectBase {
  ql::level::Level level{*context};
};
struct GlobalsObject : ObjectBase {
  ql::math::SineTable table;
};

struct RootObject : ObjectBase {};
struct UtilityObject : ObjectBase {};
struct DeviceHandleObject : ObjectBase {
  std::shared_ptr<ql::device::Device> device;
};
struct DeviceTextureObject : ObjectBase {
  std::shared_ptr<ql::device::Texture> texture;
};
struct SurfaceHandleObject : ObjectBase {
  std::shared_ptr<ql::device::Surface> surface;
};

}  // namespace Quasarlens3D::Detail

namespace ql::api {

/// The objects that an engine refers to until it ends.
struct KeptAlive {
  std::shared_ptr<Quasarlens3D::Detail::LevelObject> level;
};

}  // namespace ql::api
