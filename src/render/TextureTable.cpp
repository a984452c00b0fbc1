#include "render/TextureTable.h"

#include "platform/host/Files.h"
#include "platform/utility/TextureFiles.h"

#include <optional>
#include <utility>

namespace ql::render {
namespace {

constexpr std::uint32_t kSystemFileNotFound = 0x80070002;
constexpr std::int32_t kOwnSize = -1;
constexpr std::uint32_t kKeyedAlphaReference = 8;

/// Runs one step of a load. An error is logged and the load goes on.
template <class Step>
void logged(engine::EngineContext& context, const std::string& fileName, Step&& step) {
  try {
    step();
  } catch (...) {
    const engine::EngineError error = engine::currentError();
    const auto code = static_cast<std::uint32_t>(error.number);
    if (code == device::kErrorNotFound || code == kSystemFileNotFound)
      context.log.write("TEXTURE FACTORY : ERROR " + fileName + " texture NOT FOUND ! ");
    else
      context.log.write("TEXTURE FACTORY : ERROR " + fileName + " " + error.what() + " " +
                        std::to_string(error.number));
  }
}

/// The first free slot, or the entry that already has this name or file, or a new slot.
std::int16_t slotForLoad(engine::EngineContext& context, const std::string& fileName, const std::string& name) {
  engine::SlotTable<TextureEntry>& entries = context.get<TextureTable>().entries;
  const std::int16_t slot = entries.find(
      [&](const TextureEntry& entry) { return !entry.used || entry.name == name || entry.fileName == fileName; });
  if (slot == 0) return entries.grow();
  if (entries.at(slot).used)  // it keeps its key unless the load brings another
    context.log.write("TEXTURE FACTORY : Texture already loaded... Reload however.");
  else
    entries.at(slot) = {};  // nothing of the texture that was here before: neither its key nor its file
  return slot;
}

/// Pixels that match the key vanish: they become transparent, and transparent pixels fail the alpha test.
void enableAlphaTest(device::Device& device) {
  device.setRenderState(device::RenderState::AlphaFunc, static_cast<std::uint32_t>(device::Compare::Greater));
  device.setRenderState(device::RenderState::AlphaTestEnable, 1);
  device.setRenderState(device::RenderState::AlphaRef, kKeyedAlphaReference);
}

/// The size as a loader takes it: the file's own where the caller asked for it, else what the device can use.
std::int32_t sizeToLoad(std::int32_t asked, std::uint32_t adjusted) {
  return asked == kOwnSize ? kOwnSize : static_cast<std::int32_t>(adjusted);
}

}  // namespace

std::shared_ptr<TextureHandle> loadTexture(engine::EngineContext& context, std::string& fileName,
                                           const std::string& name, std::int32_t& width, std::int32_t& height,
                                           std::int32_t& colorKey) {
  context.log.write("TEXTURE FACTORY : Load texture " + fileName + " / Name : " + name);
  auto handle = std::make_shared<TextureHandle>();
  const std::int16_t slot = slotForLoad(context, fileName, name);
  TextureEntry& entry = context.get<TextureTable>().entries.at(slot);
  entry.handle = handle;
  device::Format format = context.textureFormat;
  if (colorKey != 0) {
    format = context.alphaTextureFormat;
    entry.colorKey = static_cast<std::uint32_t>(colorKey);
    colorKey = 0;
    enableAlphaTest(context.requireDevice());
  }
  entry.fileName = fileName;

  utility::TextureRequirements needs{.width = static_cast<std::uint32_t>(width),
                                     .height = static_cast<std::uint32_t>(height),
                                     .levels = 0,
                                     .format = format};
  logged(context, fileName, [&] { needs = utility::checkTextureRequirements(context.requireDevice(), needs); });
  logged(context, fileName, [&] { context.pak.expand(fileName); });
  entry.texture.reset();
  logged(context, fileName, [&] {
    entry.texture = utility::createTextureFromFile(context.requireDevice(), fileName,
                                                   {.width = sizeToLoad(width, needs.width),
                                                    .height = sizeToLoad(height, needs.height),
                                                    .levels = 0,
                                                    .format = needs.format,
                                                    .pool = device::Pool::Managed,
                                                    .colorKey = entry.colorKey},
                                                   &context.get<TextureTable>().pictures);
    needs.width = entry.texture->description().width;
    needs.height = entry.texture->description().height;
  });
  context.pak.deleteExpanded(fileName);

  width = entry.width = static_cast<std::int32_t>(needs.width);
  height = entry.height = static_cast<std::int32_t>(needs.height);
  handle->index = slot;
  entry.used = true;
  entry.name = name.empty() ? "Texture" + std::to_string(slot) : name;
  return handle;
}

void deleteTexture(engine::EngineContext& context, const TextureHandle& handle) {
  TextureEntry& entry = context.get<TextureTable>().entries.at(handle.index);
  entry.used = false;
  entry.name.clear();
  entry.texture.reset();
  entry.handle.reset();
  entry.renderTarget.reset();
}

std::int16_t allocateTextureSlot(engine::EngineContext& context) {
  engine::SlotTable<TextureEntry>& entries = context.get<TextureTable>().entries;
  std::int16_t slot = entries.find([](const TextureEntry& entry) { return !entry.used; });
  if (slot == 0) slot = entries.grow();
  TextureEntry& entry = entries.at(slot);
  entry = {};
  entry.used = true;
  entry.name = "No need";
  entry.handle = std::make_shared<TextureHandle>(TextureHandle{slot});
  return slot;
}

std::int16_t findTextureIndex(engine::EngineContext& context, std::string_view name) {
  return context.get<TextureTable>().entries.find(
      [&](const TextureEntry& entry) { return entry.used && host::equalIgnoringCase(entry.name, name); });
}

std::shared_ptr<TextureHandle> findTextureByName(engine::EngineContext& context, std::string_view name) {
  const std::int16_t index = findTextureIndex(context, name);
  return index == 0 ? nullptr : context.get<TextureTable>().entries.at(index).handle;
}

void releaseTextures(engine::EngineContext& context) {
  TextureTable& table = context.get<TextureTable>();
  for (std::int32_t i = 0; i <= table.entries.count(); ++i) table.entries.at(i) = {};
  context.log.write("TEXTURE FACTORY : Desallocate Textures Memory");
  table = TextureTable();
}

}  // namespace ql::render
