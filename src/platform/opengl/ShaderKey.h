/// @file
/// What the text of a shader program depends on.
#pragma once

#include "platform/device/BackEnd.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <type_traits>

namespace ql::opengl {

/// Where a stage's texture coordinates come from.
enum class Coordinates : std::uint8_t { None, Vertex, Normal, Position, Reflection };

struct StageKey {
  std::uint8_t colorOp = 1, alphaOp = 1;                 ///< device::TextureOp
  std::array<std::uint8_t, 3> colorArgs{}, alphaArgs{};  ///< argument 0, 1, 2; those the operation ignores are 0
  std::uint8_t samples = 0;                              ///< an argument reads the texture, and there is one
  Coordinates coordinates = Coordinates::None;
  std::uint8_t set = 0;             ///< of the vertex
  std::uint8_t transformCount = 0;  ///< coordinates that the texture transform gives; 0: it is not applied
  std::uint8_t projected = 0;       ///< the last of them divides
  bool operator==(const StageKey&) const = default;
};

/// How primitives become triangles.
enum class Topology : std::uint8_t { Triangles, Lines, Points, TriangleEdges, TriangleCorners };
enum class FogSource : std::uint8_t { None, Vertex, Table };

/// Values that the program text is made from; the others reach it as uniforms. All members are bytes, so that keys
/// compare and hash as memory.
struct ShaderKey {
  std::uint8_t transformed = 0, normal = 0, pointSize = 0, diffuse = 0, specular = 0;  ///< what vertices have
  std::uint8_t coordinateSets = 0;
  Topology topology = Topology::Triangles;
  std::uint8_t cull = 0;  ///< device::CullMode, for edges and corners of triangles; else 0
  std::uint8_t lastPixel = 0;
  std::uint8_t pointSprite = 0, pointScale = 0;
  std::uint8_t lighting = 0, lightSpecular = 0, localViewer = 0, normalize = 0;
  /// Of the lit colours: 0 the material, 1 the vertex's diffuse, 2 its specular colour.
  std::uint8_t diffuseSource = 0, specularSource = 0, ambientSource = 0, emissiveSource = 0;
  std::uint8_t flat = 0;
  std::uint8_t specularAdd = 0;
  FogSource fogSource = FogSource::None;
  std::uint8_t fogMode = 0;   ///< device::FogMode; None: the factor is the alpha of the specular colour
  std::uint8_t fogRange = 0;  ///< distances are true ones instead of depths
  std::uint8_t stageCount = 0;
  std::uint8_t alphaFunction = 8;  ///< device::Compare; 8: no test
  /// Bits that the colour is rounded to; 8: not.
  std::uint8_t redBits = 8, greenBits = 8, blueBits = 8, alphaBits = 8;
  std::uint8_t dither = 0;
  std::array<StageKey, device::kStages> stages{};

  bool operator==(const ShaderKey&) const = default;
  std::string_view bytes() const { return {reinterpret_cast<const char*>(this), sizeof *this}; }
};
static_assert(std::has_unique_object_representations_v<ShaderKey>);

struct ShaderKeyHash {
  std::size_t operator()(const ShaderKey& key) const { return std::hash<std::string_view>()(key.bytes()); }
};

/// Whether a program draws through a geometry stage.
inline bool expands(Topology topology) { return topology != Topology::Triangles; }

}  // namespace ql::opengl
