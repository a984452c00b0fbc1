#include "platform/device/Device.h"

#include "platform/device/DeviceImpl.h"

#include <algorithm>
#include <utility>

namespace ql::device {

PresentParameters completeParameters(PresentParameters wanted) {
  if (wanted.windowed && wanted.deviceWindow && (wanted.backBufferWidth == 0 || wanted.backBufferHeight == 0)) {
    const Window::Size client = wanted.deviceWindow->clientSize();
    if (wanted.backBufferWidth == 0) wanted.backBufferWidth = client.width;
    if (wanted.backBufferHeight == 0) wanted.backBufferHeight = client.height;
  }
  if (wanted.backBufferCount == 0) wanted.backBufferCount = 1;
  const auto side = [](std::uint32_t length) { return length >= 1 && length <= kMaxTargetSide; };
  if (!side(wanted.backBufferWidth) || !side(wanted.backBufferHeight))
    invalidCall("back buffer of " + number(wanted.backBufferWidth) + " x " + number(wanted.backBufferHeight) +
                ": sides must be 1 to " + number(kMaxTargetSide));
  if (!isTargetFormat(wanted.backBufferFormat))
    invalidCall("no back buffer has the format " + number(wanted.backBufferFormat));
  if (wanted.autoDepthStencilFormat != Format::Unknown && !isDepthFormat(wanted.autoDepthStencilFormat))
    invalidCall("no depth buffer has the format " + number(wanted.autoDepthStencilFormat));
  if (wanted.backBufferCount != 1) invalidCall("a device has 1 back buffer, not " + number(wanted.backBufferCount));
  if (wanted.multiSampleType != 0) invalidCall("no multisample type " + number(wanted.multiSampleType));
  if (wanted.swapEffect < 1 || wanted.swapEffect > 3) invalidCall("no swap effect " + number(wanted.swapEffect));
  return wanted;
}

namespace {

PixelRect overlap(const PixelRect& a, const PixelRect& b) {
  const auto end = [](std::uint32_t at, std::uint32_t length) { return std::uint64_t{at} + length; };
  const std::uint32_t x = std::max(a.x, b.x), y = std::max(a.y, b.y);
  const std::uint64_t right = std::min(end(a.x, a.width), end(b.x, b.width));
  const std::uint64_t bottom = std::min(end(a.y, a.height), end(b.y, b.height));
  if (right <= x || bottom <= y) return {};
  return {x, y, static_cast<std::uint32_t>(right - x), static_cast<std::uint32_t>(bottom - y)};
}

}  // namespace

void Device::Impl::makeBackBuffer(const PresentParameters& wanted) {
  auto made = std::make_shared<BackBuffer>();
  made->backEnd = backEnd;
  made->watch = watch;
  made->width = wanted.backBufferWidth;
  made->height = wanted.backBufferHeight;
  made->format = wanted.backBufferFormat;
  if (backBuffer) backBuffer->destroy();  // before the new one: large targets should not exist twice
  made->id = backEnd->createTarget(made->width, made->height, made->format);
  backBuffer = std::move(made);
  parameters = wanted;
}

TargetId Device::Impl::keepTarget(TargetId id, const Watch::Target& made) const {
  watch->targets[id] = made;
  tellTarget(watch->sink, id, made);
  return id;
}

void Device::Impl::tellDevice(std::string_view effect, CallSink* to) const {
  noteEffect(to, effect, type, parameters.backBufferWidth, parameters.backBufferHeight, parameters.backBufferFormat);
}

void Device::Impl::directTo(TargetId id, std::uint32_t width, std::uint32_t height) {
  target = id;
  targetWidth = width;
  targetHeight = height;
}

Device::Device(std::shared_ptr<BackEnd> backEnd, DeviceType type, const PresentParameters& parameters)
    : impl_(std::make_unique<Impl>()) {
  Impl& d = *impl_;
  d.backEnd = std::move(backEnd);
  d.type = type;
  d.makeBackBuffer(completeParameters(parameters));
  d.directTo(d.backBuffer->id, d.backBuffer->width, d.backBuffer->height);
  d.state.viewport = {0, 0, static_cast<std::int32_t>(d.targetWidth), static_cast<std::int32_t>(d.targetHeight), 0, 1};
}

Device::~Device() {
  impl_->watch->sink = nullptr;  // what outlives the device belongs to no other
  impl_->backBuffer->destroy();
}

DeviceType Device::type() const { return impl_->type; }
const Capabilities& Device::capabilities() const { return impl_->backEnd->capabilities(); }
const PresentParameters& Device::presentParameters() const { return impl_->parameters; }
const std::shared_ptr<BackEnd>& Device::backEnd() const { return impl_->backEnd; }
void Device::setCallSink(CallSink* sink) { impl_->watch->sink = sink; }

void Device::clear(std::span<const PixelRect> rects, std::uint32_t flags, std::uint32_t color, float z,
                   std::uint32_t stencil) {
  Impl& d = *impl_;
  d.note("Clear", rects.size(), std::as_bytes(rects), flags, color, z, stencil);
  constexpr std::uint32_t kKnown = kClearTarget | kClearDepth | kClearStencil;
  if (flags == 0 || (flags & ~kKnown)) invalidCall("clear flags " + number(flags));
  if (!(z >= 0 && z <= 1)) invalidCall("clear to depth " + number(z) + ": 0 to 1");
  // A clear reaches the viewport only. Stencil is not kept by any depth buffer here.
  const std::uint32_t wanted = flags & (kClearTarget | kClearDepth);
  if (wanted == 0) return;
  const math::Viewport& viewport = d.state.viewport;
  const PixelRect view{static_cast<std::uint32_t>(viewport.x), static_cast<std::uint32_t>(viewport.y),
                       static_cast<std::uint32_t>(viewport.width), static_cast<std::uint32_t>(viewport.height)};
  std::vector<PixelRect> areas;
  if (!rects.empty()) {
    for (const PixelRect& rect : rects)
      if (const PixelRect area = overlap(rect, view); area.width > 0) areas.push_back(area);
    if (areas.empty()) return;
  } else if (view.width != d.targetWidth || view.height != d.targetHeight) {
    areas.push_back(view);
  }
  d.backEnd->clear(d.target, areas, wanted, color, z);
}

void Device::beginScene() {
  impl_->note("BeginScene");
  if (impl_->inScene) invalidCall("a scene has begun already");
  impl_->inScene = true;
}

void Device::endScene() {
  impl_->note("EndScene");
  if (!impl_->inScene) invalidCall("no scene has begun");
  impl_->inScene = false;
}

void Device::present() {
  Impl& d = *impl_;
  d.note("Present");
  if (d.inScene) invalidCall("present inside a scene");
  Window* window = d.parameters.deviceWindow.get();
  if (window && d.gamma.changesColors()) {
    GammaWindow corrected(*window, d.gamma);
    d.backEnd->present(d.backBuffer->id, &corrected);
  } else {
    d.backEnd->present(d.backBuffer->id, window);
  }
  if (window) window->pump();
}

void Device::reset(const PresentParameters& parameters) {
  Impl& d = *impl_;
  d.note("Reset", parameters.backBufferWidth, parameters.backBufferHeight, parameters.backBufferFormat,
         parameters.backBufferCount, parameters.multiSampleType, parameters.swapEffect, parameters.windowed,
         parameters.enableAutoDepthStencil, parameters.autoDepthStencilFormat);
  if (d.inScene) invalidCall("reset inside a scene");
  const PresentParameters wanted = completeParameters(parameters);
  if (wanted.deviceWindow)
    wanted.deviceWindow->setMode(!wanted.windowed, {wanted.backBufferWidth, wanted.backBufferHeight});
  d.makeBackBuffer(wanted);
  d.directTo(d.backBuffer->id, d.backBuffer->width, d.backBuffer->height);
  // The viewport stays like every state, unless it no longer fits.
  math::Viewport viewport = d.state.viewport;
  const auto width = static_cast<std::int32_t>(d.targetWidth), height = static_cast<std::int32_t>(d.targetHeight);
  if (viewport.x + viewport.width > width || viewport.y + viewport.height > height) {
    viewport.x = viewport.y = 0;
    viewport.width = width;
    viewport.height = height;
    d.change(d.state.viewport, viewport);
  }
  d.tellDevice("DeviceReset", d.watch->sink);
}

TargetId Device::createTarget(std::uint32_t width, std::uint32_t height, Format format) {
  Impl& d = *impl_;
  if (width == 0 || height == 0 || width > kMaxTargetSide || height > kMaxTargetSide || !isTargetFormat(format))
    invalidCall("target of " + number(width) + " x " + number(height) + " in format " + number(format));
  return d.keepTarget(d.backEnd->createTarget(width, height, format), {TextureId::None, 0, width, height, format});
}

TargetId Device::createTextureTarget(const std::shared_ptr<Texture>& texture, std::uint32_t level) {
  Impl& d = *impl_;
  if (!texture || texture->backEnd() != d.backEnd || !texture->description().renderTarget)
    invalidCall("a target on no render-target texture of this device");
  const SurfaceDescription size = texture->levelDescription(level);
  return d.keepTarget(d.backEnd->createTextureTarget(texture->id(), level),
                      {texture->id(), level, size.width, size.height, size.format});
}

void Device::destroyTarget(TargetId target) {
  Impl& d = *impl_;
  if (d.watch->targets.erase(target) == 0) invalidCall("no target " + number(target));
  d.backEnd->destroyTarget(target);
  d.watch->effect("TargetDestroyed", target);
}

void Device::writeTarget(TargetId target, std::span<const std::byte> pixels) {
  Impl& d = *impl_;
  const auto found = d.watch->targets.find(target);
  if (found == d.watch->targets.end()) invalidCall("no target " + number(target));
  const Watch::Target& to = found->second;
  if (pixels.size() != std::size_t{to.width} * to.height * bytesPerPixel(to.format))
    invalidCall(number(pixels.size()) + " bytes for a target of " + number(to.width) + " x " + number(to.height));
  d.backEnd->writePixels(target, {0, 0, to.width, to.height}, pixels);
  d.watch->effect("TargetWritten", target, 0, 0, to.width, to.height, pixels);
}

void Device::copyTarget(TargetId target, const std::shared_ptr<Texture>& texture, std::uint32_t level) {
  Impl& d = *impl_;
  d.note("CopyTarget", target, texture ? texture->id() : TextureId::None, level);
  const auto found = d.watch->targets.find(target);
  if (found == d.watch->targets.end()) invalidCall("no target " + number(target));
  if (!texture || texture->backEnd() != d.backEnd) invalidCall("a copy to no texture of this device");
  const Watch::Target& from = found->second;
  const SurfaceDescription to = texture->levelDescription(level);
  if (from.width != to.width || from.height != to.height)
    invalidCall("copy of " + number(from.width) + " x " + number(from.height) + " pixels to a level of " +
                number(to.width) + " x " + number(to.height));
  if (from.texture == texture->id()) invalidCall("copy of a texture to itself");
  d.backEnd->copyToTexture(target, texture->id(), level);
}

void Device::setRenderTarget(TargetId target, std::uint32_t width, std::uint32_t height) {
  Impl& d = *impl_;
  d.note("SetRenderTarget", target, width, height);
  if (target == TargetId::None) {
    d.directTo(d.backBuffer->id, d.backBuffer->width, d.backBuffer->height);
  } else {
    if (width == 0 || height == 0 || width > kMaxTargetSide || height > kMaxTargetSide)
      invalidCall("render target of " + number(width) + " x " + number(height));
    d.directTo(target, width, height);
  }
  d.change(d.state.viewport, math::Viewport{0, 0, static_cast<std::int32_t>(d.targetWidth),
                                            static_cast<std::int32_t>(d.targetHeight), 0, 1});
}

}  // namespace ql::device
