// Sessions: what is recorded comes back in the same order, and damaged files are told from good ones.
#include "InputTest.h"
#include "input/SessionReader.h"
#include "input/Sessions.h"
#include "support/SessionFile.h"

#include <random>

#include <gmock/gmock.h>

namespace ql::test {
namespace {

using host::Fault;
using input::SessionReader;

TEST(SessionFiles, SayWhatTheirRecordsSay) {
  SessionReader session(wholeSession().bytes());
  EXPECT_EQ(session.note(), "a note");
  EXPECT_EQ(session.frames(), 2u);
  EXPECT_TRUE(session.complete());
  EXPECT_EQ(session.firstSize(), (input::ClientSize{640, 480}));
  EXPECT_EQ(session.motors(4), 0x1FFFu);
  EXPECT_EQ(session.motors(5), std::nullopt);

  EXPECT_EQ(session.tick(), 10'000u);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(session.tick(), 10'016u);
  EXPECT_EQ(session.tick(), 10'017u) << "read more often than recorded, time goes on";
  EXPECT_EQ(session.tick(), 10'018u);
  EXPECT_EQ(session.snapshot().keys[200], 0);
  session.sample();
  const input::Snapshot& now = session.snapshot();
  EXPECT_EQ(now.keys[200], 128);
  EXPECT_EQ(now.mouse, (input::MouseTotals{3, -2, 120, {128, 0, 128, 0}}));
  ASSERT_EQ(now.controllers.size(), 1u);
  EXPECT_EQ(now.controllers[0].state.axes[0], 1000);
  EXPECT_EQ(now.controllers[0].state.axes[1], -1);
  EXPECT_EQ(now.controllers[0].state.hats[0], 3);
  EXPECT_EQ(now.controllers[0].state.buttons.to_ulong(), 0x105u);
  session.sample();
  EXPECT_EQ(now.keys[30], 128) << "a frame has no more than it has";

  session.endFrame();
  EXPECT_FALSE(session.ended());
  EXPECT_EQ(session.tick(), 10'032u);
  session.sample();
  EXPECT_EQ(now.keys[30], 0);
  session.endFrame();  // one reading of the devices was left
  EXPECT_TRUE(now.controllers.empty());
  EXPECT_EQ(session.size(), (input::ClientSize{320, 200}));
  EXPECT_TRUE(session.ended());
  for (int i = 1; i < 4; ++i) EXPECT_EQ(session.tick(), 10'032u + static_cast<std::uint32_t>(i));
  session.sample();
  session.endFrame();
  EXPECT_EQ(now.keys[200], 128) << "after the end everything stays";
}

TEST(SessionFiles, CutShortEndWithTheirLastWholeFrame) {
  const std::vector<std::byte> good = wholeSession().bytes();
  const std::string text = wholeSession().text();
  const std::size_t firstFrame = text.find(std::string{11, 1, 1, 32, 0}) + 1;
  for (std::size_t n = 0; n < good.size(); ++n) {
    const std::vector<std::byte> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(n));
    try {
      SessionReader session(cut);
      EXPECT_GE(n, firstFrame);
      EXPECT_FALSE(session.complete());
      EXPECT_EQ(session.frames(), n == good.size() - 1 ? 2u : 1u) << n;
      while (!session.ended()) session.endFrame();
      EXPECT_EQ(session.snapshot().keys[200], 128);
    } catch (const host::FileFault& fault) {
      EXPECT_LT(n, firstFrame) << fault.what();
      EXPECT_EQ(fault.id, Fault::Truncated) << n << ": " << fault.what();
    }
  }
}

TEST(SessionFiles, ThatAreDamagedAreRefused) {
  std::string many;
  for (std::uint32_t i = 0; i < 65; ++i) many += SessionFile().attached(i, 0, 0, 0).text().substr(10);
  constexpr std::uint64_t kHuge = ~std::uint64_t{0};
  const struct {
    const char* name;
    SessionFile file;
    Fault fault;
  } rows[] = {
      {"another version", SessionFile("", 2), Fault::BadVersion},
      {"no frame", SessionFile().add(Tag::Sample).add(Tag::End), Fault::Truncated},
      {"a record of another kind", SessionFile().add(static_cast<Tag>(13)), Fault::Unsupported},
      {"a record of no kind", SessionFile().raw(std::string(1, '\0')), Fault::Unsupported},
      {"a number of eleven bytes", SessionFile().raw("\x07" + std::string(10, '\xFF') + "\x01"), Fault::BadEncoding},
      {"more ticks than bytes", SessionFile().add(Tag::Ticks, {kHuge}), Fault::Truncated},
      {"a tick beyond 32 bits", SessionFile().add(Tag::Ticks, {1, kHuge, 0}), Fault::BadSize},
      {"more keys than bytes", SessionFile().add(Tag::Keys, {1000, 1}), Fault::Truncated},
      {"a fifth button", SessionFile().add(Tag::Mouse, {0, 0, 0, 16}), Fault::BadSize},
      {"a controller that is not there", SessionFile().add(Tag::State, {3}), Fault::BadReference},
      {"a controller that was not there", SessionFile().add(Tag::Detached, {3}), Fault::BadReference},
      {"a controller twice", SessionFile().attached(1, 0, 0, 0).attached(1, 0, 0, 0), Fault::BadReference},
      {"too many controllers", SessionFile().raw(many), Fault::BadSize},
      {"nine axes", SessionFile().attached(1, 9, 0, 0), Fault::BadSize},
      {"too many buttons", SessionFile().attached(1, 0, 129, 0), Fault::BadSize},
      {"a long name", SessionFile().attached(1, 0, 0, 0, std::string(256, 'x')).add(Tag::Attached, {2, 256}),
       Fault::BadSize},
      {"an axis out of range", SessionFile().attached(1, 1, 0, 0).add(Tag::State, {1, 65536}), Fault::BadSize},
      {"unknown effects", SessionFile().add(Tag::Motors, {1, 1u << 13}), Fault::BadSize},
      {"a vast window", SessionFile().add(Tag::Size, {65536, 1}), Fault::BadSize},
  };
  for (const auto& row : rows) {
    try {
      SessionReader session(row.file.bytes());
      ADD_FAILURE() << row.name;
    } catch (const host::FileFault& fault) {
      EXPECT_EQ(fault.id, row.fault) << row.name << ": " << fault.what();
    }
    // After a whole frame a fault is a fault all the same, only an early end is none.
    if (row.fault == Fault::BadVersion || row.fault == Fault::Truncated) continue;
    const std::string records = row.file.text().substr(SessionFile().text().size());
    EXPECT_THROW(SessionReader(SessionFile().add(Tag::Frame).raw(records).bytes()), host::FileFault) << row.name;
  }
}

/// What a host sees in a frame.
struct Seen {
  std::uint32_t first, second;
  std::int32_t elapsed;
  input::KeyTable keys;
  std::pair<int, int> absolute, relative;
  std::int32_t wheel;
  std::vector<std::int32_t> stick;
  std::pair<std::uint32_t, std::uint32_t> size;
  bool operator==(const Seen&) const = default;
};

class Sessions : public InputTest {
 protected:
  void SetUp() override {
    startDevice();
    input_ = std::make_unique<input::InputEngine>(context_);
  }
  std::string file() const { return machine_.folder->file("session.qlinput"); }

  /// Sixty frames of a host that reads the clock and the devices when it likes.
  std::vector<Seen> play(const std::function<void(int)>& user) {
    std::vector<Seen> seen;
    std::shared_ptr<input::Controller> stick;
    std::shared_ptr<input::PlayedEffect> effect;
    input_ = std::make_unique<input::InputEngine>(context_);
    for (int i = 0; i < 60; ++i) {
      user(i);
      if (i % 10 == 5) input_->controllers()->enumerate();
      if (i == 15) {
        stick = input_->controllers()->list().at(1);
        stick->initialize(10);
        effect = stick->createEffect(
            "GUID_Ramp"
            "Force",
            {});
      }
      if (i == 20) effect->start(1);
      Seen now{};
      now.first = context_.ticks();
      for (int reads = i % 4; reads > 0; --reads) now.second = context_.ticks();
      if (i % 3 == 0) input::refreshInput(context_);
      engine::clear(context_);
      engine::renderToScreen(context_);
      for (const auto& due : input_->controllers()->due()) due->update();
      engine::resizeDevice(context_);
      now.elapsed = context_.elapsedMs;
      now.keys = state().keyState;
      now.absolute = absolute();
      now.relative = relative();
      now.wheel = state().mouseRaw.z;
      if (stick) now.stick.assign(stick->state().axes.begin(), stick->state().axes.end());
      if (stick) now.stick.push_back(stick->motorsState());
      now.size = {context_.presentParameters.backBufferWidth, context_.presentParameters.backBufferHeight};
      seen.push_back(std::move(now));
    }
    return seen;
  }

  std::unique_ptr<input::InputEngine> input_;
};

TEST_F(Sessions, ReplayedShowTheHostTheSame) {
  std::mt19937 random(5);
  const auto anything = [&](int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); };
  ASSERT_TRUE(input::startRecording(context_, file(), "walked"));
  machine_.clock->stepPerRead = 1;
  const std::vector<Seen> first = play([&](int i) {
    machine_.clock->now += static_cast<std::uint32_t>(anything(5, 30));
    devices_->press(static_cast<std::size_t>(anything(1, 255)), anything(0, 1) != 0);
    devices_->moveMouse(anything(-300, 300), anything(-300, 300));
    devices_->now.mouse.z += 120 * anything(-1, 1);
    if (i == 2) devices_->attach(1, 2, 4, 1, true);
    if (i == 30) devices_->detach(1);
    if (i == 40) devices_->attach(2, 2, 4, 1, true);
    if (!devices_->now.controllers.empty())
      devices_->now.controllers[0].state.axes[0] = static_cast<std::int16_t>(anything(-32768, 32767));
    if (i == 33) machine_.display->ownWindows.at(0)->size = {500, 300};
  });
  EXPECT_EQ(first.back().size, std::pair(500u, 300u));
  EXPECT_FALSE(input::replayEnded(context_));
  EXPECT_TRUE(input::stopSession(context_));
  EXPECT_FALSE(input::stopSession(context_)) << "there is none";
  const std::size_t filed = std::filesystem::file_size(file());
  EXPECT_LT(filed, 60u * 120u);

  // On another machine: other devices, another clock, a window of another size.
  machine_.clock->now = 500;
  devices_->now = {};
  engine::internalWindow(context_).setMode(false, {123, 45});
  ASSERT_TRUE(input::startReplay(context_, file()));
  EXPECT_EQ(input::sessionNote(context_), "walked");
  ASSERT_TRUE(engine::initialize(context_, engine::kOwnWindow));
  context_.lastTick = 0;
  const std::vector<Seen> second = play([](int) {});
  ASSERT_EQ(second.size(), first.size());
  for (std::size_t i = 1; i < first.size(); ++i) {
    EXPECT_EQ(second[i].keys, first[i].keys) << i;
    EXPECT_EQ(second[i].stick, first[i].stick) << i;
    EXPECT_TRUE(second[i] == first[i]) << i;
  }
  EXPECT_TRUE(input::replayEnded(context_));
  EXPECT_TRUE(input::stopSession(context_));
  EXPECT_LT(context_.ticks(), 1000u) << "the machine's own clock again";
  devices_->press(3);
  frame();
  EXPECT_TRUE(input_->isKeyPressed(3));
}

TEST_F(Sessions, OfAnyKindThatCannotBeUsedAreLoggedOnly) {
  EXPECT_FALSE(input::startRecording(context_, machine_.folder->file("none/session"), ""));
  EXPECT_NE(machine_.logLines().at(machine_.logLines().size() - 2).find("INPUT : Error during recording : "),
            std::string::npos)
      << machine_.logLines().back();
  EXPECT_FALSE(input::startReplay(context_, machine_.folder->file("none")));
  std::ofstream(file()) << "QLINPUT? no";
  EXPECT_FALSE(input::startReplay(context_, file()));
  EXPECT_FALSE(input::replayEnded(context_));
  EXPECT_EQ(input::sessionNote(context_), "");
  devices_->press(5);
  frame();
  EXPECT_TRUE(input_->isKeyPressed(5)) << "the devices are the machine's";
}

TEST_F(Sessions, GoOnWithTheHostsNewClock) {
  ASSERT_TRUE(input::startRecording(context_, file(), ""));
  input::setClock(context_, [] { return 777u; });
  EXPECT_EQ(context_.ticks(), 777u);
  frame();
  EXPECT_TRUE(input::startReplay(context_, file())) << "ends the recording";
  input::setClock(context_, [] { return 888u; });
  EXPECT_EQ(context_.ticks(), 777u) << "a replay keeps its own";
  input::stopSession(context_);
  EXPECT_EQ(context_.ticks(), 888u);
}

}  // namespace
}  // namespace ql::test
