#include "Fill.h"

#include "common/Report.h"

#include <functional>

namespace peers::gl {
namespace {

/// A way to draw the layers: what is set before them.
struct Fill {
  const char* name;
  std::function<void()> enable, disable;
  std::uint32_t alpha = kOpaque;  ///< of the first texture
  bool tilted = false;
};

void setColor(GLenum function, std::uint32_t color) {
  float parts[4];
  for (int i = 0; i < 4; ++i) parts[i] = static_cast<float>(color >> (i == 3 ? 24 : 16 - 8 * i) & 255) / 255;
  if (function == GL_FOG_COLOR)
    glFogfv(GL_FOG_COLOR, parts);
  else
    glColor4fv(parts);
}

void projectTilted() {
  const float matrix[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0.5f, 1, 0, 0, 0, 0};
  glMatrixMode(GL_PROJECTION);
  glLoadMatrixf(matrix);
}

std::vector<Fill> fills(GLuint second) {
  const auto nothing = [] {};
  return {
      {"fill-opaque", nothing, nothing},
      {"fill-alpha",
       [] {
         glEnable(GL_BLEND);
         glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
       },
       [] { glDisable(GL_BLEND); }, kHalf},
      {"fill-two-textures",
       [second] {
         glActiveTexture(GL_TEXTURE1);
         glEnable(GL_TEXTURE_2D);
         glBindTexture(GL_TEXTURE_2D, second);
         glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
         glActiveTexture(GL_TEXTURE0);
       },
       [] {
         glActiveTexture(GL_TEXTURE1);
         glDisable(GL_TEXTURE_2D);
         glActiveTexture(GL_TEXTURE0);
       }},
      {"fill-colour-fog-alpha-test",
       [] {
         setColor(GL_CURRENT_COLOR, kLayerColor);
         glEnable(GL_ALPHA_TEST);
         glAlphaFunc(GL_GREATER, kAlphaReference / 255.0f);
         glEnable(GL_FOG);
         glFogi(GL_FOG_MODE, GL_LINEAR);
         glFogf(GL_FOG_START, kFogStart);
         glFogf(GL_FOG_END, kFogEnd);
         setColor(GL_FOG_COLOR, kFogColor);
       },
       [] {
         setColor(GL_CURRENT_COLOR, 0xFFFFFFFF);
         glDisable(GL_ALPHA_TEST);
         glDisable(GL_FOG);
       }},
      {"fill-tilted", projectTilted, nothing, kOpaque, true},
  };
}

}  // namespace

void timeFill(const Context& context, const Options& options) {
  const GLuint opaque = createTexture(texture(kOpaque)), half = createTexture(texture(kHalf));
  const double pixels = static_cast<double>(options.size.width) * options.size.height * kLayers;
  for (const Fill& fill : fills(half)) {
    std::vector<Corner> corners;
    for (int i = 0; i < kLayers; ++i)
      for (const Corner& corner : layer(i, fill.tilted)) corners.push_back(corner);
    const GLuint buffer = createBuffer(GL_ARRAY_BUFFER, corners);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, fill.alpha == kHalf ? half : opaque);
    setColor(GL_CURRENT_COLOR, 0xFFFFFFFF);
    fill.enable();
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(Corner), offset(0));
    for (const GLenum unit : {GL_TEXTURE0, GL_TEXTURE1}) {
      glClientActiveTexture(unit);
      glEnableClientState(GL_TEXTURE_COORD_ARRAY);
      glTexCoordPointer(2, GL_FLOAT, sizeof(Corner), offset(offsetof(Corner, u)));
    }
    const Times times = measure(options.seconds, [] {
      clear();
      for (int i = 0; i < kLayers; ++i) glDrawArrays(GL_TRIANGLE_FAN, 4 * i, 4);
      glFinish();
    });
    Line("gl", fill.name).add(options.size).add(times).add("mpix_s", pixels / smallest(times) / 1e3).print();
    if (!options.pictures.empty())
      writePicture(options.pictures + "/gl-" + fill.name + ".ppm", options.size, context.pixels());
    fill.disable();
    glDeleteBuffers(1, &buffer);
  }
  for (const GLenum unit : {GL_TEXTURE1, GL_TEXTURE0}) {
    glClientActiveTexture(unit);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
  }
}

void timeTriangles(const Context& context, const Options& options) {
  std::vector<Corner> corners;
  for (int i = 0; i < kSheets; ++i) {
    const std::vector<Corner> more = sheet(i);
    corners.insert(corners.end(), more.begin(), more.end());
  }
  const GLuint buffers[] = {createBuffer(GL_ARRAY_BUFFER, corners),
                            createBuffer(GL_ELEMENT_ARRAY_BUFFER, sheetIndices())};
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_TEXTURE_2D);
  const GLuint opaque = createTexture(texture(kOpaque));
  glBindTexture(GL_TEXTURE_2D, opaque);
  setColor(GL_CURRENT_COLOR, 0xFFFFFFFF);
  glEnableClientState(GL_VERTEX_ARRAY);
  glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  glVertexPointer(3, GL_FLOAT, sizeof(Corner), offset(0));
  glTexCoordPointer(2, GL_FLOAT, sizeof(Corner), offset(offsetof(Corner, u)));
  const Times times = measure(options.seconds, [] {
    clear();
    for (int i = 0; i < kSheets; ++i)
      glDrawElementsBaseVertex(GL_TRIANGLES, kSheetIndices, GL_UNSIGNED_SHORT, offset(0), i * kSheetCorners);
    glFinish();
  });
  Line("gl", "triangles").add(options.size).add(times).add("mtri_s", kTriangles / smallest(times) / 1e3).print();
  if (!options.pictures.empty()) writePicture(options.pictures + "/gl-triangles.ppm", options.size, context.pixels());
  glDeleteBuffers(2, buffers);
  glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}

}  // namespace peers::gl
