/// @file
/// Noting whether a file reads well.
#pragma once

#include "platform/host/Fault.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace ql::inspect {

/// Runs a reader; its fault, if any, is noted, or goes on to the caller when nobody asked. @param validate whether
/// "valid" and "fault" shall say what was found
template <class Read>
void validated(nlohmann::ordered_json& json, bool validate, Read&& read) {
  if (!validate) return read();
  try {
    read();
    json["valid"] = true;
  } catch (const host::FileFault& fault) {
    json["valid"] = false;
    json["fault"] = fault.what();
  }
}

}  // namespace ql::inspect
