#include "render/Subsystems.h"

#include "render/Materials.h"
#include "render/TextureTable.h"

namespace ql::render {

void startSubsystems(engine::EngineContext& context) {
  context.deviceSteps.add(engine::DeviceStage::Created, [&context] { resetMaterials(context); });
  context.releaseSteps.add(engine::ReleaseStage::Materials, [&context] { releaseMaterials(context); });
  context.releaseSteps.add(engine::ReleaseStage::Textures, [&context] { releaseTextures(context); });
}

}  // namespace ql::render
