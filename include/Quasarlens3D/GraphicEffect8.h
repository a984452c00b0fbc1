/// @file
/// Effects over the whole picture: fades, flashes, gamma, fog.
#ifndef QUASARLENS3D_GRAPHICEFFECT8_H
#define QUASARLENS3D_GRAPHICEFFECT8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>

namespace Quasarlens3D {

namespace Detail {
struct EffectObject;
}

/// Fades and flashes belong to the engine, whichever object starts them. Quasarlens8.RenderToScreen draws them over all
/// else but the cursor and advances them by the frame's time, at most 200 ms. Only one runs at a time: the last one
/// started.
class QUASARLENS3D_API GraphicEffect8 : public Detail::Handle<Detail::EffectObject> {
 public:
  GraphicEffect8();
  GraphicEffect8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// From black to the picture. @param Speed milliseconds for the whole fade
  void FadeIn(float Speed = 2000);
  /// From the picture to black; afterwards the picture is back. @param Speed milliseconds for the whole fade
  void FadeOut(float Speed = 2000);
  void StopFade();
  /// Whether no fade runs.
  Boolean FadeFinished() const;

  /// Covers the picture with a colour that vanishes within half a second; components 0 to 1.
  void Flash(float r, float g, float b);
  void StopFlash();
  /// Whether no flash runs.
  Boolean FlashFinished() const;
  /// Covers the picture at once, inside a frame. @param r,g,b,FlashFactor colour and opacity, 0 to 1
  /// @throws Error 91 before Quasarlens8.Initialize
  void InstantFlash(float r, float g, float b, float FlashFactor);

  /// Brightens or darkens what the display shows; screenshots keep their colours. @param gamma factor of every colour
  /// value, 1: as it is @throws Error 91 before Quasarlens8.Initialize
  void ChangeGamma(float gamma);

  /// Linear fog, computed per vertex; it replaces nothing of SetVolumetricFog's mode. Quasarlens8.Start2D keeps it off
  /// what is drawn afterwards. @param r,g,b colour, 0 to 1 @param density no effect on linear fog
  /// @param startfog,endfog distances where it begins and hides everything, world units
  /// @throws Error 91 before Quasarlens8.Initialize
  void SetFog(Boolean Enabled, float r, float g, float b, float density, float startfog = 1.0f, float endfog = 1000.0f);
  /// The same fog, computed per pixel.
  void SetVolumetricFog(Boolean Enabled, float r, float g, float b, float density, float startfog = 1.0f,
                        float endfog = 1000.0f);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
