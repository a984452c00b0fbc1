// Controllers: what is read of them, when it is told, and what happens when they go.
#include "InputTest.h"
#include "input/AxisRange.h"

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using input::EffectKind;
using testing::ElementsAre;

TEST(AxisRange, HasADeadMiddleAndEarlyEnds) {
  const struct {
    input::AxisRange range;
    int raw, value;
  } rows[] = {
      {{1000, 9500, 0, 10000}, 0, 5000},        {{1000, 9500, 0, 10000}, 3276, 5000},  // 10 % of the way
      {{1000, 9500, 0, 10000}, -3276, 5000},    {{1000, 9500, 0, 10000}, 3400, 5022},
      {{1000, 9500, 0, 10000}, 17203, 7500},  // half of the way that counts
      {{1000, 9500, 0, 10000}, -17203, 2500},   {{1000, 9500, 0, 10000}, 31000, 9977},
      {{1000, 9500, 0, 10000}, 31129, 10000},  // 95 %
      {{1000, 9500, 0, 10000}, -31129, 0},      {{1000, 9500, 0, 10000}, -32768, 0},
      {{0, 10000, 0, 10000}, 1000, 5153},       {{0, 10000, 0, 10000}, 32767, 10000},
      {{0, 10000, -1000, 1000}, -32768, -1000}, {{10000, 10000, 0, 10000}, 20000, 5000},  // all of it dead
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.range.value(static_cast<std::int16_t>(row.raw)), row.value)
        << row.range.deadZone << " " << row.range.saturation << " " << row.raw;
}

class ControllerTest : public InputTest {
 protected:
  void SetUp() override {
    startDevice();
    input_ = std::make_unique<input::InputEngine>(context_);
  }
  input::Controllers& all() { return *input_->controllers(); }
  input::Controller& open(std::int32_t level = input::kNonExclusive | input::kBackground) {
    all().enumerate();
    all().list().at(1)->initialize(level);
    all().due();
    return *all().list().at(1);
  }
  /// What a frame tells: for each controller that is due, whether its state was read.
  std::vector<bool> told() {
    frame();
    std::vector<bool> read;
    for (const auto& controller : all().due()) read.push_back(controller->update());
    return read;
  }

  std::unique_ptr<input::InputEngine> input_;
};

TEST_F(ControllerTest, AreListedWhenAskedFor) {
  devices_->attach(7, 2, 3);
  all().enumerate();
  ASSERT_EQ(all().list().count(), 1);
  EXPECT_EQ(all().list().at("{first}")->info().product, "Stick");
  EXPECT_EQ(errorNumber([&] { all().list().at(2); }), 9);
  EXPECT_EQ(errorNumber([&] { all().list().at("{other}"); }), 5);
  input::Controller& stick = *all().list().at(1);
  EXPECT_EQ(stick.caps().buttons, 0) << "not open";
  EXPECT_EQ(stick.motorsState(), 0);
  EXPECT_EQ(stick.createEffect("GUID_Sine", {}), nullptr);
  EXPECT_EQ(stick.createCustomEffect({}, 9, 1, 1, {}), nullptr);
  stick.command(input::kMotorsStopAll);
  EXPECT_FALSE(stick.unload());
  EXPECT_TRUE(stick.isConnected());
  devices_->detach(7);
  EXPECT_FALSE(stick.isConnected());
  EXPECT_EQ(static_cast<std::uint32_t>(errorNumber([&] { stick.initialize(10); })), 0x80040154u);
  all().enumerate();
  EXPECT_EQ(all().list().count(), 0);
}

