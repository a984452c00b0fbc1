#include "render/Background.h"

#include "platform/utility/TextureFiles.h"

#include <utility>

namespace ql::render {
namespace {

/// An image surface that the back buffer can be filled from.
std::shared_ptr<device::Surface> surfaceLikeBackBuffer(engine::EngineContext& context) {
  const device::PresentParameters& frame = context.presentParameters;
  return context.requireDevice().createImageSurface(frame.backBufferWidth, frame.backBufferHeight,
                                                    frame.backBufferFormat);
}

bool fitsBackBuffer(const engine::EngineContext& context, const device::SurfaceDescription& size) {
  const device::PresentParameters& frame = context.presentParameters;
  return size.width == frame.backBufferWidth && size.height == frame.backBufferHeight &&
         size.format == frame.backBufferFormat;
}

}  // namespace

void loadBackground(engine::EngineContext& context, std::string fileName) {
  std::shared_ptr<device::Surface> surface = surfaceLikeBackBuffer(context);
  struct Copy {  // of the file, when an archive holds it
    archive::PakArchive& pak;
    std::string& name;
    Copy(archive::PakArchive& archive, std::string& file) : pak(archive), name(file) { pak.expand(name); }
    ~Copy() { pak.deleteExpanded(name); }
  } copy(context.pak, fileName);
  utility::loadSurfaceFromFile(*surface, fileName, 0);
  context.get<Background>().surface = std::move(surface);
}

void drawBackground(engine::EngineContext& context) {
  Background& background = context.get<Background>();
  if (!background.enabled || !background.surface) return;
  if (const device::SurfaceDescription size = background.surface->description(); !fitsBackBuffer(context, size)) {
    const std::vector<std::byte> pixels = background.surface->read({0, 0, size.width, size.height});
    std::shared_ptr<device::Surface> surface = surfaceLikeBackBuffer(context);
    utility::loadSurfaceFromMemory(*surface, pixels, size.width * device::bytesPerPixel(size.format), size.format,
                                   size.width, size.height);
    background.surface = std::move(surface);
  }
  device::Device& device = context.requireDevice();
  device.copyRects(background.surface, {}, device.getBackBuffer(0), {});
}

}  // namespace ql::render
