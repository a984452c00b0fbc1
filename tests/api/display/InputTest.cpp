// Keyboard and mouse on an X server: what a user does in the engine's own window, full screen and in the host's window.
#include "OnDisplay.h"

#include <functional>

// Xlib's macros spoil the names of others: last.
#include <X11/Xlib.h>
#undef Bool
#undef Status

namespace ql::test {
namespace {

constexpr const char* kTitle = "A window for input";

class DisplayInput : public OnDisplay {
 protected:
  void start(std::intptr_t window) {
    engine.SetWindowTitle(kTitle);
    engine.SetEngineMode(320, 240, 32, False);
    ASSERT_TRUE(engine.Initialize(window));
    frame();  // the window appears
    input = InputEngine8();
    ASSERT_TRUE(input.IsMouseConnected());
  }
  void frame() {
    engine.Clear();
    engine.RenderToScreen();
  }
  static bool act(const std::string& command) { return std::system(("xdotool " + command).c_str()) == 0; }
  /// Frames until something holds; the X server works at its own time.
  bool eventually(const std::function<bool()>& holds) {
    for (int i = 0; i < 100; ++i) {
      frame();
      if (holds()) return true;
      engine.Pause(engine.TickCount() + 20);
    }
    return false;
  }
  bool pressed(std::int32_t key) {
    return eventually([&] { return static_cast<bool>(input.IsKeyPressed(key)); });
  }
  bool released(std::int32_t key) {
    return eventually([&] { return !input.IsKeyPressed(key); });
  }
  /// The motion of all frames until nothing moves.
  std::pair<int, int> motion() {
    std::pair<int, int> sum{0, 0};
    for (int still = 0, i = 0; still < 6 && i < 100; ++i) {
      frame();
      std::int32_t x = 0, y = 0;
      input.GetMouseState(x, y);
      sum.first += x;
      sum.second += y;
      still = x == 0 && y == 0 ? still + 1 : 0;
      engine.Pause(engine.TickCount() + 20);
    }
    return sum;
  }
  int button(int number) {
    std::int32_t x = 0, y = 0;
    std::int16_t b[3] = {};
    input.GetMouseState(x, y, b[0], b[1], b[2]);
    return b[number];
  }
  int wheel() {
    std::int32_t x = 0, y = 0, roll = 0;
    std::int16_t none = 0;
    input.GetMouseState(x, y, none, none, none, roll);
    return roll;
  }
  std::pair<int, int> pointer() {
    std::int32_t x = 0, y = 0;
    input.GetAbsMouseState(x, y);
    return {x, y};
  }

