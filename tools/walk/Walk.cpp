#include "Walk.h"

#include "Failure.h"
#include "Flight.h"
#include "Keys.h"
#include "LevelFile.h"
#include "Overlay.h"
#include "Picture.h"
#include "Player.h"
#include "PrivateHome.h"
#include "Progress.h"
#include "Report.h"
#include "Route.h"
#include "Session.h"
#include "TextFile.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace fs = std::filesystem;
namespace ql = Quasarlens3D;

namespace walk {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kDefaultFrames = 120, kDefaultPictures = 24;
constexpr int kDefaultPlayFrames = 6000;
constexpr double kDegrees = 180 / 3.14159265358979;
constexpr int kDefaultStep = 16;            // milliseconds
constexpr std::uint32_t kPastCache = 2001;  // milliseconds after which the level takes its visible set anew
constexpr double kWindowSpeed = 160;        // world units per second
constexpr char kLoadError[] = "BSP TREE : Error during loading : ";

double millisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// An engine with one level, drawn pose by pose.
class Stage {
 public:
  Stage(const Options& options, const LevelPlace& place) {
    const bool realTime = options.window || options.replay;
    if (!realTime || options.fixedStep) internals_.SetClock([time = time_] { return *time; });
    // Before there is a device the field of view is kept for it; the picture's proportions are then its own.
    constexpr float kEngineFieldOfView = 89.99734f, kEngineFarPlane = 4096, kFarthest = 100'000;
    const float farPlane = std::clamp(levelDiagonal(place.file), kEngineFarPlane, kFarthest);
    scene_.SetViewFrustum(options.fieldOfView.value_or(kEngineFieldOfView), options.farPlane.value_or(farPlane));
    if (options.trace && !internals_.StartTrace(options.trace->string()))
      throw Failure(ExitCode::Unreadable, fmt::format("cannot write {}", options.trace->string()));
    if (options.stages && !internals_.StartStages(options.stages->string()))
      throw Failure(ExitCode::Unreadable, fmt::format("cannot write {}", options.stages->string()));
    startSession(internals_, options);
    startDevice(options);
    std::string base = place.base.string();
    engine_.SetSearchDirectory(base);
    // Who walks may run into what is not seen.
    setVisibility(!options.noPvs && !options.play);
    level_.SetCurvePrecision(options.curves);
    engine_.Console(options.overlay ? ql::True : ql::False);
    // The package that is opened last is looked into first.
    std::vector<fs::path> packages = findPackages(place, options.packages);
    std::reverse(packages.begin(), packages.end());
    for (const fs::path& package : packages) level_.OpenPackWAD(package.string());
    const Clock::time_point start = Clock::now();
    level_.LoadShaderDirectory("scripts");
    level_.Load(place.name);
    report.loadMs = millisecondsSince(start);
    setVisibility(!options.noPvs && !options.play);  // some kinds of levels set their own
    report.level = place.name;
    if (!options.overlay) return;
    loading = picture();
    overlay_.emplace();
    engine_.DisplayFPS(ql::True);
  }

  /// Draws one frame; the time is taken until the picture is finished.
  void frame(const Pose& pose) {
    setCamera(pose);
    const Clock::time_point start = Clock::now();
    engine_.Clear();
    level_.Render();
    std::vector<std::string> lines;
    if (overlay_) lines = overlay_->draw(report);
    engine_.RenderToScreen();
    internals_.GetBackbuffer().Wait();
    const double ms = millisecondsSince(start);
    report.frames.push_back({ms, internals_.GetFrameStatistics(), engine_.GetFPS(), std::move(lines)});
  }

  /// Makes the next frame's picture independent of all frames before: a frame that nobody sees takes the pose's frustum
  /// planes, and the time lets the level take its visible set anew.
  void forgetThePast(const Pose& pose) {
    setCamera(pose);
    engine_.Clear();
    if (!std::exchange(skyDrawn_, true)) level_.Render();
    engine_.RenderToScreen();
    advance(kPastCache);
  }

  Picture picture() const {
    const ql::SurfaceObject surface = internals_.GetBackbuffer();
    return {static_cast<std::uint32_t>(surface.Width()), static_cast<std::uint32_t>(surface.Height()),
            surface.ReadPixels()};
  }

