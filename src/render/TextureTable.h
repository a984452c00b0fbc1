/// @file
/// The engine-wide table of textures.
#pragma once

#include "engine/EngineContext.h"
#include "engine/SlotTable.h"
#include "platform/utility/PictureCache.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ql::render {

/// What a host's texture handle refers to: the index of an entry, 0 until a load sets it.
struct TextureHandle {
  std::int16_t index = 0;
};

struct TextureEntry {
  std::shared_ptr<device::Texture> texture;  ///< absent when loading failed or the entry is free
  std::shared_ptr<TextureHandle> handle;
  std::int32_t height = 0, width = 0;  ///< as adjusted by the device's requirements, pixels
  std::string name;                    ///< compared without regard to case
  std::string fileName;
  std::uint32_t colorKey = 0;  ///< packed ARGB; 0: none
  bool used = false;
  std::shared_ptr<void> renderTarget;  ///< of a dynamic texture
};

struct TextureTable {
  engine::SlotTable<TextureEntry> entries;
  utility::PictureCache pictures;  ///< decoded files, for a file that is loaded again
};

/// Loads a picture into the table under a name. Failures are logged and leave an entry without a device texture.
/// @param width,height -1: the file's own size; overwritten by the size that the device uses
/// @param colorKey set to 0 once it is stored
std::shared_ptr<TextureHandle> loadTexture(engine::EngineContext& context, std::string& fileName,
                                           const std::string& name, std::int32_t& width, std::int32_t& height,
                                           std::int32_t& colorKey);
/// Frees the handle's entry. @throws EngineError 9 for an index outside the table
void deleteTexture(engine::EngineContext& context, const TextureHandle& handle);
/// Reserves an entry, named "No need", for a texture that the caller makes; returns its index.
std::int16_t allocateTextureSlot(engine::EngineContext& context);
/// Index of the first entry of that name (any letter case), 0 when none.
std::int16_t findTextureIndex(engine::EngineContext& context, std::string_view name);
/// Its handle; null when none.
std::shared_ptr<TextureHandle> findTextureByName(engine::EngineContext& context, std::string_view name);
/// Finds a model's texture file: as named, below base, with JPG for TGA, then by its bare name.
std::string resolveTextureFile(const std::string& path, const std::string& base);
/// Releases every entry's objects and empties the table (logged).
void releaseTextures(engine::EngineContext& context);

}  // namespace ql::render
