// The machine's devices through SDL: synthetic events for keys and mouse, virtual joysticks for controllers.
#include "platform/input/KeyCodes.h"
#include "platform/input/SdlEffect.h"
#include "platform/input/SdlMachine.h"

#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <SDL.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace ql::input {
namespace {

using testing::ElementsAre;

void key(SDL_Scancode place, bool down, bool repeat = false) {
  SDL_Event event{};
  event.type = down ? SDL_KEYDOWN : SDL_KEYUP;
  event.key.keysym.scancode = place;
  event.key.repeat = repeat ? 1 : 0;
  SDL_PushEvent(&event);
}
void button(std::uint8_t number, bool down) {
  SDL_Event event{};
  event.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
  event.button.button = number;
  SDL_PushEvent(&event);
}
void move(int x, int y) {
  SDL_Event event{};
  event.type = SDL_MOUSEMOTION;
  event.motion.xrel = x;
  event.motion.yrel = y;
  SDL_PushEvent(&event);
}
void wheel(float notches, bool flipped = false) {
  SDL_Event event{};
  event.type = SDL_MOUSEWHEEL;
  event.wheel.preciseY = notches;
  event.wheel.direction = flipped ? SDL_MOUSEWHEEL_FLIPPED : SDL_MOUSEWHEEL_NORMAL;
  SDL_PushEvent(&event);
}

class SdlDevices : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(machine, nullptr); }
  std::set<int> pressed() {
    std::set<int> codes;
    const KeyTable& keys = machine->refresh().keys;
    for (std::size_t i = 0; i < keys.size(); ++i)
      if (keys[i] != 0) codes.insert(static_cast<int>(i));
    return codes;
  }
  std::unique_ptr<SdlMachine> machine = SdlMachine::open();
};

TEST(KeyCodes, NameEveryKeyThatHostsCanName) {
  std::set<int> reached;
  for (std::uint32_t place = 0; place < 600; ++place) reached.insert(keyCode(place));
  // All codes with names: 1 to 14, then rows of letters, digits, and the rest; 144 to 146 need a Japanese keyboard.
  for (int code = 1; code <= 58; ++code) EXPECT_TRUE(reached.contains(code)) << code;
  for (int code = 59; code <= 83; ++code) EXPECT_TRUE(reached.contains(code)) << code;
  for (const int code : {87,  88,  121, 123, 141, 144, 145, 146, 156, 157, 181, 184, 197,
                         199, 200, 201, 203, 205, 207, 208, 209, 210, 211, 219, 220, 221})
    EXPECT_TRUE(reached.contains(code)) << code;
  const struct {
    SDL_Scancode place;
    int code;
  } rows[] = {{SDL_SCANCODE_W, 17},         {SDL_SCANCODE_A, 30},         {SDL_SCANCODE_UP, 200},
              {SDL_SCANCODE_KP_8, 72},      {SDL_SCANCODE_SPACE, 57},     {SDL_SCANCODE_LSHIFT, 42},
              {SDL_SCANCODE_KP_ENTER, 156}, {SDL_SCANCODE_RALT, 184},     {SDL_SCANCODE_GRAVE, 41},
              {SDL_SCANCODE_F12, 88},       {SDL_SCANCODE_PAGEDOWN, 209}, {SDL_SCANCODE_UNKNOWN, 0}};
  for (const auto& row : rows) EXPECT_EQ(keyCode(row.place), row.code);
}

TEST_F(SdlDevices, KeysAreHeldUntilTheyAreLetGo) {
  EXPECT_TRUE(pressed().empty());
  key(SDL_SCANCODE_W, true);
  key(SDL_SCANCODE_LEFT, true);
  EXPECT_EQ(pressed(), (std::set<int>{17, 203}));
  key(SDL_SCANCODE_W, false);
  key(SDL_SCANCODE_LEFT, true, true);
  EXPECT_EQ(pressed(), (std::set<int>{203}));
  key(SDL_SCANCODE_LEFT, false);
  key(SDL_SCANCODE_ESCAPE, true);
  key(SDL_SCANCODE_ESCAPE, false);
  EXPECT_EQ(pressed(), (std::set<int>{1})) << "pressed and let go since the last time";
  EXPECT_TRUE(pressed().empty());
  key(SDL_SCANCODE_MEDIASELECT, true);
  key(static_cast<SDL_Scancode>(400), true);
  key(static_cast<SDL_Scancode>(511), true);
  EXPECT_EQ(pressed(), (std::set<int>{237})) << "keys without a code are left out";
}

