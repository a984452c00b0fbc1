// ql-walk's window, driven by a user's keys and mouse; what the user saw is what a replay draws.
#include "platform/images/Image.h"
#include "support/Hands.h"
#include "support/RunProgram.h"
#include "support/TemporaryFolder.h"
#include "support/TinyQ3Level.h"

#include <cstdint>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>
// Xlib's macros spoil the names of others: last.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace ql::test {
namespace {

constexpr char kWalk[] = QL_WALK;
constexpr int kWidth = 640, kHeight = 480;

std::string textOf(const std::vector<std::byte>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void putStripes(const std::string& file, std::uint32_t a, std::uint32_t b) {
  images::Image image{16, 16, std::vector<std::uint32_t>(256)};
  for (std::uint32_t y = 0; y < 16; ++y)
    for (std::uint32_t x = 0; x < 16; ++x) image.at(x, y) = (x / 4 + y / 8) % 2 == 0 ? a : b;
  put(file, textOf(images::encodeBmp(image)));  // the contents decide, not the ending
}

/// The screen, whose middle the window covers.
class Screen {
 public:
  Screen() : server_(XOpenDisplay(nullptr)) {}
  ~Screen() { XCloseDisplay(server_); }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  /// The hash of the window's picture, as ql-walk makes it; once it does not change any more.
  std::string still() const {
    std::string before, now;
    for (int same = 0, i = 0; same < 3 && i < 100; ++i) {
      now = hash();
      same = now == before ? same + 1 : 0;
      before = now;
      std::this_thread::sleep_for(std::chrono::milliseconds(60));
    }
    return now;
  }

 private:
  std::string hash() const {
    const int screen = DefaultScreen(server_);
    XImage* image = XGetImage(server_, DefaultRootWindow(server_), (DisplayWidth(server_, screen) - kWidth) / 2,
                              (DisplayHeight(server_, screen) - kHeight) / 2, kWidth, kHeight, AllPlanes, ZPixmap);
    if (image == nullptr) return {};
    std::uint64_t hash = 0xCBF29CE484222325;
    const auto add = [&](std::uint32_t value) {
      for (int shift = 0; shift < 32; shift += 8) hash = (hash ^ ((value >> shift) & 0xFF)) * 0x100000001B3;
    };
    add(kWidth);
    add(kHeight);
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) add(static_cast<std::uint32_t>(XGetPixel(image, x, y)) | 0xFF000000);
    XDestroyImage(image);
    return fmt::format("{:016x}", hash);
  }
  ::Display* server_;
};

class WalkWindow : public testing::Test {
 protected:
  void SetUp() override {
    if (!Hands::present()) {
      ASSERT_EQ(std::getenv("QL_EXPECT_DISPLAY"), nullptr) << "the X server did not start";
      GTEST_SKIP() << "skipped: no X server, or no xdotool";
    }
    putStripes("textures/base/stone.jpg", 0xFF8090A0, 0xFF304050);
    putStripes("textures/base/wood.jpg", 0xFFC08040, 0xFF604020);
    put("maps/room.bsp", textOf(TinyQ3Level().bytes()));
    put("maps/room-path.json", R"([{"eye": [-20, 60, 70], "look": [-60, 30, 0]}])");
  }
  /// The hashes of a replay's frames.
  static std::vector<std::string> replay(const std::string& options) {
    const ProgramRun run = runProgram(std::string(kWalk) + " --replay walk.qlinput " + options);
    EXPECT_EQ(run.code, 0);
    std::vector<std::string> hashes;
    std::istringstream lines(run.output);
    for (std::string number, hash; lines >> number >> hash;) {
      EXPECT_EQ(number, std::to_string(hashes.size()));
      hashes.push_back(hash);
    }
    return hashes;
  }

  TemporaryFolder folder_;
};

TEST_F(WalkWindow, FollowsAUserAndReplaysWhatTheUserSaw) {
  int code = -1;
  std::jthread program([&] {
    code = runProgram(std::string(kWalk) + " maps/room.bsp --window --device ref --quiet --record walk.qlinput").code;
  });
  const Hands hands("ql-walk");
  const Screen screen;
  ASSERT_TRUE(hands.act("getwindowname %w"));
  std::vector<std::string> seen;
  for (const char* act :
       {"click 1", "keydown w sleep 0.2 keyup w", "mousemove_relative 90 40", "keydown Left sleep 0.2 keyup Left",
        "keydown a sleep 0.2 keyup a", "keydown Down sleep 0.2 keyup Down"}) {
    EXPECT_TRUE(hands.act(act));
    const std::string now = screen.still();
    EXPECT_TRUE(seen.empty() || now != seen.back()) << act << " does not change the picture";
    seen.push_back(now);
  }
  EXPECT_TRUE(hands.act("key --delay 200 Escape"));
  program.join();
  EXPECT_EQ(code, 0) << "Escape ends it";

  const std::vector<std::string> drawn = replay("--quiet");
  EXPECT_GT(drawn.size(), 50u);
  auto from = drawn.begin();
  for (const std::string& hash : seen) {
    from = std::find(from, drawn.end(), hash);
    EXPECT_NE(from, drawn.end()) << "the replay does not show what the user saw: " << hash;
  }
  EXPECT_EQ(replay("--quiet --window --frames 20"), std::vector(drawn.begin(), drawn.begin() + 20)) << "seen, too";
  EXPECT_EQ(runProgram(std::string(kWalk) + " --replay maps/room.bsp").code, 4);
  EXPECT_EQ(runProgram(std::string(kWalk) + " --replay none").code, 3);
  EXPECT_EQ(runProgram(std::string(kWalk) + " maps/room.bsp --record x").code, 2);
  EXPECT_EQ(runProgram(std::string(kWalk) + " --window --record x --replay walk.qlinput").code, 2);
  EXPECT_EQ(runProgram(std::string(kWalk) + " --window --record none/x maps/room.bsp").code, 3);
}

}  // namespace
}  // namespace ql::test
