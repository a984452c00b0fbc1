/// @file
/// Pictures that are drawn into a texture: mirrors, screens, portraits.
#ifndef QUASARLENS3D_RENDERSURFACE8_H
#define QUASARLENS3D_RENDERSURFACE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Texture8.h>

#include <cstddef>

namespace Quasarlens3D {

namespace Detail {
struct RenderSurfaceObject;
}

/// A texture with a camera of its own, made by Scene8.CreateRenderSurface. What is drawn between StartRender and
/// EndRender, outside a frame, lands in the texture. The camera looks from the origin along +z at first, with the field
/// of view that the engine had when the surface was made, and sees 500 world units far.
class QUASARLENS3D_API RenderSurface8 : public Detail::Handle<Detail::RenderSurfaceObject> {
 public:
  /// Nothing.
  RenderSurface8() noexcept;
  RenderSurface8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Places the surface's camera and the point that it looks at, world units. Counts from the next StartRender on.
  void SetCamera(float PosX, float PosY, float PosZ, float LookAtX, float LookAtY, float LookAtZ);
  /// Begins drawing: the texture is cleared, and the engine's camera, frustum and transforms are the surface's until
  /// EndRender. A surface that was left open (an exception came in between, say) is ended by the next StartRender,
  /// by Quasarlens8.Clear or with its last handle.
  /// @throws the device's invalid call (0x8876086C) inside a frame; nothing has changed then
  void StartRender();
  /// Ends drawing: the texture has its picture, the engine its own camera.
  /// @throws the device's invalid call (0x8876086C) without StartRender
  void EndRender();
  /// The texture, for everything that takes one. It is named "No need" and stays when the surface goes. Nothing after
  /// TextureFactory8.DeleteTexture.
  Texture8 GetTexture() const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
