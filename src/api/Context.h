/// @file
/// The one engine of the process.
#pragma once

#include "engine/EngineContext.h"

#include <memory>

namespace ql::api {

/// The context that new objects belong to; made on first use. Objects share its ownership, so one that outlives its
/// engine still has the context it was made in. Whether an object is of the current engine is a comparison with this.
const std::shared_ptr<engine::EngineContext>& context();

/// The context of a new engine. The engine before it is released; without one, the objects made so far belong to the
/// new engine.
std::shared_ptr<engine::EngineContext> startContext();

/// Ends an engine when it is still the current one.
void endContext(const std::shared_ptr<engine::EngineContext>& ended);

}  // namespace ql::api
