/// @file
/// A toy house as modellers save such things: the same triangles as a 3D Studio and as an X file. Its walls carry
/// letters, its roof has no texture, its tower stands in a frame of its own in X files.
#pragma once

#include "support/ThreeDsFiles.h"
#include "support/XFiles.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <span>
#include <string>
#include <vector>

namespace ql::test {

/// y up, triangles clockwise as seen from outside, texture coordinates with v downwards.
struct ToyPart {
  const char* name;
  const char* texture;            ///< "": none
  std::array<float, 3> color{};   ///< of its material
  std::array<float, 3> origin{};  ///< where it stands
  std::vector<std::array<float, 3>> places;
  std::vector<std::array<float, 2>> coordinates;  ///< as many as places, or none
  std::vector<std::array<std::uint16_t, 3>> faces;
  bool flat = true;  ///< X files give its normals, each triangle's own; else the reader makes smooth ones

  /// A rectangle from its lower left corner, as seen from outside.
  void wall(std::array<float, 3> low, float dx, float dz, float height) {
    const auto first = static_cast<std::uint16_t>(places.size());
    const auto [x, y, z] = low;
    places.insert(places.end(), {low, {x, y + height, z}, {x + dx, y, z + dz}, {x + dx, y + height, z + dz}});
    coordinates.insert(coordinates.end(), {{0, 1}, {0, 0}, {1, 1}, {1, 0}});
    const auto at = [first](int i) { return static_cast<std::uint16_t>(first + i); };
    faces.push_back({at(0), at(1), at(2)});
    faces.push_back({at(2), at(1), at(3)});
  }
};

inline std::vector<ToyPart> toyHouse() {
  ToyPart front{"Front", "f.bmp", {0.9F, 0.9F, 0.9F}, {}, {}, {}, {}};
  front.wall({-6, 0, -4}, 12, 0, 8);
  front.wall({6, 0, 4}, -12, 0, 8);
  ToyPart sides{"Sides", "art\\l.bmp", {0.9F, 0.9F, 0.9F}, {}, {}, {}, {}};
  sides.wall({6, 0, -4}, 0, 8, 8);
  sides.wall({-6, 0, 4}, 0, -8, 8);
  ToyPart roof{"Roof", "", {0.8F, 0.25F, 0.15F}, {}, {}, {}, {}};
  roof.places = {{-7, 8, -5}, {7, 8, -5}, {7, 8, 5}, {-7, 8, 5}, {-3, 13, 0}, {3, 13, 0}};
  roof.faces = {{0, 4, 1}, {1, 4, 5}, {1, 5, 2}, {2, 5, 4}, {2, 4, 3}, {3, 4, 0}};
  ToyPart tower{"Tower", "stripes.bmp", {0.7F, 0.8F, 0.9F}, {11, 0, 2}, {}, {}, {}, false};
  constexpr std::uint16_t kSides = 12;
  for (std::uint16_t i = 0; i <= kSides; ++i) {
    const float turn = static_cast<float>(i) / kSides, angle = turn * 2 * std::numbers::pi_v<float>;
    for (const float y : {0.0F, 14.0F}) {
      tower.places.push_back({3 * std::sin(angle), y, -3 * std::cos(angle)});
      tower.coordinates.push_back({turn, 1 - y / 14});
    }
    const auto at = [i](int k) { return static_cast<std::uint16_t>(i * 2 + k); };
    if (i < kSides) tower.faces.insert(tower.faces.end(), {{at(0), at(1), at(2)}, {at(2), at(1), at(3)}});
  }
  return {front, sides, roof, tower};
}

/// z up: (x, y, z) is stored as (-x, -z, y), which turns the triangles' corners around; v grows upwards.
inline std::vector<std::byte> toyHouse3ds() {
  std::vector<std::vector<std::byte>> body{chunk3ds(0x3D3E, {FileBytes().u32(3).take()})};
  const std::vector<ToyPart> parts = toyHouse();
  for (const ToyPart& part : parts) {
    const auto shade = [&](float share, std::size_t i) { return static_cast<int>(255 * share * part.color[i]); };
    std::vector<std::vector<std::byte>> material{
        chunk3ds(0xA000, {zeroEnded(part.name)}), color3ds(0xA010, shade(0.5F, 0), shade(0.5F, 1), shade(0.5F, 2)),
        color3ds(0xA020, shade(1, 0), shade(1, 1), shade(1, 2)), color3ds(0xA030, 0, 0, 0)};
    if (*part.texture != 0) material.push_back(chunk3ds(0xA200, {chunk3ds(0xA300, {zeroEnded(part.texture)})}));
    body.push_back(chunk3ds(0xAFFF, material));
  }
  for (const ToyPart& part : parts) {
    std::vector<float> places, coordinates;
    for (const auto& [x, y, z] : part.places)
      places.insert(places.end(), {-(x + part.origin[0]), -(z + part.origin[2]), y + part.origin[1]});
    for (const auto& [u, v] : part.coordinates) coordinates.insert(coordinates.end(), {u, 1 - v});
    std::vector<std::array<std::uint16_t, 3>> faces;
    FileBytes numbers;
    numbers.u16(part.faces.size());
    for (const auto& [a, b, c] : part.faces) {
      numbers.u16(faces.size());
      faces.push_back({a, c, b});
    }
    std::vector<std::vector<std::byte>> object{chunk3ds(0x4110, {floats3ds(3, places)})};
    if (!coordinates.empty()) object.push_back(chunk3ds(0x4140, {floats3ds(2, coordinates)}));
    object.push_back(chunk3ds(0x4120, {faces3ds(faces), chunk3ds(0x4130, {zeroEnded(part.name), numbers.take()})}));
    body.push_back(chunk3ds(0x4000, {zeroEnded(part.name), chunk3ds(0x4100, object)}));
  }
  return chunk3ds(0x4D4D, {chunk3ds(0x0002, {FileBytes().u32(3).take()}), chunk3ds(0x3D3D, body)});
}

/// The whole house stands in one frame at twice its size, each part in a frame that undoes that.
inline std::vector<std::byte> toyHouseX(XKind kind) {
  XWriter out(kind == XKind::Binary || kind == XKind::CompressedBinary);
  const auto frame = [&](const char* name, float scale, const std::array<float, 3>& at) {
    out.open("Frame", name).open("FrameTransformMatrix");
    out.reals({scale, 0, 0, 0, 0, scale, 0, 0, 0, 0, scale, 0, at[0], at[1], at[2], 1}).close();
  };
  frame("House", 2, {});
  for (const ToyPart& part : toyHouse()) {
    frame(part.name, 0.5F, {part.origin[0] / 2, part.origin[1] / 2, part.origin[2] / 2});
    std::vector<float> places, coordinates, normals;
    std::vector<std::uint32_t> corners, normalCorners;
    for (const auto& place : part.places) places.insert(places.end(), place.begin(), place.end());
    for (const auto& pair : part.coordinates) coordinates.insert(coordinates.end(), pair.begin(), pair.end());
    for (const auto& [a, b, c] : part.faces) {
      corners.insert(corners.end(), {3, a, b, c});
      const std::array<float, 3>&p = part.places[a], &q = part.places[b], &r = part.places[c];
      const std::array<float, 3> u{q[0] - p[0], q[1] - p[1], q[2] - p[2]}, v{r[0] - p[0], r[1] - p[1], r[2] - p[2]};
      const std::array<float, 3> n{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
      const float length = std::hypot(n[0], n[1], n[2]);
      const auto number = static_cast<std::uint32_t>(normals.size() / 3);
      normalCorners.insert(normalCorners.end(), {3, number, number, number});
      normals.insert(normals.end(), {n[0] / length, n[1] / length, n[2] / length});
    }
    const auto count = [](const auto& list) { return static_cast<std::uint32_t>(list.size()); };
    out.open("Mesh", part.name).ints({count(part.places)}).reals(places).ints({count(part.faces)}).ints(corners);
    if (part.flat)
      out.open("MeshNormals")
          .ints({count(part.faces)})
          .reals(normals)
          .ints({count(part.faces)})
          .ints(normalCorners)
          .close();
    if (!coordinates.empty()) out.open("MeshTextureCoords").ints({count(part.coordinates)}).reals(coordinates).close();
    out.open("MeshMaterialList").ints({1, count(part.faces)});
    out.ints(std::vector<std::uint32_t>(part.faces.size(), 0));
    out.open("Material").reals({part.color[0], part.color[1], part.color[2], 1}).reals({0, 0, 0, 0, 0, 0, 0});
    if (*part.texture != 0) out.open("TextureFilename").quoted(part.texture).close();
    out.close().close().close().close();  // material, list, mesh, frame
  }
  out.close();
  return xFile(kind, out.take());
}

}  // namespace ql::test
