/// @file
/// What the program itself needs of a level: where it is, and where its players start.
#pragma once

#include "Options.h"
#include "Pose.h"

#include <filesystem>
#include <string>
#include <vector>

namespace walk {

struct LevelPlace {
  std::filesystem::path file;  ///< absolute
  std::filesystem::path base;  ///< absolute; the folder to make current
  std::string name;            ///< what to load, as seen from base
};

/// @throws Failure Unreadable
LevelPlace findLevel(const Options& options);

/// The texture packages to open for a Half-Life level: those given, then those that the level names and that lie beside
/// it or in the base folder. @throws Failure Unreadable for a given one that does not exist
std::vector<std::filesystem::path> findPackages(const LevelPlace& place,
                                                const std::vector<std::filesystem::path>& given);

/// The length of the level's diagonal, world units; 0 when its file does not tell. @throws as playerStarts
float levelDiagonal(const std::filesystem::path& levelFile);

/// The level's player starts as poses at eye height, each looking the way its player does, ordered into a short tour. A
/// level without starts gives entities of its game's own that have to do with players, else its lights.
/// @throws Failure Unreadable; Malformed when the file is no level
std::vector<Pose> playerStarts(const std::filesystem::path& levelFile);

/// The level's path corners in their order, world coordinates: a way that somebody can walk.
std::vector<Point> pathCorners(const std::filesystem::path& levelFile);

}  // namespace walk
