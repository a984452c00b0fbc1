#include "platform/window/OpenDisplay.h"

#include "platform/window/HeadlessDisplay.h"
#include "platform/window/SdlDisplay.h"
#include "platform/window/SdlVideo.h"

namespace ql::window {

std::unique_ptr<device::Display> openDisplay() {
  if (std::shared_ptr<SdlVideo> video = SdlVideo::open()) return std::make_unique<SdlDisplay>(std::move(video));
  return std::make_unique<HeadlessDisplay>();
}

}  // namespace ql::window
