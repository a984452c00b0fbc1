#include "platform/input/SdlMachine.h"

#include "platform/input/ControlPanel.h"
#include "platform/input/KeyCodes.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <SDL.h>

namespace ql::input {
namespace {

constexpr std::size_t kMostTaps = 256;

bool hasDisplay() { return SDL_WasInit(SDL_INIT_VIDEO) != 0; }
std::int32_t plus(std::int32_t total, std::int32_t step) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(total) + static_cast<std::uint32_t>(step));
}

/// The place among our buttons of an SDL button.
std::optional<std::size_t> buttonOf(std::uint8_t button) {
  switch (button) {
    case SDL_BUTTON_LEFT:
      return 0;
    case SDL_BUTTON_RIGHT:
      return 1;
    case SDL_BUTTON_MIDDLE:
      return 2;
    case SDL_BUTTON_X1:
      return 3;
    default:
      return std::nullopt;
  }
}

/// On Japanese keyboards three places have codes of their own.
std::uint8_t codeOf(std::size_t place) {
  if (place == SDL_SCANCODE_EQUALS || place == SDL_SCANCODE_LEFTBRACKET || place == SDL_SCANCODE_APOSTROPHE) {
    const bool japanese = SDL_GetKeyFromScancode(SDL_SCANCODE_EQUALS) == SDLK_CARET &&
                          SDL_GetKeyFromScancode(SDL_SCANCODE_LEFTBRACKET) == SDLK_AT &&
                          SDL_GetKeyFromScancode(SDL_SCANCODE_APOSTROPHE) == SDLK_COLON;
    if (japanese) return place == SDL_SCANCODE_EQUALS ? kCircumflex : place == SDL_SCANCODE_LEFTBRACKET ? kAt : kColon;
  }
  return keyCode(static_cast<std::uint32_t>(place));
}

}  // namespace

std::unique_ptr<SdlMachine> SdlMachine::open() {
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");  // signals are the host's
  if (SDL_InitSubSystem(SDL_INIT_EVENTS) != 0) return nullptr;
  return std::unique_ptr<SdlMachine>(new SdlMachine);
}

SdlMachine::SdlMachine() {
  static_assert(kPlaces >= SDL_NUM_SCANCODES);
  int count = 0;
  const std::uint8_t* held = SDL_GetKeyboardState(&count);
  for (int i = 0; i < count; ++i) told_.keys[static_cast<std::size_t>(i)] = held[i] != 0;
  SDL_AddEventWatch(&SdlMachine::watch, this);
}

SdlMachine::~SdlMachine() {
  SDL_DelEventWatch(&SdlMachine::watch, this);
  grab_ = false;
  followGrab();
  SDL_QuitSubSystem(SDL_INIT_EVENTS);
}

int SdlMachine::watch(void* self, SDL_Event* event) {
  static_cast<SdlMachine*>(self)->take(*event);
  return 0;
}

void SdlMachine::take(const SDL_Event& event) {
  const std::lock_guard lock(mutex_);
  switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP: {
      const auto place = static_cast<std::size_t>(event.key.keysym.scancode);
      if (place >= kPlaces) break;
      told_.keys[place] = event.type == SDL_KEYDOWN;
      if (event.type == SDL_KEYDOWN && event.key.repeat == 0) told_.tappedKeys.set(place);
      break;
    }
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
      if (const auto button = buttonOf(event.button.button)) {
        told_.buttons[*button] = event.type == SDL_MOUSEBUTTONDOWN;
        if (event.type == SDL_MOUSEBUTTONDOWN) told_.tappedButtons.set(*button);
      }
      break;
    case SDL_MOUSEMOTION:
      told_.motionX = plus(told_.motionX, event.motion.xrel);
      told_.motionY = plus(told_.motionY, event.motion.yrel);
      break;
    case SDL_MOUSEWHEEL: {
      const double notches = event.wheel.preciseY != 0 ? static_cast<double>(event.wheel.preciseY) : event.wheel.y;
      told_.wheel += event.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -notches : notches;
      break;
    }
    case SDL_JOYBUTTONDOWN:
      if (told_.controllerButtons.size() < kMostTaps)
        told_.controllerButtons.push_back({static_cast<std::uint32_t>(event.jbutton.which), event.jbutton.button});
      break;
    case SDL_WINDOWEVENT:
      // What is let go while another program has the focus is never heard of.
      if (event.window.event == SDL_WINDOWEVENT_FOCUS_LOST) {
        told_.keys.reset();
        told_.tappedKeys.reset();
        told_.buttons.reset();
        told_.tappedButtons.reset();
      }
      break;
    default:
      break;
  }
}

