/// @file
/// The engine-wide table of lights, which the device follows.
#pragma once

#include "engine/EngineContext.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace ql::render {

inline constexpr std::int16_t kMaxLights = 100;

/// All zero: lights nothing.
inline constexpr device::Light kNoLight{0, {}, {}, {}, {}, {}, 0, 0, 0, 0, 0, 0, 0};

struct LightEntry {
  device::Light record = kNoLight;  ///< as the device takes it
  bool used = false;
  bool enabled = false;  ///< as the device was last told
};

/// A light's index is its index on the device too. Light 0 is never handed out.
struct LightTable {
  std::array<LightEntry, std::size_t{kMaxLights} + 1> entries;
};

/// Takes the first free light, makes it a point light that is as bright everywhere within its range, and switches it
/// on. Colours are ambient and diffuse; specular stays as it was. @param range world units @return its index, from 1
/// @throws engine::EngineError 9 beyond 100 lights, 91 without a device; nothing changed
std::int16_t createPointLight(engine::EngineContext& context, const math::Vec3& position, float range,
                              const math::Color4& color);
/// The same with a light from everywhere along a direction.
std::int16_t createDirectionalLight(engine::EngineContext& context, const math::Vec3& direction,
                                    const math::Color4& color);
/// Frees a light; its record stays, the device's becomes nothing, off.
/// @throws engine::EngineError 9 for an index outside 0 to 100, 91 without a device (the operations below too)
void deleteLight(engine::EngineContext& context, std::int32_t index);
/// Switches the device's light on or off.
void enableLight(engine::EngineContext& context, std::int32_t index, bool enabled);
/// Changes a light's record and loads it into the device.
void changeLight(engine::EngineContext& context, std::int32_t index, const std::function<void(device::Light&)>& change);
/// Loads the lights in use into a new device.
void restoreLights(engine::EngineContext& context);

}  // namespace ql::render
