/// @file
/// Making lights.
#ifndef QUASARLENS3D_LIGHTENGINE8_H
#define QUASARLENS3D_LIGHTENGINE8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>

namespace Quasarlens3D {

namespace Detail {
struct LightEngineObject;
}

/// Creates and edits the lights of the engine's one table, which all light engines share, and materials with the light
/// engine's own factory. At most 100 lights exist at once; they are named by their index, from 1, and stay until they
/// are deleted. Whatever changes a light loads it into the device at once. Colours are 0 to 1 in each component.
///
/// Every operation throws Error 9 for an index outside its table (lights: 0 to 100) and changes nothing then; those of
/// lights throw Error 91 before Quasarlens8.Initialize.
class QUASARLENS3D_API LightEngine8 : public Detail::Handle<Detail::LightEngineObject> {
 public:
  LightEngine8();
  LightEngine8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// A light that shines from a point in all directions, equally bright up to its radius, switched on.
  /// @param Radius world units @param r,g,b,a its ambient and diffuse colour
  /// @return its index: the first one free @throws Error 9 beyond 100 lights
  std::int16_t CreatePointLight(const Vec3& Position, float Radius, float r, float g, float b, float a);
  /// A light that shines along a direction everywhere, switched on. @param Orientation the way that the light goes
  /// @return its index: the first one free @throws Error 9 beyond 100 lights
  std::int16_t CreateDirectionalLight(const Vec3& Orientation, float r, float g, float b, float a);
  /// Switches a light off and frees its index.
  void DeleteLight(std::int16_t LightIndex);
  /// Switches a light on or off; it keeps its index and values.
  void EnableLight(std::int16_t LightIndex, Boolean Enabled);
  /// Ambient and diffuse colour at once, or one of them.
  void SetLightColor(std::int16_t Index, float r, float g, float b, float a);
  void SetLightAmbientColor(std::int16_t Index, float r, float g, float b, float a);
  void SetLightDiffuseColor(std::int16_t Index, float r, float g, float b, float a);
  /// The way that a directional light goes.
  void SetLightDirection(std::int16_t Index, float x, float y, float z);
  void SetLightPosition(std::int16_t LightIndex, const Vec3& Position);
  /// How far a point light reaches, world units.
  void SetLightRadius(std::int16_t Index, float Radius);
  /// How quickly a spot light fades from its inner cone to its outer one.
  void SetLightFalloff(std::int16_t Index, float Falloff);
  /// A point light's brightness at a distance d is 1 / (a1 + a2 d + a3 d²).
  void SetLightAttenuation(std::int16_t Index, float a1, float a2, float a3);

  /// As MaterialFactory8.CreateMaterial without a name.
  std::int16_t CreateMaterial();
  /// As the operations of MaterialFactory8.
  void DeleteMaterial(std::int16_t MaterialIndex);
  void SetMaterialAmbient(std::int16_t Index, float r, float g, float b, float a);
  void SetMaterialDiffuse(std::int16_t Index, float r, float g, float b, float a);
  void SetMaterialSpecular(std::int16_t Index, float r, float g, float b, float a);
  void SetMaterialEmissive(std::int16_t Index, float r, float g, float b, float a);
  void SetMaterialPower(std::int16_t Index, float power);

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
