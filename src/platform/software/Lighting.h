/// @file
/// Colours of vertices from materials and lights, in camera space.
#pragma once

#include "platform/device/State.h"

#include <array>
#include <cstdint>
#include <vector>

namespace ql::software {

/// Blue, green, red, alpha, as Channel counts them; 1 is full.
using ColorValues = std::array<float, 4>;

/// An enabled light, ready for use.
struct LightSource {
  enum class Kind : std::uint8_t { Point, Spot, Directional } kind = Kind::Directional;
  ColorValues diffuse{}, specular{}, ambient{};
  math::Vec3 position;
  math::Vec3 direction;  ///< that the light goes, one long
  float range = 0, attenuation0 = 0, attenuation1 = 0, attenuation2 = 0;
  float inner = 1, outer = 1, coneScale = 0, falloff = 1;  ///< cosines of half the angles; 1 / (inner - outer)
};

/// One of the material's colours, or the vertex colour that takes its place.
struct MaterialColor {
  enum class Source : std::uint8_t { Material, Diffuse, Specular } source = Source::Material;
  ColorValues value{};
};

struct Lighting {
  bool enabled = false;
  bool specular = false;  ///< highlights are computed
  MaterialColor diffuse, specularColor, ambient, emissive;
  ColorValues globalAmbient{};
  float power = 0;
  std::vector<LightSource> lights;

  bool reads(MaterialColor::Source source) const {
    return diffuse.source == source || specularColor.source == source || ambient.source == source ||
           emissive.source == source;
  }
};

/// Decodes materials and lights. @param vertexDiffuse,vertexSpecular whether vertices bring these colours
/// @param out has no lights yet
void decodeLighting(const device::State& state, bool vertexDiffuse, bool vertexSpecular, Lighting& out);

}  // namespace ql::software
