/// @file
/// The record inside a QLMESH file, which the engine itself only writes.
#pragma once

#include "mesh/MeshRecord.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace ql::inspect {

struct MeshDump {
  std::string name;
  std::int32_t vertexCount = 0;
  std::int16_t vertexType = 0, primitiveType = 0;
  std::vector<math::NormalVertex> vertices;  ///< with the spare one
  std::vector<mesh::MeshGroup> groups;       ///< with group 0
};

/// The name's length is nowhere in the file: it is the one behind which the record reads well.
/// @throws host::FileFault BadEncoding when there is none, Truncated
MeshDump readMeshDump(std::span<const std::byte> bytes);

}  // namespace ql::inspect
