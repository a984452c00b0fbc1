#include "render/Lights.h"

#include <algorithm>

namespace ql::render {
namespace {

constexpr std::uint32_t kPointLight = 1, kDirectionalLight = 3;

[[noreturn]] void subscript() { throw engine::EngineError(engine::kSubscript, "Subscript out of range"); }

LightEntry& entryAt(engine::EngineContext& context, std::int32_t index) {
  if (index < 0 || index > kMaxLights) subscript();
  return context.get<LightTable>().entries[static_cast<std::size_t>(index)];
}

void switchLight(device::Device& device, LightEntry& entry, std::int32_t index, bool enabled) {
  device.lightEnable(static_cast<std::uint32_t>(index), enabled);
  entry.enabled = enabled;
}

/// Takes the first free light, fills it and switches it on.
template <class Fill>
std::int16_t createLight(engine::EngineContext& context, const math::Color4& color, Fill&& fill) {
  auto& entries = context.get<LightTable>().entries;
  const auto free =
      std::find_if(entries.begin() + 1, entries.end(), [](const LightEntry& entry) { return !entry.used; });
  if (free == entries.end()) subscript();
  device::Device& device = context.requireDevice();
  const auto index = static_cast<std::int16_t>(free - entries.begin());
  free->used = true;
  free->record.ambient = free->record.diffuse = color;
  fill(free->record);
  device.setLight(static_cast<std::uint32_t>(index), free->record);
  switchLight(device, *free, index, true);
  return index;
}

}  // namespace

std::int16_t createPointLight(engine::EngineContext& context, const math::Vec3& position, float range,
                              const math::Color4& color) {
  return createLight(context, color, [&](device::Light& light) {
    light.attenuation0 = 1;
    light.attenuation1 = light.attenuation2 = 0;
    light.range = range;
    light.type = kPointLight;
    light.position = position;
  });
}

std::int16_t createDirectionalLight(engine::EngineContext& context, const math::Vec3& direction,
                                    const math::Color4& color) {
  return createLight(context, color, [&](device::Light& light) {
    light.attenuation0 = light.attenuation1 = 1;
    light.type = kDirectionalLight;
    light.direction = direction;
  });
}

void deleteLight(engine::EngineContext& context, std::int32_t index) {
  LightEntry& entry = entryAt(context, index);
  device::Device& device = context.requireDevice();
  entry.used = false;
  device.setLight(static_cast<std::uint32_t>(index), kNoLight);
  switchLight(device, entry, index, false);
}

void enableLight(engine::EngineContext& context, std::int32_t index, bool enabled) {
  LightEntry& entry = entryAt(context, index);
  switchLight(context.requireDevice(), entry, index, enabled);
}

void changeLight(engine::EngineContext& context, std::int32_t index,
                 const std::function<void(device::Light&)>& change) {
  LightEntry& entry = entryAt(context, index);
  device::Device& device = context.requireDevice();
  change(entry.record);
  device.setLight(static_cast<std::uint32_t>(index), entry.record);
}

void restoreLights(engine::EngineContext& context) {
  auto& entries = context.get<LightTable>().entries;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (!entries[i].used && !entries[i].enabled) continue;
    context.device->setLight(static_cast<std::uint32_t>(i), entries[i].record);
    if (entries[i].enabled) context.device->lightEnable(static_cast<std::uint32_t>(i), true);
  }
}

}  // namespace ql::render
