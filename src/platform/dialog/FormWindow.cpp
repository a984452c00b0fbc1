#include "platform/dialog/FormWindow.h"

#include "platform/dialog/FormPainter.h"
#include "platform/dialog/FormState.h"
#include "platform/dialog/FormText.h"
#include "platform/dialog/FormView.h"

#include <algorithm>
#include <cfloat>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include <SDL.h>
#include <imgui.h>

namespace ql::dialog {
namespace {

constexpr int kIdleMs = 100;  // between frames when nothing happens
// SDL's own waiting wakes itself by a message to the window over a second connection. One that arrives after the window
// has gone ends the process, so that the queue is looked at instead.
constexpr int kPollMs = 10;

using Window = std::unique_ptr<SDL_Window, decltype(&SDL_DestroyWindow)>;
using Context = std::unique_ptr<ImGuiContext, void (*)(ImGuiContext*)>;

/// A scale at which the form fits the display that it appears on.
float fittingScale(float scale, const device::FormContent& content) {
  SDL_Rect usable;
  if (SDL_GetDisplayUsableBounds(0, &usable) != 0) return scale;
  const FormLayout plain = layOut(content, 1);
  return std::min({scale, static_cast<float>(usable.w) / static_cast<float>(plain.width),
                   static_cast<float>(usable.h) / static_cast<float>(plain.height)});
}

std::optional<Key> keyOf(const SDL_Keysym& key) {
  const bool alt = (key.mod & KMOD_ALT) != 0;
  switch (key.sym) {
    case SDLK_TAB:
      return (key.mod & KMOD_SHIFT) != 0 ? Key::Previous : Key::Next;
    case SDLK_UP:
    case SDLK_LEFT:
      return alt ? Key::Open : Key::Up;
    case SDLK_DOWN:
    case SDLK_RIGHT:
      return alt ? Key::Open : Key::Down;
    case SDLK_PAGEUP:
      return Key::PageUp;
    case SDLK_PAGEDOWN:
      return Key::PageDown;
    case SDLK_HOME:
      return Key::Home;
    case SDLK_END:
      return Key::End;
    case SDLK_F4:
      return alt ? Key::Escape : Key::Open;
    case SDLK_SPACE:
      return Key::Space;
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
      return Key::Enter;
    case SDLK_ESCAPE:
      return Key::Escape;
    default:
      return std::nullopt;
  }
}

std::uint32_t windowOf(const SDL_Event& event) {
  switch (event.type) {
    case SDL_WINDOWEVENT:
      return event.window.windowID;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
      return event.key.windowID;
    case SDL_TEXTINPUT:
      return event.text.windowID;
    case SDL_MOUSEMOTION:
      return event.motion.windowID;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
      return event.button.windowID;
    case SDL_MOUSEWHEEL:
      return event.wheel.windowID;
    default:
      return 0;
  }
}

class FormWindow {
 public:
  FormWindow(device::Form& form, SDL_Window* window, float scale)
      : form_(form), window_(window), painter_(window), state_(form), view_(form, state_, scale) {
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = io.LogFilename = nullptr;
    io.ConfigFlags = ImGuiConfigFlags_NoMouseCursorChange;
    if (!painter_.works()) return;
    fillAtlas(*io.Fonts, form.content(), scale);
    painter_.upload(*io.Fonts);
  }
  bool works() const { return painter_.works(); }

  void run(bool keepOtherEvents) {
    frame();
    SDL_ShowWindow(window_);
    SDL_RaiseWindow(window_);
    SDL_Event event;
    while (form_.visible()) {
      for (int waited = 0; waited < kIdleMs && SDL_HasEvents(SDL_FIRSTEVENT, SDL_LASTEVENT) == SDL_FALSE;
           waited += kPollMs) {
        SDL_Delay(kPollMs);
        SDL_PumpEvents();
      }
      while (form_.visible() && SDL_PollEvent(&event) != 0) handle(event);
      frame();
    }
    // What still waits: the end of this form is not the end of the program.
    while (SDL_PollEvent(&event) != 0) noteOther(event);
    if (keepOtherEvents && !others_.empty())
      SDL_PeepEvents(others_.data(), static_cast<int>(others_.size()), SDL_ADDEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT);
  }

