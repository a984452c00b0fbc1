#include "mesh/MeshFile.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace ql::mesh {
namespace {

constexpr std::string_view kDumpMagic = "QLMESH";
constexpr std::int32_t kWhite = -1;  // packed ARGB

/// Follows the chunks of a file in order.
class Reader {
 public:
  explicit Reader(std::span<const std::byte> bytes)
      : reader_(bytes),
        chunks_(readDirectory(bytes)),
        directory_(static_cast<std::size_t>(reader_.at<std::int32_t>(4, "position of the directory")) - 1) {}

  ChunkMesh mesh() {
    for (std::size_t i = 0; i < chunks_.size(); ++i) chunk(i);
    return std::move(out_);
  }

 private:
  void chunk(std::size_t index) {
    const ChunkEntry& entry = chunks_[index];
    const std::size_t at = static_cast<std::size_t>(entry.offset) - 1;
    switch (static_cast<ChunkType>(entry.type)) {
      case ChunkType::Mesh:
        inMesh_ = true;
        break;
      case ChunkType::EndMesh:
        inMesh_ = false;
        break;
      case ChunkType::MeshName:
        if (face_ == 0) {
          readName(entry);
        } else {
          readFace(at, &MeshGroup::blending);
        }
        break;
      case ChunkType::Features: {
        ChunkMesh::Place place = reader_.at<ChunkMesh::Place>(at, "placement");
        for (math::Vec3* v : {&place.position, &place.rotation, &place.scale}) repair(v->x), repair(v->y), repair(v->z);
        out_.place = place;
        break;
      }
      case ChunkType::VertexCount:
        out_.vertexCount = count(reader_.at<std::int32_t>(at, "vertex count"), at);
        break;
      case ChunkType::Vertices:
        readVertices(index, out_.normalVertices);
        break;
      case ChunkType::ColorVertices:
        readVertices(index, out_.colorVertices);
        break;
      case ChunkType::PrimitiveType:
        out_.primitiveType = reader_.at<std::int16_t>(at, "primitive type");
        break;
      case ChunkType::Billboard:
        out_.billboard = true;
        break;
      case ChunkType::Sprite:
        out_.sprite = true;
        break;
      case ChunkType::FaceCount: {
        const std::int32_t groups = count(reader_.at<std::int16_t>(at, "face count"), at);
        out_.groups.assign(static_cast<std::size_t>(groups) + 1, MeshGroup{});
        if (groups > 0)
          out_.groups.back().start = static_cast<std::int16_t>(std::min(out_.vertexCount.value_or(0), kMaxVertices));
        break;
      }
      case ChunkType::Face:
        ++face_;
        break;
      case ChunkType::SphereMapping:
        readFace(at, &MeshGroup::sphereMap);
        break;
      case ChunkType::FaceTexture:
        readFace(at, &MeshGroup::texture);
        break;
      case ChunkType::FaceMaterial:
        readFace(at, &MeshGroup::material);
        break;
      case ChunkType::FaceLightmap:
        readFace(at, &MeshGroup::lightmap);
        break;
      case ChunkType::FaceVertexStart:
        readFace(at, &MeshGroup::start);
        break;
      case ChunkType::FaceVertexNumber:
        readFace(at, &MeshGroup::count);
        break;
      default:
        break;
    }
  }

  std::int32_t count(std::int32_t value, std::size_t at) const {
    if (value < 0)
      throw host::FileFault(host::Fault::BadSize, "count", at, static_cast<std::uint32_t>(value), kMaxVertices);
    return value;
  }

  void readName(const ChunkEntry& entry) {
    const auto length = static_cast<std::uint64_t>(std::max(entry.length, 0));
    const std::span<const std::byte> text =
        reader_.range(static_cast<std::uint64_t>(entry.offset) - 1, length, "mesh name");
    out_.name.emplace(reinterpret_cast<const char*>(text.data()), text.size());
  }

  /// One number of the face that the chunk belongs to; a face beyond the count that the file gave is nobody's.
  void readFace(std::size_t at, std::int16_t MeshGroup::*field) {
    const auto value = reader_.at<std::int16_t>(at, "face");
    if (face_ > 0 && face_ < out_.groups.size()) {
      out_.groups[face_].*field = value;
    } else {
      ++out_.repairs;
    }
  }

  /// Bytes from a chunk's payload up to the next tag or the directory.
  std::size_t room(std::size_t index) const {
    constexpr std::size_t kTagSize = 2;
    const std::size_t at = static_cast<std::size_t>(chunks_[index].offset) - 1;
    if (index + 1 == chunks_.size()) return directory_ - at;
    const std::size_t next = static_cast<std::size_t>(chunks_[index + 1].offset) - 1;
    return next - at > kTagSize ? next - at - kTagSize : 0;
  }

