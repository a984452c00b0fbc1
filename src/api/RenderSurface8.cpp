#include "api/Guard.h"
#include "api/Textures.h"

#include <Quasarlens3D/RenderSurface8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::RenderSurfaceObject;

RenderSurface8::RenderSurface8() noexcept = default;
RenderSurface8::RenderSurface8(std::nullptr_t) noexcept : Handle(nullptr) {}

void RenderSurface8::SetCamera(float PosX, float PosY, float PosZ, float LookAtX, float LookAtY, float LookAtZ) {
  call(*this, [&](RenderSurfaceObject& self) {
    self.surface->setCamera({PosX, PosY, PosZ}, {LookAtX, LookAtY, LookAtZ});
  });
}
void RenderSurface8::StartRender() {
  call(*this, [](RenderSurfaceObject& self) { self.surface->startRender(); });
}
void RenderSurface8::EndRender() {
  call(*this, [](RenderSurfaceObject& self) { self.surface->endRender(); });
}
Texture8 RenderSurface8::GetTexture() const {
  return call(*this, [](RenderSurfaceObject& self) { return api::wrap(self.surface->texture()); });
}

}  // namespace Quasarlens3D
