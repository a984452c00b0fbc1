/// @file
/// The picture behind the scene.
#pragma once

#include "engine/EngineContext.h"

#include <memory>
#include <string>

namespace ql::render {

struct Background {
  bool enabled = false;
  std::shared_ptr<device::Surface> surface;  ///< of the back buffer's size and format; none before a load
};

/// Loads a picture, stretched to the back buffer. One that fails leaves the picture before it.
/// @throws engine::EngineError 91 without a device, device::DeviceError when the file is missing or damaged
void loadBackground(engine::EngineContext& context, std::string fileName);
/// Copies the picture over the back buffer when it is enabled and there is one. After a change of the back buffer's
/// size or format the picture is converted.
void drawBackground(engine::EngineContext& context);

}  // namespace ql::render
