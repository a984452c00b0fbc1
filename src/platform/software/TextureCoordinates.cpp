#include "platform/software/TextureCoordinates.h"

#include <algorithm>

namespace ql::software {
CoordinateSource coordinateSourceOf(const device::State& state, std::size_t stage, bool onScreen, bool present) {
  const device::StageStates& s = state.stages[stage];
  CoordinateSource out;
  if (onScreen) return out;
  const std::uint32_t generated = s.texCoordIndex >> 16;
  if (generated >= 1 && generated <= 3)
    out.kind = static_cast<CoordinateSource::Kind>(generated);
  else if (!present)
    return out;
  out.transformed = static_cast<int>(std::min(s.textureTransformFlags & 0xFF, 4u));
  out.projected = out.transformed >= 2 && (s.textureTransformFlags & 0x100) != 0;
  out.matrix = state.textureTransforms[stage];
  return out;
}

}  // namespace ql::software