TEST_F(SdlDevices, NothingStaysPressedWhenTheFocusGoes) {
  key(SDL_SCANCODE_W, true);
  button(SDL_BUTTON_LEFT, true);
  SDL_Event event{};
  event.type = SDL_WINDOWEVENT;
  event.window.event = SDL_WINDOWEVENT_FOCUS_LOST;
  SDL_PushEvent(&event);
  EXPECT_TRUE(pressed().empty());
  EXPECT_THAT(machine->snapshot().mouse.buttons, ElementsAre(0, 0, 0, 0));
}

TEST_F(SdlDevices, TheMouseMovesTurnsItsWheelAndClicks) {
  move(5, -3);
  move(2, 1);
  for (const int number : {SDL_BUTTON_LEFT, SDL_BUTTON_MIDDLE, SDL_BUTTON_X1, SDL_BUTTON_X2})
    button(static_cast<std::uint8_t>(number), true);
  button(SDL_BUTTON_MIDDLE, false);
  wheel(1);
  wheel(0.25f);
  wheel(-2, true);
  const MouseTotals first = machine->refresh().mouse;
  EXPECT_EQ(first, (MouseTotals{7, -2, 390, {128, 0, 128, 128}})) << "the middle button was down for a moment";
  for (int i = 0; i < 3; ++i) wheel(0.003f);
  EXPECT_EQ(machine->refresh().mouse, (MouseTotals{7, -2, 391, {128, 0, 0, 128}})) << "small turns add up";
}

TEST_F(SdlDevices, EventsMayComeFromAnyThread) {
  std::jthread other([] {
    for (int i = 0; i < 2000; ++i) move(1, 0);
  });
  for (int i = 0; i < 200; ++i) machine->refresh();
  other.join();
  EXPECT_EQ(machine->refresh().mouse.x, 2000);
  SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
}

/// Joysticks that SDL makes up.
struct VirtualStick {
  explicit VirtualStick(const char* name, SDL_JoystickType type = SDL_JOYSTICK_TYPE_FLIGHT_STICK, int axes = 2,
                        bool rumbles = false) {
    SDL_VirtualJoystickDesc desc{};
    desc.version = SDL_VIRTUAL_JOYSTICK_DESC_VERSION;
    desc.type = static_cast<std::uint16_t>(type);
    desc.naxes = static_cast<std::uint16_t>(axes);
    desc.nbuttons = 4;
    desc.nhats = 1;
    desc.vendor_id = 0x1234;
    desc.product_id = 0x5678;
    desc.name = name;
    desc.userdata = this;
    if (rumbles)
      desc.Rumble = [](void* self, std::uint16_t strong, std::uint16_t weak) {
        static_cast<VirtualStick*>(self)->rumble.emplace_back(strong, weak);
        return 0;
      };
    const int index = SDL_JoystickAttachVirtualEx(&desc);
    id = SDL_JoystickGetDeviceInstanceID(index);
    stick = SDL_JoystickOpen(index);
  }
  ~VirtualStick() {
    unplug();
    SDL_JoystickClose(stick);
  }
  void unplug() {
    for (int i = 0; i < SDL_NumJoysticks(); ++i)
      if (SDL_JoystickGetDeviceInstanceID(i) == id) SDL_JoystickDetachVirtual(i);
  }
  VirtualStick(const VirtualStick&) = delete;
  VirtualStick& operator=(const VirtualStick&) = delete;
  SDL_JoystickID id = -1;
  SDL_Joystick* stick = nullptr;
  std::vector<std::pair<int, int>> rumble;  ///< what its motors were told: strong, weak
};

