/// @file
/// The smallest good Half-Life level and texture package, made in memory. Programs that include this link the module
/// level.
#pragma once

#include "level/HlBsp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ql::test {

/// An 8-bit texture as packages and levels hold it: every pixel of level 0 has the index `pixel`; the palette's colour
/// i is (i, 255 - i, 7), its last one blue.
inline std::vector<std::byte> mipTexture(std::string_view name, std::uint32_t side, std::uint8_t pixel,
                                         bool stored = true) {
  level::MipTexture header;
  std::copy_n(name.data(), std::min(name.size(), header.name.size()), header.name.data());
  header.width = header.height = side;
  std::uint32_t at = sizeof header;
  for (std::uint32_t i = 0; i < 4; ++i) {
    if (stored) header.levels[i] = at;
    at += (side >> i) * (side >> i);
  }
  std::vector<std::byte> out(stored ? at : sizeof header, std::byte{pixel});
  std::memcpy(out.data(), &header, sizeof header);
  if (!stored) return out;
  out.push_back(std::byte{0});  // 256 colours
  out.push_back(std::byte{1});
  for (int i = 0; i < 255; ++i)
    for (const int channel : {i, 255 - i, 7}) out.push_back(static_cast<std::byte>(channel));
  for (const int channel : {0, 0, 255}) out.push_back(static_cast<std::byte>(channel));
  out.resize(out.size() + 2);
  return out;
}

/// A package of textures.
inline std::vector<std::byte> wadFile(const std::vector<std::pair<std::string, std::vector<std::byte>>>& textures) {
  std::vector<std::byte> file(12), directory;
  for (const auto& [name, texture] : textures) {
    std::vector<std::byte> entry(32);
    const std::uint32_t numbers[3] = {static_cast<std::uint32_t>(file.size()),
                                      static_cast<std::uint32_t>(texture.size()),
                                      static_cast<std::uint32_t>(texture.size())};
    std::memcpy(entry.data(), numbers, sizeof numbers);
    entry[12] = std::byte{level::kWadTexture};
    std::memcpy(entry.data() + 16, name.data(), std::min<std::size_t>(name.size(), 16));
    directory.insert(directory.end(), entry.begin(), entry.end());
    file.insert(file.end(), texture.begin(), texture.end());
  }
  const std::uint32_t header[3] = {0x33444157, static_cast<std::uint32_t>(textures.size()),
                                   static_cast<std::uint32_t>(file.size())};
  std::memcpy(file.data(), header, sizeof header);
  file.insert(file.end(), directory.begin(), directory.end());
  return file;
}

/// Two floors in file coordinates: the west's -128..0, the east's 0..128 in x, both 0..128 in y, at z = 0; x = 0 parts
/// their leaves, of which the west sees only itself. A pane (brush model 1) stands at x = 32 from z = 0 to 64, a
/// trigger (model 2) at x = 64. Below z = -16 all is solid.
struct TinyHlLevel {
  enum Face : std::int32_t { kWestFloor, kEastFloor, kSky, kFence, kPane, kTrigger, kFaces };

  std::string entities =
      "{\n\"classname\" \"worldspawn\"\n\"wad\" \"\\games\\x\\tiny.wad;\"\n}\n"
      "{\n\"classname\" \"info_player_start\"\n\"origin\" \"-64 32 24\"\n}\n"
      "{\n\"classname\" \"func_wall\"\n\"model\" \"*1\"\n\"rendermode\" \"2\"\n\"renderamt\" \"100\"\n}\n"
      "{\n\"classname\" \"func_button\"\n\"model\" \"*2\"\n}\n"
      "{\n\"classname\" \"light\"\n\"origin\" \"1 2 3\"\n\"_light\" \"255 128 0 300\"\n}\n";
  std::vector<level::HlPlane> planes{{{1, 0, 0}, 0, 0}, {{0, 0, 1}, -16, 2}, {{0, 0, 1}, 0, 2}, {{1, 0, 0}, 32, 0}};
  std::vector<std::vector<std::byte>> textures{mipTexture("floor", 16, 10), mipTexture("sky", 16, 1, false),
                                               mipTexture("{fence", 16, 255), mipTexture("glass", 16, 20, false),
                                               mipTexture("aaatrigger", 16, 30, false)};
  std::vector<std::array<float, 3>> vertices;
  std::vector<level::HlNode> nodes;
  std::vector<level::HlTextureInfo> infos;
  std::vector<level::HlFace> faces;
  std::vector<level::HlLeaf> leaves;
  std::vector<std::uint16_t> marks{kWestFloor, kEastFloor, kSky, kFence};
  std::vector<level::HlEdge> edges{{{0, 0}}};
  std::vector<std::int32_t> surfaceEdges;
  std::vector<level::HlModel> models;
  std::vector<std::byte> lighting = std::vector<std::byte>(9 * 9 * 3, std::byte{96});
  std::vector<std::uint8_t> visibility{0b01, 0b11};