  InputEngine8 input = nullptr;
};

TEST_F(DisplayInput, KeysOfAUser) {
  start(-1);
  const struct {
    const char* name;  ///< for xdotool; digits are the server's own numbers
    std::int32_t key;
  } keys[] = {{"w", QL_KEY_W},           {"Left", QL_KEY_LEFT},     {"83", QL_KEY_NUMPAD4},
              {"Return", QL_KEY_RETURN}, {"105", QL_KEY_RCONTROL},  {"F5", QL_KEY_F5},
              {"minus", QL_KEY_MINUS},   {"Next", QL_KEY_PAGEDOWN}, {"apostrophe", QL_KEY_APOSTROPHE},
              {"Escape", QL_KEY_ESCAPE}, {"Pause", QL_KEY_PAUSE},   {"Menu", QL_KEY_APPS}};
  for (const auto& row : keys) {
    ASSERT_TRUE(act(std::string("keydown ") + row.name));
    EXPECT_TRUE(pressed(row.key)) << row.name;
    for (std::int32_t other = 0; other < 256; ++other)
      EXPECT_TRUE(other == row.key || !input.IsKeyPressed(other)) << row.name << " presses " << other;
    act(std::string("keyup ") + row.name);
    EXPECT_TRUE(released(row.key)) << row.name;
  }
}

TEST_F(DisplayInput, KeysAreLetGoWhenTheFocusGoes) {
  start(-1);
  ASSERT_TRUE(act("keydown w mousedown 1"));
  ASSERT_TRUE(pressed(QL_KEY_W));
  ::Display* server = XOpenDisplay(nullptr);
  const ::Window other = XCreateSimpleWindow(server, DefaultRootWindow(server), 900, 700, 50, 50, 0, 0, 0);
  XMapRaised(server, other);
  XSync(server, 0);
  engine.Pause(engine.TickCount() + 100);
  XSetInputFocus(server, other, RevertToParent, CurrentTime);
  XSync(server, 0);
  EXPECT_TRUE(released(QL_KEY_W)) << "it is still down, but not for us";
  act("keyup w mouseup 1");
  const Hands hands(kTitle);
  hands.act("windowfocus --sync %w");
  EXPECT_FALSE(input.IsKeyPressed(QL_KEY_W));
  act("keydown s");
  EXPECT_TRUE(pressed(QL_KEY_S));
  act("keyup s");
  XDestroyWindow(server, other);
  XCloseDisplay(server);
}

TEST_F(DisplayInput, AMouseInAWindow) {
  start(-1);
  act("mousemove 500 400");
  motion();
  input.SetMousePosition(100, 100);
  ASSERT_TRUE(act("mousemove_relative 30 20"));
  EXPECT_EQ(motion(), std::pair(30, 20));
  EXPECT_EQ(pointer(), std::pair(130, 120));
  act("mousemove_relative -- -200 -10");
  EXPECT_EQ(motion(), std::pair(-200, -10));
  EXPECT_EQ(pointer(), std::pair(0, 110)) << "at the edge";
  act("mousemove_relative 5 0");
  motion();
  EXPECT_EQ(pointer(), std::pair(5, 110));
  for (const auto& [name, number] : {std::pair("1", 0), std::pair("3", 1), std::pair("2", 2)}) {
    act(std::string("mousedown ") + name);
    EXPECT_TRUE(eventually([&, which = number] { return button(which) == 128; })) << name;
    act(std::string("mouseup ") + name);
    EXPECT_TRUE(eventually([&, which = number] { return button(which) == 0; })) << name;
  }
  const int before = wheel();
  act("click 4 click 4 click 4 click 5");
  EXPECT_TRUE(eventually([&] { return wheel() == before + 240; })) << before << " " << wheel();
}

TEST_F(DisplayInput, AMouseFullScreenBelongsToTheEngine) {
  start(0);
  EXPECT_NE(log().find("INPUT : Mouse Exclusive"), std::string::npos);
  motion();
  for (int i = 0; i < 4; ++i) act("mousemove_relative 400 0");
  const auto way = motion();
  EXPECT_EQ(way.first, 1600) << "further than the screen is wide";
  EXPECT_EQ(pointer().first, 320);
  act("keydown space");
  EXPECT_TRUE(pressed(QL_KEY_SPACE));
  act("keyup space");
  EXPECT_TRUE(released(QL_KEY_SPACE));
  input.ReAcquire(True, True);
  motion();
  for (int i = 0; i < 8; ++i) act("mousemove_relative 200 0");
  EXPECT_EQ(motion().first, 1600) << "shared, the pointer stops at the screen's edge, but the motion does not";
}

TEST_F(DisplayInput, InAWindowOfTheHost) {
  ::Display* server = XOpenDisplay(nullptr);
  const ::Window window = XCreateSimpleWindow(server, DefaultRootWindow(server), 100, 100, 300, 200, 0, 0, 0);
  XStoreName(server, window, "The host's own");
  XSelectInput(server, window,
               ButtonPressMask | KeyPressMask | StructureNotifyMask);  // buttons only one client can have
  XMapWindow(server, window);
  XSync(server, 0);
  engine.Pause(engine.TickCount() + 100);
  XSetInputFocus(server, window, RevertToParent, CurrentTime);
  XSync(server, 0);
  start(static_cast<std::intptr_t>(window));
  act("mousemove 200 200");
  motion();
  act("mousemove_relative 40 30 keydown Up mousedown 1");
  EXPECT_TRUE(pressed(QL_KEY_UP));
  EXPECT_TRUE(eventually([&] { return button(0) == 128; }));
  act("keyup Up mouseup 1");
  EXPECT_TRUE(released(QL_KEY_UP));
  EXPECT_TRUE(eventually([&] { return button(0) == 0; }));
  EXPECT_EQ(pointer(), std::pair(40, 30));
  const int before = wheel();
  act("click 5");
  EXPECT_TRUE(eventually([&] { return wheel() == before - 120; })) << before << " " << wheel();
  EXPECT_GT(XPending(server), 0) << "the host has its events, too";
  XDestroyWindow(server, window);
  XSync(server, 0);
  frame();
  EXPECT_FALSE(input.IsKeyPressed(QL_KEY_UP));
  engine = nullptr;
  XCloseDisplay(server);
}

}  // namespace
}  // namespace ql::test
