/// @file
/// The textures of a Half-Life level: from packages, from the level itself, from bitmaps.
#pragma once

#include "level/HlBsp.h"
#include "level/LevelState.h"

namespace ql::level {

/// Loads every texture of the level. In this order: the package that was opened last, packages opened before it, pixels
/// that the level file holds, a bitmap. What is nowhere gets a chequered replacement and a line in the log.
/// @param numbered bitmaps are named by the textures' numbers @param file the level's bytes
void loadHlTextures(LevelState& level, const HlBsp& bsp, std::span<const std::byte> file, bool numbered);

}  // namespace ql::level
