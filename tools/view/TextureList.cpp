#include "TextureList.h"

#include "archive/PakDirectory.h"
#include "level/HlBsp.h"
#include "level/Wad3.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"
#include "walk/Failure.h"

#include <algorithm>
#include <array>
#include <span>
#include <stdexcept>
#include <string_view>

#include <fmt/format.h>

namespace view {
namespace {

namespace host = ql::host;
namespace level = ql::level;
using walk::ExitCode;
using walk::Failure;

bool isPicture(std::string_view name) {
  constexpr std::array<std::string_view, 6> kEndings{".bmp", ".jpg", ".jpeg", ".tga", ".png", ".dds"};
  const std::string folded = host::foldCase(name);
  return std::ranges::any_of(kEndings, [&](std::string_view ending) { return folded.ends_with(ending); });
}

}  // namespace

TextureList::TextureList(Kind kind, const std::filesystem::path& file) {
  try {
    bytes_ = host::readFile(file.string());
  } catch (const host::FileFault& fault) {
    throw Failure(ExitCode::Unreadable, fmt::format("{}: {}", file.string(), fault.what()));
  }
  try {
    if (kind == Kind::Package)
      addPackage();
    else if (kind == Kind::Archive)
      addArchive();
    else
      addLevel();
  } catch (const host::FileFault& fault) {
    throw Failure(ExitCode::Malformed, fmt::format("{}: {}", file.string(), fault.what()));
  }
  if (entries_.empty()) throw Failure(ExitCode::Malformed, fmt::format("{} has no textures", file.string()));
}

ql::images::Image TextureList::decode(std::size_t index) const { return entries_[index].decode(); }

void TextureList::addPackage() {
  for (const level::WadEntry& entry : level::parseWad3(bytes_)) {
    const bool readable = entry.type == level::kWadTexture && entry.compression == 0;
    const std::span<const std::byte> bytes = std::span(bytes_).subspan(entry.offset, entry.size);
    entries_.push_back({entry.name, [=] {
                          if (!readable) throw std::runtime_error("no texture");
                          return level::decodeMipTexture(bytes);
                        }});
  }
}

void TextureList::addLevel() {
  if (std::string_view(reinterpret_cast<const char*>(bytes_.data()), std::min<std::size_t>(bytes_.size(), 4)) == "IBSP")
    throw Failure(ExitCode::Malformed, "levels of this kind carry no textures");
  const level::HlBsp bsp = level::parseHlBsp(bytes_);
  for (const level::HlTexture& texture : bsp.textures) {
    const bool stored = texture.offset != 0 && texture.header.levels[0] != 0;
    const std::span<const std::byte> bytes =
        stored ? level::textureBytes(bytes_, bsp, texture) : std::span<const std::byte>{};
    entries_.push_back({std::string(host::fieldText(texture.header.name)), [=] {
                          if (!stored) throw std::runtime_error("in a package");
                          return level::decodeMipTexture(bytes);
                        }});
  }
}

void TextureList::addArchive() {
  const auto size = static_cast<std::int64_t>(bytes_.size());
  for (const ql::archive::PakEntry& entry : ql::archive::parsePakDirectory(bytes_).entries) {
    if (!isPicture(entry.name) || entry.offset < 0 || entry.size < 0 || std::int64_t{entry.offset} + entry.size > size)
      continue;
    const std::span<const std::byte> bytes =
        std::span(bytes_).subspan(static_cast<std::size_t>(entry.offset), static_cast<std::size_t>(entry.size));
    entries_.push_back({entry.name, [bytes, name = entry.name] { return ql::images::decode(bytes, name); }});
  }
}

}  // namespace view
