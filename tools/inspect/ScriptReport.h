/// @file
/// The facts of shader scripts.
#pragma once

#include <string_view>

#include <nlohmann/json.hpp>

namespace ql::inspect {

/// Number of shaders and stages, and each shader with its stages' maps. @param validate says that it would load: every
/// text does
nlohmann::ordered_json scriptReport(std::string_view script, bool validate);

}  // namespace ql::inspect
