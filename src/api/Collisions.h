/// @file
/// Answers of hit tests between hosts and the engine.
#pragma once

#include "api/Objects.h"
#include "engine/HitTarget.h"

#include <Quasarlens3D/CollisionResult8.h>

namespace Quasarlens3D::Detail {

struct CollisionObject : ObjectBase {
  ql::engine::HitResult result;
};

}  // namespace Quasarlens3D::Detail

namespace ql::api {

Quasarlens3D::CollisionResult8 wrap(const engine::HitResult& result);

}  // namespace ql::api
