#include "mesh/ThreeDs.h"

#include "platform/host/ByteReader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace ql::mesh {
namespace {

/// What a chunk's header is followed by.
enum class Content : std::uint8_t {
  Container,  ///< chunks
  Number32,
  Number16,
  Axes,  ///< four vectors
  Name,
  NameAndFaces,  ///< a name, a count, numbers of faces
  Positions,
  TexCoords,
  Faces,
  Color,
  Skipped,
};

struct Kind {
  std::uint16_t id;
  std::string_view label;
  Content content;
};
constexpr Kind kKinds[] = {
    {0x4D4D, "", Content::Container},
    {0x0002, "3DS Version", Content::Number32},
    {0x3D3D, "3D Editor Chunk", Content::Container},
    {0x3D3E, "Mesh Version", Content::Number32},
    {0x0100, "One Unit", Content::Number32},
    {0x4000, "Object Block", Content::Name},
    {0x4100, "Triangular Mesh", Content::Container},
    {0x4110, "Vertices", Content::Positions},
    {0x4140, "Face Texture Coordinates", Content::TexCoords},
    {0x4160, "Local Coordinate System", Content::Axes},
    {0x4120, "Load3ds: Mesh Add", Content::Faces},
    {0x4130, "Face Material", Content::NameAndFaces},
    {0xAFFF, "Material Editor Chunk", Content::Container},
    {0xA000, "Material Name", Content::Name},
    {0xA010, "Ambient Color", Content::Container},
    {0xA020, "Diffuse Color", Content::Container},
    {0xA030, "Specular Color", Content::Container},
    {0x0011, "Byte Color Chunk", Content::Color},
    {0x0010, "Single Color Chunk", Content::Skipped},
    {0x0030, "Percent Chunk INT", Content::Number16},
    {0x0031, "Percent Chunk Float", Content::Skipped},
    {0xA200, "", Content::Container},
    {0xA33A, "", Content::Container},
    {0xA300, "Map File Name", Content::Name},
    {0xA354, "V scaling for Map", Content::Skipped},
    {0xA356, "U scaling for Map", Content::Skipped},
    {0xA358, "U offset for Map", Content::Skipped},
    {0xA35A, "V offset for Map", Content::Skipped},
    {0xA35C, "Rotation Angle for Map", Content::Skipped},
};
constexpr Kind kUnknown{0, "Unknown Chunk", Content::Skipped};

const Kind& kindOf(std::uint16_t id) {
  for (const Kind& kind : kKinds)
    if (kind.id == id) return kind;
  return kUnknown;
}

constexpr std::uint64_t kHeaderSize = 6;
/// Names end at their zero; nobody's are longer than this.
constexpr std::size_t kLongestName = 4096;

void makeFinite(float& value) {
  if (!std::isfinite(value)) value = 0;
}

class Walk {
 public:
  explicit Walk(std::span<const std::byte> bytes) : reader_(bytes) {}

  ThreeDsFile file() {
    while (at_ < reader_.size()) {
      if (file_.chunks.size() == kMostThreeDsChunks) {
        file_.fault.emplace(host::Fault::TooLarge, "number of chunks", at_, kMostThreeDsChunks + 1, kMostThreeDsChunks);
        break;
      }
      try {
        if (!chunk()) break;
      } catch (const host::FileFault& fault) {
        file_.fault = fault;
        break;
      }
    }
    return std::move(file_);
  }

 private:
  /// Reads one header and what follows it. @return whether the walk can go on
  bool chunk() {
    const std::uint64_t start = at_;
    const auto id = take<std::uint16_t>("chunk header");
    const auto length = take<std::uint32_t>("chunk header");
    const Kind& kind = kindOf(id);
    ThreeDsChunk& out = file_.chunks.emplace_back();
    out.id = id;
    out.label = kind.label;
    try {
      if (kind.content == Content::Skipped) {
        skip(start, length);
      } else {
        out.payload = read(kind.content);
      }
    } catch (const host::FileFault& fault) {
      out.fault = fault;
      return false;
    }
    return true;
  }

  void skip(std::uint64_t start, std::uint32_t length) {
    if (length < kHeaderSize) throw host::FileFault(host::Fault::BadSize, "chunk", start, length, kHeaderSize);
    reader_.range(start, length, "chunk");
    at_ = start + length;
  }

