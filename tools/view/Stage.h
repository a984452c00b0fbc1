/// @file
/// The engine with its lights and camera.
#pragma once

#include "Options.h"
#include "Subject.h"
#include "walk/Picture.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <cstdint>
#include <memory>
#include <string>

namespace view {

namespace ql = Quasarlens3D;

/// Where the camera stands.
struct View {
  double yaw = 0, pitch = 0;  ///< degrees
  double distance = 1;        ///< 1: everything is in view
};

/// What has to be in view.
struct Extent {
  Box box;
  float radius = 0;  ///< from the box's centre
};

class Stage {
 public:
  /// @throws walk::Failure NoDevice
  Stage(const Options& options, Kind kind, const Extent& extent);

  ql::Quasarlens8& engine() { return engine_; }

  /// Draws one frame.
  void frame(Subject& subject, const View& view, const std::string& caption = "");
  /// Makes the next frame independent of those before, and lets time pass.
  void forgetThePast(Subject& subject, const View& view);
  walk::Picture picture() const;
  /// Of the last frame without a caption.
  std::uint64_t triangles() const { return triangles_; }
  void advance(std::uint32_t ms) { *time_ += ms; }
  const std::string& device() const { return device_; }

 private:
  void startDevice(const Options& options);
  void place(const Subject& subject, const View& view);
  void placeLights(const ql::Vec3& toEye);

  std::shared_ptr<std::uint32_t> time_ = std::make_shared<std::uint32_t>(10'000);
  ql::Quasarlens8 engine_;
  ql::InternalObjects8 internals_;
  ql::Scene8 scene_;
  ql::Camera8 camera_;
  ql::LightEngine8 lights_;
  std::int16_t key_ = 0, fill_ = 0;
  std::string device_;
  std::uint64_t triangles_ = 0;
  bool drawn_ = false;  ///< a level's sky is mapped in its own way when it is drawn first
  ql::Vec3 center_;
  double radius_ = 1, fitting_ = 1;  ///< of the sphere around it; the distance at which all is in view
};

}  // namespace view
