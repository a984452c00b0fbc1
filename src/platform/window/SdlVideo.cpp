#include "platform/window/SdlVideo.h"

#include "platform/window/XErrors.h"

#include <cstdlib>
#include <string_view>

#include <SDL.h>

namespace ql::window {

std::shared_ptr<SdlVideo> SdlVideo::open() {
  const bool hostUsesSdl = SDL_WasInit(SDL_INIT_VIDEO) != 0;
  // Signals are the host's, and so is the console: drivers that would take the whole screen are not tried.
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  // The Wayland library complains on standard error where no session can be.
  const char* drivers = std::getenv("XDG_RUNTIME_DIR") != nullptr ? "x11,wayland" : "x11";
  const bool narrowed = !hostUsesSdl && SDL_SetHintWithPriority(SDL_HINT_VIDEODRIVER, drivers, SDL_HINT_DEFAULT);
  const bool started = SDL_InitSubSystem(SDL_INIT_VIDEO) == 0;
  if (narrowed) SDL_ResetHint(SDL_HINT_VIDEODRIVER);
  if (!started) return nullptr;

  std::shared_ptr<SdlVideo> video(new SdlVideo(hostUsesSdl));
  const char* driver = SDL_GetCurrentVideoDriver();
  const std::string_view name = driver == nullptr ? "" : driver;
  if ((name != "x11" && name != "wayland") || SDL_GetNumVideoDisplays() < 1) return nullptr;
  // Finished pictures go to the X server straight from memory; a detour through OpenGL would change the current context
  // of a host or of a device that draws with it.
  if (name == "x11") SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
  return video;
}

SdlVideo::~SdlVideo() { SDL_QuitSubSystem(SDL_INIT_VIDEO); }

void SdlVideo::pump() const {
  // SDL gives every window the cursor of the moment, also one that its host has destroyed already.
  if (guarded_ != nullptr)
    accepted(guarded_, [] { SDL_PumpEvents(); });
  else
    SDL_PumpEvents();
  if (!hostUsesSdl_) SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
}

}  // namespace ql::window
