/// @file
/// Handles for lists of objects, and for surfaces.
#pragma once

#include "api/Guard.h"

#include <Quasarlens3D/InternalObjects8.h>

#include <memory>
#include <utility>
#include <vector>

namespace ql::api {

/// A handle for each object.
template <class Public, class Object>
std::vector<Public> wrapAll(const std::vector<std::shared_ptr<Object>>& objects) {
  std::vector<Public> handles;
  handles.reserve(objects.size());
  for (const std::shared_ptr<Object>& object : objects) handles.push_back(Access::make<Public>(object));
  return handles;
}

/// Nothing for no surface.
inline Quasarlens3D::SurfaceObject wrapSurface(std::shared_ptr<device::Surface> surface) {
  if (!surface) return {};
  auto object = std::make_shared<Quasarlens3D::Detail::SurfaceHandleObject>();
  object->surface = std::move(surface);
  return Access::make<Quasarlens3D::SurfaceObject>(std::move(object));
}
/// No surface for nothing.
inline std::shared_ptr<device::Surface> surfaceOf(const Quasarlens3D::SurfaceObject& handle) {
  return Access::pointer(handle) ? Access::live(handle).surface : nullptr;
}

}  // namespace ql::api
