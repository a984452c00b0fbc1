#include "platform/device/State.h"

namespace ql::device {

State::State() : world(math::identity()), view(math::identity()), projection(math::identity()) {
  stages[0].colorOp = static_cast<std::uint32_t>(TextureOp::Modulate);
  stages[0].alphaOp = static_cast<std::uint32_t>(TextureOp::SelectArg1);
  for (std::uint32_t i = 0; i < kStages; ++i) {
    stages[i].texCoordIndex = i;
    textureTransforms[i] = math::identity();
  }
  material.diffuse = {1, 1, 1, 1};
}

}  // namespace ql::device
