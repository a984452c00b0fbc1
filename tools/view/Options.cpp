#include "Options.h"

#include "walk/CommonOptions.h"
#include "walk/Failure.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace view {
namespace {

using walk::ExitCode;
using walk::Failure;

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv) {
  Options options;
  std::string size, device, up;
  bool quiet = false, verbose = false;
  CLI::App app(
      "Shows a file: turns it in a window, or with --out writes a picture of it.\n"
      "It opens meshes (QLOF, X, 3DS, DXE), pictures (BMP, JPG, TGA, PNG, DDS) and levels. Of texture packages\n"
      "(WAD3) and archives (PAK) it shows the textures on a sheet.",
      "ql-view");
  app.footer(
      "In the window: drag or arrow keys turn, the wheel or Page Up and Page Down come closer and go away,\n"
      "space stops and starts turning, Escape closes. Page Up and Page Down turn the pages of a sheet.");
  app.set_version_flag("--version", "ql-view " QL_VERSION);
  app.add_option("FILE", options.file)->required();
  app.add_option("--base", options.base, "folder of textures; default: of the file, of a level the one above its maps/")
      ->type_name("DIR");
  app.add_option("--out", options.out, "PNG file, - for standard output; several with --frames, numbered")
      ->type_name("FILE");
  app.add_option("--json", options.json, "file for what is known of the file, - for standard output")
      ->type_name("FILE");
  app.add_option("--yaw", options.yaw,
                 "where the camera stands around it; 0: in front, 90: on its right side.\n"
                 "default: 30, of pictures 0. In a level: where it looks, 0 along +z, 90 along +x")
      ->type_name("DEGREES")
      ->check(CLI::Range(-36000.0, 36000.0));
  app.add_option("--pitch", options.pitch, "how far above it the camera stands, or looks up in a level; default: 20, 0")
      ->type_name("DEGREES")
      ->check(CLI::Range(-89.0, 89.0));
  app.add_option("--distance", options.distance, "1: all of it is in view, 2: from twice as far; none in a level")
      ->type_name("FACTOR")
      ->capture_default_str()
      ->check(CLI::Range(0.05, 1000.0));
  app.add_option("--frames", options.frames, "pictures over one turn; frames until the window closes")
      ->type_name("N")
      ->check(CLI::Range(1, walk::kMostFrames));
  app.add_option("--fixed-step", options.fixedStep, "engine time of a frame, milliseconds; default: real time")
      ->type_name("MS")
      ->check(CLI::Range(1, 200));
  app.add_option("--size", size, "of the picture; default: 800x600")->type_name("WxH");
  app.add_option("--device", device,
                 "hal (hardware), ref (software) or auto (hardware when there is any);\n"
                 "default: ref for pictures, which are then the same everywhere, auto for the window")
      ->type_name("KIND")
      ->check(CLI::IsMember({"hal", "ref", "auto"}));
  app.add_option("--up", up, "the axis that points up in the file; default: z of 3DS files, y of others")
      ->type_name("AXIS")
      ->check(CLI::IsMember({"y", "z"}));
  app.add_flag("--strip", options.strip, "the vertices of a QLOF mesh are strips, which files do not tell");
  app.add_flag("--textures", options.textures, "a sheet of the textures that a Half-Life level carries");
  app.add_option("--page", options.page, "of a sheet of textures, the first is 1")
      ->type_name("N")
      ->check(CLI::Range(1, 1'000'000));
  auto* quietFlag = app.add_flag("--quiet", quiet, "say nothing but errors");
  app.add_flag("--verbose", verbose, "show the engine's log")->excludes(quietFlag);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    app.exit(success);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw Failure(ExitCode::Usage, error.what());
  }
  if (device.empty()) device = options.out ? "ref" : "auto";
  if (device != "auto") options.device = device == "hal" ? DeviceChoice::Hardware : DeviceChoice::Reference;
  if (!up.empty()) options.up = up == "y" ? UpAxis::Y : UpAxis::Z;
  if (!size.empty()) {
    const walk::PictureSize side = walk::parseSize(size);
    options.width = side.width;
    options.height = side.height;
  }
  options.talk = quiet ? Talk::Quiet : verbose ? Talk::Verbose : Talk::Normal;
  return options;
}

}  // namespace view
