#include "platform/device/StateValues.h"

#include <bit>
#include <cmath>

namespace ql::device {
namespace {

constexpr bool within(std::uint32_t value, std::uint32_t first, std::uint32_t last) {
  return value >= first && value <= last;
}

bool finite(std::uint32_t bits) { return std::isfinite(std::bit_cast<float>(bits)); }

bool meaningful(RenderState state, std::uint32_t value) {
  switch (state) {
    case RenderState::ZEnable:
      return value <= 2;
    case RenderState::FillMode:
    case RenderState::ShadeMode:
    case RenderState::CullMode:
      return within(value, 1, 3);
    case RenderState::SrcBlend:
      return within(value, 1, 13);
    case RenderState::DestBlend:
      return within(value, 1, 11);
    case RenderState::ZFunc:
    case RenderState::AlphaFunc:
    case RenderState::StencilFunc:
    case RenderState::StencilFail:
    case RenderState::StencilZFail:
    case RenderState::StencilPass:
      return within(value, 1, 8);
    case RenderState::FogTableMode:
    case RenderState::FogVertexMode:
      return value <= 3;
    case RenderState::ZBias:
      return value <= 16;
    case RenderState::DiffuseMaterialSource:
    case RenderState::SpecularMaterialSource:
    case RenderState::AmbientMaterialSource:
    case RenderState::EmissiveMaterialSource:
      return value <= 2;
    case RenderState::BlendOp:
      return within(value, 1, 5);
    case RenderState::FogStart:
    case RenderState::FogEnd:
    case RenderState::FogDensity:
    case RenderState::PointSize:
    case RenderState::PointSizeMin:
    case RenderState::PointSizeMax:
    case RenderState::PointScaleA:
    case RenderState::PointScaleB:
    case RenderState::PointScaleC:
      return finite(value);
    default:
      return true;
  }
}

bool isOperation(std::uint32_t value) {
  // 17, 22 and 23 would take a stage's result before it exists or a bump map, which no texture format here carries.
  return within(value, 1, 16) || within(value, 18, 21) || within(value, 24, 26);
}

bool isArgument(std::uint32_t value) {
  return (value & ~(kArgSelectMask | kArgComplement | kArgAlphaReplicate)) == 0 && (value & kArgSelectMask) <= 4;
}

bool meaningful(StageState state, std::uint32_t value) {
  switch (state) {
    case StageState::ColorOp:
    case StageState::AlphaOp:
      return isOperation(value);
    case StageState::ColorArg0:
    case StageState::ColorArg1:
    case StageState::ColorArg2:
    case StageState::AlphaArg0:
    case StageState::AlphaArg1:
    case StageState::AlphaArg2:
      return isArgument(value);
    case StageState::ResultArg:
      return value == static_cast<std::uint32_t>(TextureArg::Current);
    // The low half chooses the coordinates of the vertex, the high half what is generated in their place.
    case StageState::TexCoordIndex:
      return (value & 0xFFFF) < kStageStates && (value >> 16) <= 3;
    case StageState::AddressU:
    case StageState::AddressV:
      return within(value, 1, 4);
    case StageState::MagFilter:
    case StageState::MinFilter:
    case StageState::MipFilter:
      return value <= 3;
    case StageState::MipMapLodBias:
      return finite(value);
    // How many coordinates are transformed (0: none), and whether the last one divides the others.
    case StageState::TextureTransformFlags:
      return (value & ~0x100u) <= 4;
    default:
      return true;
  }
}

// Numbers fill their tables from 0, so an enumerator outside them is no state.
template <class Table, class State>
std::uint32_t* lookUp(const Table& table, State state) {
  const auto number = static_cast<std::size_t>(state);
  return number < table.size() ? table[number] : nullptr;
}

bool put(std::uint32_t* set, std::uint32_t* effective, std::uint32_t value, bool usable) {
  if (set) *set = value;
  if (!effective || !usable || *effective == value) return false;
  *effective = value;
  return true;
}

}  // namespace

StateValues::StateValues(State& effective) : render_(effective.render) {
  forEachRenderState(render_, [&](RenderState number, const char*, std::uint32_t& field) {
    renderSet_[static_cast<std::size_t>(number)] = &field;
  });
  forEachRenderState(effective.render, [&](RenderState number, const char*, std::uint32_t& field) {
    renderEffective_[static_cast<std::size_t>(number)] = &field;
  });
  for (std::uint32_t stage = 0; stage < kStageStates; ++stage) {
    if (stage < kStages)
      stages_[stage] = effective.stages[stage];
    else
      stages_[stage].texCoordIndex = stage;
    forEachStageState(stages_[stage], [&](StageState number, const char*, std::uint32_t& field) {
      stageSet_[stage][static_cast<std::size_t>(number)] = &field;
    });
    if (stage >= kStages) continue;
    forEachStageState(effective.stages[stage], [&](StageState number, const char*, std::uint32_t& field) {
      stageEffective_[stage][static_cast<std::size_t>(number)] = &field;
    });
  }
}

const std::uint32_t* StateValues::find(RenderState state) const { return lookUp(renderSet_, state); }

const std::uint32_t* StateValues::find(std::uint32_t stage, StageState state) const {
  return stage < kStageStates ? lookUp(stageSet_[stage], state) : nullptr;
}

bool StateValues::set(RenderState state, std::uint32_t value) {
  return put(lookUp(renderSet_, state), lookUp(renderEffective_, state), value, meaningful(state, value));
}

bool StateValues::set(std::uint32_t stage, StageState state, std::uint32_t value) {
  if (stage >= kStageStates) return false;
  return put(lookUp(stageSet_[stage], state), lookUp(stageEffective_[stage], state), value, meaningful(state, value));
}

}  // namespace ql::device
