#include "render/Subsystems.h"

#include "render/Background.h"
#include "render/Effects.h"
#include "render/Lights.h"
#include "render/Materials.h"
#include "render/Screen.h"
#include "render/TextureTable.h"

namespace ql::render {

void startSubsystems(engine::EngineContext& context) {
  context.deviceSteps.add(engine::DeviceStage::Created, [&context] {
    resetMaterials(context);
    restoreLights(context);
  });
  context.releaseSteps.add(engine::ReleaseStage::Materials, [&context] { releaseMaterials(context); });
  context.releaseSteps.add(engine::ReleaseStage::Textures, [&context] { releaseTextures(context); });
  context.releaseSteps.add(engine::ReleaseStage::Screen, [&context] { context.get<ActiveScreen>().screen.reset(); });
  context.frameSteps.add(engine::FrameStage::Effects, [&context] { stepEffects(context); });
  context.drawBackground = [&context] { drawBackground(context); };
}

}  // namespace ql::render
