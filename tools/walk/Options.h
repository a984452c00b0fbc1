/// @file
/// The command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace walk {

enum class DeviceChoice { Auto, Hardware, Reference };
enum class Talk { Quiet, Normal, Verbose };

struct Options {
  std::string level;                            ///< empty: the demo level
  std::optional<std::filesystem::path> base;    ///< the folder that the level's files are named from
  std::optional<std::filesystem::path> poses;   ///< JSON
  std::vector<std::filesystem::path> packages;  ///< texture packages of a Half-Life level, the first one first
  std::optional<float> fieldOfView;             ///< vertical, degrees
  std::optional<float> farPlane;                ///< world units
  std::optional<int> frames;                    ///< of a flight
  std::optional<int> every;                     ///< frames from one picture to the next
  std::int32_t width = 1024, height = 768;
  DeviceChoice device = DeviceChoice::Auto;
  std::int32_t curves = 1;  ///< precision of curved surfaces, 0 to 2
  bool noPvs = false;
  std::optional<int> fixedStep;  ///< milliseconds of engine time from frame to frame
  std::filesystem::path out = "out/walk";
  std::optional<std::string> json;              ///< file, or "-" for standard output
  std::optional<std::filesystem::path> trace;   ///< file for the device's calls
  std::optional<std::filesystem::path> stages;  ///< file for what each thread does when
  bool overlay = false;                         ///< numbers over the pictures, and a picture of the loading panel
  bool noPictures = false;
  bool window = false;
  bool play = false;                                    ///< walk on the level's floors
  std::optional<std::filesystem::path> record, replay;  ///< files of sessions
  Talk talk = Talk::Normal;
};

/// Nothing when the program has said what was asked of it (help, version) and is done.
/// @throws Failure with ExitCode::Usage
std::optional<Options> parseOptions(int argc, char** argv);

}  // namespace walk
