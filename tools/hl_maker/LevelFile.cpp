#include "Build.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace ql::hl_maker {

Bytes encodeLevel(const LevelTables& tables, const std::map<std::string, std::pair<int, int>>& sizes) {
  constexpr std::int32_t kVersion = 30;
  constexpr std::size_t kAlignment = 4;
  using level::HlLump;
  level::HlHeader header;
  header.version = kVersion;
  Bytes file(sizeof header);
  const auto add = [&](HlLump lump, std::span<const std::byte> content) {
    header.lumps[static_cast<std::size_t>(lump)] = {static_cast<std::uint32_t>(file.size()),
                                                    static_cast<std::uint32_t>(content.size())};
    for (const std::byte b : content) file.push_back(std::to_integer<std::uint8_t>(b));
    file.resize((file.size() + kAlignment - 1) / kAlignment * kAlignment);
  };
  const auto table = [](const auto& records) { return std::as_bytes(std::span(records)); };
  add(HlLump::Planes, table(tables.planes));
  add(HlLump::Leaves, table(tables.leaves));
  add(HlLump::Vertices, table(tables.vertices));
  add(HlLump::Nodes, table(tables.nodes));
  add(HlLump::TextureInfo, table(tables.infos));
  add(HlLump::Faces, table(tables.faces));
  add(HlLump::ClipNodes, {});
  add(HlLump::MarkSurfaces, table(tables.marks));
  add(HlLump::SurfaceEdges, table(tables.surfaceEdges));
  add(HlLump::Edges, table(tables.edges));
  add(HlLump::Models, table(tables.models));
  add(HlLump::Lighting, table(tables.lighting));
  add(HlLump::Visibility, table(tables.visibility));
  add(HlLump::Entities, table(tables.entities));
  // Headers alone: the pixels are in the package.
  const std::size_t count = tables.textures.size();
  std::vector<std::uint32_t> offsets{static_cast<std::uint32_t>(count)};
  std::vector<level::MipTexture> textures;
  for (const std::string& name : tables.textures) {
    offsets.push_back(static_cast<std::uint32_t>(4 + 4 * count + textures.size() * sizeof(level::MipTexture)));
    level::MipTexture& texture = textures.emplace_back();
    std::copy_n(name.data(), std::min(name.size(), texture.name.size()), texture.name.data());
    texture.width = static_cast<std::uint32_t>(sizes.at(name).first);
    texture.height = static_cast<std::uint32_t>(sizes.at(name).second);
  }
  std::vector<std::byte> lump(table(offsets).begin(), table(offsets).end());
  lump.insert(lump.end(), table(textures).begin(), table(textures).end());
  add(HlLump::Textures, lump);
  std::memcpy(file.data(), &header, sizeof header);
  return file;
}

}  // namespace ql::hl_maker
