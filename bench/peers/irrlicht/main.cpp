// Draws the same cases with Irrlicht's software renderer ("Burning's Video") and times them.
#include "common/Options.h"
#include "common/Report.h"

#include <cstdio>
#include <exception>
#include <memory>

#include <irrlicht.h>

namespace {

using namespace peers;
using irr::core::vector3df;
using irr::video::SColor;

struct Drop {
  void operator()(irr::IReferenceCounted* object) const { object->drop(); }
};

class Engine {
 public:
  explicit Engine(Size size) : console_(std::fopen("/dev/null", "w"), &std::fclose), size_(size) {
    irr::SIrrlichtCreationParameters parameters;
    parameters.DriverType = irr::video::EDT_BURNINGSVIDEO;
    // A console needs no display; it would show frames as text on this stream.
    parameters.DeviceType = irr::EIDT_CONSOLE;
    parameters.WindowId = console_.get();
    parameters.WindowSize =
        irr::core::dimension2du(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
    parameters.Bits = 32;
    parameters.LoggingLevel = irr::ELL_ERROR;
    device_.reset(irr::createDeviceEx(parameters));
    if (!device_) throw std::runtime_error("no device");
  }

  irr::video::IVideoDriver& driver() { return *device_->getVideoDriver(); }
  irr::scene::ISceneManager& scene() { return *device_->getSceneManager(); }
  irr::io::IFileSystem& files() { return *device_->getFileSystem(); }

  irr::video::ITexture* texture(std::uint32_t alpha) {
    const Level level = peers::texture(alpha).front();
    const auto side = static_cast<unsigned>(level.side);
    irr::video::IImage* image = driver().createImage(irr::video::ECF_A8R8G8B8, irr::core::dimension2du(side, side));
    for (unsigned i = 0; i < side * side; ++i) image->setPixel(i % side, i / side, SColor(level.pixels[i]));
    irr::video::ITexture* texture = driver().addTexture(alpha == kOpaque ? "opaque" : "half", image);
    image->drop();
    return texture;
  }

  /// Starts a frame of vertices from vertex(). Frames are drawn at once and need no end: ending one would only show it.
  void startFrame() {
    driver().beginScene(true, true, SColor(kBackground));
    for (const auto which : {irr::video::ETS_WORLD, irr::video::ETS_VIEW})
      driver().setTransform(which, irr::core::IdentityMatrix);
    irr::core::matrix4 projection;
    projection[10] = 0.5f;
    projection[11] = 1;
    projection[15] = 0;
    driver().setTransform(irr::video::ETS_PROJECTION, projection);
  }

  void savePicture(const Options& options, const std::string& name) {
    if (options.pictures.empty()) return;
    std::unique_ptr<irr::video::IImage, Drop> image(driver().createScreenShot());
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < size_.height; ++y)
      for (int x = 0; x < size_.width; ++x)
        pixels.push_back(image->getPixel(static_cast<unsigned>(x), static_cast<unsigned>(y)).color);
    writePicture(options.pictures + "/irrlicht-" + name + ".ppm", size_, pixels);
  }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> console_;
  std::unique_ptr<irr::IrrlichtDevice, Drop> device_;
  Size size_;
};

/// Irrlicht's depth test compares w and always takes place: with w = z every layer is nearer than the one before.
irr::video::S3DVertex vertex(const Corner& corner) {
  return {corner.x * corner.z, corner.y * corner.z, corner.z, 0, 0, -1, SColor(0xFFFFFFFF), corner.u, corner.v};
}

irr::video::SMaterial plainMaterial(irr::video::ITexture* texture) {
  irr::video::SMaterial material;
  material.Lighting = false;
  material.BackfaceCulling = false;
  material.setTexture(0, texture);
  material.setFlag(irr::video::EMF_BILINEAR_FILTER, true);
  return material;
}

void timeFill(const Options& options) {
  for (const bool blended : {false, true}) {
    Engine engine(options.size);
    irr::video::SMaterial material = plainMaterial(engine.texture(blended ? kHalf : kOpaque));
    if (blended) {
      material.MaterialType = irr::video::EMT_TRANSPARENT_ALPHA_CHANNEL;
      material.MaterialTypeParam = 0.01f;
    }
    std::vector<irr::video::S3DVertex> corners;
    for (int i = 0; i < kLayers; ++i)
      for (const Corner& corner : layer(i, false)) corners.push_back(vertex(corner));
    const irr::u16 indices[] = {0, 1, 2, 0, 2, 3};
    const Times times = measure(options.seconds, [&] {
      engine.startFrame();
      engine.driver().setMaterial(material);
      for (int i = 0; i < kLayers; ++i)
        engine.driver().drawVertexPrimitiveList(&corners[static_cast<std::size_t>(4 * i)], 4, indices, 2,
                                                irr::video::EVT_STANDARD, irr::scene::EPT_TRIANGLES);
    });
    const std::string name = blended ? "fill-alpha" : "fill-opaque";
    const double pixels = static_cast<double>(options.size.width) * options.size.height * kLayers;
    Line("irrlicht", name).add(options.size).add(times).add("mpix_s", pixels / smallest(times) / 1e3).print();
    engine.savePicture(options, name);
  }
}

void timeTriangles(const Options& options) {
  Engine engine(options.size);
  std::vector<std::vector<irr::video::S3DVertex>> sheets(kSheets);
  for (int i = 0; i < kSheets; ++i)
    for (const Corner& corner : sheet(i)) sheets[static_cast<std::size_t>(i)].push_back(vertex(corner));
  const std::vector<std::uint16_t> indices = sheetIndices();
  const irr::video::SMaterial material = plainMaterial(engine.texture(kOpaque));
  const Times times = measure(options.seconds, [&] {
    engine.startFrame();
    engine.driver().setMaterial(material);
    for (const auto& corners : sheets)
      engine.driver().drawVertexPrimitiveList(corners.data(), kSheetCorners, indices.data(), kSheetIndices / 3,
                                              irr::video::EVT_STANDARD, irr::scene::EPT_TRIANGLES);
  });
  Line("irrlicht", "triangles").add(options.size).add(times).add("mtri_s", kTriangles / smallest(times) / 1e3).print();
  engine.savePicture(options, "triangles");
}

/// A level through Irrlicht's own loader, in an octree that culls by the view.
class LevelScene {
 public:
  LevelScene(Engine& engine, const Options& options) : engine_(engine) {
    engine.files().addFileArchive((options.base + "/").c_str(), true, false, irr::io::EFAT_FOLDER);
    irr::scene::IAnimatedMesh* mesh = engine.scene().getMesh(options.level.c_str());
    if (mesh == nullptr) throw std::runtime_error("cannot load " + options.level);
    constexpr irr::s32 kAnyId = -1, kPolygonsPerNode = 1024;
    engine.scene().addOctreeSceneNode(mesh->getMesh(irr::scene::quake3::E_Q3_MESH_GEOMETRY), nullptr, kAnyId,
                                      kPolygonsPerNode);
    camera_ = engine.scene().addCameraSceneNode();
    camera_->setFOV(options.fieldOfView * irr::core::DEGTORAD);
    camera_->setAspectRatio(static_cast<float>(options.size.width) / static_cast<float>(options.size.height));
    camera_->setNearValue(1);
    camera_->setFarValue(16384);
  }