  TinyHlLevel() {
    for (std::int32_t texture = 0; texture < 5; ++texture) infos.push_back({{1, 0, 0, 0}, {0, 1, 0, 0}, texture, 0});
    infos.push_back({{0, 1, 0, 0}, {0, 0, 1, 0}, 3, 0});
    infos.push_back({{0, 1, 0, 0}, {0, 0, 1, 0}, 4, 0});
    floor(-128, 0, 0, 2, 0);
    floor(0, 0, 0, 2, -1);
    floor(0, 256, 1, 2, -1);
    floor(0, 32, 2, 2, 0);
    wall(32, 5);
    wall(64, 6);
    level::HlNode root, parting;
    root.plane = 1;
    root.children = {1, ~0};
    parting.children = {~2, ~1};
    nodes = {root, parting};
    level::HlLeaf solid, west, east;
    solid.contents = level::kHlSolid;
    solid.visibilityOffset = -1;
    west.contents = east.contents = -1;
    west.mins = {-128, 0, -16};
    west.maxs = {0, 128, 256};
    west.markSurfaceCount = 1;
    east.mins = {0, 0, -16};
    east.maxs = {128, 128, 256};
    east.firstMarkSurface = 1;
    east.markSurfaceCount = 3;
    east.visibilityOffset = 1;
    leaves = {solid, west, east};
    level::HlModel world, pane, trigger;
    world.mins = {-128, 0, 0};
    world.maxs = {128, 128, 256};
    world.visibleLeaves = 2;
    world.faceCount = 4;
    pane.mins = {32, 0, 0};
    pane.maxs = {32, 128, 64};
    pane.firstFace = kPane;
    pane.faceCount = 1;
    trigger.mins = {64, 0, 0};
    trigger.maxs = {64, 128, 64};
    trigger.firstFace = kTrigger;
    trigger.faceCount = 1;
    models = {world, pane, trigger};
  }

  std::vector<std::byte> bytes() const {
    std::vector<std::byte> file(sizeof(level::HlHeader));
    level::HlHeader header;
    header.version = 30;
    const auto add = [&](level::HlLump lump, std::span<const std::byte> content) {
      header.lumps[static_cast<std::size_t>(lump)] = {static_cast<std::uint32_t>(file.size()),
                                                      static_cast<std::uint32_t>(content.size())};
      file.insert(file.end(), content.begin(), content.end());
    };
    const auto table = [](const auto& records) { return std::as_bytes(std::span(records)); };
    add(level::HlLump::Entities, table(entities));
    add(level::HlLump::Planes, table(planes));
    std::vector<std::uint32_t> offsets{static_cast<std::uint32_t>(textures.size())};
    std::vector<std::byte> pixels;
    for (const std::vector<std::byte>& texture : textures) {
      offsets.push_back(static_cast<std::uint32_t>(4 + 4 * textures.size() + pixels.size()));
      pixels.insert(pixels.end(), texture.begin(), texture.end());
    }
    std::vector<std::byte> lump(table(offsets).begin(), table(offsets).end());
    lump.insert(lump.end(), pixels.begin(), pixels.end());
    add(level::HlLump::Textures, lump);
    add(level::HlLump::Vertices, table(vertices));
    add(level::HlLump::Visibility, table(visibility));
    add(level::HlLump::Nodes, table(nodes));
    add(level::HlLump::TextureInfo, table(infos));
    add(level::HlLump::Faces, table(faces));
    add(level::HlLump::Lighting, lighting);
    add(level::HlLump::Leaves, table(leaves));
    add(level::HlLump::MarkSurfaces, table(marks));
    add(level::HlLump::Edges, table(edges));
    add(level::HlLump::SurfaceEdges, table(surfaceEdges));
    add(level::HlLump::Models, table(models));
    std::memcpy(file.data(), &header, sizeof header);
    return file;
  }

 private:
  void polygon(const std::vector<std::array<float, 3>>& corners, std::uint16_t info, std::uint16_t plane,
               std::int32_t light) {
    level::HlFace face;
    face.plane = plane;
    face.firstEdge = static_cast<std::int32_t>(surfaceEdges.size());
    face.edgeCount = static_cast<std::uint16_t>(corners.size());
    face.textureInfo = info;
    face.styles = {0, 255, 255, 255};
    face.lightOffset = light;
    const auto first = static_cast<std::uint16_t>(vertices.size());
    for (std::uint16_t i = 0; i < corners.size(); ++i) {
      const auto from = static_cast<std::uint16_t>(first + i),
                 to = static_cast<std::uint16_t>(first + (i + 1U) % corners.size());
      vertices.push_back(corners[i]);
      // Every second edge runs the other way.
      const auto edge = static_cast<std::int32_t>(edges.size());
      edges.push_back(i % 2 == 0 ? level::HlEdge{{from, to}} : level::HlEdge{{to, from}});
      surfaceEdges.push_back(i % 2 == 0 ? edge : -edge);
    }
    faces.push_back(face);
  }
  void floor(float x, float z, std::uint16_t info, std::uint16_t plane, std::int32_t light) {
    polygon({{x, 0, z}, {x, 128, z}, {x + 128, 128, z}, {x + 128, 0, z}}, info, plane, light);
  }
  void wall(float x, std::uint16_t info) { polygon({{x, 0, 0}, {x, 0, 64}, {x, 128, 64}, {x, 128, 0}}, info, 3, -1); }
};

constexpr std::size_t directoryAt(level::HlLump lump) { return 4 + 8 * static_cast<std::size_t>(lump); }

}  // namespace ql::test