 private:
  void frame() {
    ImGuiIO& io = ImGui::GetIO();
    io.DisplaySize = {static_cast<float>(view_.layout().width), static_cast<float>(view_.layout().height)};
    const auto now = std::chrono::steady_clock::now();
    io.DeltaTime = std::clamp(std::chrono::duration<float>(now - lastFrame_).count(), 0.001f, 1.0f);
    lastFrame_ = now;
    view_.frame();
    painter_.draw(*ImGui::GetDrawData());
  }

  /// Keeps an event that is not of this window. @return whether it is none
  bool noteOther(const SDL_Event& event) {
    if (windowOf(event) == SDL_GetWindowID(window_)) return false;
    // SDL takes the closing of the only window for the end of the program.
    if (event.type != SDL_QUIT || !closed_) others_.push_back(event);
    return true;
  }

  void handle(const SDL_Event& event) {
    if (noteOther(event)) {
      if (event.type == SDL_QUIT) state_.cancel();
      return;
    }
    ImGuiIO& io = ImGui::GetIO();
    switch (event.type) {
      case SDL_WINDOWEVENT:
        if (event.window.event == SDL_WINDOWEVENT_CLOSE) {
          closed_ = true;
          state_.cancel();
        }
        if (event.window.event == SDL_WINDOWEVENT_LEAVE) io.MousePos = {-FLT_MAX, -FLT_MAX};
        break;
      case SDL_KEYDOWN:
        if (const auto key = keyOf(event.key.keysym)) state_.press(*key);
        break;
      case SDL_MOUSEMOTION:
        moveMouse(event.motion.x, event.motion.y);
        break;
      case SDL_MOUSEWHEEL:
        io.MouseWheel += static_cast<float>(event.wheel.y);
        break;
      case SDL_MOUSEBUTTONDOWN:
      case SDL_MOUSEBUTTONUP:
        if (event.button.button != SDL_BUTTON_LEFT) break;
        moveMouse(event.button.x, event.button.y);
        frame();  // what lies below the mouse is known before the button moves
        io.MouseDown[0] = event.type == SDL_MOUSEBUTTONDOWN;
        frame();  // a press and a release each get a frame, however close they are
        break;
      default:
        break;
    }
  }

  /// From the window's units to pixels, which differ on a dense display.
  void moveMouse(int x, int y) {
    int width = 1, height = 1, pixelsWide = 1, pixelsHigh = 1;
    SDL_GetWindowSize(window_, &width, &height);
    painter_.size(pixelsWide, pixelsHigh);
    const auto scaled = [](int at, int pixels, int units) {
      return static_cast<float>(at) * static_cast<float>(pixels) / static_cast<float>(std::max(units, 1));
    };
    ImGui::GetIO().MousePos = {scaled(x, pixelsWide, width), scaled(y, pixelsHigh, height)};
  }

  device::Form& form_;
  SDL_Window* window_;
  FormPainter painter_;
  FormState state_;
  FormView view_;
  bool closed_ = false;
  std::vector<SDL_Event> others_;
  std::chrono::steady_clock::time_point lastFrame_ = std::chrono::steady_clock::now();
};

}  // namespace

bool showForm(device::Form& form, float wantedScale, bool keepOtherEvents) {
  const Window window(SDL_CreateWindow("", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, 64, 64, SDL_WINDOW_HIDDEN),
                      &SDL_DestroyWindow);
  if (!window) return false;
  form.load();
  const device::FormContent& content = form.content();
  const float scale = std::max(1.0f, fittingScale(wantedScale, content));
  const FormLayout layout = layOut(content, scale);
  SDL_SetWindowTitle(window.get(), shownText(content.caption).c_str());
  SDL_SetWindowSize(window.get(), layout.width, layout.height);
  SDL_SetWindowPosition(window.get(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);

  const Context context(ImGui::CreateContext(), [](ImGuiContext* made) { ImGui::DestroyContext(made); });
  FormWindow shown(form, window.get(), scale);
  if (!shown.works()) return false;
  shown.run(keepOtherEvents);
  return true;
}

}  // namespace ql::dialog
