#include "LevelFile.h"

#include "Failure.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace fs = std::filesystem;

namespace walk {
namespace {

constexpr char kDemoLevel[] = "maps/court.bsp";
constexpr float kEyeHeight = 26;  // above a player start, world units

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
  return text;
}

/// The project's own data: in the current folder, beside an installed program, or above a build folder.
std::optional<fs::path> findAssets() {
  std::error_code ignored;
  const fs::path program = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  for (const fs::path& candidate :
       {fs::path("assets"), program / "../share/quasarlens8/assets", program / "../../../assets"})
    if (fs::exists(candidate / kDemoLevel, ignored)) return fs::canonical(candidate);
  return std::nullopt;
}

enum class Kind { Quake3, HalfLife };
/// Places in the directory.
struct Lumps {
  std::size_t entities, models;
};
/// By kind.
constexpr Lumps kLumps[] = {{0, 7}, {0, 14}};
constexpr std::size_t kDirectoryStart[] = {8, 4}, kDirectoryLength[] = {17, 15};

Kind kindOf(std::ifstream& in) {
  char magic[4] = {};
  in.read(magic, sizeof magic);
  return std::memcmp(magic, "IBSP", sizeof magic) == 0 ? Kind::Quake3 : Kind::HalfLife;
}

/// The bytes of a lump of a level file.
std::string readLump(const fs::path& file, std::size_t Lumps::*which) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw Failure(ExitCode::Unreadable, fmt::format("cannot read {}", file.string()));
  const auto kind = static_cast<std::size_t>(kindOf(in));
  const std::size_t lump = kLumps[kind].*which;
  std::int32_t directory[17][2] = {};  // offset, length
  in.seekg(static_cast<std::streamoff>(kDirectoryStart[kind]));
  if (!in.read(reinterpret_cast<char*>(directory), static_cast<std::streamsize>(8 * kDirectoryLength[kind])))
    throw Failure(ExitCode::Malformed, fmt::format("{} is not a level", file.string()));
  const auto [offset, length] = directory[lump];
  const auto size = static_cast<std::int64_t>(fs::file_size(file));
  if (offset < 0 || length < 0 || std::int64_t{offset} + length > size)
    throw Failure(ExitCode::Malformed, fmt::format("{}: lump {} is {} bytes at {}, the file has {}", file.string(),
                                                   lump, length, offset, size));
  std::string bytes(static_cast<std::size_t>(length), '\0');
  in.seekg(offset).read(bytes.data(), length);
  return bytes;
}

using Entity = std::map<std::string, std::string>;

std::vector<Entity> parseEntities(const std::string& text) {
  std::vector<Entity> entities;
  std::optional<std::string> key;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '{') {
      entities.emplace_back();
      key.reset();
    } else if (text[i] == '"') {
      const std::size_t end = text.find('"', i + 1);
      if (end == std::string::npos) break;
      std::string word = text.substr(i + 1, end - i - 1);
      i = end;
      if (!key) {
        key = lowerCase(std::move(word));
      } else {
        if (!entities.empty()) entities.back()[*key] = std::move(word);
        key.reset();
      }
    }
  }
  return entities;
}

std::string valueOf(const Entity& entity, const std::string& key) {
  const auto found = entity.find(key);
  return found == entity.end() ? "" : found->second;
}

/// Degrees about the upward axis.
double headingOf(const Entity& entity) {
  double pitch = 0, yaw = 0;
  if (std::sscanf(valueOf(entity, "angles").c_str(), "%lf %lf", &pitch, &yaw) == 2) return yaw;
  return std::atof(valueOf(entity, "angle").c_str());
}

std::optional<Pose> poseOf(const Entity& entity) {
  float at[3] = {};
  if (std::sscanf(valueOf(entity, "origin").c_str(), "%f %f %f", &at[0], &at[1], &at[2]) != 3) return std::nullopt;
  const double heading = headingOf(entity) * 3.14159265358979 / 180;
  // A file point (x, y, z) stands at (-x, z, -y) in the world.
  const Point eye{-at[0], at[2] + kEyeHeight, -at[1]};
  constexpr double kLookDistance = 128;
  return Pose{eye, {eye.x - std::cos(heading) * kLookDistance, eye.y, eye.z - std::sin(heading) * kLookDistance}};
}

/// The poses of all entities whose class passes a test.
template <class Test>
std::vector<Pose> posesOf(const std::vector<Entity>& entities, const Test& test) {
  std::vector<Pose> poses;
  for (const Entity& entity : entities)
    if (test(valueOf(entity, "classname")))
      if (const std::optional<Pose> pose = poseOf(entity)) poses.push_back(*pose);
  return poses;
}