  void draw(const Pose& pose) {
    // Irrlicht's world is the engine's, turned half around the vertical.
    const auto turned = [](const Point& p) { return vector3df(-p[0], p[1], -p[2]); };
    camera_->setPosition(turned(pose.eye));
    camera_->updateAbsolutePosition();
    camera_->setTarget(turned(pose.look));
    engine_.driver().beginScene(true, true, SColor(kBackground));
    engine_.scene().drawAll();
  }

 private:
  Engine& engine_;
  irr::scene::ICameraSceneNode* camera_ = nullptr;
};

void timeLevel(const Options& options) {
  Times loads;
  for (int i = 0; i < 3; ++i) {
    Engine engine(options.size);
    loads.push_back(milliseconds([&] { LevelScene(engine, options).draw(options.poses.front()); }));
  }
  Line("irrlicht", "level-load").add("level", options.level).add(options.size).add(loads).addPeakBytes().print();

  Engine engine(options.size);
  LevelScene scene(engine, options);
  const auto poses = static_cast<double>(options.poses.size());
  Times frames = measure(options.seconds, [&] {
    for (const Pose& pose : options.poses) scene.draw(pose);
  });
  for (double& time : frames) time /= poses;
  double triangles = 0;
  for (const Pose& pose : options.poses) {
    scene.draw(pose);
    engine.driver().endScene();  // which counts
    triangles += engine.driver().getPrimitiveCountDrawn();
  }
  Line("irrlicht", "level-frame")
      .add("level", options.level)
      .add(options.size)
      .add(frames)
      .add("triangles", triangles / poses)
      .print();
  scene.draw(options.poses.front());
  engine.savePicture(options, "level");
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const Options options = parseOptions("ql-peer-irrlicht", {"fill", "triangles", "level"}, argc, argv);
    for (const std::string& name : options.cases) {
      if (name == "fill") timeFill(options);
      if (name == "triangles") timeTriangles(options);
      if (name == "level") timeLevel(options);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ql-peer-irrlicht: %s\n", error.what());
    return 5;
  }
}
