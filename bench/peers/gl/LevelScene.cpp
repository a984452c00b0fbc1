#include "LevelScene.h"

#include "LevelMesh.h"
#include "common/Report.h"
#include "level/LevelData.h"
#include "level/Lightmap.h"
#include "platform/host/ByteReader.h"
#include "platform/host/Files.h"
#include "platform/images/Image.h"

#include <map>
#include <numbers>
#include <utility>

namespace peers::gl {
namespace {

using namespace ql;

constexpr float kNear = 1, kFar = 16384;

GLuint upload(const images::Image& image, bool mipMaps) {
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, static_cast<GLsizei>(image.width), static_cast<GLsizei>(image.height), 0,
               GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, image.pixels.data());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, mipMaps ? GL_LINEAR_MIPMAP_NEAREST : GL_LINEAR);
  if (mipMaps) glGenerateMipmap(GL_TEXTURE_2D);
  return texture;
}

/// The picture that a texture's name means, or one white pixel.
images::Image loadImage(const std::string& name) {
  for (const char* ending : {".tga", ".jpg"})
    if (host::fileExists(name + ending)) try {
        return images::decode(host::readFile(name + ending), name + ending);
      } catch (const host::FileFault&) {
        break;
      }
  return {1, 1, {0xFFFFFFFF}, false};
}

/// The lightmap as the engine brightens it.
images::Image lightmapImage(std::span<const std::byte> rgb) {
  images::Image image{level::kLightmapSide, level::kLightmapSide, {}, false};
  std::vector<std::uint16_t> packed(rgb.size() / 3);
  level::brightenPixels(rgb, packed.data());
  for (const std::uint32_t pixel : packed) {
    const auto widen = [pixel](unsigned shift, std::uint32_t most) { return (pixel >> shift & most) * 255 / most; };
    image.pixels.push_back(0xFF000000 | widen(11, 31) << 16 | widen(5, 63) << 8 | widen(0, 31));
  }
  return image;
}

/// A level on the device: faces of one texture and lightmap are drawn together.
class LevelScene {
 public:
  explicit LevelScene(const Options& options) {
    const std::vector<std::byte> bytes = host::readFile(options.base + "/" + options.level);
    level::Q3Bsp file = level::parseQ3Bsp(bytes);
    mesh_ = LevelMesh(file);
    white_ = upload({1, 1, {0xFFFFFFFF}, false}, false);
    contentBytes_ = static_cast<double>(mesh_.indexCount() * sizeof(level::LevelVertex)) +
                    static_cast<double>(file.lightmapCount()) * level::kLightmapSide * level::kLightmapSide * 2;
    for (const level::Q3Texture& texture : file.textures) {
      const images::Image image = loadImage(options.base + "/" + std::string(host::fieldText(texture.name)));
      contentBytes_ += static_cast<double>(image.pixels.size()) * 4 * 4 / 3;
      textures_.push_back(upload(image, true));
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(file.lightmapCount()); ++i)
      lightmaps_.push_back(
          upload(lightmapImage(file.lightmaps.subspan(i * level::kLightmapBytes, level::kLightmapBytes)), false));
    vertices_ = createBuffer(GL_ARRAY_BUFFER, mesh_.vertices());
    for (std::size_t i = 0; i < mesh_.faces().size(); ++i) {
      const MeshFace& face = mesh_.faces()[i];
      const auto [batch, isNew] = batchOf_.try_emplace({face.texture, face.lightmap}, batches_.size());
      if (isNew) batches_.push_back({textureOf(textures_, face.texture), textureOf(lightmaps_, face.lightmap), {}});
      batchOfFace_.push_back(batch->second);
    }
  }
  ~LevelScene() {
    glDeleteTextures(1, &white_);
    glDeleteTextures(static_cast<GLsizei>(textures_.size()), textures_.data());
    glDeleteTextures(static_cast<GLsizei>(lightmaps_.size()), lightmaps_.data());
    glDeleteBuffers(1, &vertices_);
  }
  LevelScene(const LevelScene&) = delete;
  LevelScene& operator=(const LevelScene&) = delete;

