#include "level/HlTextures.h"

#include "level/Wad3.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"
#include "platform/utility/Pixels.h"
#include "platform/utility/TextureFiles.h"
#include "render/TextureTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

namespace ql::level {
namespace {

constexpr std::string_view kTrigger = "aaatrigger";
/// Textures of faces that stand for something else than a picture; nobody misses them.
constexpr std::array<std::string_view, 7> kTools{"sky", "clip", "null", "origin", "hint", "skip", kTrigger};

struct Package {
  std::vector<std::byte> bytes;
  std::vector<WadEntry> entries;
};

/// A name that is one component of a path.
std::string fileNameOf(std::string_view name) {
  std::string out(name);
  std::replace_if(
      out.begin(), out.end(), [](char c) { return c == '/' || c == '\\' || c == ':'; }, '_');
  return out;
}

images::Image replacement() {
  constexpr std::uint32_t kSide = 64, kSquare = 16, kLight = 0xFFC8C8C8, kDark = 0xFF9068A8;
  images::Image image{kSide, kSide, {}, false};
  for (std::uint32_t y = 0; y < kSide; ++y)
    for (std::uint32_t x = 0; x < kSide; ++x)
      image.pixels.push_back((x / kSquare + y / kSquare) % 2 == 0 ? kLight : kDark);
  return image;
}

class Loader {
 public:
  Loader(LevelState& level, const HlBsp& bsp, std::span<const std::byte> file, bool numbered)
      : level_(level), bsp_(bsp), file_(file), numbered_(numbered) {
    for (const std::string& name : level.packages) open(name);
  }

  void run() {
    level_.data.textures.reserve(bsp_.textures.size());
    for (std::size_t i = 0; i < bsp_.textures.size(); ++i) {
      LevelTexture& texture = level_.data.textures.emplace_back();
      texture.name = host::fieldText(bsp_.textures[i].header.name);
      load(i, texture);
      if (host::foldCase(texture.name).find(kTrigger) != std::string::npos)
        level_.data.triggerTexture = static_cast<std::int32_t>(i);
    }
    if (!missing_.empty()) level_.context.log.write("BSP TREE : textures that are nowhere, replaced:" + missing_);
  }

 private:
  /// A package that cannot be read holds nothing.
  void open(const std::string& name) {
    Package& package = packages_.emplace_back();
    try {
      std::string file = name;
      level_.context.pak.expand(file);
      package.bytes = host::readFile(file);
      level_.context.pak.deleteExpanded(file);
      package.entries = parseWad3(package.bytes);
    } catch (const host::FileFault& fault) {
      level_.context.log.write(" Error in LoadTextures ");
      level_.context.log.write("BSP TREE : package " + name + " : " + fault.what());
    }
  }

  void load(std::size_t index, LevelTexture& texture) {
    const bool named = !texture.name.empty();
    if (named && !packages_.empty() && fromPackage(packages_.back(), texture)) return copyPicture(index, texture);
    level_.context.log.write(texture.name + " no found in WAD3 Pack");
    for (std::size_t p = packages_.size(); named && p-- > 1;)
      if (fromPackage(packages_[p - 1], texture)) return copyPicture(index, texture);
    const HlTexture& own = bsp_.textures[index];
    if (own.offset != 0 && own.header.levels[0] != 0 && decode(textureBytes(file_, bsp_, own), texture))
      return copyPicture(index, texture);
    fromBitmap(index, texture);
  }

  bool fromPackage(const Package& package, LevelTexture& texture) {
    const WadEntry* entry = findWadEntry(package.entries, texture.name);
    return entry != nullptr && decode(std::span(package.bytes).subspan(entry->offset, entry->size), texture);
  }

  bool decode(std::span<const std::byte> bytes, LevelTexture& texture) {
    std::optional<images::Image> image;
    try {
      image = decodeMipTexture(bytes);
    } catch (const host::FileFault& fault) {
      level_.context.log.write("BSP TREE : texture " + texture.name + " : " + fault.what());
      return false;
    }
    texture.texture = create(std::move(*image));
    return true;
  }

  std::shared_ptr<device::Texture> create(images::Image image) {
    device::Device& device = level_.context.requireDevice();
    const bool keyed = image.hasAlpha;
    const utility::TextureRequirements size =
        utility::checkTextureRequirements(device, {image.width, image.height, level_.createMipmaps ? 0U : 1U,
                                                   keyed ? device::Format::A8R8G8B8 : level_.context.textureFormat});
    auto texture = device.createTexture(size.width, size.height, size.levels, 0, size.format, device::Pool::Managed);
    const std::vector<images::Image> levels =
        utility::mipChain(utility::scaled(std::move(image), size.width, size.height, keyed), size.levels, keyed);
    for (std::uint32_t i = 0; i < levels.size(); ++i)
      texture->writeLevel(i, utility::pixelsFromImage(levels[i], size.format));
    return texture;
  }

  std::string bitmapOf(std::size_t index, const LevelTexture& texture) const {
    if (numbered_) return std::to_string(index) + ".bmp";
    std::string name = texture.name;
    name.erase(0, std::min(name.find_first_not_of(' '), name.size()));
    name.erase(name.find_last_not_of(' ') + 1);
    return fileNameOf(name) + ".bmp";
  }

  void fromBitmap(std::size_t index, LevelTexture& texture) {
    std::string bitmap = bitmapOf(index, texture);
    std::int32_t width = -1, height = -1, colorKey = 0;
    constexpr auto kKeyBlue = static_cast<std::int32_t>(0xFF0000FF);
    if (texture.name.starts_with(kCutOutMark)) colorKey = kKeyBlue;
    const auto handle = render::loadTexture(level_.context, bitmap, "", width, height, colorKey);
    texture.texture = level_.context.get<render::TextureTable>().entries.at(handle->index).texture;
    if (texture.texture) return copyPicture(index, texture);
    const std::string folded = host::foldCase(texture.name);
    if (std::find(kTools.begin(), kTools.end(), folded) == kTools.end()) missing_ += ' ' + texture.name;
    if (!replacement_) replacement_ = create(replacement());
    texture.texture = replacement_;
  }

  /// Copies the texture's bitmap into the folder for copies; one that does not exist is made from the texture.
  void copyPicture(std::size_t index, const LevelTexture& texture) {
    const std::string& folder = level_.copyTexturesFolder;
    if (folder.empty()) return;
    const std::string name =
        folder + '/' + (level_.copyTexturesNumbered ? std::to_string(index) : fileNameOf(texture.name)) + ".bmp";
    try {
      const std::string bitmap = bitmapOf(index, texture);
      if (host::fileExists(bitmap))
        host::writeFile(name, host::readFile(bitmap));
      else
        utility::saveTextureToFile(name, *texture.texture);
    } catch (...) {
      level_.context.log.write("BSP TREE : " + name + " : " + engine::currentError().what());
    }
  }

  LevelState& level_;
  const HlBsp& bsp_;
  std::span<const std::byte> file_;
  bool numbered_;
  std::vector<Package> packages_;  ///< as they were opened
  std::shared_ptr<device::Texture> replacement_;
  std::string missing_;
};

}  // namespace

void loadHlTextures(LevelState& level, const HlBsp& bsp, std::span<const std::byte> file, bool numbered) {
  try {
    Loader(level, bsp, file, numbered).run();
  } catch (const device::DeviceError&) {
    level.context.log.write(" Error in LoadTextures ");
    throw;
  }
}

}  // namespace ql::level
