#include "api/Guard.h"
#include "api/Pixels.h"
#include "api/Textures.h"
#include "engine/Stages.h"
#include "engine/Tracing.h"
#include "input/Sessions.h"
#include "platform/device/Device.h"
#include "platform/host/Clock.h"

#include <Quasarlens3D/InternalObjects8.h>

#include <utility>

namespace Quasarlens3D {

using namespace ql;
using api::Access;
using api::call;
using namespace Detail;

Direct3DObject::Direct3DObject() noexcept = default;
DeviceObject::DeviceObject() noexcept = default;
D3DXObject::D3DXObject() noexcept = default;
TextureObject::TextureObject() noexcept = default;
SurfaceObject::SurfaceObject() noexcept = default;

std::int32_t TextureObject::Width() const {
  return call(*this, [](DeviceTextureObject& self) {
    return static_cast<std::int32_t>(self.texture->levelDescription(0).width);
  });
}
std::int32_t TextureObject::Height() const {
  return call(*this, [](DeviceTextureObject& self) {
    return static_cast<std::int32_t>(self.texture->levelDescription(0).height);
  });
}

std::int32_t SurfaceObject::Width() const {
  return call(*this,
              [](SurfaceHandleObject& self) { return static_cast<std::int32_t>(self.surface->description().width); });
}
std::int32_t SurfaceObject::Height() const {
  return call(*this,
              [](SurfaceHandleObject& self) { return static_cast<std::int32_t>(self.surface->description().height); });
}
std::int32_t SurfaceObject::Format() const {
  return call(*this,
              [](SurfaceHandleObject& self) { return static_cast<std::int32_t>(self.surface->description().format); });
}
std::vector<std::uint32_t> SurfaceObject::ReadPixels() const {
  return call(*this, [](SurfaceHandleObject& self) { return api::readPixels(*self.surface); });
}

void SurfaceObject::Wait() const {
  call(*this, [](SurfaceHandleObject& self) { (void)self.surface->read({0, 0, 1, 1}); });
}

InternalObjects8::InternalObjects8() : Handle(api::create<InternalsObject>()) {}
InternalObjects8::InternalObjects8(std::nullptr_t) noexcept : Handle(nullptr) {}

SurfaceObject InternalObjects8::GetBackbuffer() const {
  return call(*this, [](InternalsObject& self) {
    auto object = std::make_shared<SurfaceHandleObject>();
    object->surface = self.context->requireDevice().getBackBuffer(0);
    return Access::make<SurfaceObject>(std::move(object));
  });
}
D3DXObject InternalObjects8::GetD3DXLibrary() const {
  return call(*this, [](InternalsObject&) { return Access::make<D3DXObject>(std::make_shared<UtilityObject>()); });
}
DeviceObject InternalObjects8::GetDevice3D() const {
  return call(*this, [](InternalsObject& self) {
    if (!self.context->device) return DeviceObject();
    auto object = std::make_shared<DeviceHandleObject>();
    object->device = self.context->device;
    return Access::make<DeviceObject>(std::move(object));
  });
}
Direct3DObject InternalObjects8::GetDirect3D() const {
  return call(*this, [](InternalsObject& self) {
    return self.context->direct3D ? Access::make<Direct3DObject>(std::make_shared<RootObject>()) : Direct3DObject();
  });
}

TextureObject InternalObjects8::GetTexture(const Texture8& Texture) const {
  return call(*this, [&](InternalsObject&) {
    const render::TextureEntry& entry = api::entryOf(Texture);
    if (!entry.texture) return TextureObject();
    auto object = std::make_shared<DeviceTextureObject>();
    object->texture = entry.texture;
    return Access::make<TextureObject>(std::move(object));
  });
}
std::int32_t InternalObjects8::GetDeviceKind() const {
  return call(*this, [](InternalsObject& self) -> std::int32_t {
    if (!self.context->device) return QL_DEVICE_NONE;
    return self.context->deviceType == device::DeviceType::Hardware ? QL_DEVICE_HARDWARE : QL_DEVICE_REFERENCE;
  });
}
FrameStatistics InternalObjects8::GetFrameStatistics() const {
  return call(*this, [](InternalsObject& self) {
    const auto& [faces, work] = self.context->statistics;
    const auto ms = [&work = work](device::WorkStep step) {
      return static_cast<double>(work.nanoseconds[static_cast<std::size_t>(step)]) * 1e-6;
    };
    using device::WorkStep;
    return FrameStatistics{
        faces,       work.triangles, work.drawCalls,         work.culled,           work.clipped,       work.drawn,
        work.pixels, work.tiles,     ms(WorkStep::Vertices), ms(WorkStep::Binning), ms(WorkStep::Tiles)};
  });
}
void InternalObjects8::SetClock(std::function<std::uint32_t()> Ticks) {
  call(*this, [&](InternalsObject& self) {
    input::setClock(*self.context, Ticks ? std::move(Ticks) : host::TickSource(host::systemTicks));
  });
}
Boolean InternalObjects8::StartRecording(const std::string& FileName, const std::string& Note) {
  return call(*this,
              [&](InternalsObject& self) { return Boolean(input::startRecording(*self.context, FileName, Note)); });
}
Boolean InternalObjects8::StartReplay(const std::string& FileName) {
  return call(*this, [&](InternalsObject& self) { return Boolean(input::startReplay(*self.context, FileName)); });
}
Boolean InternalObjects8::ReplayEnded() const {
  return call(*this, [](InternalsObject& self) { return Boolean(input::replayEnded(*self.context)); });
}
std::string InternalObjects8::SessionNote() const {
  return call(*this, [](InternalsObject& self) { return input::sessionNote(*self.context); });
}
Boolean InternalObjects8::StopSession() {
  return call(*this, [](InternalsObject& self) { return Boolean(input::stopSession(*self.context)); });
}
Boolean InternalObjects8::StartTrace(const std::string& FileName) {
  return call(*this, [&](InternalsObject& self) { return Boolean(engine::startTrace(*self.context, FileName)); });
}
Boolean InternalObjects8::StopTrace() {
  return call(*this, [](InternalsObject& self) { return Boolean(engine::stopTrace(*self.context)); });
}
Boolean InternalObjects8::StartStages(const std::string& FileName) {
  return call(*this, [&](InternalsObject& self) { return Boolean(engine::startStages(*self.context, FileName)); });
}
Boolean InternalObjects8::StopStages() {
  return call(*this, [](InternalsObject& self) { return Boolean(engine::stopStages(*self.context)); });
}

}  // namespace Quasarlens3D