  template <class Vertex>
  void readVertices(std::size_t index, std::vector<Vertex>& out) {
    const std::int32_t vertices = out_.vertexCount.value_or(0);
    if (vertices == 0 || !inMesh_) return;
    const std::size_t at = static_cast<std::size_t>(chunks_[index].offset) - 1;
    const std::size_t wanted = static_cast<std::size_t>(vertices) + 1;
    std::size_t there = std::min(wanted, room(index) / sizeof(Vertex));
    out_.shape = there <= 1;
    if (vertices > kMaxVertices) there = wanted;  // what is not there is not made up without bounds
    out = reader_.table<Vertex>(at, there, "vertices");
    for (Vertex& vertex : out) {
      repair(vertex.x), repair(vertex.y), repair(vertex.z);
      repair(vertex.tu), repair(vertex.tv), repair(vertex.tu1), repair(vertex.tv1);
      if constexpr (requires { vertex.nx; }) repair(vertex.nx), repair(vertex.ny), repair(vertex.nz);
    }
    out.resize(wanted);
  }

  void repair(float& value) {
    if (std::isfinite(value)) return;
    value = 0;
    ++out_.repairs;
  }

  host::ByteReader reader_;
  std::vector<ChunkEntry> chunks_;
  std::size_t directory_;  ///< where it starts, from 0
  ChunkMesh out_;
  bool inMesh_ = false;
  std::size_t face_ = 0;
};

/// The same places in the other layout: white where there is no colour, no direction where there is no normal.
std::vector<math::ColorVertex> colored(const std::vector<math::NormalVertex>& vertices) {
  std::vector<math::ColorVertex> out;
  out.reserve(vertices.size());
  for (const math::NormalVertex& v : vertices) out.push_back({v.x, v.y, v.z, kWhite, 0, v.tu, v.tv, v.tu1, v.tv1});
  return out;
}
std::vector<math::NormalVertex> uncolored(const std::vector<math::ColorVertex>& vertices) {
  std::vector<math::NormalVertex> out;
  out.reserve(vertices.size());
  for (const math::ColorVertex& v : vertices) out.push_back({v.x, v.y, v.z, 0, 0, 0, v.tu, v.tv, v.tu1, v.tv1});
  return out;
}

/// Both lists get as many elements as the file's vertices ask for.
void fillVertices(MeshRecord& record, ChunkMesh& file) {
  if (!file.vertexCount) return;
  record.vertexCount = *file.vertexCount;
  const bool normals = !file.normalVertices.empty(), colors = !file.colorVertices.empty();
  if (normals && !colors) file.colorVertices = colored(file.normalVertices);
  if (colors && !normals) file.normalVertices = uncolored(file.colorVertices);
  if (normals || colors) {
    record.normalVertices = std::move(file.normalVertices);
    record.colorVertices = std::move(file.colorVertices);
  }
  if (colors) record.vertexType = kColorVertices;
  const std::size_t size = static_cast<std::size_t>(record.vertexCount) + 1;
  record.normalVertices.resize(size);
  record.colorVertices.resize(size);
}

void fill(MeshRecord& record, ChunkMesh& file) {
  if (file.name) record.name = *file.name;
  if (file.place) {
    record.position = file.place->position;
    record.rotation = file.place->rotation;
    record.scale = file.place->scale;
    record.matrixDirty = true;
  }
  fillVertices(record, file);
  if (file.primitiveType) record.primitiveType = *file.primitiveType;
  if (file.billboard) record.billboard = true;
  if (file.sprite) record.sprite = true;
  if (file.groups.empty()) return;
  record.groups = std::move(file.groups);
  record.groupCount = static_cast<std::int16_t>(record.groups.size() - 1);
}

}  // namespace

bool isMeshDump(std::span<const std::byte> bytes) {
  return bytes.size() >= kDumpMagic.size() && std::memcmp(bytes.data(), kDumpMagic.data(), kDumpMagic.size()) == 0;
}

ChunkMesh parseChunkMesh(std::span<const std::byte> bytes) { return Reader(bytes).mesh(); }

void emptyImpossibleGroups(ChunkMesh& file) {
  const std::int32_t vertices = file.vertexCount.value_or(0);
  for (MeshGroup& group : file.groups) {
    const bool past = !file.shape && group.start + group.count > vertices;
    if (group.count < 0 || group.start < 0 || past) group.count = group.start = 0;
  }
}

void loadChunks(engine::EngineContext& context, MeshHandle& mesh, const std::string& fileName) {
  const std::vector<std::byte> bytes = host::readFile(fileName);
  if (!isChunkFile(bytes)) {
    context.log.write("This file isn't a good Quasarlens Format file.");
    return;
  }
  ChunkMesh file = parseChunkMesh(bytes);
  if (file.vertexCount.value_or(0) > kMaxVertices) throw engine::EngineError(engine::kOverflow, "Overflow");
  MeshRecord& record = meshRecord(context, mesh.slot);
  const bool grouped = !file.groups.empty();
  emptyImpossibleGroups(file);
  fill(record, file);
  if (grouped) mesh.currentGroup = record.groupCount;
  noteChange(context, mesh.slot);
  noteMoved(context, mesh.slot);
}

void loadDump(engine::EngineContext& context, const MeshHandle& mesh, const std::string& fileName) {
  const std::vector<std::byte> bytes = host::readFile(fileName);
  if (!isMeshDump(bytes)) return;
  MeshRecord& record = meshRecord(context, mesh.slot);
  const std::span<const std::byte> name =
      host::ByteReader(bytes).range(kDumpMagic.size(), record.name.size(), "mesh name");
  record.name.assign(reinterpret_cast<const char*>(name.data()), name.size());
}

}  // namespace ql::mesh
