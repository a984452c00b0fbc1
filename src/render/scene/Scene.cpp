#include "render/scene/Scene.h"

#include "platform/host/Files.h"
#include "render/Camera.h"

#include <algorithm>

namespace ql::render::scene {
namespace {

constexpr float kDefaultCollisionPrecision = 30, kDefaultPickingPrecision = 1000;  // world units
constexpr double kHalfTurn = 3.141592653;
constexpr float kAspect = 0.75f;                         // height / width, whatever the back buffer
constexpr float kNearPlane = 1;                          // world units
constexpr float kSmallestFont = 1, kLargestFont = 2160;  // points

}  // namespace

void Scene::setViewFrustum(float degrees, float farPlane) {
  context_.fieldOfView = static_cast<float>(degrees * kHalfTurn / 180);
  context_.farPlane = farPlane;
  context_.projectionMatrix = math::perspective(context_.fieldOfView, kAspect, kNearPlane, farPlane);
  if (context_.device) context_.device->setTransform(device::Transform::Projection, context_.projectionMatrix);
}

void Scene::setCamera(const math::Vec3& position, const math::Vec3& lookAt) {
  render::setCamera(context_, position, lookAt);
}

void Scene::setBackground(float red, float green, float blue) {
  context_.backgroundColor = math::packColor({red, green, blue, 1});
}

void Scene::setRenderMode(std::int32_t mode) {
  // The modes are the device's fill modes.
  if (mode >= 1 && mode <= 3)
    context_.requireDevice().setRenderState(device::RenderState::FillMode, static_cast<std::uint32_t>(mode));
}

void Scene::enableMipMapping() {
  context_.requireDevice().setTextureStageState(0, device::StageState::MipFilter,
                                                static_cast<std::uint32_t>(device::Filter::Point));
}

void Scene::setDithering(bool on) {
  context_.requireDevice().setRenderState(device::RenderState::DitherEnable, on ? 0xFFFFFFFF : 0);
}

void Scene::drawText(const std::string& text, std::int32_t x, std::int32_t y, std::int32_t color) {
  device::Device& device = context_.requireDevice();
  if (!context_.systemFont) throw engine::EngineError(engine::kNotSet, "Object variable not set: no system font");
  context_.systemFont->drawText(device, text, {x, y, 0, 0}, 0, static_cast<std::uint32_t>(color));
}

void Scene::selectFont(const std::string& name, const std::string& size, bool bold, bool italic, bool underlined) {
  fonts::FontRequest& font = context_.internalFont;
  if (!name.empty()) font.face = name;
  if (const double points = host::numberFromText(size); points != 0)
    font.points = static_cast<float>(std::clamp<double>(points, kSmallestFont, kLargestFont));
  font.bold = bold;
  font.italic = italic;
  font.underline = underlined;
  context_.systemFont = std::make_unique<utility::Font>(context_.requireDevice(), font);
}

std::shared_ptr<TextureHandle> Scene::loadTexture(std::string& fileName, std::int32_t& width, std::int32_t& height,
                                                  const std::string& name) {
  std::int32_t noKey = 0;
  return render::loadTexture(context_, fileName, name, width, height, noKey);
}

std::shared_ptr<Scene> createScene(engine::EngineContext& context) {
  ActiveScene& active = context.get<ActiveScene>();
  if (!active.releaseRegistered)
    context.releaseSteps.add(engine::ReleaseStage::Scene, [&context] { context.get<ActiveScene>().scene.reset(); });
  active.releaseRegistered = true;
  active.scene = std::make_shared<Scene>(context);
  context.collisionPrecision = kDefaultCollisionPrecision;
  context.pickingPrecision = kDefaultPickingPrecision;
  return active.scene;
}

Scene& activeScene(engine::EngineContext& context) {
  if (!context.get<ActiveScene>().scene) createScene(context);
  return *context.get<ActiveScene>().scene;
}

}  // namespace ql::render::scene