/// From each start on to the nearest one that was not visited.
std::vector<Pose> tour(std::vector<Pose> starts) {
  for (std::size_t i = 1; i < starts.size(); ++i) {
    const Point from = starts[i - 1].eye;
    const auto nearest =
        std::min_element(starts.begin() + static_cast<std::ptrdiff_t>(i), starts.end(),
                         [&](const Pose& a, const Pose& b) { return distance(a.eye, from) < distance(b.eye, from); });
    std::swap(starts[i], *nearest);
  }
  return starts;
}

}  // namespace

LevelPlace findLevel(const Options& options) {
  LevelPlace place;
  if (options.base && !fs::is_directory(*options.base))
    throw Failure(ExitCode::Unreadable, fmt::format("no folder {}", options.base->string()));
  if (options.level.empty()) {
    const std::optional<fs::path> assets = options.base ? fs::canonical(*options.base) : findAssets();
    if (!assets) throw Failure(ExitCode::Unreadable, "the demo level is not to be found; name a level");
    place.base = *assets;
    place.file = place.base / kDemoLevel;
  } else {
    const bool below = options.base && fs::is_regular_file(*options.base / options.level);
    place.file = fs::absolute(below ? *options.base / options.level : fs::path(options.level)).lexically_normal();
    const fs::path folder = place.file.parent_path();
    const bool inMaps = lowerCase(folder.filename().string()) == "maps";
    place.base = options.base ? fs::absolute(*options.base).lexically_normal() : inMaps ? folder.parent_path() : folder;
  }
  if (!fs::is_regular_file(place.file))
    throw Failure(ExitCode::Unreadable, fmt::format("no file {}", place.file.string()));
  const fs::path relative = place.file.lexically_relative(place.base);
  const bool inside = !relative.empty() && *relative.begin() != "..";
  place.name = inside ? relative.generic_string() : place.file.string();
  return place;
}

std::vector<fs::path> findPackages(const LevelPlace& place, const std::vector<fs::path>& given) {
  std::vector<fs::path> packages;
  for (const fs::path& file : given) {
    if (!fs::is_regular_file(file)) throw Failure(ExitCode::Unreadable, fmt::format("no file {}", file.string()));
    packages.push_back(fs::absolute(file));
  }
  // The level names them with paths of the machine it was made on.
  std::string names;
  for (const Entity& entity : parseEntities(readLump(place.file, &Lumps::entities)))
    if (valueOf(entity, "classname") == "worldspawn") names = valueOf(entity, "wad");
  for (std::size_t begin = 0; begin < names.size();) {
    const std::size_t end = std::min(names.find(';', begin), names.size());
    const std::string path = names.substr(begin, end - begin), name = path.substr(path.find_last_of("/\\") + 1);
    begin = end + 1;
    for (const fs::path& folder : {place.file.parent_path(), place.base}) {
      std::error_code ignored;
      for (const auto& entry : fs::directory_iterator(folder, ignored))
        if (!name.empty() && lowerCase(entry.path().filename().string()) == lowerCase(name) &&
            std::find(packages.begin(), packages.end(), entry.path()) == packages.end())
          packages.push_back(entry.path());
    }
  }
  return packages;
}

float levelDiagonal(const fs::path& levelFile) {
  const std::string models = readLump(levelFile, &Lumps::models);
  float box[6] = {};  // minimum, maximum; the first model is the world
  if (models.size() < sizeof box) return 0;
  std::memcpy(box, models.data(), sizeof box);
  const float diagonal = std::hypot(box[3] - box[0], box[4] - box[1], box[5] - box[2]);
  return std::isfinite(diagonal) ? diagonal : 0;
}

std::vector<Pose> playerStarts(const fs::path& levelFile) {
  const std::vector<Entity> entities = parseEntities(readLump(levelFile, &Lumps::entities));
  std::vector<Pose> starts = posesOf(entities, [](const std::string& name) {
    return name == "info_player_start" || name == "info_player_deathmatch";
  });
  if (starts.empty())
    starts = posesOf(entities, [](const std::string& name) { return name.find("player") != std::string::npos; });
  if (starts.empty()) starts = posesOf(entities, [](const std::string& name) { return name.rfind("light", 0) == 0; });
  return tour(std::move(starts));
}

std::vector<Point> pathCorners(const fs::path& levelFile) {
  std::vector<Point> corners;
  for (const Pose& pose : posesOf(parseEntities(readLump(levelFile, &Lumps::entities)),
                                  [](const std::string& name) { return name == "path_corner"; }))
    corners.push_back(pose.eye);
  return corners;
}

}  // namespace walk