TEST_F(ControllerTest, ReadAsTheirAxesHatsAndButtons) {
  input::ControllerState& raw = devices_->attach(1, 3, 40, 1);
  raw.axes = {2000, 32767, 2000};
  raw.buttons.set(0).set(39);
  raw.hats[0] = 6;
  const input::Controller& stick = open();
  EXPECT_EQ(stick.caps().axes, 3);
  EXPECT_EQ(stick.caps().buttons, 40);
  EXPECT_THAT(stick.axes(), ElementsAre(true, true, true, false, false, false, false, false));
  EXPECT_THAT(stick.state().axes, ElementsAre(5000, 10000, 5305, 0, 0, 0, 0, 0)) << "x is in its dead zone, z has none";
  EXPECT_EQ(stick.state().hats[0], 13500);
  EXPECT_EQ(stick.state().hats[1], -1);
  EXPECT_EQ(stick.state().buttons[0], 128);
  EXPECT_EQ(stick.state().buttons[1], 0);
  EXPECT_EQ(stick.state().buttons[39], 128);
}

TEST_F(ControllerTest, ANotificationUpdatesAllOpenOnes) {
  devices_->attach(1, 2, 2);
  devices_->attach(2, 2, 2, 0, false, "{SECOND}");
  open();
  EXPECT_TRUE(told().empty()) << "nothing new";
  devices_->stick(2).buttons.set(1);
  EXPECT_EQ(told(), std::vector({true, false})) << "the second is not open";
  all().list().at(2)->initialize(10);
  devices_->stick(2).axes[0] = 1;
  EXPECT_EQ(told(), std::vector({true, true})) << "even though the value stays in the dead zone";
  EXPECT_EQ(all().list().at(2)->state().axes[0], 5000);
  all().list().remove("{SECOND}");
  devices_->stick(2).axes[0] = 9;
  EXPECT_EQ(told(), std::vector({true})) << "removed from the list it is not updated";
}

TEST_F(ControllerTest, ThatGoAreTakenUpAgainWhenTheyComeBack) {
  devices_->attach(1, 2, 2).axes[1] = 32767;
  input::Controller& stick = open();
  devices_->detach(1);
  EXPECT_EQ(told(), std::vector({false})) << "gone: nothing is read";
  EXPECT_EQ(stick.state().axes[1], 10000);
  EXPECT_TRUE(stick.inUse());
  EXPECT_TRUE(told().empty());
  devices_->attach(9, 2, 2);
  EXPECT_EQ(told(), std::vector({false})) << "back: taken up";
  devices_->stick(9).buttons.set(0);
  EXPECT_EQ(told(), std::vector({true}));
  EXPECT_EQ(stick.state().buttons[0], 128);
}

TEST_F(ControllerTest, InTheForegroundAreSilentWithoutFocus) {
  devices_->attach(1, 1, 1);
  open(input::kExclusive | input::kForeground);
  devices_->now.focus = false;
  devices_->stick(1).axes[0] = 30000;
  EXPECT_EQ(told(), std::vector({false}));
  devices_->now.focus = true;
  devices_->stick(1).axes[0] = 20000;
  EXPECT_EQ(told(), std::vector({false})) << "taken up again";
  devices_->stick(1).axes[0] = 10000;
  EXPECT_EQ(told(), std::vector({true}));
  for (const std::int32_t level : {0, 1, 3, 4, 12, 15, 5 | 8})
    EXPECT_EQ(errorNumber([&] { all().list().at(1)->initialize(level); }), 5) << level;
}

