/// @file
/// Joins the rendering resources to an engine.
#pragma once

#include "engine/EngineContext.h"

namespace ql::render {

/// Registers what a started engine does with materials and textures: "Blank" on every new device, both tables released
/// with the engine. Call it once, after startEngine.
void startSubsystems(engine::EngineContext& context);

}  // namespace ql::render