  /// Ends the trace and the stages, if any. @throws Failure Unreadable
  void finish(const Options& options) {
    const auto check = [](bool whole, const fs::path& file) {
      if (!whole) throw Failure(ExitCode::Unreadable, fmt::format("{} could not be written completely", file.string()));
    };
    if (options.trace) check(internals_.StopTrace(), *options.trace);
    if (options.stages) check(internals_.StopStages(), *options.stages);
    finishSession(internals_, options);
  }

  void advance(std::uint32_t ms) { *time_ += ms; }
  /// Whether the user closed the window, or a replay is over.
  bool over() const { return engine_.CloseRequested() || internals_.ReplayEnded(); }
  /// Seconds of the engine's clock; of the last frame.
  double now() const { return static_cast<std::uint32_t>(engine_.TickCount()) / 1000.0; }
  double frameSeconds() const { return engine_.TimeElapsed() / 1000.0; }

  const ql::BSPTree8& level() const { return level_; }
  const ql::Scene8& scene() const { return scene_; }

  Report report;
  std::optional<Picture> loading;  ///< what the screen showed at last while the level was loaded

 private:
  void startDevice(const Options& options) {
    const bool hardware = options.device != DeviceChoice::Reference;
    engine_.SetEngineMode(options.width, options.height, 32, hardware);
    if (!engine_.Initialize(options.window || options.replay ? -1 : 0))
      throw Failure(ExitCode::NoDevice, "no device could be created");
    const bool isHardware = internals_.GetDeviceKind() == ql::QL_DEVICE_HARDWARE;
    if (options.device == DeviceChoice::Hardware && !isHardware)
      throw Failure(ExitCode::NoDevice, "there is no hardware device here");
    if (options.window) engine_.SetWindowTitle("ql-walk");
    report.device = isHardware ? "hal" : "ref";
    std::int32_t format = 0;
    engine_.GetVideoMode(report.width, report.height, format);
  }

  void setVisibility(bool on) {
    level_.SetParameters(ql::True, on ? ql::True : ql::False, ql::QL_DOUBLESIDED, ql::True);
  }

  void setCamera(const Pose& pose) {
    const Point look = distance(pose.eye, pose.look) > 1e-3 ? pose.look : pose.eye + Point{0, 0, 1};
    camera_.SetCamera(pose.eye.x, pose.eye.y, pose.eye.z, look.x, look.y, look.z);
  }

