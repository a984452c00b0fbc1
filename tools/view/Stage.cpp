#include "Stage.h"

#include "walk/Failure.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include <fmt/format.h>

namespace view {
namespace {

using walk::ExitCode;
using walk::Failure;

constexpr double kNearPlane = 1;     // world units, the engine's
constexpr double kFieldOfView = 40;  // vertical, degrees
constexpr double kLevelFieldOfView = 74, kLevelFarPlane = 16'384;
constexpr std::uint32_t kPastCache = 2001;  // milliseconds after which a level takes its visible set anew

double radians(double degrees) { return degrees * std::numbers::pi / 180; }
double degrees(double angle) { return angle * 180 / std::numbers::pi; }

}  // namespace

Stage::Stage(const Options& options, Kind kind, const Extent& extent) {
  if (options.out || options.fixedStep) internals_.SetClock([time = time_] { return *time; });
  double fieldOfView = kFieldOfView, farPlane = 2 * kLevelFarPlane;
  if (kind == Kind::Level) {
    fieldOfView = kLevelFieldOfView;
    farPlane = kLevelFarPlane;
  } else {
    const Box& box = extent.box;
    center_ = {(box.low.x + box.high.x) / 2, (box.low.y + box.high.y) / 2, (box.low.z + box.high.z) / 2};
    const double width = box.high.x - box.low.x, height = box.high.y - box.low.y;
    radius_ = std::max(static_cast<double>(extent.radius), 1e-4);
    // What is small would be cut by the near plane: then the camera goes back and narrows its view.
    const double aspect = static_cast<double>(options.width) / options.height;
    const auto distanceFor = [&](double angle) {
      if (kind == Kind::Picture) return std::max(height, width / aspect) / 2 / std::tan(angle / 2);
      const double across = 2 * std::atan(std::tan(angle / 2) * std::min(aspect, 1.0));
      return radius_ / std::sin(across / 2);
    };
    double angle = radians(kFieldOfView);
    while (distanceFor(angle) - radius_ < 2 * kNearPlane && degrees(angle) > 0.01) angle /= 1.5;
    fieldOfView = degrees(angle);
    fitting_ = distanceFor(angle) * 1.02;
    farPlane = std::max(fitting_ * std::max(options.distance, 4.0) + 2 * radius_, 100.0);
  }
  // Before there is a device the field of view is kept for it; the picture's proportions are then its own.
  scene_.SetViewFrustum(static_cast<float>(fieldOfView), static_cast<float>(farPlane));
  startDevice(options);
  engine_.Console(ql::False);
  scene_.SetSceneBackGround(0.16F, 0.18F, 0.22F);
  if (kind == Kind::Level) return;
  // The materials of 3DS files reflect all light beside the ambient light, which is at its full; those of X files
  // reflect no ambient light.
  const float power = kind == Kind::ThreeDs ? 0.45F : kind == Kind::X ? 1.1F : 0.7F;
  key_ = lights_.CreateDirectionalLight({0, -1, 0}, power, power, power, 1);
  fill_ = lights_.CreateDirectionalLight({0, -1, 0}, power * 0.4F, power * 0.4F, power * 0.45F, 1);
  for (const std::int16_t light : {key_, fill_}) lights_.SetLightAmbientColor(light, 0, 0, 0, 1);
}

void Stage::startDevice(const Options& options) {
  const bool hardware = options.device != DeviceChoice::Reference;
  engine_.SetEngineMode(options.width, options.height, 32, hardware);
  if (!engine_.Initialize(options.out ? 0 : -1)) throw Failure(ExitCode::NoDevice, "no device could be created");
  const bool isHardware = internals_.GetDeviceKind() == ql::QL_DEVICE_HARDWARE;
  if (options.device == DeviceChoice::Hardware && !isHardware)
    throw Failure(ExitCode::NoDevice, "there is no hardware device here");
  device_ = isHardware ? "hal" : "ref";
}

void Stage::place(const Subject& subject, const View& view) {
  const double yaw = radians(view.yaw), pitch = radians(view.pitch);
  if (subject.kind() == Kind::Level) {
    const ql::Vec3 eye = subject.start();
    camera_.SetCamera(eye.x, eye.y, eye.z, eye.x + std::sin(yaw) * std::cos(pitch), eye.y + std::sin(pitch),
                      eye.z + std::cos(yaw) * std::cos(pitch));
    return;
  }
  const double distance = std::max(fitting_ * view.distance, 1.5 * kNearPlane);
  const ql::Vec3 toEye{static_cast<float>(std::sin(yaw) * std::cos(pitch)), static_cast<float>(std::sin(pitch)),
                       static_cast<float>(-std::cos(yaw) * std::cos(pitch))};
  camera_.SetCamera(center_.x + toEye.x * distance, center_.y + toEye.y * distance, center_.z + toEye.z * distance,
                    center_.x, center_.y, center_.z);
  placeLights(toEye);
}

/// The key light comes from above the camera's left shoulder, the fill light from its right.
void Stage::placeLights(const ql::Vec3& toEye) {
  const float across = std::hypot(toEye.x, toEye.z);
  const ql::Vec3 right{-toEye.z / across, 0, toEye.x / across};
  lights_.SetLightDirection(key_, right.x * 0.6F - toEye.x, -0.8F - toEye.y, right.z * 0.6F - toEye.z);
  lights_.SetLightDirection(fill_, -right.x - toEye.x * 0.5F, 0.2F - toEye.y * 0.5F, -right.z - toEye.z * 0.5F);
}

void Stage::frame(Subject& subject, const View& view, const std::string& caption) {
  place(subject, view);
  engine_.Clear();
  subject.draw();
  if (!caption.empty()) scene_.DrawText(caption, 10, 10);
  engine_.RenderToScreen();
  if (caption.empty()) triangles_ = internals_.GetFrameStatistics().triangles;
}

void Stage::forgetThePast(Subject& subject, const View& view) {
  place(subject, view);
  engine_.Clear();
  if (!std::exchange(drawn_, true)) subject.draw();
  engine_.RenderToScreen();
  advance(kPastCache);
}

walk::Picture Stage::picture() const {
  const ql::SurfaceObject surface = internals_.GetBackbuffer();
  return {static_cast<std::uint32_t>(surface.Width()), static_cast<std::uint32_t>(surface.Height()),
          surface.ReadPixels()};
}

}  // namespace view
