#include "render/Sprites.h"

#include "platform/host/Files.h"
#include "render/TextureTable.h"

namespace ql::render {
namespace {

constexpr float kHalfTurn = 3.14f;  // radians
constexpr std::uint32_t kWhite = 0xFFFFFFFF;

engine::SlotTable<SpriteEntry>& table(engine::EngineContext& context) { return context.get<SpriteTable>().entries; }

std::int16_t textureFor(engine::EngineContext& context, const std::string& picture) {
  if (const std::int16_t known = findTextureIndex(context, picture); known != 0) return known;
  std::string file = picture;
  std::int32_t width = -1, height = -1, noKey = 0;
  return loadTexture(context, file, "", width, height, noKey)->index;
}

}  // namespace

std::int16_t loadSprite(engine::EngineContext& context, const std::string& picture, const std::string& name) {
  context.requireDevice();
  std::int16_t index = table(context).find([](const SpriteEntry& entry) { return !entry.used; });
  if (index == 0) index = table(context).grow();
  SpriteEntry& entry = table(context).at(index);
  if (!picture.empty()) entry.texture = textureFor(context, picture);
  entry.used = true;
  entry.scaling = {1, 1};
  entry.rotation = 0;
  entry.name = name.empty() ? "Sprite " + std::to_string(index) : name;
  return index;
}

void drawSprite(engine::EngineContext& context, std::int32_t index, std::int32_t x, std::int32_t y) {
  SpriteEntry& entry = table(context).at(index);
  const utility::Point2 place{static_cast<float>(x), static_cast<float>(y)};
  entry.sprite.draw(context.requireDevice(), context.get<TextureTable>().entries.at(entry.texture).texture, {},
                    entry.scaling, entry.rotationCenter, entry.rotation, place, kWhite);
}

void rotateSprite(engine::EngineContext& context, std::int32_t index, utility::Point2 center, float degrees) {
  SpriteEntry& entry = table(context).at(index);
  entry.rotationCenter = center;
  entry.rotation = degrees * kHalfTurn / 180;
}

void scaleSprite(engine::EngineContext& context, std::int32_t index, utility::Point2 factors) {
  table(context).at(index).scaling = factors;
}

std::int16_t findSpriteIndex(engine::EngineContext& context, std::string_view name) {
  return table(context).find(
      [&](const SpriteEntry& entry) { return entry.used && host::equalIgnoringCase(entry.name, name); });
}

}  // namespace ql::render
