/// @file
/// The engine-wide table of sprites.
#pragma once

#include "engine/EngineContext.h"
#include "engine/SlotTable.h"
#include "platform/utility/Sprite.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ql::render {

struct SpriteEntry {
  utility::Sprite sprite;
  std::int16_t texture = 0;        ///< index in the texture table
  utility::Point2 scaling{1, 1};   ///< factors
  utility::Point2 rotationCenter;  ///< pixels of the scaled picture
  float rotation = 0;              ///< radians, clockwise
  bool used = false;
  std::string name;  ///< compared without regard to case
};

struct SpriteTable {
  engine::SlotTable<SpriteEntry> entries;
};

/// A sprite that shows a texture of the table, or else a picture file, which is loaded into the table. It takes the
/// first free slot. @param picture name of a texture (any letter case) or of a file; "" keeps the slot's texture
/// @param name "" names it "Sprite " and its index @return its index
/// @throws engine::EngineError 91 without a device, 6 beyond 32767 sprites
std::int16_t loadSprite(engine::EngineContext& context, const std::string& picture, const std::string& name);
/// Draws a sprite, its top left at (x, y), pixels.
/// @throws engine::EngineError 9 for an index outside the table (here and below), device::DeviceError invalid call for
/// one without a texture and outside a frame
void drawSprite(engine::EngineContext& context, std::int32_t index, std::int32_t x, std::int32_t y);
void rotateSprite(engine::EngineContext& context, std::int32_t index, utility::Point2 center, float degrees);
void scaleSprite(engine::EngineContext& context, std::int32_t index, utility::Point2 factors);
/// Index of the first sprite of that name (any letter case), 0 when none.
std::int16_t findSpriteIndex(engine::EngineContext& context, std::string_view name);

}  // namespace ql::render