  /// Draws a pose and waits for the picture.
  void draw(const Pose& pose, const Context& context, float fieldOfView) {
    clear();
    const auto point = [](const Point& p) { return math::Vec3{p[0], p[1], p[2]}; };
    const math::Mat4 view = math::lookAt(point(pose.eye), point(pose.look), {0, 1, 0});
    const float aspect = static_cast<float>(context.size().height) / static_cast<float>(context.size().width);
    const math::Mat4 projection = math::perspective(fieldOfView * std::numbers::pi_v<float> / 180, aspect, kNear, kFar);
    loadMatrices(view, projection);
    for (Batch& batch : batches_) batch.indices.clear();
    triangles_ = 0;
    mesh_.visit(point(pose.eye), math::multiply(view, projection), [&](std::size_t face) {
      const std::span<const std::uint32_t> indices = mesh_.indices(face);
      std::vector<std::uint32_t>& list = batches_[batchOfFace_[face]].indices;
      list.insert(list.end(), indices.begin(), indices.end());
      triangles_ += indices.size() / 3;
    });
    drawBatches();
    glFinish();
  }
  std::size_t triangles() const { return triangles_; }
  /// Of the level's triangles, textures with their mip levels and lightmaps, in the engine's layout.
  double contentBytes() const { return contentBytes_; }

 private:
  struct Batch {
    GLuint texture = 0, lightmap = 0;
    std::vector<std::uint32_t> indices;
  };

  GLuint textureOf(const std::vector<GLuint>& textures, std::int32_t index) const {
    return index < 0 || static_cast<std::size_t>(index) >= textures.size() ? white_
                                                                           : textures[static_cast<std::size_t>(index)];
  }

  static void loadMatrices(const math::Mat4& view, const math::Mat4& projection) {
    // Row vectors in row order are column vectors in column order.
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(&view.m11);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(&projection.m11);
  }

  void drawBatches() {
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glFrontFace(GL_CW);
    glBindBuffer(GL_ARRAY_BUFFER, vertices_);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(MeshVertex), offset(offsetof(MeshVertex, position)));
    const std::size_t coordinates[] = {offsetof(MeshVertex, texture), offsetof(MeshVertex, lightmap)};
    for (const GLuint unit : {1u, 0u}) {
      glActiveTexture(GL_TEXTURE0 + unit);
      glClientActiveTexture(GL_TEXTURE0 + unit);
      glEnable(GL_TEXTURE_2D);
      glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
      glEnableClientState(GL_TEXTURE_COORD_ARRAY);
      glTexCoordPointer(2, GL_FLOAT, sizeof(MeshVertex), offset(coordinates[unit]));
    }
    glColor4f(1, 1, 1, 1);
    for (const Batch& batch : batches_) {
      if (batch.indices.empty()) continue;
      glActiveTexture(GL_TEXTURE1);
      glBindTexture(GL_TEXTURE_2D, batch.lightmap);
      glActiveTexture(GL_TEXTURE0);
      glBindTexture(GL_TEXTURE_2D, batch.texture);
      glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(batch.indices.size()), GL_UNSIGNED_INT, batch.indices.data());
    }
  }

  LevelMesh mesh_;
  GLuint white_ = 0, vertices_ = 0;
  std::vector<GLuint> textures_, lightmaps_;
  std::map<std::pair<std::int32_t, std::int32_t>, std::size_t> batchOf_;
  std::vector<std::size_t> batchOfFace_;
  std::vector<Batch> batches_;
  std::size_t triangles_ = 0;
  double contentBytes_ = 0;
};

}  // namespace

void timeLevel(const Context& context, const Options& options) {
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
  const Times loads =
      measure(options.seconds, [&] { LevelScene(options).draw(options.poses.front(), context, options.fieldOfView); });
  LevelScene scene(options);
  Line("gl", "level-load")
      .add("level", options.level)
      .add(options.size)
      .add(loads)
      .addPeakBytes()
      .add("content_bytes", scene.contentBytes())
      .print();

  double triangles = 0;
  const auto poses = static_cast<double>(options.poses.size());
  Times frames = measure(options.seconds, [&] {
    triangles = 0;
    for (const Pose& pose : options.poses) {
      scene.draw(pose, context, options.fieldOfView);
      triangles += static_cast<double>(scene.triangles());
    }
  });
  for (double& time : frames) time /= poses;
  Line("gl", "level-frame")
      .add("level", options.level)
      .add(options.size)
      .add(frames)
      .add("triangles", triangles / poses)
      .print();
  if (options.pictures.empty()) return;
  scene.draw(options.poses.front(), context, options.fieldOfView);
  writePicture(options.pictures + "/gl-level.ppm", options.size, context.pixels());
}

}  // namespace peers::gl
