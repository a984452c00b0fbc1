#include "engine/Engine.h"
#include "platform/host/Files.h"
#include "platform/utility/TextureFiles.h"

namespace ql::engine {

void screenShot(EngineContext& context, const std::string& fileName) {
  device::Device& device = context.requireDevice();
  const std::shared_ptr<device::Surface> backBuffer = device.getBackBuffer(0);
  const device::SurfaceDescription description = backBuffer->description();
  const std::shared_ptr<device::Surface> copy =
      device.createImageSurface(description.width, description.height, description.format);
  device.copyRects(backBuffer, {}, copy, {});
  host::writeFile(fileName, utility::bitmapFromSurface(*copy));
}

}  // namespace ql::engine
