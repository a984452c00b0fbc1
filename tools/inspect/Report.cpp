#include "Report.h"

#include "HalfLifeReport.h"
#include "MeshReport.h"
#include "ScriptReport.h"
#include "Validated.h"
#include "archive/PakArchive.h"
#include "level/EntityText.h"
#include "level/Q3Bsp.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"
#include "platform/images/Image.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string_view>

namespace ql::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kScriptEnding = ".shader";

/// Bytes of one record of each lump, in the order of the file's directory; 0: not made of records.
struct LumpKind {
  const char* name;
  std::uint32_t recordSize;
};
constexpr std::array<LumpKind, level::kLumps> kLumpKinds{{{"entities", 1},
                                                          {"textures", sizeof(level::Q3Texture)},
                                                          {"planes", sizeof(level::Q3Plane)},
                                                          {"nodes", sizeof(level::Q3Node)},
                                                          {"leafs", sizeof(level::Q3Leaf)},
                                                          {"leaffaces", 4},
                                                          {"leafbrushes", 4},
                                                          {"models", sizeof(level::Q3Model)},
                                                          {"brushes", 12},
                                                          {"brushsides", 8},
                                                          {"vertices", sizeof(level::Q3Vertex)},
                                                          {"meshverts", 4},
                                                          {"effects", 72},
                                                          {"faces", sizeof(level::Q3Face)},
                                                          {"lightmaps", level::kLightmapBytes},
                                                          {"lightvols", 8},
                                                          {"visdata", 1}}};

constexpr std::array<const char*, 5> kFaceTypes{"other", "polygon", "patch", "mesh", "billboard"};

bool startsWith(std::span<const std::byte> bytes, std::string_view identifier) {
  return bytes.size() >= identifier.size() && std::memcmp(bytes.data(), identifier.data(), identifier.size()) == 0;
}

Json entityClasses(std::string_view text) {
  std::map<std::string, int> classes;
  for (auto entity = level::firstEntity(text); entity; entity = level::firstEntity(entity->rest)) {
    const std::string_view name = level::entityValue(entity->block, "classname");
    if (!name.empty()) ++classes[host::toUtf8(name)];
  }
  return classes;
}

void levelContents(Json& json, const level::Q3Bsp& bsp) {
  Json textures = Json::array();
  for (const level::Q3Texture& texture : bsp.textures) textures.push_back(host::toUtf8(host::fieldText(texture.name)));
  json["textures"] = std::move(textures);
  json["entity_classes"] = entityClasses(bsp.entities);

  std::map<std::string, int> types;
  for (const level::Q3Face& face : bsp.faces) {
    const bool known = face.type > 0 && static_cast<std::size_t>(face.type) < kFaceTypes.size();
    ++types[kFaceTypes[known ? static_cast<std::size_t>(face.type) : 0]];
  }
  json["face_types"] = types;
  json["clusters"] = bsp.visibility.clusterCount;

  if (!bsp.vertices.empty()) {
    std::array<float, 3> low = bsp.vertices.front().position, high = low;
    for (const level::Q3Vertex& vertex : bsp.vertices) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        low[axis] = std::min(low[axis], vertex.position[axis]);
        high[axis] = std::max(high[axis], vertex.position[axis]);
      }
    }
    // The reader mirrors x; bounds are given as the file has them.
    json["bounds"] = {{"mins", {-high[0] + 0.0F, low[1], low[2]}}, {"maxs", {-low[0] + 0.0F, high[1], high[2]}}};
  }
}

Json levelReport(std::span<const std::byte> bytes, bool validate) {
  const level::Q3Header header = level::readQ3Header(bytes);
  Json json{{"format", "q3bsp"}, {"version", header.version}};
  for (std::size_t i = 0; i < level::kLumps; ++i)
    json["lumps"][kLumpKinds[i].name] = header.lumps[i].length / kLumpKinds[i].recordSize;
  level::Q3Bsp bsp;
  const auto read = [&] {
    bsp = level::parseQ3Bsp(bytes);
    levelContents(json, bsp);
  };
  validated(json, validate, read);
  if (validate && bsp.repairs.count > 0) json["repairs"] = {{"count", bsp.repairs.count}, {"first", bsp.repairs.first}};
  return json;
}

Json archiveReport(std::span<const std::byte> bytes, bool validate) {
  Json json{{"format", "pak"}};
  archive::PakDirectory directory;
  const auto read = [&] { directory = archive::parsePakDirectory(bytes); };
  validated(json, validate, read);
  json["files"] = directory.fileCount;
  Json entries = Json::array();
  for (const archive::PakEntry& entry : directory.entries)
    entries.push_back({{"name", host::toUtf8(entry.name)}, {"offset", entry.offset}, {"size", entry.size}});
  json["entries"] = std::move(entries);
  return json;
}

Json pictureReport(const std::string& name, std::span<const std::byte> bytes, bool validate) {
  constexpr std::array<const char*, 5> kNames{"bmp", "jpg", "tga", "png", "dds"};
  const images::ImageInfo info = images::inspect(bytes, name);
  Json json{{"format", kNames.at(static_cast<std::size_t>(info.format))},
            {"width", info.width},
            {"height", info.height},
            {"bits_per_pixel", info.bitsPerPixel},
            {"levels", info.mipLevels},
            {"compressed", info.compressed}};
  if (validate) validated(json, validate, [&] { json["alpha"] = images::decode(bytes, name).hasAlpha; });
  return json;
}

}  // namespace

nlohmann::ordered_json report(const std::string& name, std::span<const std::byte> bytes, bool validate) {
  if (level::isQ3Bsp(bytes)) return levelReport(bytes, validate);
  if (startsWith(bytes, "PACK")) return archiveReport(bytes, validate);
  if (isHalfLife(bytes)) return halfLifeReport(bytes, validate);
  if (isMesh(name, bytes)) return meshReport(bytes, validate);
  if (host::equalIgnoringCase(std::string_view(name).substr(name.size() - std::min(name.size(), kScriptEnding.size())),
                              kScriptEnding))
    return scriptReport({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, validate);
  return pictureReport(name, bytes, validate);
}

}  // namespace ql::inspect
