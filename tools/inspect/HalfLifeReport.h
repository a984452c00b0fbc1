/// @file
/// The facts of Half-Life levels and texture packages.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

namespace ql::inspect {

/// Whether a file is a Half-Life level (its version is 30) or a texture package (WAD3).
bool isHalfLife(std::span<const std::byte> bytes);
/// Of a level: counts, textures with sizes and whether the level holds their pixels, models, entities, bounds in file
/// coordinates; of a package: its textures. @throws host::FileFault when it cannot be read and validate is false
nlohmann::ordered_json halfLifeReport(std::span<const std::byte> bytes, bool validate);

}  // namespace ql::inspect
