// Input as hosts use it, without a display: keys from SDL's events, a joystick that SDL makes up, sessions of both.
#include "Engine.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <SDL.h>
#include <gmock/gmock.h>

namespace ql::test {
namespace {

void key(SDL_Scancode place, bool down) {
  SDL_Event event{};
  event.type = down ? SDL_KEYDOWN : SDL_KEYUP;
  event.key.keysym.scancode = place;
  SDL_PushEvent(&event);
}

/// A joystick with two axes, a hat and twelve buttons.
class VirtualStick {
 public:
  VirtualStick() {
    const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_FLIGHT_STICK, 2, 12, 1);
    id_ = SDL_JoystickGetDeviceInstanceID(index);
    stick_ = SDL_JoystickOpen(index);
  }
  ~VirtualStick() {
    unplug();
    SDL_JoystickClose(stick_);
  }
  VirtualStick(const VirtualStick&) = delete;
  VirtualStick& operator=(const VirtualStick&) = delete;
  void axis(int number, int value) { SDL_JoystickSetVirtualAxis(stick_, number, static_cast<std::int16_t>(value)); }
  void press(int number) { SDL_JoystickSetVirtualButton(stick_, number, 1); }
  void unplug() {
    for (int i = 0; i < SDL_NumJoysticks(); ++i)
      if (SDL_JoystickGetDeviceInstanceID(i) == id_) SDL_JoystickDetachVirtual(i);
  }

 private:
  SDL_JoystickID id_ = -1;
  SDL_Joystick* stick_ = nullptr;
};

class Input : public EngineTest {
 protected:
  void frame() {
    engine.Clear();
    engine.RenderToScreen();
  }
};

TEST_F(Input, BeforeTheEngineIsInitializedSaysSoAndDoesNothing) {
  testing::internal::CaptureStderr();
  InputEngine8 input;
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("ERROR QL8"));
  EXPECT_THAT(engineLog(), testing::HasSubstr("INPUT ERROR : The 3D engine must be initialized before."));
  EXPECT_FALSE(input.GameControllers());
  EXPECT_FALSE(input.MouseCursors());
  EXPECT_FALSE(input.IsKeyPressed(QL_KEY_A));
  EXPECT_FALSE(input.IsMouseConnected());
}

TEST_F(Input, KeysAndTheHostsOwnValues) {
  start();
  InputEngine8 input;
  key(SDL_SCANCODE_PAGEDOWN, true);
  frame();
  EXPECT_TRUE(input.IsKeyPressed(QL_KEY_NEXT));
  EXPECT_EQ(input.IsKeyPressed(QL_KEY_PAGEDOWN).Value(), -1);
  key(SDL_SCANCODE_PAGEDOWN, false);
  frame();
  EXPECT_FALSE(input.IsKeyPressed(QL_KEY_NEXT));
  EXPECT_EQ(errorOf([&] { (void)input.IsKeyPressed(256); }), 9);

  EXPECT_EQ(input.MouseSensitivity(), 1);
  for (const auto& [given, kept] : {std::pair(2.5f, 2), std::pair(3.5f, 4), std::pair(-7.9f, -8)}) {
    input.SetMouseSensitivity(given);
    EXPECT_EQ(input.MouseSensitivity(), kept);
  }
  EXPECT_EQ(errorOf([&] { input.SetMouseSensitivity(1e20f); }), 6);
  input.SetMousePosition(5, 7);
  std::int32_t x = 0, y = 0, wheel = -1;
  std::int16_t b1 = -1, b2 = -1, b3 = -1;
  input.GetAbsMouseState(x, y, b1, b2);
  EXPECT_EQ(std::tuple(x, y, b1, b2), std::tuple(5, 7, 0, 0));
  input.GetMouseState(x, y, b1, b2, b3, wheel);
  EXPECT_EQ(std::tuple(x, y, b3, wheel), std::tuple(0, 0, 0, 0));
  EXPECT_TRUE(input.CreateMouseCursorFromFile("no such file"));
  input.RenderMouse();
  input.ShowControlPanel(0);
  EXPECT_THAT(engineLog(), testing::HasSubstr("INPUT : This desktop has no control panel"));

  Quasarlens8 another;
  EXPECT_EQ(errorOf([&] { (void)input.IsKeyPressed(1); }), 91) << "of an engine that ended";
}

