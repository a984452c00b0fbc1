/// @file
/// Mesh handles between hosts and the mesh registry.
#pragma once

#include "api/Guard.h"
#include "mesh/MeshRecord.h"

#include <Quasarlens3D/Mesh8.h>

#include <memory>

namespace Quasarlens3D::Detail {

struct MeshHandleObject : ObjectBase {
  std::shared_ptr<ql::mesh::MeshHandle> handle;
};

}  // namespace Quasarlens3D::Detail

namespace ql::api {

/// A public handle; nothing for null.
Quasarlens3D::Mesh8 wrap(std::shared_ptr<mesh::MeshHandle> handle);
/// The internal handle of a public one. @throws Error 91 for nothing
mesh::MeshHandle& handleOf(const Quasarlens3D::Mesh8& mesh);
/// The index of a texture that may be nothing: 0 then.
std::int16_t textureIndexOf(const Quasarlens3D::Texture8& texture);

}  // namespace ql::api
