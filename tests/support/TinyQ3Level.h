/// @file
/// The smallest good Quake 3 level: a room of two clusters, made in memory. Programs that include this link the module
/// level.
#pragma once

#include "level/Q3Bsp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ql::test {

/// Tables that a test may change before they become a file. In file coordinates the room spans -128..128 in x and y,
/// 0..128 in z; the plane x = 0 parts the clusters. From cluster 0 (west) only itself is seen, from cluster 1 both.
struct TinyQ3Level {
  /// Faces in file order.
  enum Face : std::int32_t { kWestFloor, kEastFloor, kCeiling, kCurve, kFlare, kFaces };

  std::string entities =
      "{\n\"classname\" \"worldspawn\"\n}\n"
      "{\n\"classname\" \"info_player_deathmatch\"\n\"origin\" \"-64 32 24\"\n}\n"
      "{\n\"origin\" \"1 1 1\"\n\"classname\" \"info_player_start\"\n}\n";
  std::vector<level::Q3Texture> textures{texture("textures/base/stone"), texture("textures/base/wood")};
  std::vector<level::Q3Plane> planes{{{1, 0, 0}, 0}};
  std::vector<level::Q3Node> nodes{{0, {~2, ~1}, {-128, -128, 0}, {128, 128, 128}}};
  std::vector<level::Q3Leaf> leaves{{-1, 0, {}, {}, 0, 0, 0, 0},
                                    {0, 0, {-128, -128, 0}, {0, 128, 128}, 0, 2, 0, 0},
                                    {1, 0, {0, -128, 0}, {128, 128, 128}, 2, 4, 0, 0},
                                    {-1, 0, {500, 500, 500}, {600, 600, 600}, 0, 0, 0, 0}};
  /// The ceiling belongs to both leaves.
  std::vector<std::int32_t> leafFaces{kWestFloor, kCeiling, kEastFloor, kCeiling, kCurve, kFlare};
  std::vector<level::Q3Model> models{{{-128, -128, 0}, {128, 128, 128}, 0, kFaces, 0, 0}};
  std::vector<level::Q3Vertex> vertices;
  std::vector<std::int32_t> meshVertices{0, 1, 2, 2, 1, 3};
  std::vector<level::Q3Face> faces;
  std::vector<std::byte> lightmaps = std::vector<std::byte>(level::kLightmapBytes, std::byte{96});
  std::int32_t clusters = 2, bytesPerCluster = 1;
  std::vector<std::uint8_t> visibility{0b01, 0b11};

  TinyQ3Level() {
    quad(1, -128, 0, 0);      // west floor
    quad(0, 0, 128, 0);       // east floor
    quad(1, -128, 128, 128);  // ceiling
    level::Q3Face curve = face(0, level::kPatchFace, 9, 0);
    curve.patchSize = {3, 3};
    faces.push_back(curve);
    for (int row = 0; row < 3; ++row)
      for (int column = 0; column < 3; ++column)
        vertex(96 + 16.0f * static_cast<float>(column), -16 + 16.0f * static_cast<float>(row),
               row == 1 && column == 1 ? 64.0f : 16.0f);
    level::Q3Face flare = face(0, 4, 1, 0);
    flare.lightmap = -3;
    faces.push_back(flare);
    vertex(0, 0, 64);
  }

  static level::Q3Texture texture(std::string_view name) {
    level::Q3Texture texture;
    std::memcpy(texture.name.data(), name.data(), name.size());
    return texture;
  }

  /// The file: header, then the lumps in the directory's order.
  std::vector<std::byte> bytes() const {
    std::vector<std::byte> file(sizeof(level::Q3Header));
    level::Q3Header header;
    header.identifier = {'I', 'B', 'S', 'P'};
    header.version = 46;
    const auto add = [&](level::Lump lump, std::span<const std::byte> content) {
      header.lumps[static_cast<std::size_t>(lump)] = {static_cast<std::uint32_t>(file.size()),
                                                      static_cast<std::uint32_t>(content.size())};
      file.resize(file.size() + content.size());
      std::copy(content.begin(), content.end(), file.end() - static_cast<std::ptrdiff_t>(content.size()));
    };
    const auto table = [](const auto& records) { return std::as_bytes(std::span(records)); };
    add(level::Lump::Entities, table(entities));
    add(level::Lump::Textures, table(textures));
    add(level::Lump::Planes, table(planes));
    add(level::Lump::Nodes, table(nodes));
    add(level::Lump::Leaves, table(leaves));
    add(level::Lump::LeafFaces, table(leafFaces));
    add(level::Lump::Models, table(models));
    add(level::Lump::Vertices, table(vertices));
    add(level::Lump::MeshVertices, table(meshVertices));
    add(level::Lump::Faces, table(faces));
    add(level::Lump::Lightmaps, table(lightmaps));
    std::vector<std::byte> rows(8);
    std::memcpy(rows.data(), &clusters, 4);
    std::memcpy(rows.data() + 4, &bytesPerCluster, 4);
    rows.insert(rows.end(), table(visibility).begin(), table(visibility).end());
    add(level::Lump::Visibility, rows);
    std::memcpy(file.data(), &header, sizeof header);
    return file;
  }

 private:
  level::Q3Face face(std::int32_t textureIndex, std::int32_t type, std::int32_t vertexCount,
                     std::int32_t meshVertexCount) const {
    level::Q3Face out;
    out.texture = textureIndex;
    out.type = type;
    out.firstVertex = static_cast<std::int32_t>(vertices.size());
    out.vertexCount = vertexCount;
    out.meshVertexCount = meshVertexCount;
    return out;
  }
  void vertex(float x, float y, float z) {
    vertices.push_back(
        {{x, y, z}, {x / 64, y / 64}, {x / 256 + 0.5f, y / 256 + 0.5f}, {0, 0, 1}, {255, 255, 255, 255}});
  }
  void quad(std::int32_t textureIndex, float fromX, float toX, float z) {
    faces.push_back(face(textureIndex, 1, 4, 6));
    for (const float x : {fromX, toX})
      for (const float y : {-128.0f, 128.0f}) vertex(x, y, z);
  }
};

/// A copy of a file with a 32-bit number replaced.
inline std::vector<std::byte> poked(std::vector<std::byte> file, std::size_t at, std::uint32_t value) {
  std::memcpy(file.data() + at, &value, sizeof value);
  return file;
}

/// Where the header keeps a lump's offset; its length follows.
constexpr std::size_t directoryAt(level::Lump lump) { return 8 + 8 * static_cast<std::size_t>(lump); }

}  // namespace ql::test