TEST_F(Input, CursorsAreKeptByPlaceAndKey) {
  start();
  InputEngine8 input;
  MouseCursors8 cursors = input.MouseCursors();
  MouseCursor8 own;
  EXPECT_FALSE(own.MCursor());
  EXPECT_FALSE(own.Parent());
  own.MCursor(internals.GetBackbuffer());
  input.SetMouseCursor(own);
  EXPECT_EQ(input.MouseCursor().Width(), 64);
  EXPECT_EQ(errorOf([&] { input.SetMouseCursor(nullptr); }), 91);

  const MouseCursor8 arrow = cursors.Add(internals.GetBackbuffer(), "Arrow");
  cursors.Add({}, "");
  EXPECT_EQ(errorOf([&] { cursors.Add({}, "ARROW"); }), 5);
  EXPECT_EQ(cursors.Count(), 2);
  EXPECT_EQ(cursors.Item("arrow"), arrow);
  EXPECT_EQ(cursors.Item(1), arrow);
  EXPECT_EQ(arrow.Key(), "Arrow");
  EXPECT_EQ(arrow.Parent(), cursors);
  EXPECT_EQ(cursors.Parent(), input);
  EXPECT_EQ(cursors.NewEnum().size(), 2u);
  EXPECT_EQ(errorOf([&] { cursors.Item(3); }), 9);
  EXPECT_EQ(errorOf([&] { cursors.Item(""); }), 5) << "an item without a key has none";
  cursors.Remove("Arrow");
  EXPECT_EQ(errorOf([&] { cursors.Remove(2); }), 9);
  cursors.Clear();
  EXPECT_EQ(cursors.Count(), 0);
  input = nullptr;
  EXPECT_FALSE(cursors.Parent());
}

TEST_F(Input, AControllerTellsWhatHappensToIt) {
  start();
  InputEngine8 input;
  GameControllers8 all = input.GameControllers();
  all.GetControllers();
  if (all.Count() != 0) GTEST_SKIP() << "skipped: real controllers are attached";
  auto device = std::make_unique<VirtualStick>();
  EXPECT_EQ(all.Count(), 0);
  all.GetControllers();
  ASSERT_EQ(all.Count(), 1);
  GameController8 stick = all.Item(1);
  EXPECT_EQ(stick, all.Item(stick.Key()));
  EXPECT_EQ(stick.ControllerType(), 23);
  EXPECT_EQ(std::tuple(stick.UsagePage(), stick.Usage()), std::tuple(1, 4));
  EXPECT_EQ(stick.FFDriver(), "{00000000-0000-0000-0000-000000000000}");
  EXPECT_FALSE(stick.InUse());
  EXPECT_FALSE(stick.DirectInputDevice());
  EXPECT_EQ(stick.GetButtonCount(), 0);
  stick.Poll();

  std::vector<std::string> told;
  const Connection connections[] = {
      stick.Change().Connect([&] { told.push_back("change " + std::to_string(stick.ControllerState().x)); }),
      stick.Initialized().Connect([&] { told.emplace_back("initialized"); }),
      stick.UnInitialized().Connect([&] { told.emplace_back("uninitialized"); }),
      stick.OnError().Connect([&](std::int32_t number, const std::string& text, const std::string& where) {
        EXPECT_FALSE(text.empty());
        told.push_back(where + " " + std::to_string(number));
      })};
  const auto expect = [&](std::vector<std::string> lines) {
    EXPECT_EQ(told, lines);
    told.clear();
  };
  EXPECT_EQ(errorOf([&] { stick.Initialize(3); }), 5);
  expect({"Initialize 5"});
  EXPECT_EQ(errorOf([&] { stick.DataFormat(5); }), 5);
  stick.DataFormat(eDIJoyStick2);
  stick.Initialize();
  expect({"initialized"});
  EXPECT_TRUE(stick.InUse() && stick.DirectInputDevice() && stick.IsConnected());
  EXPECT_EQ(stick.GetButtonCount(), 12);
  EXPECT_EQ(stick.Capabilities().Axes, 2);
  EXPECT_THAT(stick.GetAxis(), testing::ElementsAre(True, True, False, False, False, False, False, False));
  EXPECT_EQ(stick.ForceFeedEffects().Count(), 0);
  EXPECT_EQ(stick.ForceFeedEffects().Parent(), stick);
  EXPECT_EQ(static_cast<std::uint32_t>(errorOf([&] { stick.CreateForceFeedEffect("GUID_Sine", {}); })), 0x80040154u);
  told.clear();

  device->axis(0, 32767);
  device->press(11);
  frame();
  expect({"change 10000"});
  EXPECT_EQ(stick.ControllerState().y, 5000);
  EXPECT_EQ(stick.ControllerState().PointOfView0, -1);
  EXPECT_EQ(stick.ControllerStateAdvanced().Buttons[11], 128);
  frame();
  expect({});
  device->axis(0, -32768);
  stick.Poll();
  expect({"change 0"});
  device->axis(0, 0);
  engine.Pause(0);
  expect({"change 5000"});

  {
    const Connection throwing = stick.Change().Connect([] { throw std::logic_error("the host's own"); });
    device->axis(1, 32767);
    EXPECT_THROW(frame(), std::logic_error) << "as it was thrown";
    expect({"change 5000"});
    EXPECT_NO_THROW(frame());
  }
  device->unplug();
  frame();
  expect({});
  EXPECT_FALSE(stick.IsConnected());
  EXPECT_EQ(stick.ControllerState().y, 10000) << "its last state";
  device = std::make_unique<VirtualStick>();
  frame();
  expect({});
  device->axis(0, 32767);
  frame();
  expect({"change 10000"});

  {
    const Connection leaving = stick.Change().Connect([&] { stick.UnloadController(); });
    device->axis(0, 0);
    frame();
  }
  expect({"change 5000", "uninitialized"});
  stick.UnloadController();
  expect({});
  EXPECT_FALSE(stick.InUse());
}

