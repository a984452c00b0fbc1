#include "Show.h"

#include "Findings.h"
#include "ShowSheet.h"
#include "Stage.h"
#include "Subject.h"
#include "walk/Failure.h"
#include "walk/Picture.h"
#include "walk/PrivateHome.h"
#include "walk/TextFile.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace view {
namespace {

namespace fs = std::filesystem;
using walk::ExitCode;
using walk::Failure;

constexpr double kTurnSpeed = 30;  // degrees per second

/// How large the file's mesh is: the camera is set up before the device, which loading it for show needs.
Extent extentOf(Kind kind, const Options& options) {
  if (kind == Kind::Level) return {};
  ql::Quasarlens8 engine;
  if (kind == Kind::Picture) {  // needs a device to know its size
    engine.SetEngineMode(16, 16, 32, ql::False);
    if (!engine.Initialize(0)) throw Failure(ExitCode::NoDevice, "no device could be created");
  }
  const Subject subject(kind, options);
  return {subject.box(), subject.facts().radius};
}

View firstView(Kind kind, const Options& options) {
  const bool turned = isMesh(kind);
  return {options.yaw.value_or(turned ? 30 : 0), options.pitch.value_or(turned ? 20 : 0), options.distance};
}

/// What the user does in the window.
class Hands {
 public:
  void move(View& view, double seconds) {
    std::int32_t dx = 0, dy = 0, roll = 0;
    std::int16_t left = 0, right = 0, middle = 0;
    input_.GetMouseState(dx, dy, left, right, middle, roll);
    if (left != 0) {
      view.yaw -= dx * 0.4;
      view.pitch += dy * 0.4;
      turning_ = false;
    }
    const auto held = [&](std::int32_t key) { return input_.IsKeyPressed(key) ? 1.0 : 0.0; };
    const double across = held(ql::QL_KEY_LEFT) - held(ql::QL_KEY_RIGHT),
                 up = held(ql::QL_KEY_UP) - held(ql::QL_KEY_DOWN);
    if (across != 0 || up != 0) turning_ = false;
    view.yaw += across * 90 * seconds;
    view.pitch = std::clamp(view.pitch + up * 60 * seconds, -89.0, 89.0);
    const double nearer = held(ql::QL_KEY_PAGEUP) - held(ql::QL_KEY_PAGEDOWN);
    view.distance = std::clamp(view.distance * std::pow(2.0, -nearer * seconds - roll / 480.0), 0.05, 4.0);
    const bool space = held(ql::QL_KEY_SPACE) > 0;
    if (space && !space_) turning_ = !turning_;
    space_ = space;
    if (turning_) view.yaw += kTurnSpeed * seconds;
  }
  bool done() const { return input_.IsKeyPressed(ql::QL_KEY_ESCAPE); }

 private:
  ql::InputEngine8 input_;
  bool turning_ = true, space_ = false;
};

void showWindow(Stage& stage, Subject& subject, const Options& options, const std::string& caption) {
  View view = firstView(subject.kind(), options);
  Hands hands;
  for (int i = 0; !stage.engine().CloseRequested() && !hands.done() && (!options.frames || i < *options.frames); ++i) {
    stage.frame(subject, view, i == 0 ? "" : caption);
    if (options.fixedStep) stage.advance(static_cast<std::uint32_t>(*options.fixedStep));
    hands.move(view, stage.engine().TimeElapsed() / 1000.0);
  }
}

/// The name of one of several pictures: a number before the ending.
fs::path numbered(const fs::path& out, int number) {
  return out.parent_path() / fmt::format("{}-{:03}{}", out.stem().string(), number, out.extension().string());
}

void writePictures(Stage& stage, Subject& subject, const Options& options) {
  const int frames = options.frames.value_or(1);
  View view = firstView(subject.kind(), options);
  const double first = view.yaw;
  for (int i = 0; i < frames; ++i) {
    view.yaw = first + 360.0 * i / frames;
    stage.forgetThePast(subject, view);
    stage.frame(subject, view);
    const fs::path file = *options.out == "-" ? fs::path("/dev/stdout")
                          : frames == 1       ? fs::path(*options.out)
                                              : numbered(*options.out, i);
    walk::writePng(file, stage.picture());
  }
}

std::string listOf(const Findings& findings) {
  std::string list;
  for (const std::string& error : findings.errors) list += error + "\n";
  if (!findings.missing.empty()) list += "textures not found:\n";
  for (const std::string& name : findings.missing) list += "  " + name + "\n";
  return list;
}

nlohmann::ordered_json jsonOf(const Options& options, const Stage& stage, const Subject& subject,
                              const Findings& findings) {
  nlohmann::ordered_json json{{"file", options.file.string()},
                              {"kind", nameOf(subject.kind())},
                              {"device", stage.device()},
                              {"size", {options.width, options.height}}};
  if (subject.kind() != Kind::Level) {
    const Box& box = subject.box();
    json["vertices"] = subject.facts().vertices;
    json["groups"] = subject.facts().materials.size();
    json["bounds"] = {{"mins", {box.low.x, box.low.y, box.low.z}}, {"maxs", {box.high.x, box.high.y, box.high.z}}};
  }
  json["triangles"] = stage.triangles();
  json["missing"] = findings.missing;
  json["errors"] = findings.errors;
  return json;
}

/// The engine works in the folder of the textures: files are named from where the program was started.
Options absolute(Options options) {
  options.file = fs::absolute(options.file);
  for (std::optional<std::string>* name : {&options.out, &options.json})
    if (*name && **name != "-") *name = fs::absolute(**name).string();
  return options;
}

void prepareDisplay(const Options& options) {
  if (options.out) {  // pictures need no display, and none shall flash up
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
  } else if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
    throw Failure(ExitCode::NoDevice, "there is no display for a window; --out FILE writes a picture");
  }
}

}  // namespace

void show(const Options& given) {
  const Options options = absolute(given);
  if (options.out == "-" && (options.json == "-" || options.frames.value_or(1) > 1))
    throw Failure(ExitCode::Usage, "--out -: one picture alone goes to standard output");
  const Kind kind = kindOf(options.file);
  if (options.textures && kind != Kind::Level) throw Failure(ExitCode::Usage, "--textures: the file is no level");
  prepareDisplay(options);
  if (isCollection(kind) || options.textures) return showSheet(kind, options);
  const walk::PrivateHome home;
  const Extent extent = extentOf(kind, options);

  Stage stage(options, kind, extent);
  std::string base = baseOf(kind, options).string();
  stage.engine().SetSearchDirectory(base);
  Subject subject(kind, options);
  const std::vector<std::string> log = home.logLines();
  if (options.talk == Talk::Verbose)
    for (const std::string& line : log) fmt::print(stderr, "{}\n", line);
  Findings findings = findingsOf(log);
  if (kind == Kind::Picture && !findings.missing.empty())
    throw Failure(ExitCode::Malformed, "the picture could not be read: " + findings.missing.front());
  if (kind == Kind::Level && findings.code) throw Failure(*findings.code, findings.errors.front());

  const std::string list = listOf(findings);
  if (options.talk != Talk::Quiet) fmt::print(stderr, "{}", list);
  if (options.out) {
    writePictures(stage, subject, options);
  } else {
    stage.engine().SetWindowTitle(options.file.filename().string() + " - ql-view");
    showWindow(stage, subject, options, list);
  }
  if (options.json)
    walk::writeText(
        *options.json,
        jsonOf(options, stage, subject, findings).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
  if (findings.code) throw Failure(*findings.code, findings.errors.front());
}

}  // namespace view
