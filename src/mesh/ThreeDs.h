/// @file
/// 3D Studio files as plain records: bytes in, the chunks in the order of the file out, no engine state.
///
/// A file is a tree of chunks, which is walked as a flat sequence of headers: containers are entered, what is known is
/// read, everything else is passed over by its length.
#pragma once

#include "math/Vector.h"
#include "platform/host/Fault.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ql::mesh {

/// The identifiers of chunks that mean something.
enum class ThreeDsId : std::uint16_t {
  ByteColor = 0x0011,
  Object = 0x4000,
  Mesh = 0x4100,
  Positions = 0x4110,
  Faces = 0x4120,
  FaceMaterial = 0x4130,
  TexCoords = 0x4140,
  Main = 0x4D4D,
  MaterialName = 0xA000,
  AmbientColor = 0xA010,
  DiffuseColor = 0xA020,
  SpecularColor = 0xA030,
  FirstMap = 0xA200,
  MapFile = 0xA300,
  SecondMap = 0xA33A,
  Material = 0xAFFF,
};

struct ThreeDsFace {
  std::array<std::uint16_t, 3> corners{};
  std::uint16_t flags = 0;
};
static_assert(sizeof(ThreeDsFace) == 8);

/// What a chunk holds, by its identifier.
using ThreeDsPayload = std::variant<std::monostate,
                                    std::string,              ///< of Object, FaceMaterial, MaterialName, MapFile
                                    std::vector<math::Vec3>,  ///< Positions
                                    std::vector<std::array<float, 2>>,  ///< TexCoords
                                    std::vector<ThreeDsFace>,           ///< Faces
                                    std::array<std::uint8_t, 3>         ///< ByteColor: red, green, blue
                                    >;

struct ThreeDsChunk {
  std::uint16_t id = 0;
  std::string_view label;  ///< what the log calls it; empty: as the chunk before it
  ThreeDsPayload payload;
  std::optional<host::FileFault> fault;  ///< its payload could not be read, and is missing
  bool is(ThreeDsId known) const { return id == static_cast<std::uint16_t>(known); }
};

struct ThreeDsFile {
  std::vector<ThreeDsChunk> chunks;
  std::optional<host::FileFault> fault;  ///< what ended the file early
};

/// Headers are read up to this many: far more than a model has.
inline constexpr std::size_t kMostThreeDsChunks = 100'000;

bool isThreeDs(std::span<const std::byte> bytes);
/// Never throws: what is damaged is told by the records.
ThreeDsFile parseThreeDs(std::span<const std::byte> bytes);

/// One object with everything that belongs to it, for whoever wants totals rather than a walk.
struct ThreeDsObject {
  std::string name, material;  ///< the last material that its faces name
  std::vector<math::Vec3> positions;
  std::size_t faces = 0, texCoords = 0;
  std::size_t badFaces = 0;  ///< of faces: those that name a vertex that is not there
};
struct ThreeDsMaterial {
  std::string name, texture;  ///< texture: the first map's file
};
struct ThreeDsSummary {
  std::vector<ThreeDsObject> objects;
  std::vector<ThreeDsMaterial> materials;
};
ThreeDsSummary summarize(const ThreeDsFile& file);

}  // namespace ql::mesh
