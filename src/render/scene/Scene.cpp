#include "render/scene/Scene.h"

#include "platform/host/Files.h"
#include "render/Camera.h"
#include "render/scene/Cursor.h"
#include "render/scene/Decals.h"
#include "render/scene/ShaderList.h"
#include "render/shaders/Shaders.h"

#include <algorithm>

namespace ql::render::scene {
namespace {

constexpr float kDefaultCollisionPrecision = 30, kDefaultPickingPrecision = 1000;  // world units
constexpr double kHalfTurn = 3.141592653;
constexpr float kAspect = 0.75f;                         // height / width, whatever the back buffer
constexpr float kNearPlane = 1;                          // world units
constexpr float kSmallestFont = 1, kLargestFont = 2160;  // points
constexpr std::int32_t kListedSize = 256;                // pixels, of the textures of lists
constexpr auto kBlackKey = static_cast<std::int32_t>(0xFF000000);
constexpr std::size_t kEndingLength = 4, kNumberedLength = 5;  // ".jpg", "1.jpg"

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
  context_.systemFont->drawText(device, text, {x, y, x, y}, 0, static_cast<std::uint32_t>(color));
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

void Scene::loadShaders(const std::string& fileName) {
  const std::vector<std::byte> file = host::readFile(fileName);
  const ShaderList list = parseShaderList({reinterpret_cast<const char*>(file.data()), file.size()});
  for (const ListEntry& entry : list.entries) {
    if (entry.isShader) {
      shaders::addShader(context_, entry.shader.name, entry.shader.shader, false);
      continue;
    }
    std::string picture = entry.texture.fileName;
    std::int32_t width = kListedSize, height = kListedSize, key = kBlackKey;
    render::loadTexture(context_, picture, entry.texture.name, width, height, key);
  }
  const std::string where = fileName + ", line " + std::to_string(list.line);
  if (list.fault == ListFault::NoSeparator)
    throw engine::EngineError(engine::kSubscript, "Subscript out of range: no \">\" in " + where);
  if (list.fault == ListFault::PastEnd) throw engine::EngineError(engine::kPastEnd, "Input past end of file: " + where);
}

void Scene::loadSky(const std::string& fileName, float distance) {
  if (fileName.size() < kNumberedLength)
    throw engine::EngineError(engine::kInvalidArgument, "Invalid argument: no numbered file name");
  const std::string base = fileName.substr(0, fileName.size() - kNumberedLength);
  const std::string ending = fileName.substr(fileName.size() - kEndingLength);
  for (std::size_t face = 0; face < SkyBox::kFaces; ++face) {
    std::string picture = base + std::to_string(face + 1) + ending;
    std::int32_t width = -1, height = -1;
    const std::shared_ptr<TextureHandle> texture = loadTexture(picture, width, height, "");
    sky_.setTexture(face, context_.get<TextureTable>().entries.at(texture->index).texture);
  }
  sky_.build(distance);
}

void startScenes(engine::EngineContext& context) {
  context.frameSteps.add(engine::FrameStage::Cursor, [&context] {
    if (context.get<CursorState>().enabled) drawCursor(context);
  });
  context.frameSteps.add(engine::FrameStage::EndOfFrame, [&context] { dropDeadDecals(context); });
  context.releaseSteps.add(engine::ReleaseStage::Scene, [&context] {
    context.get<ActiveScene>().scene.reset();
    dropAllDecals(context);
  });
}

std::shared_ptr<Scene> createScene(engine::EngineContext& context) {
  ActiveScene& active = context.get<ActiveScene>();
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