TEST_F(SdlDevices, ControllersComeAndGo) {
  EXPECT_TRUE(machine->refresh().controllers.empty());
  machine->listControllers();
  machine->listControllers();
  if (!machine->refresh().controllers.empty()) GTEST_SKIP() << "skipped: real controllers are attached";
  auto first = std::make_unique<VirtualStick>("Stick");
  VirtualStick second("Stick", SDL_JOYSTICK_TYPE_FLIGHT_STICK, 12), pad("Pad", SDL_JOYSTICK_TYPE_GAMECONTROLLER);
  const Snapshot* now = &machine->refresh();
  ASSERT_EQ(now->controllers.size(), 3u);
  const ControllerInfo info = *now->controllers[0].info;
  EXPECT_EQ(info.product, "Stick");
  EXPECT_EQ(info.kind, ControllerKind::FlightStick);
  EXPECT_EQ(std::tuple(info.axes, info.buttons, info.hats), std::tuple(2, 4, 1));
  EXPECT_FALSE(info.forceFeedback);
  EXPECT_EQ(info.productGuid.size(), 38u);
  EXPECT_EQ(now->controllers[1].info->productGuid, info.productGuid);
  EXPECT_NE(now->controllers[1].info->instanceGuid, info.instanceGuid);
  EXPECT_EQ(now->controllers[1].info->axes, 8) << "more than eight axes are not read";
  EXPECT_EQ(now->controllers[2].info->kind, ControllerKind::Gamepad);
  EXPECT_EQ(machine->openForceFeedback(info.id), nullptr);
  EXPECT_EQ(machine->openForceFeedback(4711), nullptr);

  SDL_JoystickSetVirtualAxis(first->stick, 1, -20'000);
  SDL_JoystickSetVirtualButton(first->stick, 3, 1);
  SDL_JoystickSetVirtualHat(first->stick, 0, SDL_HAT_LEFTDOWN);
  now = &machine->refresh();
  EXPECT_EQ(now->controllers[0].state.axes[1], -20'000);
  EXPECT_TRUE(now->controllers[0].state.buttons[3]);
  EXPECT_EQ(now->controllers[0].state.hats[0], 12);
  SDL_JoystickSetVirtualButton(first->stick, 0, 1);
  SDL_JoystickUpdate();
  SDL_JoystickSetVirtualButton(first->stick, 0, 0);
  EXPECT_TRUE(machine->refresh().controllers[0].state.buttons[0]) << "pressed for a moment";
  EXPECT_FALSE(machine->refresh().controllers[0].state.buttons[0]);
  EXPECT_EQ(SDL_PeepEvents(nullptr, 0, SDL_PEEKEVENT, SDL_JOYAXISMOTION, SDL_JOYDEVICEREMOVED), 0);

  first->unplug();
  ASSERT_EQ(machine->refresh().controllers.size(), 2u);
  EXPECT_EQ(machine->snapshot().find(info.id), nullptr);
  const VirtualStick again("Stick");
  now = &machine->refresh();
  ASSERT_EQ(now->controllers.size(), 3u);
  EXPECT_EQ(now->controllers[2].info->instanceGuid, info.instanceGuid) << "it is the one that went";
  EXPECT_NE(now->controllers[2].info->id, info.id);
}

TEST_F(SdlDevices, MotorsOutliveTheirControllerAndTheMachine) {
  machine->listControllers();
  if (!machine->refresh().controllers.empty()) GTEST_SKIP() << "skipped: real controllers are attached";
  auto pad = std::make_unique<VirtualStick>("Pad", SDL_JOYSTICK_TYPE_GAMECONTROLLER, 2, true);
  const ControllerInfo info = *machine->refresh().controllers.at(0).info;
  EXPECT_TRUE(info.forceFeedback);
  const std::unique_ptr<ForceFeedback> motors = machine->openForceFeedback(info.id);
  ASSERT_NE(motors, nullptr);
  Effect effect;
  effect.kind = EffectKind::Rumble;
  effect.magnitude = 10'000;
  effect.weakMagnitude = 5000;
  const int number = motors->create(effect);
  EXPECT_TRUE(motors->start(number, 1));
  EXPECT_TRUE(motors->running(number));
  EXPECT_EQ(pad->rumble.back().second, pad->rumble.back().first / 2);
  motors->setGain(0);
  EXPECT_EQ(pad->rumble.back(), std::pair(0, 0));
  motors->setGain(kFullForce);

  pad->unplug();
  machine->refresh();
  EXPECT_EQ(machine->openForceFeedback(info.id), nullptr);
  motors->start(number, 1);  // whatever SDL says of it
  motors->stopAll();
  EXPECT_FALSE(motors->running(number));
  pad.reset();
  machine.reset();
  motors->start(number, 1);
  motors->destroy(number);
}

TEST(SdlEffects, SayTheSameInItsOwnUnits) {
  Effect effect;
  effect.duration = 2'500'000;
  effect.delay = 10'000;
  effect.gain = 5000;
  effect.triggerButton = 3;
  effect.triggerInterval = 250'000;
  effect.direction = -9000;
  effect.useEnvelope = true;
  effect.envelope = {10'000, 100'000, 5000, 90'000'000};
  effect.magnitude = 10'000;
  effect.rampStart = -10'000;
  effect.rampEnd = 20'000;
  effect.offset = -5000;
  effect.phase = -9000;
  effect.period = 40'000;
  const SdlEffect constant(effect);
  const SDL_HapticConstant& c = constant.value.constant;
  EXPECT_EQ(c.type, SDL_HAPTIC_CONSTANT);
  EXPECT_EQ(std::tuple(c.length, c.delay, c.button, c.interval), std::tuple(2500u, 10, 4, 250));
  EXPECT_EQ(std::tuple(c.direction.type, c.direction.dir[0]), std::tuple(SDL_HAPTIC_POLAR, 27'000));
  EXPECT_EQ(c.level, 16'383) << "half gain";
  EXPECT_EQ(std::tuple(c.attack_length, c.attack_level, c.fade_length, c.fade_level),
            std::tuple(100, 32'767, 65'535, 16'383));

  effect.kind = EffectKind::Ramp;
  const SdlEffect ramp(effect);
  EXPECT_EQ(std::tuple(ramp.value.ramp.start, ramp.value.ramp.end), std::tuple(-16'383, 16'383)) << "clamped";
  for (const auto& [kind, type] :
       {std::pair(EffectKind::Sine, SDL_HAPTIC_SINE), std::pair(EffectKind::Triangle, SDL_HAPTIC_TRIANGLE),
        std::pair(EffectKind::SawtoothUp, SDL_HAPTIC_SAWTOOTHUP),
        std::pair(EffectKind::SawtoothDown, SDL_HAPTIC_SAWTOOTHDOWN)}) {
    effect.kind = kind;
    const SdlEffect wave(effect);
    const SDL_HapticPeriodic& p = wave.value.periodic;
    EXPECT_EQ(p.type, type);
    EXPECT_EQ(std::tuple(p.period, p.magnitude, p.offset, p.phase), std::tuple(40, 16'383, -8191, 27'000));
  }
  effect.kind = EffectKind::Square;
  const SdlEffect square(effect);
  EXPECT_EQ(std::tuple(square.value.custom.period, square.value.custom.samples, square.samples.size()),
            std::tuple(20, 2, 2u));

  effect.conditions[1] = {1000, 10'000, -10'000, 10'000, 5000, 2500};
  for (const auto& [kind, type] :
       {std::pair(EffectKind::Spring, SDL_HAPTIC_SPRING), std::pair(EffectKind::Damper, SDL_HAPTIC_DAMPER),
        std::pair(EffectKind::Inertia, SDL_HAPTIC_INERTIA), std::pair(EffectKind::Friction, SDL_HAPTIC_FRICTION)}) {
    effect.kind = kind;
    const SdlEffect condition(effect);
    const SDL_HapticCondition& f = condition.value.condition;
    EXPECT_EQ(f.type, type);
    EXPECT_EQ(std::tuple(f.right_coeff[1], f.left_coeff[1], f.right_sat[1], f.left_sat[1], f.deadband[1], f.center[1]),
              std::tuple(16'383, -16'383, 65'535, 32'767, 16'383, 3276));
    EXPECT_EQ(f.right_coeff[0], 0);
  }

  effect.kind = EffectKind::Custom;
  effect.channels = 2;
  effect.samplePeriod = 7000;
  effect.samples = {10'000, -10'000, 0, 1, 2};
  const SdlEffect custom(effect);
  EXPECT_EQ(std::tuple(custom.value.custom.channels, custom.value.custom.period, custom.value.custom.samples),
            std::tuple(2, 7, 2));
  EXPECT_EQ(static_cast<std::int16_t>(custom.value.custom.data[1]), -16'383);
  effect.kind = EffectKind::Rumble;
  effect.duration = kForever;
  effect.weakMagnitude = -5;
  const SdlEffect rumble(effect);
  EXPECT_EQ(std::tuple(rumble.value.leftright.length, rumble.value.leftright.large_magnitude,
                       rumble.value.leftright.small_magnitude),
            std::tuple(SDL_HAPTIC_INFINITY, 32'767, 0));

  EXPECT_EQ(kindsOf(SDL_HAPTIC_SINE | SDL_HAPTIC_LEFTRIGHT | SDL_HAPTIC_GAIN),
            effectBit(EffectKind::Sine) | effectBit(EffectKind::Rumble));
  EXPECT_EQ(kindsOf(~0u), (1u << kEffectKinds) - 1);
}

}  // namespace
}  // namespace ql::input