SdlMachine::Told SdlMachine::takeTold() {
  const std::lock_guard lock(mutex_);
  Told told = std::move(told_);
  told_ = {};
  told_.keys = told.keys;
  told_.buttons = told.buttons;
  return told;
}

const Snapshot& SdlMachine::refresh() {
  controllers_.update();
  const Told told = takeTold();
  snapshot_.focus = !hasDisplay() || SDL_GetKeyboardFocus() != nullptr || SDL_GetMouseFocus() != nullptr;
  refreshKeys(told);
  refreshMouse(told);
  controllers_.read(snapshot_.controllers, told.controllerButtons);
  return snapshot_;
}

void SdlMachine::refreshKeys(const Told& told) {
  snapshot_.keys.fill(0);
  const std::bitset<kPlaces> down = told.keys | told.tappedKeys;
  if (down.none()) return;
  for (std::size_t place = 0; place < kPlaces; ++place)
    if (down[place]) snapshot_.keys[codeOf(place)] = kPressed;
  snapshot_.keys[0] = 0;  // where places without a code end up
}

XPointer* SdlMachine::pointer() {
  const char* driver = hasDisplay() ? SDL_GetCurrentVideoDriver() : nullptr;
  if (driver == nullptr || SDL_strcmp(driver, "x11") != 0) return nullptr;
  if (!pointerSought_) pointer_ = XPointer::open();
  pointerSought_ = true;
  return pointer_.get();
}

void SdlMachine::refreshMouse(const Told& told) {
  followGrab();
  MouseTotals& mouse = snapshot_.mouse;
  std::bitset<kButtons> buttons = told.buttons | told.tappedButtons;
  std::int32_t x = told.motionX, y = told.motionY;
  double notches = told.wheel;
  if (XPointer* server = pointer()) {
    const PointerChange change = server->take();
    if (!grabbed_) {
      x = change.x;
      y = change.y;
    }
    buttons |= change.held | change.tapped;
    notches = change.wheel;
  }
  if (snapshot_.focus) {
    mouse.x = plus(mouse.x, x);
    mouse.y = plus(mouse.y, y);
    const double wheel = notches * kWheelNotch + wheelRest_, whole = std::trunc(std::clamp(wheel, -1e9, 1e9));
    wheelRest_ = std::clamp(wheel - whole, -1.0, 1.0);
    mouse.z = plus(mouse.z, static_cast<std::int32_t>(whole));
  } else {
    buttons.reset();
  }
  for (std::size_t i = 0; i < kButtons; ++i) mouse.buttons[i] = buttons[i] ? kPressed : std::uint8_t{0};
}

void SdlMachine::followGrab() {
  SDL_Window* window = hasDisplay() ? SDL_GetKeyboardFocus() : nullptr;
  const bool wanted = grab_ && window != nullptr;
  if (wanted == grabbed_ || !hasDisplay()) return;
  if (window != nullptr) SDL_SetWindowMouseGrab(window, wanted ? SDL_TRUE : SDL_FALSE);
  grabbed_ = SDL_SetRelativeMouseMode(wanted ? SDL_TRUE : SDL_FALSE) == 0 && wanted;
}

bool SdlMachine::mouseConnected() const { return hasDisplay(); }
bool SdlMachine::showControlPanel() { return hasDisplay() && openControlPanel(); }

}  // namespace ql::input