TEST_F(ControllerTest, PlayEffectsOfEveryKind) {
  devices_->attach(1, 2, 2, 0, true);
  input::Controller& stick = open();
  const struct {
    std::int32_t type;
    std::size_t count;
  } filters[] = {{0, 13}, {1, 1}, {2, 1}, {3, 5}, {4, 4}, {5, 1}, {255, 1}, {6, 0}};
  for (const auto& filter : filters) EXPECT_EQ(stick.effectsOf(filter.type).size(), filter.count) << filter.type;
  devices_->motors->room = 13;
  std::vector<std::shared_ptr<input::PlayedEffect>> effects;
  for (const input::EffectEntry* entry : stick.effectsOf(0))
    effects.push_back(stick.createEffect(std::string(entry->guid), {}));
  ASSERT_EQ(devices_->motors->effects.size(), 13u);
  for (std::size_t i = 0; i < effects.size(); ++i)
    EXPECT_EQ(devices_->motors->effects[static_cast<int>(i)].kind, effects[i]->entry().kind);
  EXPECT_EQ(static_cast<std::uint32_t>(errorNumber([&] { stick.createEffect("guid_sine", {}); })), 0x80040201u);
  EXPECT_EQ(static_cast<std::uint32_t>(errorNumber([&] { stick.createEffect("GUID_Nonsense", {}); })), 0x80040154u);
  effects.clear();
  EXPECT_TRUE(devices_->motors->effects.empty()) << "an effect goes with its last reference";

  const std::vector<std::int32_t> samples{1, -2, 3, -4, 5};
  const auto custom = stick.createCustomEffect({}, 2, 5000, 2, samples);
  EXPECT_THAT(devices_->motors->effects[0].samples, ElementsAre(1, -2, 3, -4));
  EXPECT_EQ(devices_->motors->effects[0].samplePeriod, 5000);
  EXPECT_EQ(errorNumber([&] { stick.createCustomEffect({}, 2, 1, 3, samples); }), 9);
  EXPECT_EQ(errorNumber([&] { stick.createCustomEffect({}, 3, 1, 1, samples); }), 5);
}

TEST_F(ControllerTest, FollowCommandsAndTellTheirState) {
  devices_->attach(1, 2, 2, 0, true);
  input::Controller& stick = open();
  EXPECT_EQ(stick.motorsState(), input::kStateEmpty | input::kStateStopped | input::kStateOn);
  auto effect = stick.createEffect(
      "GUID_Constant"
      "Force",
      {});
  EXPECT_TRUE(effect->start(3));
  EXPECT_TRUE(effect->playing());
  EXPECT_EQ(stick.motorsState(), input::kStateOn);
  stick.command(input::kMotorsPause);
  stick.command(input::kMotorsOff);
  EXPECT_EQ(stick.motorsState(), input::kStatePaused | input::kStateOff);
  stick.command(input::kMotorsContinue);
  stick.command(input::kMotorsOn);
  effect->start(-5);
  stick.command(input::kMotorsStopAll);
  EXPECT_EQ(stick.motorsState(), input::kStateStopped | input::kStateOn);
  for (const std::int32_t wrong : {0, 3, 64, -1}) EXPECT_EQ(errorNumber([&] { stick.command(wrong); }), 5) << wrong;
  stick.command(input::kMotorsReset);
  EXPECT_FALSE(effect->start(1)) << "it was removed";
  const auto second = stick.createEffect("GUID_Sine", {});
  EXPECT_FALSE(effect->start(1)) << "the next one has its number, but not its name";
  EXPECT_FALSE(second->playing());
  EXPECT_THAT(devices_->motors->lines,
              ElementsAre("create 0", "start 0 3", "pause", "gain 0", "continue", "gain 10000", "start 0 -1",
                          "stop all", "stop all", "destroy 0", "gain 10000", "create 0"));
}

TEST_F(ControllerTest, GoneInTheMiddleOfAnEffectIsNoFault) {
  devices_->attach(1, 2, 2, 0, true);
  input::Controller& stick = open();
  const auto effect = stick.createEffect("GUID_Spring", {});
  effect->start(1);
  devices_->detach(1);
  told();
  EXPECT_NE(static_cast<std::uint32_t>(stick.motorsState()) & 0x80000000u, 0u);
  effect->stop();
  devices_->attach(2, 2, 2, 0, true);
  told();
  EXPECT_FALSE(effect->start(1)) << "the device that came back has no effects";
  EXPECT_EQ(stick.motorsState(), input::kStateEmpty | input::kStateStopped | input::kStateOn);
  EXPECT_EQ(stick.effectsOf(0).size(), 13u);
  EXPECT_TRUE(stick.unload());
  EXPECT_FALSE(effect->playing());
  EXPECT_EQ(stick.caps().buttons, 0);
}

}  // namespace
}  // namespace ql::test