TEST_F(Input, ReplaysWithKeysAndAController) {
  start();
  const auto host = [&](VirtualStick* user) {
    std::vector<std::string> seen;
    InputEngine8 input;
    GameController8 stick = nullptr;
    for (int i = 0; i < 12; ++i) {
      if (user != nullptr) {
        *time += 20;
        key(SDL_SCANCODE_Z, i % 3 == 0);
        user->axis(1, i * 2500);
      }
      if (i == 2) {
        input.GameControllers().GetControllers();
        stick = input.GameControllers().Item(1);
        stick.Initialize();
      }
      engine.Clear();
      engine.RenderToScreen();
      seen.push_back(std::to_string(engine.TickCount()) + (input.IsKeyPressed(QL_KEY_Z) ? " Z " : " - ") +
                     (stick ? std::to_string(stick.ControllerState().y) : ""));
    }
    key(SDL_SCANCODE_Z, false);
    return seen;
  };
  ASSERT_TRUE(internals.StartRecording("play.qlinput", "note"));
  const std::vector<std::string> first = [&] {
    InputEngine8 input;
    input.GameControllers().GetControllers();
    VirtualStick device;
    return host(&device);
  }();
  EXPECT_TRUE(internals.StopSession());
  EXPECT_FALSE(internals.ReplayEnded());

  *time = 500'000;
  ASSERT_TRUE(internals.StartReplay("play.qlinput"));
  EXPECT_EQ(internals.SessionNote(), "note");
  {
    InputEngine8 input;
    input.GameControllers().GetControllers();
  }
  EXPECT_EQ(host(nullptr), first);
  EXPECT_TRUE(internals.ReplayEnded());
  EXPECT_TRUE(internals.StopSession());
  EXPECT_EQ(engine.TickCount(), 500'000);

  put("damaged.qlinput", "QLINPUT\n\x01\xFF");
  EXPECT_FALSE(internals.StartReplay("damaged.qlinput"));
  EXPECT_THAT(engineLog(), testing::HasSubstr("INPUT : Error during replay : damaged.qlinput"));
}

}  // namespace
}  // namespace ql::test
