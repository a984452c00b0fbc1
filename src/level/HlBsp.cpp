#include "level/HlBsp.h"

#include "platform/host/ByteReader.h"

#include <cstring>
#include <string_view>

namespace ql::level {
namespace {

/// Copies lumps, and keeps account of how much.
class LumpReader {
 public:
  LumpReader(std::span<const std::byte> bytes, const HlHeader& header)
      : reader_(bytes), header_(header), limit_(copyLimit(bytes.size())) {}

  std::span<const std::byte> view(HlLump which, std::string_view what) const {
    const Q3LumpEntry& entry = header_.lump(which);
    return entry.length == 0 ? std::span<const std::byte>() : reader_.range(entry.offset, entry.length, what);
  }
  template <class T>
  std::vector<T> records(HlLump which, std::string_view what) {
    const std::span<const std::byte> lump = view(which, what);
    copied_ += lump.size();
    if (copied_ > limit_) throw host::FileFault(host::Fault::TooLarge, std::string(what), 0, copied_, limit_);
    std::vector<T> out(lump.size() / sizeof(T));
    if (!out.empty()) std::memcpy(out.data(), lump.data(), out.size() * sizeof(T));
    return out;
  }

 private:
  host::ByteReader reader_;
  const HlHeader& header_;
  std::uint64_t copied_ = 0, limit_;
};

/// A texture whose header does not lie in the lump counts as absent.
std::vector<HlTexture> readTextures(std::span<const std::byte> lump, std::uint32_t lumpOffset) {
  if (lump.empty()) return {};
  const host::ByteReader reader(lump);
  const auto count = reader.at<std::uint32_t>(0, "texture count");
  std::vector<HlTexture> textures;
  for (const std::uint32_t offset : reader.table<std::uint32_t>(sizeof count, count, "texture offsets")) {
    HlTexture& texture = textures.emplace_back();
    if (offset > lump.size() || lump.size() - offset < sizeof texture.header) continue;
    texture.header = reader.at<MipTexture>(offset, "texture header");
    texture.offset = lumpOffset + offset;
  }
  return textures;
}

}  // namespace

HlHeader readHlHeader(std::span<const std::byte> bytes) {
  return host::ByteReader(bytes).at<HlHeader>(0, "level header");
}

void readHlLumps(std::span<const std::byte> bytes, HlBsp& level) {
  LumpReader lumps(bytes, level.header);
  level.vertices = lumps.records<std::array<float, 3>>(HlLump::Vertices, "vertex lump");
  level.planes = lumps.records<HlPlane>(HlLump::Planes, "plane lump");
  level.visibility = lumps.records<std::byte>(HlLump::Visibility, "visibility lump");
  level.faces = lumps.records<HlFace>(HlLump::Faces, "face lump");
  level.nodes = lumps.records<HlNode>(HlLump::Nodes, "node lump");
  level.edges = lumps.records<HlEdge>(HlLump::Edges, "edge lump");
  level.leaves = lumps.records<HlLeaf>(HlLump::Leaves, "leaf lump");
  level.textureInfos = lumps.records<HlTextureInfo>(HlLump::TextureInfo, "texture info lump");
  level.surfaceEdges = lumps.records<std::int32_t>(HlLump::SurfaceEdges, "surface edge lump");
  level.models = lumps.records<HlModel>(HlLump::Models, "model lump");
  level.markSurfaces = lumps.records<std::uint16_t>(HlLump::MarkSurfaces, "mark surface lump");
  level.lighting = lumps.view(HlLump::Lighting, "lighting lump");
  const std::vector<char> entities = lumps.records<char>(HlLump::Entities, "entity lump");
  level.entities.assign(entities.begin(), entities.end());
  level.textures =
      readTextures(lumps.view(HlLump::Textures, "texture lump"), level.header.lump(HlLump::Textures).offset);
  repairReferences(level);
}

HlBsp parseHlBsp(std::span<const std::byte> bytes) {
  HlBsp level;
  level.header = readHlHeader(bytes);
  readHlLumps(bytes, level);
  return level;
}

std::span<const std::byte> textureBytes(std::span<const std::byte> file, const HlBsp& level, const HlTexture& texture) {
  const Q3LumpEntry& lump = level.header.lump(HlLump::Textures);
  return file.subspan(texture.offset, std::size_t{lump.offset} + lump.length - texture.offset);
}

}  // namespace ql::level
