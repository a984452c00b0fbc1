/// @file
/// Texture handles between hosts and the texture table.
#pragma once

#include "api/Guard.h"
#include "api/Objects.h"
#include "render/TextureTable.h"

#include <Quasarlens3D/Texture8.h>
#include <Quasarlens3D/Types.h>

#include <cstdint>
#include <memory>
#include <string>

namespace ql::api {

/// A public handle; nothing for null.
Quasarlens3D::Texture8 wrap(std::shared_ptr<render::TextureHandle> handle);
/// The entry that a handle names. @throws Error 91 for nothing, EngineError 9 for an index outside the table
render::TextureEntry& entryOf(const Quasarlens3D::Texture8& texture);
/// Loads a texture, writing back to the caller's variables.
Quasarlens3D::Texture8 load(engine::EngineContext& context, const Quasarlens3D::ByRef<std::string>& fileName,
                            const std::string& name, const Quasarlens3D::ByRef<std::int32_t>& width,
                            const Quasarlens3D::ByRef<std::int32_t>& height, std::int32_t& colorKey);

}  // namespace ql::api
