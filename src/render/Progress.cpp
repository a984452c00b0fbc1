#include "render/Progress.h"

#include "engine/OpenTarget.h"
#include "platform/utility/StateGuard.h"

namespace ql::render {
namespace {

/// The scene of a picture, ended whatever happens.
class Scene {
 public:
  explicit Scene(device::Device& device) : device_(device) { device.beginScene(); }
  ~Scene() { device_.endScene(); }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

 private:
  device::Device& device_;
};

}  // namespace

void showProgress(engine::EngineContext& context, ProgressPicture picture, const std::function<void(Screen&)>& draw) {
  if (!context.console || !context.device || context.inFrame || context.get<engine::OpenTarget>().end) return;
  try {
    device::Device& device = *context.device;
    if (picture == ProgressPicture::First) device.clear({}, device::kClearTarget | device::kClearDepth, 0, 1, 0);
    {
      const Scene scene(device);
      utility::StateGuard guard(device);
      guard.overlay(nullptr, device::Filter::Linear);
      guard.render(device::RenderState::Lighting, 0);
      guard.render(device::RenderState::AlphaBlendEnable, 0xFFFFFFFF);
      draw(activeScreen(context));
    }
    device.present();
    context.countedWork = device.backEnd()->statistics();
  } catch (const std::exception&) {
    // Nothing depends on what is shown meanwhile.
  }
}

}  // namespace ql::render
