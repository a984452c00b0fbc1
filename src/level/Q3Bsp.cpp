#include "level/Q3Bsp.h"

#include "platform/host/ByteReader.h"

#include <cstring>
#include <string_view>

namespace ql::level {
namespace {

constexpr std::string_view kIdentifier = "IBSP";

/// Copies lumps, and keeps account of how much.
class LumpReader {
 public:
  LumpReader(std::span<const std::byte> bytes, const Q3Header& header)
      : reader_(bytes), header_(header), limit_(copyLimit(bytes.size())) {}

  /// Bytes of a lump, or nothing for an empty one wherever it claims to stand.
  std::span<const std::byte> view(Lump which, std::string_view what) const {
    const Q3LumpEntry& entry = header_.lump(which);
    return entry.length == 0 ? std::span<const std::byte>() : reader_.range(entry.offset, entry.length, what);
  }
  /// As many whole records as the lump holds.
  template <class T>
  std::vector<T> records(Lump which, std::string_view what) {
    const std::span<const std::byte> lump = view(which, what);
    charge(lump.size(), what);
    std::vector<T> out(lump.size() / sizeof(T));
    if (!out.empty()) std::memcpy(out.data(), lump.data(), out.size() * sizeof(T));
    return out;
  }
  void charge(std::size_t length, std::string_view what) {
    copied_ += length;
    if (copied_ > limit_) throw host::FileFault(host::Fault::TooLarge, std::string(what), 0, copied_, limit_);
  }

 private:
  host::ByteReader reader_;
  const Q3Header& header_;
  std::uint64_t copied_ = 0, limit_;
};

/// Rows that do not fit their lump, or that are too short for their clusters, count as no visibility at all.
Q3Visibility readVisibility(LumpReader& lumps) {
  const std::span<const std::byte> lump = lumps.view(Lump::Visibility, "visibility lump");
  std::array<std::int32_t, 2> counts{};
  if (lump.size() < sizeof counts) return {};
  std::memcpy(counts.data(), lump.data(), sizeof counts);
  const std::int64_t clusters = counts[0], stride = counts[1];
  const std::span<const std::byte> rows = lump.subspan(sizeof counts);
  if (clusters <= 0 || stride <= 0 || stride * 8 < clusters) return {};
  if (clusters > static_cast<std::int64_t>(rows.size()) / stride) return {};
  const std::size_t length = static_cast<std::size_t>(clusters * stride);
  lumps.charge(length, "visibility lump");
  return {counts[0], counts[1],
          std::vector<std::byte>(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(length))};
}

}  // namespace

bool isQ3Bsp(std::span<const std::byte> bytes) {
  return bytes.size() >= kIdentifier.size() && std::memcmp(bytes.data(), kIdentifier.data(), kIdentifier.size()) == 0;
}

Q3Header readQ3Header(std::span<const std::byte> bytes) {
  return host::ByteReader(bytes).at<Q3Header>(0, "level header");
}

void readQ3Lumps(std::span<const std::byte> bytes, Q3Bsp& level) {
  LumpReader lumps(bytes, level.header);
  level.vertexLimit = vertexLimit(bytes.size());
  level.textures = lumps.records<Q3Texture>(Lump::Textures, "texture lump");
  const auto entities = lumps.view(Lump::Entities, "entity lump");
  lumps.charge(entities.size(), "entity lump");
  level.entities.assign(reinterpret_cast<const char*>(entities.data()), entities.size());
  level.vertices = lumps.records<Q3Vertex>(Lump::Vertices, "vertex lump");
  level.faces = lumps.records<Q3Face>(Lump::Faces, "face lump");
  level.meshVertices = lumps.records<std::int32_t>(Lump::MeshVertices, "mesh vertex lump");
  level.leafFaces = lumps.records<std::int32_t>(Lump::LeafFaces, "leaf face lump");
  for (Q3Vertex& vertex : level.vertices) vertex.position[0] = -vertex.position[0];
  level.visibility = readVisibility(lumps);
  level.nodes = lumps.records<Q3Node>(Lump::Nodes, "node lump");
  level.leaves = lumps.records<Q3Leaf>(Lump::Leaves, "leaf lump");
  level.models = lumps.records<Q3Model>(Lump::Models, "model lump");
  level.lightmaps = lumps.view(Lump::Lightmaps, "lightmap lump");
  level.planes = lumps.records<Q3Plane>(Lump::Planes, "plane lump");
  repairReferences(level);
}

Q3Bsp parseQ3Bsp(std::span<const std::byte> bytes) {
  Q3Bsp level;
  level.header = readQ3Header(bytes);
  if (!isQ3Bsp(bytes))
    throw host::FileFault(host::Fault::BadIdentifier, "level identifier", 0,
                          host::ByteReader(bytes).at<std::uint32_t>(0, ""), 0x50534249);
  readQ3Lumps(bytes, level);
  return level;
}

}  // namespace ql::level
