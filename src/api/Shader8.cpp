#include "api/Guard.h"
#include "api/Shaders.h"

#include <utility>

namespace Quasarlens3D {

Shader8::Shader8() noexcept = default;
Shader8::Shader8(std::nullptr_t) noexcept : Handle(nullptr) {}

}  // namespace Quasarlens3D

namespace ql::api {

Quasarlens3D::Shader8 wrap(std::shared_ptr<render::shaders::ShaderHandle> handle) {
  if (!handle) return nullptr;
  auto object = std::make_shared<Quasarlens3D::Detail::ShaderHandleObject>();
  object->handle = std::move(handle);
  return Access::make<Quasarlens3D::Shader8>(std::move(object));
}

std::int16_t shaderIndexOf(const Quasarlens3D::Shader8& shader) {
  return shader ? Access::live(shader).handle->index : std::int16_t{0};
}

}  // namespace ql::api
