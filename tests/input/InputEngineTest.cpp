// Keyboard and mouse as a host sees them: what is logged, when they are sampled, where the pointer goes.
#include "InputTest.h"

#include <limits>

namespace ql::test {
namespace {

using Place = std::pair<int, int>;

class Input : public InputTest {};

TEST_F(Input, BeforeTheDeviceThereIsAMessageAndNothingElse) {
  input::InputEngine input(context_);
  ASSERT_EQ(machine_.display->messages.size(), 1u);
  EXPECT_EQ(machine_.display->messages[0].first, "ERROR QL8");
  EXPECT_EQ(machine_.display->messages[0].second,
            "The Input Engine methods can't be called before the 3D Engine Init !");
  EXPECT_EQ(machine_.logLines().back(), "INPUT ERROR : The 3D engine must be initialized before.");
  EXPECT_EQ(input.controllers(), nullptr);
  EXPECT_EQ(input.mouseSensitivity, 0);

  startDevice();
  devices_->press(30);
  frame();
  EXPECT_FALSE(input.isKeyPressed(30)) << "it stays without devices";
  input.reAcquire(true, true);
  frame();
  EXPECT_FALSE(input.isKeyPressed(30));
  EXPECT_FALSE(input.isMouseConnected());
  EXPECT_FALSE(context_.get<engine::PointerState>().known);
}

TEST_F(Input, IsSharedInAWindowAndExclusiveFullScreen) {
  const std::vector<std::string> shared{"INPUT : Global initialization", "INPUT : Keyboard Acquired",
                                        "INPUT : ABS Mouse Acquired"};
  const std::vector<std::string> exclusive{"INPUT : Global initialization", "INPUT : Key Exclusive ",
                                           "INPUT : Keyboard Acquired", "INPUT : Mouse Exclusive",
                                           "INPUT : ABS Mouse Acquired"};
  for (const bool fullScreen : {false, true}) {
    startDevice(fullScreen);
    input::InputEngine input(context_);
    EXPECT_EQ(machine_.logLines(), fullScreen ? exclusive : shared);
    EXPECT_EQ(devices_->grabbed, fullScreen);
    EXPECT_EQ(input.mouseSensitivity, 1);
    devices_->press(17);
    frame();
    EXPECT_TRUE(input.isKeyPressed(17));
    devices_->now.focus = false;
    frame();
    EXPECT_EQ(input.isKeyPressed(17), !fullScreen) << "exclusive devices are silent without focus";
    devices_->now.focus = true;
    input.reAcquire(true, true);
    EXPECT_FALSE(devices_->grabbed) << "taken anew they are shared";
  }
}

TEST_F(Input, KeysAreThoseOfTheLastFrameEnd) {
  startDevice();
  input::InputEngine input(context_);
  devices_->press(200);
  EXPECT_FALSE(input.isKeyPressed(200)) << "not sampled yet";
  frame();
  EXPECT_TRUE(input.isKeyPressed(200));
  EXPECT_FALSE(input.isKeyPressed(208));
  for (const int code : {-1, 256, 1 << 20}) EXPECT_EQ(errorNumber([&] { (void)input.isKeyPressed(code); }), 9) << code;

  // Down and up between two frames, seen by a refresh in between: it counts once.
  devices_->press(200, false);
  devices_->press(57);
  input::refreshInput(context_);
  devices_->press(57, false);
  frame();
  EXPECT_TRUE(input.isKeyPressed(57));
  EXPECT_FALSE(input.isKeyPressed(200));
  frame();
  EXPECT_FALSE(input.isKeyPressed(57));
}

TEST_F(Input, ThePointerSticksToTheEdgesAndTurnsBackAtOnce) {
  startDevice();
  devices_->moveMouse(777, -55);
  input::InputEngine input(context_);
  frame();
  EXPECT_EQ(absolute(), Place(0, 0)) << "wherever the mouse was before";
  // One row per frame: the motion, and where the pointer is then.
  const struct {
    Place motion, place;
  } rows[] = {{{10, 20}, {10, 20}},   {{-300, 0}, {0, 20}},    {{1, 0}, {1, 20}},   {{0, -21}, {1, 0}},
              {{0, 3}, {1, 3}},       {{5000, 0}, {640, 3}},   {{-2, 0}, {638, 3}}, {{0, 9000}, {638, 480}},
              {{-1, -1}, {637, 479}}, {{-5000, -5000}, {0, 0}}};
  for (const auto& row : rows) {
    devices_->moveMouse(row.motion.first, row.motion.second);
    frame();
    EXPECT_EQ(absolute(), row.place) << row.motion.first << "," << row.motion.second;
    EXPECT_EQ(relative(), row.motion);
    const auto& pointer = context_.get<engine::PointerState>();
    EXPECT_TRUE(pointer.known);
    EXPECT_EQ(Place(pointer.x, pointer.y), row.place);
  }
  frame();
  EXPECT_EQ(relative(), Place(0, 0));

  input.setMousePosition(10, 20);
  EXPECT_EQ(context_.get<engine::PointerState>().x, 10);
  frame();
  EXPECT_EQ(absolute(), Place(10, 20));
  EXPECT_EQ(relative(), Place(0, 0));
  constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
  input.setMousePosition(kLeast, kMost);
  EXPECT_EQ(absolute(), Place(kLeast, kMost));
  frame();
  EXPECT_EQ(absolute(), Place(0, 480));
}

TEST_F(Input, ButtonsAndWheel) {
  startDevice();
  input::InputEngine input(context_);
  devices_->now.mouse.buttons = {128, 0, 128, 0};
  devices_->now.mouse.z = -240;
  frame();
  EXPECT_EQ(state().mouseRaw.buttons[0], 128);
  EXPECT_EQ(state().mouseRaw.buttons[1], 0);
  EXPECT_EQ(state().mouseRaw.z, -240);
  frame();
  EXPECT_EQ(state().mouseRaw.z, -240) << "a running total";
}

TEST_F(Input, DevicesLetGoAreSilentUntilTheyAreTakenAnew) {
  startDevice();
  input::InputEngine input(context_);
  devices_->press(32);
  devices_->now.mouse.buttons[0] = 128;
  devices_->moveMouse(50, 60);
  frame();
  input.unloadDevices();
  EXPECT_FALSE(input.isKeyPressed(32)) << "no key stays pressed";
  devices_->moveMouse(5, 5);
  frame();
  EXPECT_FALSE(input.isKeyPressed(32));
  EXPECT_EQ(state().mouseRaw.buttons[0], 0);
  EXPECT_EQ(absolute(), Place(50, 60));

  input.reAcquire(true, false);
  devices_->moveMouse(5, 5);
  frame();
  EXPECT_TRUE(input.isKeyPressed(32));
  EXPECT_EQ(relative(), Place(0, 0)) << "the keyboard only";

  input.reAcquire(false, true);
  frame();
  EXPECT_FALSE(input.isKeyPressed(32));
  EXPECT_EQ(absolute(), Place(0, 0));
  EXPECT_EQ(relative(), Place(0, 0)) << "what it did meanwhile is nobody's motion";
  EXPECT_EQ(state().mouseRaw.buttons[0], 128);
}

TEST_F(Input, ASecondEngineTakesOverAndTheFirstOnesEndHurtsNobody) {
  startDevice();
  auto first = std::make_unique<input::InputEngine>(context_);
  auto second = std::make_unique<input::InputEngine>(context_);
  first.reset();
  devices_->press(1);
  frame();
  EXPECT_TRUE(second->isKeyPressed(1));
  second.reset();
  EXPECT_FALSE(state().ready);
  const int before = devices_->refreshes;
  frame();
  EXPECT_EQ(devices_->refreshes, before) << "nobody asks";
}

}  // namespace
}  // namespace ql::test
