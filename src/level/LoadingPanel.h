/// @file
/// What the screen shows while a level is loaded.
#pragma once

#include "engine/EngineContext.h"

#include <cstdint>
#include <string>

namespace ql::level {

/// Draws the panel with the file's name: only while the engine's console flag is on.
void showLoadingPanel(engine::EngineContext& context, const std::string& fileName);
/// Adds a line to it. @param y its top, pixels
void showLoadingStep(engine::EngineContext& context, const std::string& step, std::int32_t y);

}  // namespace ql::level
