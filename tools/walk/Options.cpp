#include "Options.h"

#include "CommonOptions.h"
#include "Failure.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace walk {

std::optional<Options> parseOptions(int argc, char** argv) {
  Options options;
  std::string size, device, curves = "normal";
  bool quiet = false, verbose = false;
  CLI::App app(
      "Walks through a level and writes pictures, a contact sheet and timings.\n"
      "Without LEVEL it walks the demo level, along its own path; other levels are crossed through their player "
      "starts.",
      "ql-walk");
  app.set_version_flag("--version", "ql-walk " QL_VERSION);
  app.add_option("LEVEL", options.level, "level file, below --base or anywhere")->type_name("FILE");
  app.add_option("--base", options.base, "folder of the level's textures; default: the one above the level's maps/")
      ->type_name("DIR");
  app.add_option("--wad", options.packages,
                 "texture package of a Half-Life level, looked into before those that the level names; may be repeated")
      ->type_name("FILE");
  app.add_option("--poses", options.poses,
                 "JSON array of {\"eye\": [x,y,z], \"look\": [x,y,z]} in world coordinates:\n"
                 "one picture each, none depending on those before")
      ->type_name("FILE");
  app.add_option("--fov", options.fieldOfView, "vertical field of view, for any size; default: the engine's (90)")
      ->type_name("DEGREES")
      ->check(CLI::Range(1.0, 179.0));
  app.add_option("--far", options.farPlane, "distance of the far plane; default: 4096, more for a larger level")
      ->type_name("UNITS")
      ->check(CLI::Range(2.0, 1e6));
  app.add_option("--frames", options.frames, "frames of the flight; default: 120 (with --window: until closed)")
      ->type_name("N")
      ->check(CLI::Range(1, kMostFrames));
  app.add_option("--every", options.every, "one picture in N frames of the flight; default: 24 in all")
      ->type_name("N")
      ->check(CLI::Range(1, kMostFrames));
  app.add_option("--size", size, "picture size; default: 1024x768")->type_name("WxH");
  app.add_option("--device", device,
                 "hal (hardware), ref (software) or auto (hardware when there is any);\n"
                 "default: ref for pictures, which are then the same everywhere, auto for --window")
      ->type_name("KIND")
      ->check(CLI::IsMember({"hal", "ref", "auto"}));
  app.add_option("--curves", curves, "precision of curved surfaces: low, normal or high")
      ->type_name("KIND")
      ->capture_default_str()
      ->check(CLI::IsMember({"low", "normal", "high"}));
  app.add_flag("--no-pvs", options.noPvs, "draw the whole level, not what the camera may see");
  app.add_option("--fixed-step", options.fixedStep,
                 "engine time of a frame, milliseconds; default: 16 (with --window: real time)")
      ->type_name("MS")
      ->check(CLI::Range(1, 200));
  app.add_option("--out", options.out, "folder for the pictures and walk.json")
      ->type_name("DIR")
      ->capture_default_str();
  app.add_option("--json", options.json, "file for the timings, - for standard output; default: walk.json in --out")
      ->type_name("FILE");
  app.add_option("--trace", options.trace, "record the device's calls in a file, for ql-trace")->type_name("FILE");
  app.add_option("--stages", options.stages,
                 "write what each thread does when, for a trace viewer (chrome://tracing, ui.perfetto.dev)")
      ->type_name("FILE");
  app.add_flag(
      "--overlay", options.overlay,
      "show the frame rate and the last frame's numbers in the pictures, and what loading shows (loading.png)");
  app.add_flag("--no-pictures", options.noPictures, "draw, write no pictures (and timings only with --json)");
  app.add_flag(
      "--play", options.play,
      "walk on the floors, up steps and against walls: along the level's path corners to the last one (or about\n"
      "at random where it has none); with --window by keys: arrows or W A S D, Space jumps, the mouse looks");
  auto* window = app.add_flag("--window", options.window,
                              "show the flight in a window, write no pictures; arrow keys, W A S D or a click of the\n"
                              "mouse take over, then the mouse looks around; Escape ends");
  auto* record =
      app.add_option("--record", options.record, "with --window: record what the user does in a file, for --replay")
          ->type_name("FILE")
          ->needs(window);
  app.add_option("--replay", options.replay,
                 "do again what was recorded, with the same level, unseen without --window;\n"
                 "one line a frame on standard output: its number and a hash of its picture")
      ->type_name("FILE")
      ->excludes(record);
  auto* quietFlag = app.add_flag("--quiet", quiet, "say nothing but errors");
  app.add_flag("--verbose", verbose, "show the engine's log")->excludes(quietFlag);

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {  // help, version
    app.exit(success);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw Failure(ExitCode::Usage, error.what());
  }
  if (device.empty()) device = options.window && !options.replay ? "auto" : "ref";
  if (device != "auto") options.device = device == "hal" ? DeviceChoice::Hardware : DeviceChoice::Reference;
  options.curves = curves == "low" ? 0 : curves == "normal" ? 1 : 2;
  if (!size.empty()) {
    const PictureSize side = parseSize(size);
    options.width = side.width;
    options.height = side.height;
  }
  if (options.window && options.poses) throw Failure(ExitCode::Usage, "--window shows a flight: --poses excludes it");
  if (options.play && options.poses) throw Failure(ExitCode::Usage, "--play goes its own way: --poses excludes it");
  if (options.play && options.replay) throw Failure(ExitCode::Usage, "--play excludes --replay");
  if (options.replay && options.poses) throw Failure(ExitCode::Usage, "--replay excludes --poses");
  options.talk = quiet ? Talk::Quiet : verbose ? Talk::Verbose : Talk::Normal;
  return options;
}

}  // namespace walk
