/// @file
/// Telling on the screen how a long operation goes.
#pragma once

#include "engine/EngineContext.h"
#include "render/Screen.h"

#include <functional>

namespace ql::render {

/// What stands on the screen when a progress picture is drawn.
enum class ProgressPicture {
  First,  ///< black
  Next    ///< the one before
};

/// Draws and shows a progress picture on the engine's own screen: only while the console flag is on, there is a device
/// and no frame is being drawn. What fails in it is ignored, and every state is put back; it counts for no frame.
void showProgress(engine::EngineContext& context, ProgressPicture picture, const std::function<void(Screen&)>& draw);

}  // namespace ql::render
