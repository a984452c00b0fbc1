#include "HalfLifeReport.h"

#include "Validated.h"
#include "level/EntityText.h"
#include "level/HlBsp.h"
#include "level/Wad3.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <string_view>

namespace ql::inspect {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int32_t kLevelVersion = 30;

/// Bytes of one record of each lump, in the order of the file's directory.
struct LumpKind {
  const char* name;
  std::uint32_t recordSize;
};
constexpr std::array<LumpKind, level::kHlLumps> kLumpKinds{{{"entities", 1},
                                                            {"planes", sizeof(level::HlPlane)},
                                                            {"textures", 1},
                                                            {"vertices", 12},
                                                            {"visdata", 1},
                                                            {"nodes", sizeof(level::HlNode)},
                                                            {"texinfo", sizeof(level::HlTextureInfo)},
                                                            {"faces", sizeof(level::HlFace)},
                                                            {"lighting", 1},
                                                            {"clipnodes", 8},
                                                            {"leafs", sizeof(level::HlLeaf)},
                                                            {"marksurfaces", 2},
                                                            {"edges", sizeof(level::HlEdge)},
                                                            {"surfedges", 4},
                                                            {"models", sizeof(level::HlModel)}}};

void levelContents(Json& json, const level::HlBsp& bsp) {
  Json textures = Json::array();
  for (const level::HlTexture& texture : bsp.textures)
    textures.push_back({host::toUtf8(host::fieldText(texture.header.name)), texture.header.width, texture.header.height,
                        texture.header.levels[0] == 0 ? "external" : "embedded"});
  json["textures"] = std::move(textures);
  std::map<std::string, int> classes;
  for (auto entity = level::firstEntity(bsp.entities); entity; entity = level::firstEntity(entity->rest)) {
    const std::string_view name = level::entityValue(entity->block, "classname");
    if (!name.empty()) ++classes[host::toUtf8(name)];
    if (name == "worldspawn") json["wad"] = host::toUtf8(level::entityValue(entity->block, "wad"));
  }
  json["entity_classes"] = classes;
  json["visible_leafs"] = bsp.models.empty() ? 0 : bsp.models[0].visibleLeaves;
  if (bsp.vertices.empty()) return;
  std::array<float, 3> low = bsp.vertices.front(), high = low;
  for (const std::array<float, 3>& vertex : bsp.vertices)
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], vertex[axis]);
      high[axis] = std::max(high[axis], vertex[axis]);
    }
  json["bounds"] = {{"mins", low}, {"maxs", high}};
}

Json levelReport(std::span<const std::byte> bytes, bool validate) {
  const level::HlHeader header = level::readHlHeader(bytes);
  Json json{{"format", "hlbsp"}, {"version", header.version}};
  for (std::size_t i = 0; i < level::kHlLumps; ++i)
    json["lumps"][kLumpKinds[i].name] = header.lumps[i].length / kLumpKinds[i].recordSize;
  level::HlBsp bsp;
  validated(json, validate, [&] {
    bsp = level::parseHlBsp(bytes);
    levelContents(json, bsp);
  });
  if (validate && bsp.repairs.count > 0) json["repairs"] = {{"count", bsp.repairs.count}, {"first", bsp.repairs.first}};
  return json;
}

Json packageReport(std::span<const std::byte> bytes, bool validate) {
  Json json{{"format", "wad"}, {"magic", "WAD3"}};
  validated(json, validate, [&] {
    const std::vector<level::WadEntry> entries = level::parseWad3(bytes);
    json["entries"] = entries.size();
    Json items = Json::array();
    for (const level::WadEntry& entry : entries) {
      Json item{{"name", host::toUtf8(entry.name)}, {"type", entry.type}, {"size", entry.size}};
      if (entry.type == level::kWadTexture) {
        const auto pixels = bytes.subspan(entry.offset, entry.size);
        const auto header = host::ByteReader(pixels).at<level::MipTexture>(0, "texture header");
        item["width"] = header.width;
        item["height"] = header.height;
        if (validate) level::decodeMipTexture(pixels);
      }
      items.push_back(std::move(item));
    }
    json["items"] = std::move(items);
  });
  return json;
}

}  // namespace

bool isHalfLife(std::span<const std::byte> bytes) {
  std::int32_t version = 0;
  if (bytes.size() >= sizeof version) std::memcpy(&version, bytes.data(), sizeof version);
  return level::isWad3(bytes) || (version == kLevelVersion && bytes.size() >= sizeof(level::HlHeader));
}

Json halfLifeReport(std::span<const std::byte> bytes, bool validate) {
  return level::isWad3(bytes) ? packageReport(bytes, validate) : levelReport(bytes, validate);
}

}  // namespace ql::inspect
