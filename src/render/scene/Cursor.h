/// @file
/// The mouse cursor that every frame ends with.
#pragma once

#include "engine/EngineContext.h"
#include "render/TextureTable.h"

#include <cstdint>
#include <string>

namespace ql::render::scene {

/// context.get<CursorState>(). Off until a cursor is loaded or set.
struct CursorState {
  bool enabled = false;
  std::int16_t texture = 0;     ///< index in the texture table; 0: the texture named "Cursor"
  float width = 0, height = 0;  ///< pixels
};

/// Loads a picture as the texture named "Cursor" and shows it. @param colorKey packed ARGB, 0: none
void loadCursor(engine::EngineContext& context, std::string& fileName, std::int32_t colorKey, float width,
                float height);
/// Shows a texture as the cursor; null hides the cursor.
void setCursor(engine::EngineContext& context, const TextureHandle* texture, float width, float height);
/// Draws the cursor where the pointer is; nothing without an input engine. Errors are ignored: no cursor ends a frame.
void drawCursor(engine::EngineContext& context);

}  // namespace ql::render::scene
