#include "platform/device/Device.h"
#include "platform/device/DeviceImpl.h"

#include <algorithm>
#include <utility>

namespace ql::device {
namespace {

/// The pixels of the back buffer; gone after a reset.
class BackBufferSurface final : public Surface {
 public:
  explicit BackBufferSurface(std::shared_ptr<BackBuffer> buffer) : buffer_(std::move(buffer)) {}
  SurfaceDescription description() const override { return {buffer_->width, buffer_->height, buffer_->format}; }
  std::vector<std::byte> read(PixelRect rect) override { return alive().backEnd->readPixels(buffer_->id, rect); }
  void write(PixelRect rect, std::span<const std::byte> pixels) override {
    alive().backEnd->writePixels(buffer_->id, rect, pixels);
    buffer_->watch->effect("TargetWritten", TargetId::None, rect.x, rect.y, rect.width, rect.height, pixels);
  }

 private:
  BackBuffer& alive() const {
    if (buffer_->id == TargetId::None) invalidCall("this back buffer ended with a reset");
    return *buffer_;
  }
  std::shared_ptr<BackBuffer> buffer_;
};

/// Pixels in system memory.
class ImageSurface final : public Surface {
 public:
  explicit ImageSurface(const SurfaceDescription& size)
      : size_(size), pixel_(bytesPerPixel(size.format)), pixels_(pixel_ * size.width * size.height) {}
  SurfaceDescription description() const override { return size_; }

  std::vector<std::byte> read(PixelRect rect) override {
    std::vector<std::byte> out(rect.width * pixel_ * rect.height);
    for (std::size_t y = 0; y < rect.height; ++y)
      std::copy_n(row(rect, y), rect.width * pixel_, out.data() + y * rect.width * pixel_);
    return out;
  }

  void write(PixelRect rect, std::span<const std::byte> pixels) override {
    for (std::size_t y = 0; y < rect.height; ++y)
      std::copy_n(pixels.data() + y * rect.width * pixel_, rect.width * pixel_, row(rect, y));
  }

 private:
  std::byte* row(const PixelRect& rect, std::size_t y) {
    return pixels_.data() + ((rect.y + y) * size_.width + rect.x) * pixel_;
  }
  SurfaceDescription size_;
  std::size_t pixel_;
  std::vector<std::byte> pixels_;
};

}  // namespace

std::shared_ptr<Surface> Device::getBackBuffer(std::uint32_t index) {
  impl_->note("GetBackBuffer", index);
  if (index >= impl_->parameters.backBufferCount) invalidCall("no back buffer " + number(index));
  return std::make_shared<BackBufferSurface>(impl_->backBuffer);
}

std::shared_ptr<Surface> Device::createImageSurface(std::uint32_t width, std::uint32_t height, Format format) {
  impl_->note("CreateImageSurface", width, height, format);
  bytesPerPixel(format);
  if (width == 0 || height == 0 || width > kMaxTargetSide || height > kMaxTargetSide)
    invalidCall("image surface of " + number(width) + " x " + number(height));
  return std::make_shared<ImageSurface>(SurfaceDescription{width, height, format});
}

void Device::copyRects(const std::shared_ptr<Surface>& source, std::span<const PixelRect> rects,
                       const std::shared_ptr<Surface>& destination,
                       std::span<const std::array<std::uint32_t, 2>> points) {
  if (!source || !destination) {
    impl_->note("CopyRects");
    invalidCall("copy without two surfaces");
  }
  const SurfaceDescription from = source->description(), to = destination->description();
  impl_->note("CopyRects", from.width, from.height, from.format, std::as_bytes(rects), to.width, to.height, to.format,
              std::as_bytes(points));
  if (from.format != to.format)
    invalidCall("copy from format " + number(from.format) + " to format " + number(to.format));
  if (source->locked() || destination->locked()) invalidCall("copy of a locked surface");
  const PixelRect whole{0, 0, from.width, from.height};
  const std::span<const PixelRect> areas = rects.empty() ? std::span(&whole, 1) : rects;
  if (!points.empty() && points.size() < areas.size())
    invalidCall(number(points.size()) + " points for " + number(areas.size()) + " rectangles");
  std::vector<PixelRect> places;
  for (std::size_t i = 0; i < areas.size(); ++i) {
    const PixelRect& area = areas[i];
    PixelRect place = area;
    if (!points.empty()) {
      place.x = points[i][0];
      place.y = points[i][1];
    }
    if (!inside(area, from.width, from.height) || !inside(place, to.width, to.height))
      invalidCall("copy of " + number(area.width) + " x " + number(area.height) + " pixels from " + number(area.x) +
                  ", " + number(area.y) + " to " + number(place.x) + ", " + number(place.y) + ": surfaces of " +
                  number(from.width) + " x " + number(from.height) + " and " + number(to.width) + " x " +
                  number(to.height));
    places.push_back(place);
  }
  for (std::size_t i = 0; i < areas.size(); ++i) destination->write(places[i], source->read(areas[i]));
}

std::shared_ptr<Texture> Device::createTexture(std::uint32_t width, std::uint32_t height, std::uint32_t levels,
                                               std::uint32_t usage, Format format, Pool pool) {
  impl_->note("CreateTexture", width, height, levels, usage, format, pool);
  const Capabilities& caps = capabilities();
  if (width == 0 || height == 0 || width > caps.maxTextureWidth || height > caps.maxTextureHeight)
    invalidCall("texture of " + number(width) + " x " + number(height) + ": sides must be 1 to " +
                number(caps.maxTextureWidth) + " and " + number(caps.maxTextureHeight));
  const std::uint32_t full = fullLevelCount(width, height);
  if (levels > full) invalidCall(number(levels) + " levels of a texture that has " + number(full));
  if (!isTextureFormat(format)) invalidCall("no texture has the format " + number(format));
  if (usage & ~kUsageRenderTarget) invalidCall("texture usage " + number(usage));
  const bool target = usage == kUsageRenderTarget;
  if (target && !isTargetFormat(format)) invalidCall("no render target has the format " + number(format));
  if (target && pool != Pool::Default) invalidCall("render targets belong in the default pool");
  if (static_cast<std::uint32_t>(pool) > 2) invalidCall("no pool " + number(pool));
  return std::make_shared<Texture>(
      impl_->backEnd, TextureDescription{width, height, levels == 0 ? full : levels, format, target}, impl_->watch);
}

}  // namespace ql::device
