#include "Player.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace walk {
namespace {

namespace ql = Quasarlens3D;

constexpr double kLongestMove = 0.1;             // seconds
constexpr double kStride = Player::kRadius / 4;  // the longest part of a move that is tried at once
constexpr double kSteepest = 0.6;                // the least upward part of a floor's normal
constexpr double kDeepest = 8192;                // where a floor is still looked for
constexpr double kSkin = 0.5;                    // kept between the body and what it touches
constexpr double kPi = 3.14159265358979;
constexpr int kNearer = 64;  // rays that one cast may take to find the nearest face

ql::Vec3 vec(const Point& p) { return {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)}; }
Point point(const ql::Vec3& v) { return {double{v.x}, double{v.y}, double{v.z}}; }
double dot(const Point& a, const Point& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
double length(const Point& p) { return std::sqrt(dot(p, p)); }
Point turned(const Point& p, double degrees) {
  const double angle = degrees * kPi / 180, c = std::cos(angle), s = std::sin(angle);
  return {p.x * c - p.z * s, p.y, p.x * s + p.z * c};
}

}  // namespace

Player::Player(ql::BSPTree8 level, ql::Scene8 scene, const Point& feet)
    : level_(std::move(level)), scene_(std::move(scene)), feet_(feet) {
  // Any result shows the last hit, whoever asked for it.
  lastHit_ = level_.AdvancedSphereCollision(vec(feet), vec(feet), 0);
  if (const auto floor = floorBelow(feet_, feet_.y + kStep, kDeepest)) {
    feet_.y = *floor;
    onGround_ = true;
  }
}

/// The level answers with the first face in its order, so it is asked again, for nearer ones only.
std::optional<Player::Hit> Player::cast(const Point& from, const Point& direction, double reach) {
  std::optional<Hit> nearest;
  double limit = reach;
  for (int i = 0; i < kNearer && limit > 0; ++i) {
    scene_.SetCollisionPrecision(static_cast<float>(limit));
    if (!level_.DetectCollision(vec(from), vec(from + direction))) break;
    Point normal = point(lastHit_.GetCollisionNormal());
    normal = normal * (1 / std::max(length(normal), 1e-9));
    if (dot(normal, direction) > 0) normal = normal * -1.0;
    limit = distance(from, point(lastHit_.GetImpactPoint()));
    nearest = Hit{limit, normal};
  }
  return nearest;
}

std::optional<double> Player::floorBelow(const Point& at, double height, double reach) {
  constexpr double kAside = kRadius * 0.5;
  std::optional<double> highest;
  // Rays beside the middle one bridge cracks between floors.
  for (const auto& [x, z] : {std::pair{0.0, 0.0}, {kAside, 0.3}, {-kAside, -0.3}, {0.3, kAside}, {-0.3, -kAside}}) {
    const auto hit = cast({at.x + x, height, at.z + z}, {0, -1, 0}, reach);
    if (!hit || hit->normal.y < kSteepest) continue;
    const double y = height - hit->distance;
    if (!highest || y > *highest) highest = y;
  }
  return highest;
}

bool Player::hasGround(const Point& at) {
  const float height = static_cast<float>(at.y + kStep);
  return level_.GetAltitudeFromPos(static_cast<float>(at.x), height, static_cast<float>(at.z)) < height;
}

/// Something within a body's reach in the way's direction, at any height of the body above a step.
std::optional<Player::Hit> Player::wallAhead(const Point& way, double reach) {
  std::optional<Hit> nearest;
  const Point direction = way * (1 / length(way));
  for (const double height : {kStep + 2, kHeight * 0.6, kHeight - 2}) {
    for (const double aside : {0.0, -35.0, 35.0, -70.0, 70.0}) {
      const auto hit = cast({feet_.x, feet_.y + height, feet_.z}, turned(direction, aside), kRadius + kSkin + reach);
      if (!hit || std::abs(hit->normal.y) > kSteepest) continue;
      // How far the body can go until this ray's end touches.
      const double room = hit->distance - kRadius - kSkin;
      if (room < reach && (!nearest || room < nearest->distance)) nearest = Hit{room, hit->normal};
    }
  }
  return nearest;
}

/// Whether the body can stand at a place: room above the floor, and a floor at all.
bool Player::fits(const Point& at) {
  if (!hasGround(at)) return false;
  const auto floor = floorBelow(at, at.y + kStep, kStep * 2);
  const double stand = floor ? std::max(*floor, at.y) : at.y;
  const auto ceiling = cast({at.x, stand + 2, at.z}, {0, 1, 0}, kHeight - 2);
  return !ceiling;
}

/// Goes a short way, along walls where they are in it.
void Player::moveAcross(Point way) {
  for (int slide = 0; slide < 3; ++slide) {
    const double wanted = length(way);
    if (wanted < 1e-4) return;
    const auto wall = wallAhead(way, wanted);
    if (!wall) {
      const Point to = feet_ + way;
      if (fits(to))
        feet_ = to;
      else
        blocked_ = true;
      return;
    }
    blocked_ = true;
    Point normal{wall->normal.x, 0, wall->normal.z};
    if (length(normal) < 1e-6) return;
    normal = normal * (1 / length(normal));
    // What leads into the wall goes; a body that is too close is led out.
    const double into = std::min(dot(way, normal), 0.0);
    way = way - normal * into;
    if (wall->distance < 0) way = way + normal * std::min(-wall->distance, kStride * 0.5);
    const double now = length(way);
    if (now > wanted) way = way * (wanted / now);
  }
}

void Player::moveUpAndDown(double seconds, bool jump) {
  if (onGround_ && jump) {
    rise_ = kJumpSpeed;
    onGround_ = false;
  }
  if (!onGround_) rise_ -= kGravity * seconds;
  double up = onGround_ ? 0 : rise_ * seconds;
  if (up > 0) {
    const auto ceiling = cast({feet_.x, feet_.y + kHeight * 0.5, feet_.z}, {0, 1, 0}, kHeight * 0.5 + up + kSkin);
    if (ceiling) {
      up = std::max(0.0, ceiling->distance - kHeight * 0.5 - kSkin);
      rise_ = 0;
    }
    feet_.y += up;
    return;
  }
  const double before = feet_.y;
  // On the ground a floor a step lower is still walked down to.
  const double reach = kStep + (onGround_ ? kStep : -up) + kSkin;
  const auto floor = floorBelow(feet_, feet_.y + kStep, reach);
  if (floor && (onGround_ || *floor >= feet_.y + up)) {
    feet_.y = *floor;
    onGround_ = true;
    rise_ = 0;
  } else {
    onGround_ = false;
    feet_.y += up;
  }
  if (onGround_) smoothed_ -= feet_.y - before;
}

void Player::move(const Stride& stride, double seconds) {
  seconds = std::min(seconds, kLongestMove);
  blocked_ = false;
  Point way{stride.x * kSpeed * seconds, 0, stride.z * kSpeed * seconds};
  const int parts = std::max(1, static_cast<int>(std::ceil(length(way) / kStride)));
  for (int i = 0; i < parts; ++i) {
    if (length(way) > 0) moveAcross(way * (1.0 / parts));
    moveUpAndDown(seconds / parts, stride.jump && i == 0);
  }
  smoothed_ += (kEyeHeight - smoothed_) * std::min(1.0, seconds * 12);
}

}  // namespace walk
