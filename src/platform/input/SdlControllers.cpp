#include "platform/input/SdlControllers.h"

#include "platform/input/SdlForceFeedback.h"

#include <algorithm>
#include <set>
#include <string>

#include <SDL.h>

namespace ql::input {
namespace {

constexpr std::size_t kLongestName = 255;

/// "{01234567-89AB-...}"
std::string guidText(const SDL_JoystickGUID& guid) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = "{";
  for (std::size_t i = 0; i < sizeof guid.data; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[guid.data[i] >> 4];
    text += kDigits[guid.data[i] & 15];
  }
  return text + "}";
}

/// SDL's number of a device has zeros where ours puts the place among equal devices.
std::string instanceText(SDL_JoystickGUID guid, std::size_t ordinal) {
  guid.data[6] = static_cast<std::uint8_t>((ordinal + 1) >> 8);
  guid.data[7] = static_cast<std::uint8_t>(ordinal + 1);
  return guidText(guid);
}

ControllerKind kindOf(SDL_JoystickType type) {
  switch (type) {
    case SDL_JOYSTICK_TYPE_GAMECONTROLLER:
      return ControllerKind::Gamepad;
    case SDL_JOYSTICK_TYPE_WHEEL:
      return ControllerKind::Wheel;
    case SDL_JOYSTICK_TYPE_FLIGHT_STICK:
      return ControllerKind::FlightStick;
    case SDL_JOYSTICK_TYPE_THROTTLE:
    case SDL_JOYSTICK_TYPE_GUITAR:
    case SDL_JOYSTICK_TYPE_DRUM_KIT:
    case SDL_JOYSTICK_TYPE_DANCE_PAD:
      return ControllerKind::Supplement;
    default:
      return ControllerKind::Joystick;
  }
}

std::uint8_t countOf(int count, std::size_t most) {
  return static_cast<std::uint8_t>(std::clamp(count, 0, static_cast<int>(most)));
}

std::string nameOf(const char* name) {
  return std::string(name == nullptr ? "Controller" : name).substr(0, kLongestName);
}

}  // namespace

void SdlControllers::start() {
  if (subsystem_) return;
  const bool hostUsesThem = SDL_WasInit(SDL_INIT_JOYSTICK) != 0;
  // Whether controllers are heard without focus is decided for each of them, above.
  SDL_SetHintWithPriority(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1", SDL_HINT_DEFAULT);
  if (SDL_InitSubSystem(SDL_INIT_JOYSTICK) != 0) return;
  SDL_InitSubSystem(SDL_INIT_HAPTIC);  // without it there are no motors
  subsystem_ = {this, [](void*) { SDL_QuitSubSystem(SDL_INIT_JOYSTICK | SDL_INIT_HAPTIC); }};
  queueIsOurs_ = !hostUsesThem;
}

void SdlControllers::update() {
  if (!subsystem_) return;
  SDL_JoystickUpdate();
  std::set<std::uint32_t> present;
  for (int i = 0; i < SDL_NumJoysticks(); ++i) {
    const SDL_JoystickID number = SDL_JoystickGetDeviceInstanceID(i);
    if (number < 0) continue;
    const auto id = static_cast<std::uint32_t>(number);
    present.insert(id);
    if (!devices_.contains(id)) attach(i, id);
  }
  std::erase_if(devices_, [&](const auto& entry) { return !present.contains(entry.first); });
  // Nobody else reads these events, and the queue is not endless.
  if (queueIsOurs_) SDL_FlushEvents(SDL_JOYAXISMOTION, SDL_CONTROLLERSENSORUPDATE);
}

void SdlControllers::attach(int index, std::uint32_t id) {
  // Motors may outlive this list; SDL frees all joysticks when its part ends.
  const std::shared_ptr<SDL_Joystick> joystick(SDL_JoystickOpen(index), [sdl = subsystem_](SDL_Joystick* opened) {
    if (opened != nullptr) SDL_JoystickClose(opened);
  });
  if (!joystick) return;
  const SDL_JoystickGUID guid = SDL_JoystickGetGUID(joystick.get());
  const std::string product = guidText(guid);
  std::size_t ordinal = 0;
  const auto taken = [&](const auto& entry) {
    return entry.second.info->productGuid == product && entry.second.ordinal == ordinal;
  };
  while (std::any_of(devices_.begin(), devices_.end(), taken)) ++ordinal;

  ControllerInfo info;
  info.id = id;
  info.product = nameOf(SDL_JoystickName(joystick.get()));
  info.instance = ordinal == 0 ? info.product : info.product + " " + std::to_string(ordinal + 1);
  info.productGuid = product;
  info.instanceGuid = instanceText(guid, ordinal);
  info.kind = kindOf(SDL_JoystickGetType(joystick.get()));
  info.axes = countOf(SDL_JoystickNumAxes(joystick.get()), kMostAxes);
  info.buttons = countOf(SDL_JoystickNumButtons(joystick.get()), kMostButtons);
  info.hats = countOf(SDL_JoystickNumHats(joystick.get()), kMostHats);
  info.forceFeedback =
      SDL_JoystickIsHaptic(joystick.get()) == SDL_TRUE || SDL_JoystickHasRumble(joystick.get()) == SDL_TRUE;
  devices_[id] = {joystick, std::make_shared<const ControllerInfo>(std::move(info)), ordinal};
}

void SdlControllers::read(std::vector<AttachedController>& out, std::span<const ButtonTap> taps) const {
  out.resize(devices_.size());
  std::size_t next = 0;
  for (const auto& [id, device] : devices_) {
    AttachedController& controller = out[next++];
    SDL_Joystick* joystick = device.joystick.get();
    controller.info = device.info;
    ControllerState state;
    for (std::size_t i = 0; i < device.info->axes; ++i)
      state.axes[i] = SDL_JoystickGetAxis(joystick, static_cast<int>(i));
    for (std::size_t i = 0; i < device.info->buttons; ++i)
      state.buttons[i] = SDL_JoystickGetButton(joystick, static_cast<int>(i)) != 0;
    for (std::size_t i = 0; i < device.info->hats; ++i)
      state.hats[i] = SDL_JoystickGetHat(joystick, static_cast<int>(i));
    for (const ButtonTap& tap : taps)
      if (tap.controller == id && tap.button < device.info->buttons) state.buttons.set(tap.button);
    controller.state = state;
  }
}

std::unique_ptr<ForceFeedback> SdlControllers::openForceFeedback(std::uint32_t id) const {
  const auto found = devices_.find(id);
  return found == devices_.end() ? nullptr : openSdlForceFeedback(found->second.joystick);
}

}  // namespace ql::input
