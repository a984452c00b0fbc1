#include "render/scene/Cursor.h"

#include "engine/PointerState.h"
#include "render/Screen.h"

#include <exception>

namespace ql::render::scene {
namespace {

constexpr const char* kName = "Cursor";
constexpr std::int32_t kWhite = -1;

}  // namespace

void loadCursor(engine::EngineContext& context, std::string& fileName, std::int32_t colorKey, float width,
                float height) {
  std::int32_t ownWidth = -1, ownHeight = -1;
  const std::shared_ptr<TextureHandle> texture = loadTexture(context, fileName, kName, ownWidth, ownHeight, colorKey);
  setCursor(context, texture.get(), width, height);
}

void setCursor(engine::EngineContext& context, const TextureHandle* texture, float width, float height) {
  CursorState& cursor = context.get<CursorState>();
  cursor.enabled = texture != nullptr;
  cursor.texture = texture != nullptr ? texture->index : std::int16_t{0};
  if (texture == nullptr) return;
  cursor.width = width;
  cursor.height = height;
}

void drawCursor(engine::EngineContext& context) {
  const CursorState& cursor = context.get<CursorState>();
  const engine::PointerState& pointer = context.get<engine::PointerState>();
  if (!pointer.known) return;
  try {
    const std::int16_t index = cursor.texture != 0 ? cursor.texture : findTextureIndex(context, kName);
    if (index == 0) return;
    const auto x = static_cast<float>(pointer.x), y = static_cast<float>(pointer.y);
    activeScreen(context).drawTexture(context.get<TextureTable>().entries.at(index).texture,
                                      {x, y, x + cursor.width, y + cursor.height}, kWhite, false);
  } catch (const std::exception&) {
    return;  // the frame goes on without it
  }
}

}  // namespace ql::render::scene
