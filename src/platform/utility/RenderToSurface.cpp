#include "platform/utility/RenderToSurface.h"

#include "platform/utility/Pixels.h"

#include <utility>

namespace ql::utility {

using device::TargetId;

struct RenderToSurface::Impl {
  device::Device& device;
  device::SurfaceDescription size;
  TargetId own = TargetId::None;  ///< for textures that cannot be drawn into; made on first use

  // A target on a texture's level stays for the next scene on it.
  TargetId direct = TargetId::None;
  std::shared_ptr<device::Texture> directTexture;
  std::uint32_t directLevel = 0;

  bool active = false;
  std::shared_ptr<device::Texture> texture;  ///< takes the picture when the scene ends; none when drawn directly
  std::uint32_t level = 0;
  math::Viewport viewport;  ///< from before the scene

  Impl(device::Device& owner, const device::SurfaceDescription& surface) : device(owner), size(surface) {}
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  ~Impl() {
    try {
      if (active) leave();
    } catch (const device::DeviceError&) {
      // The scene was ended behind our back; the targets go all the same.
    }
    if (own != TargetId::None) device.destroyTarget(own);
    dropDirect();
  }

  void dropDirect() {
    if (direct != TargetId::None) device.destroyTarget(direct);
    direct = TargetId::None;
    directTexture = nullptr;
  }

  TargetId targetFor(const std::shared_ptr<device::Texture>& to, std::uint32_t at, LevelContents contents) {
    const device::TextureDescription& description = to->description();
    if (description.renderTarget && description.format == size.format) {
      if (direct == TargetId::None || directTexture != to || directLevel != at) {
        dropDirect();
        direct = device.createTextureTarget(to, at);
        directTexture = to;
        directLevel = at;
      }
      return direct;
    }
    if (own == TargetId::None) own = device.createTarget(size.width, size.height, size.format);
    if (contents == LevelContents::Keep) {
      const images::Image before =
          imageFromPixels(to->readLevel(at), std::uint64_t{size.width} * device::bytesPerPixel(description.format),
                          to->levelDescription(at));
      device.writeTarget(own, pixelsFromImage(before, size.format));
    }
    texture = to;
    level = at;
    return own;
  }

  void leave() {
    active = false;
    texture = nullptr;
    device.setRenderTarget(TargetId::None, 0, 0);
    device.setViewport(viewport);
    device.endScene();
  }
};

RenderToSurface::RenderToSurface(device::Device& device, std::uint32_t width, std::uint32_t height,
                                 device::Format format, bool /*depth*/) {
  const device::Capabilities& caps = device.capabilities();
  if (width == 0 || height == 0 || width > caps.maxTextureWidth || height > caps.maxTextureHeight ||
      !device::isTargetFormat(format))
    throw device::DeviceError(device::kErrorInvalidCall, "render surface of " + std::to_string(width) + " x " +
                                                             std::to_string(height) + " pixels of format " +
                                                             std::to_string(static_cast<std::uint32_t>(format)));
  impl_ = std::make_unique<Impl>(device, device::SurfaceDescription{width, height, format});
}

RenderToSurface::~RenderToSurface() = default;

void RenderToSurface::beginScene(const std::shared_ptr<device::Texture>& texture, std::uint32_t level,
                                 const math::Viewport& viewport, LevelContents contents) {
  Impl& r = *impl_;
  if (!texture) throw device::DeviceError(device::kErrorInvalidCall, "a render surface without a texture");
  const device::SurfaceDescription size = texture->levelDescription(level);
  if (size.width != r.size.width || size.height != r.size.height)
    throw device::DeviceError(device::kErrorInvalidCall,
                              "level of " + std::to_string(size.width) + " x " + std::to_string(size.height) +
                                  " pixels for a render surface of " + std::to_string(r.size.width) + " x " +
                                  std::to_string(r.size.height));
  r.device.beginScene();
  r.active = true;
  r.viewport = r.device.getViewport();
  try {
    r.device.setRenderTarget(r.targetFor(texture, level, contents), r.size.width, r.size.height);
    r.device.setViewport(viewport);
  } catch (...) {
    r.leave();
    throw;
  }
}

void RenderToSurface::endScene() {
  Impl& r = *impl_;
  if (!r.active) throw device::DeviceError(device::kErrorInvalidCall, "the render surface has not begun a scene");
  const std::shared_ptr<device::Texture> texture = r.texture;
  r.leave();
  if (texture) r.device.copyTarget(r.own, texture, r.level);
}

}  // namespace ql::utility
