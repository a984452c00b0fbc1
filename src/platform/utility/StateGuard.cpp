#include "platform/utility/StateGuard.h"

namespace ql::utility {

using device::RenderState;
using device::StageState;

StateGuard::~StateGuard() {
  for (const auto& [state, value] : render_) device_.setRenderState(state, value);
  for (const auto& [at, value] : stages_) device_.setTextureStageState(at.first, at.second, value);
  if (texture_) device_.setTexture(0, *texture_);
  if (vertexFormat_) device_.setVertexShader(*vertexFormat_);
}

void StateGuard::render(RenderState state, std::uint32_t value) {
  const std::uint32_t before = device_.getRenderState(state);
  if (before == value) return;
  render_.try_emplace(state, before);
  device_.setRenderState(state, value);
}

void StateGuard::stage(std::uint32_t stage, StageState state, std::uint32_t value) {
  const std::uint32_t before = device_.getTextureStageState(stage, state);
  if (before == value) return;
  stages_.try_emplace({stage, state}, before);
  device_.setTextureStageState(stage, state, value);
}

void StateGuard::texture(std::shared_ptr<device::Texture> texture) {
  std::shared_ptr<device::Texture> before = device_.getTexture(0);
  if (before == texture) return;
  if (!texture_) texture_ = std::move(before);
  device_.setTexture(0, std::move(texture));
}

void StateGuard::vertexFormat(std::uint32_t format) {
  const std::uint32_t before = device_.getVertexShader();
  if (before == format) return;
  if (!vertexFormat_) vertexFormat_ = before;
  device_.setVertexShader(format);
}

void StateGuard::overlay(std::shared_ptr<device::Texture> picture, device::Filter filter) {
  const auto number = [](auto value) { return static_cast<std::uint32_t>(value); };
  using device::TextureArg;
  using device::TextureOp;
  const std::pair<RenderState, std::uint32_t> renderStates[] = {
      {RenderState::ZEnable, 0},
      {RenderState::ZWriteEnable, 0},
      {RenderState::FillMode, number(device::FillMode::Solid)},
      {RenderState::ShadeMode, number(device::ShadeMode::Gouraud)},
      {RenderState::AlphaTestEnable, 0},
      {RenderState::AlphaBlendEnable, 1},
      {RenderState::SrcBlend, number(device::Blend::SrcAlpha)},
      {RenderState::DestBlend, number(device::Blend::InvSrcAlpha)},
      {RenderState::BlendOp, number(device::BlendOp::Add)},
      {RenderState::CullMode, number(device::CullMode::None)},
      {RenderState::FogEnable, 0},
      {RenderState::SpecularEnable, 0},
      {RenderState::StencilEnable, 0},
  };
  for (const auto& [state, value] : renderStates) render(state, value);
  const std::pair<StageState, std::uint32_t> stageStates[] = {
      {StageState::ColorOp, number(TextureOp::Modulate)},
      {StageState::ColorArg1, number(TextureArg::Texture)},
      {StageState::ColorArg2, number(TextureArg::Diffuse)},
      {StageState::AlphaOp, number(TextureOp::Modulate)},
      {StageState::AlphaArg1, number(TextureArg::Texture)},
      {StageState::AlphaArg2, number(TextureArg::Diffuse)},
      {StageState::TexCoordIndex, 0},
      {StageState::TextureTransformFlags, 0},
      {StageState::AddressU, number(device::Address::Clamp)},
      {StageState::AddressV, number(device::Address::Clamp)},
      {StageState::MinFilter, number(filter)},
      {StageState::MagFilter, number(filter)},
      {StageState::MipFilter, number(device::Filter::None)},
  };
  for (const auto& [state, value] : stageStates) stage(0, state, value);
  stage(1, StageState::ColorOp, number(TextureOp::Disable));
  stage(1, StageState::AlphaOp, number(TextureOp::Disable));
  texture(std::move(picture));
  vertexFormat(kOverlayFormat);
}

}  // namespace ql::utility
