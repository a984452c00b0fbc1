#include "platform/software/Geometry.h"

// For what the compiler targets anyway.
#include "platform/software/GeometryTable-inl.h"

namespace ql::software {

const GeometrySet& portableGeometry() { return HWY_NAMESPACE::kGeometry; }

}  // namespace ql::software