  ThreeDsPayload read(Content content) {
    switch (content) {
      case Content::Number32:
        take<std::uint32_t>("number");
        break;
      case Content::Number16:
        take<std::uint16_t>("number");
        break;
      case Content::Axes:
        take<std::array<math::Vec3, 4>>("local axes");
        break;
      case Content::Name:
        return name();
      case Content::NameAndFaces: {
        std::string material = name();
        table<std::uint16_t>("face numbers");
        return material;
      }
      case Content::Positions: {
        std::vector<math::Vec3> positions = table<math::Vec3>("vertices");
        for (math::Vec3& p : positions) makeFinite(p.x), makeFinite(p.y), makeFinite(p.z);
        return positions;
      }
      case Content::TexCoords: {
        auto coords = table<std::array<float, 2>>("texture coordinates");
        for (std::array<float, 2>& uv : coords) makeFinite(uv[0]), makeFinite(uv[1]);
        return coords;
      }
      case Content::Faces:
        return table<ThreeDsFace>("faces");
      case Content::Color:
        return take<std::array<std::uint8_t, 3>>("colour");
      case Content::Container:
      case Content::Skipped:
        break;
    }
    return {};
  }

  template <class T>
  T take(std::string_view what) {
    const T value = reader_.at<T>(at_, what);
    at_ += sizeof(T);
    return value;
  }
  /// A 16-bit count and as many records.
  template <class T>
  std::vector<T> table(std::string_view what) {
    const auto count = take<std::uint16_t>(what);
    std::vector<T> out = reader_.table<T>(at_, count, what);
    at_ += std::uint64_t{count} * sizeof(T);
    return out;
  }
  std::string name() {
    const std::span<const std::byte> rest = reader_.bytes().subspan(at_);
    const void* end = rest.empty() ? nullptr : std::memchr(rest.data(), 0, rest.size());
    if (end == nullptr) throw host::FileFault(host::Fault::Truncated, "name", at_, rest.size() + 1, reader_.size());
    const auto length = static_cast<std::size_t>(static_cast<const std::byte*>(end) - rest.data());
    if (length > kLongestName) throw host::FileFault(host::Fault::BadSize, "name", at_, length, kLongestName);
    at_ += length + 1;
    return {reinterpret_cast<const char*>(rest.data()), length};
  }

  host::ByteReader reader_;
  std::uint64_t at_ = 0;
  ThreeDsFile file_;
};

}  // namespace

bool isThreeDs(std::span<const std::byte> bytes) {
  return bytes.size() >= kHeaderSize && bytes[0] == std::byte{0x4D} && bytes[1] == std::byte{0x4D};
}

ThreeDsFile parseThreeDs(std::span<const std::byte> bytes) { return Walk(bytes).file(); }

ThreeDsSummary summarize(const ThreeDsFile& file) {
  ThreeDsSummary out;
  std::string name;
  bool firstMap = false;
  for (const ThreeDsChunk& chunk : file.chunks) {
    const auto* text = std::get_if<std::string>(&chunk.payload);
    if (chunk.is(ThreeDsId::Object) && text) name = *text;
    if (chunk.is(ThreeDsId::Mesh)) out.objects.push_back({name, {}, {}, 0, 0, 0});
    if (chunk.is(ThreeDsId::Material)) out.materials.emplace_back();
    if (chunk.is(ThreeDsId::FirstMap)) firstMap = true;
    if (chunk.is(ThreeDsId::SecondMap)) firstMap = false;
    if (!out.materials.empty() && text) {
      if (chunk.is(ThreeDsId::MaterialName)) out.materials.back().name = *text;
      if (chunk.is(ThreeDsId::MapFile) && firstMap) out.materials.back().texture = *text;
    }
    if (out.objects.empty()) continue;
    ThreeDsObject& object = out.objects.back();
    if (chunk.is(ThreeDsId::FaceMaterial) && text) object.material = *text;
    if (const auto* positions = std::get_if<std::vector<math::Vec3>>(&chunk.payload)) object.positions = *positions;
    if (const auto* coords = std::get_if<std::vector<std::array<float, 2>>>(&chunk.payload))
      object.texCoords = coords->size();
    if (const auto* faces = std::get_if<std::vector<ThreeDsFace>>(&chunk.payload)) {
      object.faces += faces->size();
      object.badFaces += static_cast<std::size_t>(std::count_if(faces->begin(), faces->end(), [&](const auto& face) {
        return *std::max_element(face.corners.begin(), face.corners.end()) >= object.positions.size();
      }));
    }
  }
  return out;
}

}  // namespace ql::mesh
