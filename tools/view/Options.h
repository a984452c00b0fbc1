/// @file
/// The command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace view {

enum class DeviceChoice { Auto, Hardware, Reference };
enum class UpAxis { Own, Y, Z };  ///< Own: as files of the kind have it
enum class Talk { Quiet, Normal, Verbose };

struct Options {
  std::filesystem::path file;
  std::optional<std::filesystem::path> base;  ///< where textures and a level's files are looked for
  std::optional<std::string> out;             ///< picture; "-" for standard output; none: a window
  std::optional<std::string> json;            ///< facts; "-" for standard output
  std::optional<double> yaw, pitch;           ///< degrees
  double distance = 1;                        ///< 1: everything is in view
  std::optional<int> frames;
  std::optional<int> fixedStep;  ///< milliseconds
  std::int32_t width = 800, height = 600;
  DeviceChoice device = DeviceChoice::Auto;
  UpAxis up = UpAxis::Own;
  bool strip = false;
  bool textures = false;  ///< of a level: the textures that it carries
  int page = 1;           ///< of a sheet of textures
  Talk talk = Talk::Normal;
};

/// Nothing when the program has said what was asked of it (help, version) and is done.
/// @throws walk::Failure Usage, Limit
std::optional<Options> parseOptions(int argc, char** argv);

}  // namespace view
