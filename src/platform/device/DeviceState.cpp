#include "platform/device/Device.h"
#include "platform/device/DeviceImpl.h"

#include <utility>

namespace ql::device {
namespace {

/// Where a transform lies in a state; null for the texture transforms of stages that draws do not have.
template <class State>
auto* placeOf(State& state, Transform which) {
  switch (which) {
    case Transform::World:
      return &state.world;
    case Transform::View:
      return &state.view;
    case Transform::Projection:
      return &state.projection;
    case Transform::Texture0:
      return &state.textureTransforms[0];
    case Transform::Texture1:
      return &state.textureTransforms[1];
  }
  invalidCall("no transform " + number(which));
}

void requireLight(std::uint32_t index) {
  if (index >= kLights) invalidCall("light " + number(index) + " of " + number(kLights));
}

}  // namespace

void Device::setTransform(Transform which, const math::Mat4& matrix) {
  impl_->note("SetTransform", which, matrix);
  impl_->change(*placeOf(impl_->state, which), matrix);
}

math::Mat4 Device::getTransform(Transform which) const { return *placeOf(impl_->state, which); }

void Device::setViewport(const math::Viewport& viewport) {
  Impl& d = *impl_;
  d.note("SetViewport", viewport.x, viewport.y, viewport.width, viewport.height, viewport.minZ, viewport.maxZ);
  const bool positive = viewport.x >= 0 && viewport.y >= 0 && viewport.width > 0 && viewport.height > 0;
  if (!positive || !inside({static_cast<std::uint32_t>(viewport.x), static_cast<std::uint32_t>(viewport.y),
                            static_cast<std::uint32_t>(viewport.width), static_cast<std::uint32_t>(viewport.height)},
                           d.targetWidth, d.targetHeight))
    invalidCall("viewport of " + number(viewport.width) + " x " + number(viewport.height) + " at " +
                number(viewport.x) + ", " + number(viewport.y) + " on a target of " + number(d.targetWidth) + " x " +
                number(d.targetHeight));
  const auto depth = [](float z) { return z >= 0 && z <= 1; };
  if (!depth(viewport.minZ) || !depth(viewport.maxZ)) invalidCall("viewport depths must be 0 to 1");
  d.change(d.state.viewport, viewport);
}

math::Viewport Device::getViewport() const { return impl_->state.viewport; }

void Device::setRenderState(RenderState state, std::uint32_t value) {
  impl_->note("SetRenderState", state, value);
  if (!impl_->values.find(state)) invalidCall("no render state " + number(state));
  if (impl_->values.set(state, value)) ++impl_->stateVersion;
}

std::uint32_t Device::getRenderState(RenderState state) const {
  const std::uint32_t* value = impl_->values.find(state);
  if (!value) invalidCall("no render state " + number(state));
  return *value;
}

void Device::setTextureStageState(std::uint32_t stage, StageState state, std::uint32_t value) {
  impl_->note("SetTextureStageState", stage, state, value);
  if (!impl_->values.find(stage, state))
    invalidCall("no state " + number(state) + " of texture stage " + number(stage));
  if (impl_->values.set(stage, state, value)) ++impl_->stateVersion;
}

std::uint32_t Device::getTextureStageState(std::uint32_t stage, StageState state) const {
  const std::uint32_t* value = impl_->values.find(stage, state);
  if (!value) invalidCall("no state " + number(state) + " of texture stage " + number(stage));
  return *value;
}

void Device::setTexture(std::uint32_t stage, std::shared_ptr<Texture> texture) {
  impl_->note("SetTexture", stage, texture ? texture->id() : TextureId::None);
  if (stage >= kStageStates) invalidCall("no texture stage " + number(stage));
  if (texture && texture->backEnd() != impl_->backEnd) invalidCall("a texture of another device");
  impl_->textures[stage] = std::move(texture);
}

std::shared_ptr<Texture> Device::getTexture(std::uint32_t stage) const {
  if (stage >= kStageStates) invalidCall("no texture stage " + number(stage));
  return impl_->textures[stage];
}

void Device::setMaterial(const Material& material) {
  impl_->note("SetMaterial", material);
  impl_->change(impl_->state.material, material);
}

Material Device::getMaterial() const { return impl_->state.material; }

void Device::setLight(std::uint32_t index, const Light& light) {
  impl_->note("SetLight", index, light);
  requireLight(index);
  // Type 0, the light of nothing, lights nothing.
  if (light.type > 3) invalidCall("no light type " + number(light.type));
  impl_->change(impl_->state.lights[index], light);
}

Light Device::getLight(std::uint32_t index) const {
  requireLight(index);
  return impl_->state.lights[index];
}

void Device::lightEnable(std::uint32_t index, bool enable) {
  impl_->note("LightEnable", index, enable);
  requireLight(index);
  impl_->change(impl_->state.lightEnabled[index], enable);
}

bool Device::getLightEnable(std::uint32_t index) const {
  requireLight(index);
  return impl_->state.lightEnabled[index];
}

void Device::setVertexShader(std::uint32_t vertexFormat) {
  impl_->note("SetVertexShader", vertexFormat);
  // 0 is the value of a new device: allowed, so that it can be put back, but nothing draws with it.
  impl_->vertexBytes = vertexFormat == 0 ? 0 : vertexSize(vertexFormat);
  impl_->vertexFormat = vertexFormat;
}

std::uint32_t Device::getVertexShader() const { return impl_->vertexFormat; }

void Device::setGammaRamp(const GammaRamp& ramp) {
  impl_->note("SetGammaRamp", ramp);
  impl_->gamma.setRamp(ramp);
}

GammaRamp Device::getGammaRamp() const { return impl_->gamma.ramp(); }

}  // namespace ql::device
