/// @file
/// DXE files: triangles as text, a number per line.
#pragma once

#include "mesh/MeshRecord.h"

#include <string>
#include <string_view>
#include <vector>

namespace ql::mesh {

/// The vertices of a DXE text: a line of any kind, a line with the number of triangles, then three vertices per
/// triangle of eight lines each: x, y, z, nx, ny, nz, tu, tv. Lines end at CR, LF or CRLF. A line that is no number
/// counts as 0.
/// @throws host::FileFault Truncated when the text ends early; engine::EngineError 6 for more vertices than a mesh
/// holds and for numbers beyond a single
std::vector<math::NormalVertex> parseDxe(std::string_view text);

/// Adds a file's triangles, white, to the mesh, whose first group becomes current.
/// @throws host::FileFault Missing, Truncated; engine::EngineError 6 beyond 32767 vertices; the mesh stays as it was
void loadDxe(engine::EngineContext& context, MeshHandle& mesh, const std::string& fileName);

}  // namespace ql::mesh
