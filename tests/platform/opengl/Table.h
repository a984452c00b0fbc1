/// @file
/// The conformance table: small scenes, at least one for every value of every state that the engine uses. The reference
/// device's pictures are kept; the hardware device draws each within the limit of its row.
#pragma once

#include "platform/opengl/Content.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ql::test {

inline constexpr std::uint32_t kSceneWidth = 64, kSceneHeight = 48;

struct Row {
  std::string name;
  std::function<void(Scene&)> draw;
  int limit = 2;  ///< of a channel's difference inside areas, of 255
  device::Format format = device::Format::A8R8G8B8;
  std::size_t edges = 40;  ///< pixels on edges that may differ by more
  std::size_t faults = 0;  ///< pixels inside that may: where an edge lies within a triangle
};

struct Group {
  std::string id;  ///< for file names
  std::string title;
  std::string note;  ///< why limits are what they are; may be empty
  std::vector<Row> rows;
};

/// All groups, each in its own source.
std::vector<Group> conformanceTable();

Group stageOperations();
Group stageArguments();
Group blending();
Group comparisons();
Group primitives();
Group narrowTargets();
Group addressing();
Group filtering();
Group textureFormats();
Group coordinates();
Group drawnTextures();
Group fog();
Group lights();
Group materials();
Group sprites();

/// A picture with alpha that everything else is drawn over.
inline void background(Scene& s) {
  s.clear(0x80405060);
  const device::State before = s.state;
  s.state.render = device::RenderStates();
  s.state.render.lighting = s.state.render.zEnable = 0;
  s.state.render.cullMode = 1;
  s.state.stages[0].colorOp = code(device::TextureOp::Disable);
  s.draw(
      PrimitiveType::TriangleFan,
      std::vector<ScreenVertex>{
          {0, 0, 0, 1, 0xFF103050}, {64, 0, 0, 1, 0x60F0C020}, {64, 48, 0, 1, 0xA020F0A0}, {0, 48, 0, 1, 0x208020F0}});
  s.state = before;
}

inline void smoothFilters(Scene& s) {
  for (device::StageStates& stage : s.state.stages) stage.minFilter = stage.magFilter = code(device::Filter::Linear);
}

/// The quadrilateral of smooth colours, with a texture in both stages.
inline void texturedQuad(Scene& s) {
  background(s);
  s.textures = {smoothTexture(s), smoothTexture(s, 16)};
  smoothFilters(s);
  s.draw(PrimitiveType::TriangleFan, quad());
}

/// The texture of the first stage over the whole picture, from one coordinate to another.
inline void tiled(Scene& s, float low, float high) {
  s.replaceByTexture();
  const auto at = [](float x, float y, float u, float v) { return ScreenVertex{x, y, 0.5f, 1, ~0u, 0, u, v}; };
  s.draw(PrimitiveType::TriangleFan, std::vector<ScreenVertex>{at(2, 2, low, low), at(60, 2, high, low),
                                                               at(60, 46, high, high), at(2, 46, low, high)});
}

/// A cushion before the camera, of triangles about as large as a few pixels, with normals (format 0x1D2).
void cushion(Scene& s);

}  // namespace ql::test
