#include "render/RenderSurface.h"

#include "engine/OpenTarget.h"
#include "platform/utility/TextureFiles.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace ql::render {
namespace {

constexpr math::Vec3 kUp{0, 1, 0};
constexpr float kNearPlane = 1, kFarPlane = 500;  // world units
constexpr float kPlanesAspect = 0.75f;            // height / width of the planes' rectangle, at least

math::Plane planeThrough(const math::Vec3& point, const math::Vec3& inwards) {
  const math::Vec3 n = math::normalize(inwards);
  return {n.x, n.y, n.z, -math::dot(n, point)};
}

}  // namespace

std::array<math::Plane, 6> surfacePlanes(const math::Vec3& position, const math::Vec3& lookAt, float fieldOfView,
                                         float aspect) {
  const math::Vec3 ahead = math::normalize(math::subtract(lookAt, position));
  math::Vec3 side = math::normalize(math::cross(ahead, kUp));
  if (side == math::Vec3{}) side = {1, 0, 0};  // straight up or down
  const math::Vec3 up = math::cross(side, ahead);
  // Half the far rectangle. A rectangle smaller than the picture would cut away what the picture shows.
  const float reach = std::tan(fieldOfView / 2) * kFarPlane;
  const float halfWidth = std::max(reach, reach / aspect), halfHeight = std::max(reach * kPlanesAspect, reach);
  const math::Vec3 farCenter = math::add(position, math::scale(ahead, kFarPlane));
  // A plane through the position and an edge: the edge's direction turned inwards.
  const auto through = [&](const math::Vec3& towardsEdge, float half) {
    return planeThrough(position, math::subtract(math::scale(ahead, half), math::scale(towardsEdge, kFarPlane)));
  };
  return {planeThrough(position, ahead), planeThrough(farCenter, math::negate(ahead)),
          through(side, halfWidth),      through(math::negate(side), halfWidth),
          through(up, halfHeight),       through(math::negate(up), halfHeight)};
}

RenderSurface::RenderSurface(engine::EngineContext& context, std::int32_t& width, std::int32_t& height)
    : context_(context), fieldOfView_(context.fieldOfView), view_(math::lookAt(position_, lookAt_, kUp)) {
  const utility::TextureRequirements usable =
      utility::checkTextureRequirements(context.requireDevice(), {.width = static_cast<std::uint32_t>(width),
                                                                  .height = static_cast<std::uint32_t>(height),
                                                                  .levels = 1,
                                                                  .format = context.textureFormat,
                                                                  .usage = device::kUsageRenderTarget});
  width_ = usable.width;
  height_ = usable.height;
  context.textureFormat = usable.format;
  projection_ =
      math::perspective(fieldOfView_, static_cast<float>(height_) / static_cast<float>(width_), kNearPlane, kFarPlane);
  makeTarget();
  width = static_cast<std::int32_t>(width_);
  height = static_cast<std::int32_t>(height_);
  const std::int16_t slot = allocateTextureSlot(context);
  TextureEntry& entry = context.get<TextureTable>().entries.at(slot);
  entry.texture = texture_;
  entry.width = width;
  entry.height = height;
  handle_ = entry.handle;
}

RenderSurface::~RenderSurface() {
  if (rendering_) engine::endOpenTarget(context_);
}

/// Makes what belongs to the device: again when the engine has a new one.
void RenderSurface::makeTarget() {
  constexpr std::uint32_t kAllLevels = 0, kNoUsage = 0;
  device::Device& device = context_.requireDevice();
  auto target = std::make_unique<utility::RenderToSurface>(device, width_, height_,
                                                           context_.presentParameters.backBufferFormat, true);
  texture_ = device.createTexture(width_, height_, kAllLevels, kNoUsage, context_.textureFormat, device::Pool::Managed);
  target_ = std::move(target);
  device_ = context_.device;
  if (handle_ && texture()) context_.get<TextureTable>().entries.at(handle_->index).texture = texture_;
}

std::shared_ptr<TextureHandle> RenderSurface::texture() const {
  const engine::SlotTable<TextureEntry>& entries = context_.get<TextureTable>().entries;
  const bool there = handle_->index <= entries.count() && entries.at(handle_->index).handle == handle_;
  return there ? handle_ : nullptr;
}

void RenderSurface::setCamera(const math::Vec3& position, const math::Vec3& lookAt) {
  position_ = position;
  lookAt_ = lookAt;
  view_ = math::lookAt(position, lookAt, kUp);
}

RenderSurface::View RenderSurface::engineView() const {
  return {context_.frustumPlanes, context_.cameraPosition,   context_.cameraLookAt,
          context_.viewMatrix,    context_.projectionMatrix, context_.viewport};
}

void RenderSurface::setEngineView(const View& view) {
  context_.frustumPlanes = view.planes;
  context_.cameraPosition = view.position;
  context_.cameraLookAt = view.lookAt;
  context_.viewMatrix = view.view;
  context_.projectionMatrix = view.projection;
  context_.viewport = view.viewport;
  device_->setTransform(device::Transform::Projection, view.projection);
  device_->setTransform(device::Transform::View, view.view);
}

void RenderSurface::startRender() {
  engine::endOpenTarget(context_);
  if (&context_.requireDevice() != device_.get()) makeTarget();
  const math::Viewport whole{0, 0, static_cast<std::int32_t>(width_), static_cast<std::int32_t>(height_), 0, 1};
  target_->beginScene(texture_, 0, whole, utility::LevelContents::Discard);
  before_ = engineView();
  rendering_ = true;
  context_.get<engine::OpenTarget>().end = [this] {
    try {
      endRender();
    } catch (const std::exception&) {
      // The scene was ended behind our back; all else is as it was.
    }
  };
  device_->clear({}, device::kClearTarget | device::kClearDepth, 0, 1, 0);
  const float aspect = static_cast<float>(height_) / static_cast<float>(width_);
  setEngineView(
      {surfacePlanes(position_, lookAt_, fieldOfView_, aspect), position_, lookAt_, view_, projection_, whole});
}

void RenderSurface::endRender() {
  if (rendering_) context_.get<engine::OpenTarget>().end = nullptr;
  const bool rendering = std::exchange(rendering_, false);
  std::exception_ptr failure;
  try {
    target_->endScene();
  } catch (...) {
    failure = std::current_exception();
  }
  if (rendering) setEngineView(before_);
  if (failure) std::rethrow_exception(failure);
}

}  // namespace ql::render
