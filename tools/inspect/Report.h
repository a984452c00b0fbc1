/// @file
/// The facts of one file as JSON.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include <nlohmann/json.hpp>

namespace ql::inspect {

/// Facts of a file by its contents: format, version, counts, bounds in file coordinates, names. Levels, archives and
/// meshes are recognised by their identifiers (DXE files and shader scripts by their name's ending), everything else is
/// taken for a picture.
/// @param validate also reads the file as the engine does; "valid" and "fault" or "repairs" say what it finds
/// @throws host::FileFault when even the header cannot be read
nlohmann::ordered_json report(const std::string& name, std::span<const std::byte> bytes, bool validate);

}  // namespace ql::inspect
