#include "api/Guard.h"
#include "render/Effects.h"

#include <Quasarlens3D/GraphicEffect8.h>

namespace Quasarlens3D {

using namespace ql;
using api::call;
using Detail::EffectObject;

GraphicEffect8::GraphicEffect8() : Handle(api::create<EffectObject>()) {}
GraphicEffect8::GraphicEffect8(std::nullptr_t) noexcept : Handle(nullptr) {}

void GraphicEffect8::FadeIn(float Speed) {
  call(*this, [&](EffectObject& self) { render::startFade(*self.context, render::Fade::In, Speed); });
}
void GraphicEffect8::FadeOut(float Speed) {
  call(*this, [&](EffectObject& self) { render::startFade(*self.context, render::Fade::Out, Speed); });
}
void GraphicEffect8::StopFade() {
  call(*this, [](EffectObject& self) { render::stopFade(*self.context); });
}
Boolean GraphicEffect8::FadeFinished() const {
  return call(*this, [](EffectObject& self) { return !self.context->get<render::EffectState>().fadeActive; });
}

void GraphicEffect8::Flash(float r, float g, float b) {
  call(*this, [&](EffectObject& self) { render::startFlash(*self.context, r, g, b); });
}
void GraphicEffect8::StopFlash() {
  call(*this, [](EffectObject& self) { render::stopFlash(*self.context); });
}
Boolean GraphicEffect8::FlashFinished() const {
  return call(*this, [](EffectObject& self) { return !self.context->get<render::EffectState>().flashActive; });
}
void GraphicEffect8::InstantFlash(float r, float g, float b, float FlashFactor) {
  call(*this, [&](EffectObject& self) { render::drawVeil(*self.context, {r, g, b, FlashFactor}); });
}

void GraphicEffect8::ChangeGamma(float gamma) {
  call(*this, [&](EffectObject& self) { render::changeGamma(*self.context, gamma); });
}

void GraphicEffect8::SetFog(Boolean Enabled, float r, float g, float b, float density, float startfog, float endfog) {
  call(*this, [&](EffectObject& self) {
    render::setFog(*self.context, {Enabled, {r, g, b, 1}, density, startfog, endfog}, false);
  });
}
void GraphicEffect8::SetVolumetricFog(Boolean Enabled, float r, float g, float b, float density, float startfog,
                                      float endfog) {
  call(*this, [&](EffectObject& self) {
    render::setFog(*self.context, {Enabled, {r, g, b, 1}, density, startfog, endfog}, true);
  });
}

}  // namespace Quasarlens3D
