#include "api/Meshes.h"
#include "api/Textures.h"
#include "mesh/ProjectTexture.h"

#include <Quasarlens3D/Texture8.h>

#include <utility>

namespace Quasarlens3D {

using ql::api::Access;

Texture8::Texture8() noexcept = default;
Texture8::Texture8(std::nullptr_t) noexcept : Handle(nullptr) {}

void Texture8::ApplyOn(const Mesh8& MeshObj, std::int16_t Group, float scalex, float scaley, float ShiftX, float ShiftY,
                       float Rotation, Boolean /*LightMapToo*/) const {
  ql::api::call(*this, [&](Detail::TextureHandleObject& self) {
    ql::mesh::projectTexture(*self.context, ql::api::handleOf(MeshObj), self.handle->index, Group,
                             {scalex, scaley, ShiftX, ShiftY, Rotation});
  });
}

bool operator==(const Texture8& a, const Texture8& b) noexcept {
  const auto handleOf = [](const Texture8& texture) {
    const auto& object = Access::pointer(texture);
    return object ? object->handle.get() : nullptr;
  };
  return handleOf(a) == handleOf(b);
}
bool operator!=(const Texture8& a, const Texture8& b) noexcept { return !(a == b); }

}  // namespace Quasarlens3D

namespace ql::api {

Quasarlens3D::Texture8 wrap(std::shared_ptr<render::TextureHandle> handle) {
  if (!handle) return nullptr;
  auto object = std::make_shared<Quasarlens3D::Detail::TextureHandleObject>();
  object->handle = std::move(handle);
  return Access::make<Quasarlens3D::Texture8>(std::move(object));
}

render::TextureEntry& entryOf(const Quasarlens3D::Texture8& texture) {
  const Quasarlens3D::Detail::TextureHandleObject& object = Access::live(texture);
  return object.context->get<render::TextureTable>().entries.at(object.handle->index);
}

Quasarlens3D::Texture8 load(engine::EngineContext& context, const Quasarlens3D::ByRef<std::string>& fileName,
                            const std::string& name, const Quasarlens3D::ByRef<std::int32_t>& width,
                            const Quasarlens3D::ByRef<std::int32_t>& height, std::int32_t& colorKey) {
  return wrap(render::loadTexture(context, *fileName, name, *width, *height, colorKey));
}

}  // namespace ql::api
