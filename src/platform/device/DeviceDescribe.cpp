// Telling one who comes late what a device has and how it stands.
#include "platform/device/Device.h"
#include "platform/device/DeviceImpl.h"

#include <algorithm>
#include <cstring>

namespace ql::device {
namespace {

template <class T>
bool sameBits(const T& a, const T& b) {
  static_assert(std::is_trivially_copyable_v<T>);
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): any other bits are another state
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

}  // namespace

void tellTexture(CallSink* sink, TextureId id, const TextureDescription& made) {
  noteEffect(sink, "TextureCreated", id, made.width, made.height, made.levels, made.format, made.renderTarget);
}

void tellTarget(CallSink* sink, TargetId id, const Watch::Target& made) {
  if (made.texture != TextureId::None)
    noteEffect(sink, "TextureTargetCreated", id, made.texture, made.level);
  else
    noteEffect(sink, "TargetCreated", id, made.width, made.height, made.format);
}

void Device::describe(CallSink& sink) {
  impl_->tellDevice("DeviceCreated", &sink);
  impl_->tellResources(sink);
  impl_->tellStates(sink);
}

void Device::Impl::tellResources(CallSink& sink) const {
  for (const auto& [id, texture] : watch->textures) {
    tellTexture(&sink, id, texture->description());
    for (std::uint32_t level = 0; level < texture->levelCount(); ++level)
      noteEffect(&sink, "TextureWritten", id, level, backEnd->readTexture(id, level));
  }
  for (const auto& [id, buffer] : watch->buffers) {
    noteEffect(&sink, "BufferCreated", id, buffer->size(), buffer->vertexFormat());
    noteEffect(&sink, "BufferWritten", id, 0, backEnd->readBuffer(id));
  }
  for (const auto& [id, made] : watch->targets) tellTarget(&sink, id, made);
  noteEffect(&sink, "TargetWritten", TargetId::None, 0, 0, backBuffer->width, backBuffer->height,
             backEnd->readPixels(backBuffer->id, {0, 0, backBuffer->width, backBuffer->height}));
}

void Device::Impl::tellStates(CallSink& sink) const {
  if (target != backBuffer->id) noteCall(&sink, "SetRenderTarget", target, targetWidth, targetHeight);
  const math::Viewport& view = state.viewport;
  const bool whole = view.x == 0 && view.y == 0 && view.width == static_cast<std::int32_t>(targetWidth) &&
                     view.height == static_cast<std::int32_t>(targetHeight) && view.minZ == 0 && view.maxZ == 1;
  if (!whole) noteCall(&sink, "SetViewport", view.x, view.y, view.width, view.height, view.minZ, view.maxZ);

  State freshState;
  const StateValues fresh(freshState);
  // A value that means nothing leaves in force what was set before it: tell both.
  const auto tell = [&](std::uint32_t value, std::uint32_t inForce, std::uint32_t initial, const auto&... call) {
    if (inForce != value && inForce != initial) noteCall(&sink, call..., inForce);
    if (value != initial) noteCall(&sink, call..., value);
  };
  forEachRenderState(state.render, [&](RenderState which, const char*, std::uint32_t inForce) {
    tell(*values.find(which), inForce, *fresh.find(which), "SetRenderState", which);
  });
  for (std::uint32_t stage = 0; stage < kStageStates; ++stage)
    forEachStageState(
        state.stages[std::min(stage, kStages - 1)], [&](StageState which, const char*, std::uint32_t used) {
          const std::uint32_t value = *values.find(stage, which);
          tell(value, stage < kStages ? used : value, *fresh.find(stage, which), "SetTextureStageState", stage, which);
        });

  const auto transform = [&](Transform which, const math::Mat4& matrix, const math::Mat4& initial) {
    if (!sameBits(matrix, initial)) noteCall(&sink, "SetTransform", which, matrix);
  };
  transform(Transform::World, state.world, freshState.world);
  transform(Transform::View, state.view, freshState.view);
  transform(Transform::Projection, state.projection, freshState.projection);
  transform(Transform::Texture0, state.textureTransforms[0], freshState.textureTransforms[0]);
  transform(Transform::Texture1, state.textureTransforms[1], freshState.textureTransforms[1]);

  if (!sameBits(state.material, freshState.material)) noteCall(&sink, "SetMaterial", state.material);
  for (std::uint32_t i = 0; i < kLights; ++i) {
    if (!sameBits(state.lights[i], freshState.lights[i])) noteCall(&sink, "SetLight", i, state.lights[i]);
    if (state.lightEnabled[i]) noteCall(&sink, "LightEnable", i, true);
  }
  for (std::uint32_t stage = 0; stage < kStageStates; ++stage)
    if (textures[stage]) noteCall(&sink, "SetTexture", stage, textures[stage]->id());
  if (vertexFormat != 0) noteCall(&sink, "SetVertexShader", vertexFormat);
  if (stream) noteCall(&sink, "SetStreamSource", 0, stream->id(), streamStride);
  noteCall(&sink, "SetGammaRamp", gamma.ramp());
  if (inScene) noteCall(&sink, "BeginScene");
}

}  // namespace ql::device
