/// @file
/// Shader handles between hosts and the shader table.
#pragma once

#include "api/Objects.h"
#include "render/shaders/ShaderTable.h"

#include <Quasarlens3D/Shader8.h>

#include <cstdint>
#include <memory>

namespace Quasarlens3D::Detail {

struct ShaderHandleObject : ObjectBase {
  std::shared_ptr<ql::render::shaders::ShaderHandle> handle;
};

}  // namespace Quasarlens3D::Detail

namespace ql::api {

/// A public handle; nothing for null.
Quasarlens3D::Shader8 wrap(std::shared_ptr<render::shaders::ShaderHandle> handle);
/// The index of a shader that may be nothing: 0 then.
std::int16_t shaderIndexOf(const Quasarlens3D::Shader8& shader);

}  // namespace ql::api
