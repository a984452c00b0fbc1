/// @file
/// Making materials.
#ifndef QUASARLENS3D_MATERIALFACTORY8_H
#define QUASARLENS3D_MATERIALFACTORY8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace Quasarlens3D {

namespace Detail {
struct MaterialFactoryObject;
}

/// Creates and edits the materials of the engine's one table, which all factories share. Materials are named by their
/// 16-bit index; index 0 is the built-in material "Blank". Colours are 0 to 1 in each component.
class QUASARLENS3D_API MaterialFactory8 : public Detail::Handle<Detail::MaterialFactoryObject> {
 public:
  MaterialFactory8();
  MaterialFactory8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

  /// A new material: all colours (1, 1, 1, 1), power 1. @param Name "" names it "Material" and its index
  /// @return its index, from 1 @throws Error 6 beyond 32767 materials
  std::int16_t CreateMaterial(const std::string& Name = "");
  /// A new material with one colour for ambient, diffuse and emissive light; specular (1, 1, 1, 1), power 1.
  /// @return its index, from 1 @throws Error 6 beyond 32767 materials
  std::int16_t CreateMaterialQuick(float r, float g, float b, float a, const std::string& MaterialName);
  /// Sets a colour of a material. @throws Error 9 for an index outside the table
  void SetAmbient(std::int16_t MaterialIndex, float r, float g, float b, float a);
  void SetDiffuse(std::int16_t MaterialIndex, float r, float g, float b, float a);
  void SetSpecular(std::int16_t MaterialIndex, float r, float g, float b, float a);
  void SetEmissive(std::int16_t MaterialIndex, float r, float g, float b, float a);
  /// Sets the sharpness of highlights. @throws Error 9 for an index outside the table
  void SetPower(std::int16_t MaterialIndex, float power);
  /// Checks that the material exists; it stays usable. @throws Error 9 for an index outside the table
  void DeleteMaterial(std::int16_t MaterialIndex);
  /// Marks this factory as local; nothing depends on the mark.
  void SetLocal();

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
