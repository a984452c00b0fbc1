#include "mesh/ChunkFile.h"

#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <cstring>

namespace ql::mesh {
namespace {

constexpr std::string_view kMagic = "QLOF";
constexpr std::size_t kDirectoryField = 4;  // where the directory's position stands, from 0
constexpr std::size_t kEntrySize = 10;

struct NamedType {
  std::int32_t type;
  std::string_view name;
};
constexpr NamedType kNames[] = {
    {1, "CHUNK_VERSION"},
    {2, "CHUNK_MESH"},
    {3, "CHUNK_FEATURES"},
    {4, "CHUNK_FACE"},
    {5, "CHUNK_NBFACE"},
    {6, "CHUNK_VERTEX"},
    {7, "CHUNK_NBVERTEX"},
    {8, "CHUNK_SPRITE"},
    {9, "CHUNK_TEXTURE"},
    {10, "CHUNK_NBTEXTURE"},
    {11, "CHUNK_LVERTEX"},
    {12, "CHUNK_PRIMITIVETYPE"},
    {13, "CHUNK_BILLBOARD"},
    {14, "CHUNK_SPHEREMAPPING"},
    {15, "CHUNK_ENDFACE"},
    {16, "CHUNK_ENDMESH"},
    {17, "CHUNK_FACETEXTURE"},
    {18, "CHUNK_FACEMATERIAL"},
    {19, "CHUNK_FACELIGHTMAP"},
    {20, "CHUNK_FACEVERTEXSTART"},
    {21, "CHUNK_FACEVERTEXNUMBER"},
    {22, "CHUNK_MATERIAL"},
    {23, "CHUNK_NBMATERIAL"},
    {25, "CHUNK_MESHNAME"},
    {200, "CHUNK_PARTICLESYSTEM"},
    {201, "CHUNK_STANDARDFORMAT"},
    {400, "CHUNK_TRACKSYSTEM"},
    {401, "CHUNK_TRACKNUMNODES"},
    {500, "CHUNK_LANDSCAPE"},
    {501, "CHUNK_LANDFEATURES1"},
    {510, "CHUNK_TERRAIN"},
    {511, "CHUNK_TERRAINFEATURES"},
    {512, "CHUNK_LANDSCAPE_WATER"},
    {513, "CHUNK_STANDARDWATERFORMAT"},
    {515, "CHUNK_TERRAINHEIGHTMAP"},
};

/// a - b as 32-bit positions wrap: the first entry's length may be anything.
std::int32_t distance(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

}  // namespace

std::string_view chunkName(std::int32_t type) {
  for (const NamedType& named : kNames)
    if (named.type == type) return named.name;
  return {};
}

ChunkWriter::ChunkWriter(LastChunk& last) : last_(last), directory_(1) { bytes_.text(kMagic).value(std::int32_t{0}); }

RecordBytes& ChunkWriter::begin(ChunkType type) {
  bytes_.value(type);
  constexpr std::int32_t kTagSize = 2;
  directory_.back().length = distance(distance(position(), last_.start), kTagSize);
  directory_.push_back({static_cast<std::int16_t>(type), 0, position()});
  last_.start = position();
  return bytes_;
}

std::vector<std::byte> ChunkWriter::finish() {
  bytes_.replace(kDirectoryField, position());
  for (const ChunkEntry& entry : directory_) bytes_.value(entry.type).value(entry.length).value(entry.offset);
  return bytes_.take();
}

bool isChunkFile(std::span<const std::byte> bytes) {
  return bytes.size() >= kMagic.size() && std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) == 0;
}

std::vector<ChunkEntry> readDirectory(std::span<const std::byte> bytes) {
  const host::ByteReader reader(bytes);
  if (!isChunkFile(bytes))
    throw host::FileFault(host::Fault::BadIdentifier, "identifier", 0, reader.at<std::uint32_t>(0, "identifier"),
                          0x464F4C51);
  const auto position = reader.at<std::int32_t>(kDirectoryField, "position of the directory");
  if (position < 1)
    throw host::FileFault(host::Fault::BadReference, "position of the directory", kDirectoryField,
                          static_cast<std::uint32_t>(position), bytes.size());
  const auto start = static_cast<std::size_t>(position) - 1;
  reader.range(start, kEntrySize, "directory");
  std::vector<ChunkEntry> chunks;
  std::int32_t before = 0;
  for (std::size_t at = start + kEntrySize; at + kEntrySize <= bytes.size(); at += kEntrySize) {
    const ChunkEntry entry{reader.at<std::int16_t>(at, "directory"), reader.at<std::int32_t>(at + 2, "directory"),
                           reader.at<std::int32_t>(at + 6, "directory")};
    if (entry.offset <= before || entry.offset > position) break;
    before = entry.offset;
    chunks.push_back(entry);
  }
  return chunks;
}

void overwriteFile(std::string_view name, std::vector<std::byte> bytes) {
  if (const auto found = host::findFile(name)) {
    const std::vector<std::byte> old = host::readFile(found->string());
    if (old.size() > bytes.size())
      bytes.insert(bytes.end(), old.begin() + static_cast<std::ptrdiff_t>(bytes.size()), old.end());
  }
  host::writeFile(name, bytes);
}

}  // namespace ql::mesh