  std::shared_ptr<std::uint32_t> time_ = std::make_shared<std::uint32_t>(10'000);
  ql::Quasarlens8 engine_;
  ql::InternalObjects8 internals_;
  ql::Scene8 scene_;
  ql::Camera8 camera_;
  ql::BSPTree8 level_;
  std::optional<Overlay> overlay_;
  bool skyDrawn_ = false;  ///< a level's sky is mapped in its own way when it is drawn first
};

/// The level's own path when there is one beside it, else its player starts.
Flight planFlight(const fs::path& levelFile) {
  const fs::path path = levelFile.parent_path() / (levelFile.stem().string() + "-path.json");
  return Flight(fs::exists(path) ? readPoses(path) : playerStarts(levelFile));
}

/// Writes the last frame's picture and adds it to the sheet, unless no pictures are wanted.
void keepPicture(const Stage& session, const Options& options, const std::string& name, ContactSheet& sheet) {
  if (options.noPictures) return;
  const Picture picture = session.picture();
  writePng(options.out / name, picture);
  sheet.add(picture);
}

void drawPoses(Stage& session, const Options& options, const std::vector<Pose>& poses, ContactSheet& sheet) {
  Progress progress("drawing poses", options.talk != Talk::Quiet);
  for (std::size_t i = 0; i < poses.size(); ++i) {
    session.forgetThePast(poses[i]);
    session.frame(poses[i]);
    keepPicture(session, options, fmt::format("pose-{:03}.png", i), sheet);
    progress.at(static_cast<int>(i + 1), static_cast<int>(poses.size()));
  }
}

void drawFlight(Stage& session, const Options& options, const Flight& flight, ContactSheet& sheet) {
  const int frames = options.frames.value_or(kDefaultFrames);
  const int every = options.every.value_or((frames + kDefaultPictures - 1) / kDefaultPictures);
  const auto step = static_cast<std::uint32_t>(options.fixedStep.value_or(kDefaultStep));
  Progress progress("flying", options.talk != Talk::Quiet);
  for (int i = 0; i < frames; ++i) {
    const Pose pose = flight.at(frames > 1 ? static_cast<double>(i) / (frames - 1) : 0);
    const bool keep = !options.noPictures && i % every == 0;
    if (keep) session.forgetThePast(pose);
    session.frame(pose);
    session.advance(step);
    if (keep) keepPicture(session, options, fmt::format("frame-{:04}.png", i), sheet);
    progress.at(i + 1, frames);
  }
}

/// The flight until the user takes over, by the engine's clock alone: a replay does the same.
void showFlight(Stage& session, const Options& options, const Flight& flight) {
  const Keys keys;
  std::optional<Steering> steering;
  const double start = session.now(), duration = std::max(flight.length() / kWindowSpeed, 8.0);
  for (int i = 0; !session.over() && (!options.frames || i < *options.frames); ++i) {
    // There and back again, without end.
    const double phase = std::fmod((session.now() - start) / duration, 2.0);
    const Pose flown = flight.at(phase < 1 ? phase : 2 - phase);
    const double seconds = session.frameSeconds();
    const Wish wish = keys.read(seconds);
    if (wish.leave) break;
    if (wish.steers && !steering) steering.emplace(flown);
    if (steering) steering->follow(wish, seconds);
    session.frame(steering ? steering->pose() : flown);
    if (options.replay) fmt::print("{} {:016x}\n", i, hashOf(session.picture()));
    if (options.fixedStep) session.advance(static_cast<std::uint32_t>(*options.fixedStep));
  }
}

/// Where a player stands first: below the level's first start.
Point firstFeet(const LevelPlace& place) {
  const std::vector<Pose> starts = playerStarts(place.file);
  return starts.empty() ? Point{} : starts.front().eye - Point{0, Player::kEyeHeight / 2, 0};
}

Pose viewOf(const Player& player, double heading, double pitch) {
  const double h = heading / kDegrees, p = pitch / kDegrees;
  const Point ahead{std::sin(h) * std::cos(p), std::sin(p), std::cos(h) * std::cos(p)};
  return {player.eye(), player.eye() + ahead * 128};
}

/// A player who goes along the level's path corners, or wanders.
void playRoute(Stage& session, const Options& options, const LevelPlace& place, ContactSheet& sheet) {
  Guide guide(pathCorners(place.file));
  Player player(session.level(), session.scene(), firstFeet(place));
  const int frames = options.frames.value_or(kDefaultPlayFrames), every = options.every.value_or(60);
  const int step = options.fixedStep.value_or(kDefaultStep);
  Progress progress("playing", options.talk != Talk::Quiet);
  for (int i = 0; i < frames && !guide.arrived(); ++i) {
    player.move(guide.next(player), step / 1000.0);
    if (i % every == 0) {
      const Pose view = viewOf(player, guide.heading(), -6);
      session.forgetThePast(view);
      session.frame(view);
      keepPicture(session, options, fmt::format("play-{:04}.png", i), sheet);
    }
    session.advance(static_cast<std::uint32_t>(step));
    progress.at(i + 1, frames);
  }
  const bool routed = guide.arrived() || guide.reached() != 0 || !pathCorners(place.file).empty();
  if (routed && !guide.arrived())
    throw Failure(ExitCode::Limit,
                  fmt::format("after {} steps the player has reached {} places of the path", frames, guide.reached()));
}

/// A player at the keys.
void playByHand(Stage& session, const Options& options, const LevelPlace& place) {
  const Keys keys;
  Player player(session.level(), session.scene(), firstFeet(place));
  double heading = 0, pitch = 0;
  if (const std::vector<Pose> starts = playerStarts(place.file); !starts.empty()) {
    const Point ahead = starts.front().look - starts.front().eye;
    heading = std::atan2(ahead.x, ahead.z) * kDegrees;
  }
  for (int i = 0; !session.over() && (!options.frames || i < *options.frames); ++i) {
    const double seconds = session.frameSeconds();
    const Wish wish = keys.read(seconds);
    if (wish.leave) break;
    heading = std::remainder(heading + wish.turn, 360.0);
    pitch = std::clamp(pitch + wish.tilt, -85.0, 85.0);
    const double h = heading / kDegrees;
    player.move({std::sin(h) * wish.forward + std::cos(h) * wish.aside,
                 std::cos(h) * wish.forward - std::sin(h) * wish.aside, wish.jump},
                seconds);
    session.frame(viewOf(player, heading, pitch));
    if (options.replay) fmt::print("{} {:016x}\n", i, hashOf(session.picture()));
    if (options.fixedStep) session.advance(static_cast<std::uint32_t>(*options.fixedStep));
  }
}

/// The engine tells of a failed load in its log only.
void checkLog(const PrivateHome& home, Talk talk) {
  std::string fault;
  for (const std::string& line : home.logLines()) {
    if (talk == Talk::Verbose) fmt::print(stderr, "{}\n", line);
    if (const std::size_t at = line.find(kLoadError); at != std::string::npos)
      fault = line.substr(at + sizeof kLoadError - 1);
  }
  if (!fault.empty()) throw Failure(ExitCode::Malformed, "the level could not be loaded: " + fault);
}

void prepareOut(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw Failure(ExitCode::Unreadable, fmt::format("cannot make {}: {}", folder.string(), error.message()));
}

}  // namespace

void run(const Options& given) {
  Options options = given;
  const bool inWindow = options.window || options.replay;
  if (!options.window) {
    // Pictures need no display, and none shall flash up.
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
  }
  applySession(options);
  const LevelPlace place = findLevel(options);
  const std::vector<Pose> poses = options.poses ? readPoses(*options.poses) : std::vector<Pose>{};
  // The engine changes the current folder.
  options.out = fs::absolute(options.out);
  if (options.trace) options.trace = fs::absolute(*options.trace);
  if (options.stages) options.stages = fs::absolute(*options.stages);
  if (options.record) options.record = fs::absolute(*options.record);
  if (options.replay) options.replay = fs::absolute(*options.replay);
  const bool jsonToOutput = options.json == "-";
  const fs::path jsonFile = options.json ? fs::absolute(*options.json) : options.out / "walk.json";
  if (options.window) {
    if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY"))
      throw Failure(ExitCode::NoDevice, "--window: there is no display");
  } else if (!inWindow && !options.noPictures) {
    prepareOut(options.out);
  }

  const Flight flight = options.poses ? Flight({}) : planFlight(place.file);
  const PrivateHome home;
  Report report;
  ContactSheet sheet;
  {
    Stage session(options, place);
    checkLog(home, options.talk);
    if (session.loading && !inWindow && !options.noPictures) {
      writePng(options.out / "loading.png", *session.loading);
      sheet.add(*session.loading);
    }
    if (options.poses)
      drawPoses(session, options, poses, sheet);
    else if (options.play && inWindow)
      playByHand(session, options, place);
    else if (options.play)
      playRoute(session, options, place, sheet);
    else if (inWindow)
      showFlight(session, options, flight);
    else
      drawFlight(session, options, flight, sheet);
    session.finish(options);
    report = std::move(session.report);
  }
  if (!sheet.empty()) writePng(options.out / "contact.png", sheet.sheet());
  if (jsonToOutput)
    fmt::print("{}", report.json());
  else if (!(inWindow || options.noPictures) || options.json)
    writeText(jsonFile.string(), report.json());
  if (options.talk == Talk::Quiet || jsonToOutput) return;
  if (!inWindow && !options.noPictures) fmt::print("pictures and timings: {}\n", options.out.string());
  fmt::print(options.replay ? stderr : stdout,
             "{}, {}x{}, {} frames: median {:.2f} ms, 95 % within {:.2f} ms; loaded in {:.0f} ms\n", report.device,
             report.width, report.height, report.frames.size(), report.quantile(0.5), report.quantile(0.95),
             report.loadMs);
}

}  // namespace walk
