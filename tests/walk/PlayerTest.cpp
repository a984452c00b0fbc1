#include "LevelFile.h"
#include "Player.h"
#include "Route.h"
#include "support/SharedData.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace walk {
namespace {

namespace fs = std::filesystem;
namespace eng = Quasarlens3D;

constexpr double kStep = 0.016;  // seconds

/// A level in an engine without a display, all of whose faces count.
class Place {
 public:
  explicit Place(const fs::path& path) : file(path), folder_(fs::current_path()) {
    internals_.SetClock([] { return 10'000U; });
    engine_.SetEngineMode(64, 48, 32, eng::False);
    engine_.Initialize(0);
    engine_.Console(eng::False);
    const fs::path folder = path.parent_path();
    std::string base = (folder.filename() == "maps" ? folder.parent_path() : folder).string();
    engine_.SetSearchDirectory(base);
    level.SetCurvePrecision(1);
    // Half-Life levels walk as well without their pictures.
    level.Load(path.string(), eng::False, eng::False);
  }
  ~Place() { fs::current_path(folder_); }

  fs::path file;

 private:
  fs::path folder_;
  eng::Quasarlens8 engine_;  // before what belongs to it
  eng::InternalObjects8 internals_;

 public:
  eng::Scene8 scene;
  eng::BSPTree8 level;
};

/// Whether there is any floor below a point.
bool groundBelow(Place& place, const Point& at) {
  const auto y = static_cast<float>(at.y + 20);
  return place.level.GetAltitudeFromPos(static_cast<float>(at.x), y, static_cast<float>(at.z)) < y;
}

/// Wanders from each start and checks every step. @return how far the players came, together
double wander(Place& place, std::size_t starts, int steps) {
  const std::vector<Pose> poses = playerStarts(place.file);
  const double size = levelDiagonal(place.file);
  double travelled = 0;
  for (std::size_t i = 0; i < std::min(starts, poses.size()); ++i) {
    SCOPED_TRACE(i);
    Player player(place.level, place.scene, poses[i].eye - Point{0, 40, 0});
    if (!groundBelow(place, player.feet())) continue;  // a start over nothing
    const Point begin = player.feet();
    Guide guide({});
    int falling = 0;
    for (int step = 0; step < steps; ++step) {
      const Point before = player.feet();
      player.move(guide.next(player), kStep);
      const Point now = player.feet();
      travelled += distance(before, now);
      EXPECT_TRUE(groundBelow(place, now)) << "over nothing at step " << step;
      EXPECT_LT(distance(before, now), 60) << "a leap at step " << step;
      EXPECT_LT(distance(begin, now), size * 2) << "out of the level at step " << step;
      falling = player.onGround() ? 0 : falling + 1;
      EXPECT_LT(falling, 400) << "an endless fall at step " << step;
      if (testing::Test::HasFailure()) return travelled;
    }
  }
  return travelled;
}

TEST(Player, StaysOnFloorsInEveryRealLevel) {
  QL_NEED_SHARED_DATA();
  int levels = 0;
  for (const char* kind : {"q3bsp", "hlbsp"}) {
    for (const fs::path& path : ql::test::sharedFiles(kind)) {
      if (path.extension() != ".bsp") continue;
      SCOPED_TRACE(path);
      Place place(fs::canonical(path));
      const double travelled = wander(place, 5, 700);
      if (HasFailure()) return;
      // From inside a cube one never comes.
      if (path.stem() != "hl") {
        EXPECT_GT(travelled, 200) << "stuck";
      }
      ++levels;
    }
  }
  EXPECT_GE(levels, 14);
}

TEST(Player, CrossesTheProjectsOwnLevels) {
  for (const char* name : {"maps/court.bsp", "maps/cellar.bsp"}) {
    SCOPED_TRACE(name);
    Place place(fs::path(QL_ASSETS_DIR) / name);
    Guide guide(pathCorners(place.file));
    Player player(place.level, place.scene, playerStarts(place.file).front().eye - Point{0, 40, 0});
    int steps = 0;
    for (; steps < 6000 && !guide.arrived(); ++steps) player.move(guide.next(player), kStep);
    EXPECT_TRUE(guide.arrived()) << guide.reached() << " places reached";
    EXPECT_GT(guide.reached(), 3U);
    EXPECT_LT(steps, 4500) << "it should need no more than three times the way";
  }
}

TEST(Player, JumpsAndLandsWhereItStood) {
  Place place(fs::path(QL_ASSETS_DIR) / "maps/court.bsp");
  Player player(place.level, place.scene, playerStarts(place.file).front().eye - Point{0, 40, 0});
  const Point stood = player.feet();
  double highest = stood.y;
  player.move({0, 0, true}, kStep);
  EXPECT_FALSE(player.onGround());
  for (int i = 0; i < 60; ++i) {
    player.move({0, 0, false}, kStep);
    highest = std::max(highest, player.feet().y);
  }
  EXPECT_TRUE(player.onGround());
  EXPECT_NEAR(distance(player.feet(), stood), 0, 0.01);
  EXPECT_NEAR(highest - stood.y, Player::kJumpSpeed * Player::kJumpSpeed / (2 * Player::kGravity), 6);
}

}  // namespace
}  // namespace walk
