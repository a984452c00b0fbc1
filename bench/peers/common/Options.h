/// @file
/// Options that the peers share. Programs that include this link CLI11 and nlohmann_json.
#pragma once

#include "common/Cases.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace peers {

using Point = std::array<float, 3>;
/// World coordinates, y up: a point (x, y, z) of a level's file stands at (-x, z, -y).
struct Pose {
  Point eye{}, look{};
};

struct Options {
  std::vector<std::string> cases;
  Size size;
  double seconds = 0.5;
  std::string pictures;     ///< folder for a picture of each case; empty: none
  std::string base, level;  ///< the level's file, below base
  std::vector<Pose> poses;
  float fieldOfView = 73.7398f;  ///< vertical, degrees
};

inline std::vector<Pose> readPoses(const std::string& file) {
  std::ifstream in(file);
  if (!in) throw std::runtime_error("cannot read " + file);
  std::vector<Pose> poses;
  for (const nlohmann::json& pose : nlohmann::json::parse(in))
    poses.push_back({pose.at("eye").get<Point>(), pose.at("look").get<Point>()});
  if (poses.empty()) throw std::runtime_error(file + " has no poses");
  return poses;
}

/// Reads the command line; ends the program for --help and for errors.
inline Options parseOptions(const std::string& name, const std::vector<std::string>& cases, int argc, char** argv) {
  Options options;
  std::string size = "1024x768", poses;
  CLI::App app("Times cases and prints a line of JSON for each.", name);
  app.add_option("CASE", options.cases, "what to time")->required()->check(CLI::IsMember(cases));
  app.add_option("--size", size, "of the picture, WIDTHxHEIGHT")->capture_default_str();
  app.add_option("--seconds", options.seconds, "that each case runs")->capture_default_str();
  app.add_option("--pictures", options.pictures, "folder for a picture of each case");
  app.add_option("--base", options.base, "folder that holds a level's textures");
  app.add_option("--level", options.level, "the level's file below it, for the case 'level'");
  app.add_option("--poses", poses, "JSON array of {\"eye\": [x,y,z], \"look\": [x,y,z]} in world coordinates");
  app.add_option("--fov", options.fieldOfView, "vertical field of view in degrees")->capture_default_str();
  try {
    app.parse(argc, argv);
    if (std::sscanf(size.c_str(), "%5dx%5d", &options.size.width, &options.size.height) != 2)
      throw CLI::ValidationError("--size: not WIDTHxHEIGHT");
    if (!poses.empty()) options.poses = readPoses(poses);
    const bool level = std::find(options.cases.begin(), options.cases.end(), "level") != options.cases.end();
    if (level && (options.level.empty() || options.poses.empty()))
      throw CLI::ValidationError("the case 'level' needs --base, --level and --poses");
  } catch (const CLI::Error& error) {
    std::exit(app.exit(error));
  }
  return options;
}

}  // namespace peers
