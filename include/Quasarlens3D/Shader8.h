/// @file
/// A shader of the engine's table.
#ifndef QUASARLENS3D_SHADER8_H
#define QUASARLENS3D_SHADER8_H

#include <Quasarlens3D/Export.h>
#include <Quasarlens3D/Handle.h>

#include <cstddef>

namespace Quasarlens3D {

namespace Detail {
struct ShaderHandleObject;
}

/// A shader: a surface drawn in several stages. It carries the index of an entry of the engine's shader table; several
/// handles may name one entry.
class QUASARLENS3D_API Shader8 : public Detail::Handle<Detail::ShaderHandleObject> {
 public:
  /// Nothing.
  Shader8() noexcept;
  Shader8(std::nullptr_t) noexcept;  // NOLINT(google-explicit-constructor)

 private:
  friend struct Detail::Access;
  using Handle::Handle;
};

}  // namespace Quasarlens3D

#endif
