/// @file
/// Mathematics, value constructors and look-ups.
#ifndef QUASARLENS3D_GLOBALS8_H
#define QUASARLENS3D_GLOBALS8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>
#include <Quasarlens3D/InternalObjects8.h>
#include <Quasarlens3D/Mesh8.h>
#include <Quasarlens3D/Shader8.h>
#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/TextureFactory8.h>
#include <Quasarlens3D/Types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct GlobalsObject;
}

/// Helpers. Each object builds its own tables of sines and cosines. Numbers given as double become singles (or 32-bit
/// integers, rounded to nearest, halves to even); one that does not fit throws Error 6. A result that overflows throws
/// Error 6, one that is not a number Error 5.
class QUASARLENS3D_API Globals8 : public Detail::Handle<Detail::GlobalsObject> {
 public:
  Globals8();
  Globals8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// Cosine and sine from the table, of the nearest quarter degree. @param DegreesAngle 0 to 360
  /// @throws Error 9 outside the table (below -0.125 or above 360.125)
  float CosT(float DegreesAngle) const;
  float SinT(float DegreesAngle) const;
  float Deg2Rad(float Degrees) const;
  float Rad2Deg(float Radian) const;
  /// Heading of the direction (vx, vz) in degrees, from +z towards +x: (-90, 90) for vz > 0, (90, 270) for vz < 0.
  /// @throws Error 11 when vz is 0
  float Direction2Ang(float vx, float vz) const;
  float GetDistance2D(double x1, double y1, double X2, double y2) const;
  float GetDistance3D(double x1, double y1, double z1, double X2, double y2, double z2) const;

  Vec3 Vector(float x, float y, float z) const;
  Vec3 Vector3(float x, float y, float z) const;
  Vec3 VAdd(const Vec3& dV1, const Vec3& dV2) const;
  /// dV1 - dV2.
  Vec3 VSubtract(const Vec3& dV1, const Vec3& dV2) const;
  Vec3 VScale(const Vec3& dV1, float TScale) const;
  /// The length.
  float VModulus(const Vec3& v) const;
  /// dVector / its length; the zero vector stays zero.
  Vec3 VNormalize(const Vec3& dVector) const;
  /// V1 × v2 in a left-handed space.
  Vec3 VCrossProduct(const Vec3& V1, const Vec3& v2) const;
  float VDotProduct(const Vec3& V1, const Vec3& v2) const;

  Color4 ColorValue(double r, double g, double b, double a) const;
  /// Packed ARGB of components 0 to 1; negative ones count as 0, one above 1 makes the result 0.
  std::int32_t RGBA(double r, double g, double b, double a) const;
  /// A key's packed colour. @param CKey CONST_QL_COLORKEY
  std::int32_t Colorkey(std::int32_t CKey) const;
  /// The rectangle left = x, top = y, right = x1, bottom = y1.
  Rect REC(double x, double y, double x1, double y1) const;
  /// @param C packed ARGB, signed or unsigned, for both colours
  LitVertex LVertex(double x, double y, double z, double C, double tu, double tv) const;
  /// The reciprocal of w is always 0.5. @param x,y pixels @param color packed ARGB for both colours
  TransformedLitVertex TLVertex(float x, float y, float z, std::int32_t color, float tu, float tv) const;
  NormalVertex Vertex2(double x, double y, double z, double nx, double ny, double nz, double tu, double tv, double tu1,
                       double tv1) const;

  /// The first texture of that name, whatever the letter case; nothing when there is none.
  Texture8 GetTex(const std::string& Name) const;
  /// Its index; 0 when there is none.
  std::int16_t GetTexIndex(const std::string& Name) const;
  /// @throws Error 9 for an index outside the table
  std::string GetTexNameFromId(std::int16_t TexIndex) const;
  /// @throws Error 91 for nothing
  std::string GetTexNameFromObject(const Texture8& Texture) const;
  /// Writes a texture's largest level as a 24-bit BMP file. @param Texture from InternalObjects8.GetTexture
  /// @throws Error 91 for nothing; 75, 76 when the file cannot be written
  void SaveTexture(const TextureObject& Texture, const std::string& Filename) const;
  /// Index of the first sprite of that name, whatever the letter case; 0 when there is none.
  std::int16_t GetSprite(const std::string& Name) const;
  /// Index of the first material of that name, whatever the letter case; 0 when there is none.
  std::int16_t GetMat(const std::string& MaterialName) const;
  /// Always 0: the engine keeps no table of sounds.
  std::int16_t GetSound(const std::string& SoundName) const;
  /// Always 0: the engine keeps no table of terrain names.
  std::int16_t GetTerrain(const std::string& Name) const;
  /// The first mesh of that name, whatever the letter case; nothing when there is none.
  Mesh8 GetMesh(const std::string& MeshName) const;
  /// The first shader of a name, in any letter case; nothing when there is none.
  Shader8 GetShader(const std::string& ShaderName) const;
  /// A square mesh named "Decal" that faces along a normal, one normal's length in front of a position, and adds its
  /// texture's light to what lies behind it. The engine keeps it until its time is over.
  /// @param Position,normal world coordinates; the normal's length is the distance @param size of a side, world units
  /// @param DeathTime milliseconds of being drawn; 0: it stays for good
  Mesh8 CreateDecal(const Vec3& Position, const Vec3& normal, const Texture8& Texture, float size,
                    float DeathTime = 0) const;
  /// The ray under a screen pixel: its points on the near and on the far plane, in world coordinates.
  void MousePickVector(std::int32_t x, std::int32_t y, ByRef<Vec3> VOrigin, ByRef<Vec3> VDest) const;

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
