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

constexpr std::size_t kEntityLump = 0, kModelLump = 7, kLumps = 17;

/// The bytes of a lump of a Quake 3 level file.
std::string readLump(const fs::path& file, std::size_t lump) {
  struct {
    char magic[4];
    std::int32_t version;
    std::int32_t directory[kLumps][2];  // offset, length
  } header;
  std::ifstream in(file, std::ios::binary);
  if (!in) throw Failure(ExitCode::Unreadable, fmt::format("cannot read {}", file.string()));
  if (!in.read(reinterpret_cast<char*>(&header), sizeof header) || std::memcmp(header.magic, "IBSP", 4) != 0)
    throw Failure(ExitCode::Malformed, fmt::format("{} is not a Quake 3 level", file.string()));
  const auto [offset, length] = header.directory[lump];
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

std::optional<Pose> startOf(const Entity& entity) {
  const auto name = entity.find("classname");
  const auto origin = entity.find("origin");
  if (name == entity.end() || origin == entity.end()) return std::nullopt;
  if (name->second != "info_player_start" && name->second != "info_player_deathmatch") return std::nullopt;
  float at[3] = {};
  if (std::sscanf(origin->second.c_str(), "%f %f %f", &at[0], &at[1], &at[2]) != 3) return std::nullopt;
  const auto angle = entity.find("angle");
  const double heading = angle == entity.end() ? 0 : std::atof(angle->second.c_str()) * 3.14159265358979 / 180;
  // A file point (x, y, z) stands at (-x, z, -y) in the world.
  const Point eye{-at[0], at[2] + kEyeHeight, -at[1]};
  constexpr double kLookDistance = 128;
  return Pose{eye, {eye.x - std::cos(heading) * kLookDistance, eye.y, eye.z - std::sin(heading) * kLookDistance}};
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

float levelDiagonal(const fs::path& levelFile) {
  const std::string models = readLump(levelFile, kModelLump);
  float box[6] = {};  // minimum, maximum; the first model is the world
  if (models.size() < sizeof box) return 0;
  std::memcpy(box, models.data(), sizeof box);
  const float diagonal = std::hypot(box[3] - box[0], box[4] - box[1], box[5] - box[2]);
  return std::isfinite(diagonal) ? diagonal : 0;
}

std::vector<Pose> playerStarts(const fs::path& levelFile) {
  std::vector<Pose> starts;
  for (const Entity& entity : parseEntities(readLump(levelFile, kEntityLump)))
    if (const std::optional<Pose> start = startOf(entity)) starts.push_back(*start);
  return tour(std::move(starts));
}

}  // namespace walk
