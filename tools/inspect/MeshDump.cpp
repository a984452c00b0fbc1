#include "MeshDump.h"

#include "platform/host/ByteReader.h"

#include <optional>

namespace ql::inspect {
namespace {

constexpr std::size_t kMagicSize = 6;
/// From the position to the head of the first vertex list.
constexpr std::size_t kBeforeLists = 110;
constexpr std::size_t kLongestName = 4096;

struct List {
  std::int32_t count = 0, first = 0;
};

class Record {
 public:
  Record(std::span<const std::byte> bytes, std::size_t at) : reader_(bytes), at_(at + kBeforeLists) {}

  /// Nothing when this is no record.
  std::optional<MeshDump> read() {
    MeshDump out;
    const List normals = list();
    if (normals.count < 1 || normals.first != 0) return std::nullopt;
    out.vertices = elements<math::NormalVertex>(normals.count);
    const List colors = list();
    if (colors.count != normals.count || colors.first != 0) return std::nullopt;
    elements<math::ColorVertex>(colors.count);
    out.vertexCount = value<std::int32_t>();
    out.vertexType = value<std::int16_t>();
    const auto groupCount = value<std::int16_t>();
    const List groups = list();
    if (out.vertexCount < 0 || groups.count != groupCount + 1) return std::nullopt;
    for (std::int32_t g = 0; g < groups.count; ++g) out.groups.push_back(group());
    out.primitiveType = value<std::int16_t>();
    elements<float>(16);
    const auto children = value<std::int16_t>();
    const List slots = list();
    if (slots.count != children) return std::nullopt;
    elements<std::int16_t>(children);
    elements<std::byte>(10);  // parent, culling, whether it was drawn, life
    return out;
  }

 private:
  template <class T>
  T value() {
    const T out = reader_.at<T>(at_, "mesh record");
    at_ += sizeof(T);
    return out;
  }
  template <class T>
  std::vector<T> elements(std::int32_t count) {
    std::vector<T> out = reader_.table<T>(at_, static_cast<std::uint32_t>(count), "mesh record");
    at_ += out.size() * sizeof(T);
    return out;
  }
  List list() {
    if (value<std::int16_t>() != 1) return {};
    List out;
    out.count = value<std::int32_t>();
    out.first = value<std::int32_t>();
    return out;
  }
  mesh::MeshGroup group() {
    mesh::MeshGroup out;
    out.indices = elements<std::int16_t>(list().count);
    for (std::int16_t* field : {&out.count, &out.start, &out.texture, &out.material, &out.lightmap, &out.blending,
                                &out.sphereMap, &out.shader})
      *field = value<std::int16_t>();
    out.framePos = value<float>();
    return out;
  }

  host::ByteReader reader_;
  std::size_t at_;
};

}  // namespace

MeshDump readMeshDump(std::span<const std::byte> bytes) {
  for (std::size_t length = 0; length <= kLongestName && kMagicSize + length + kBeforeLists < bytes.size(); ++length) {
    const std::size_t at = kMagicSize + length;
    // Every record has a list of one dimension here; most lengths end with this.
    if (bytes[at + kBeforeLists] != std::byte{1}) continue;
    try {
      if (std::optional<MeshDump> dump = Record(bytes, at).read()) {
        dump->name.assign(reinterpret_cast<const char*>(bytes.data()) + kMagicSize, length);
        return *dump;
      }
    } catch (const host::FileFault&) {  // then the name is longer
    }
  }
  throw host::FileFault(host::Fault::BadEncoding, "mesh record", kMagicSize);
}

}  // namespace ql::inspect
