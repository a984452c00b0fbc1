/// @file
/// The facts of mesh files.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

namespace ql::inspect {

/// Whether a file is a mesh: QLOF, QLMESH, 3D Studio, X by its contents, DXE by its name.
bool isMesh(const std::string& name, std::span<const std::byte> bytes);
/// Totals ("vertices", "triangles", "bounds" in file coordinates), then each object with its name, counts, material and
/// texture. @throws host::FileFault when it cannot be read and validate is false
nlohmann::ordered_json meshReport(std::span<const std::byte> bytes, bool validate);

}  // namespace ql::inspect
