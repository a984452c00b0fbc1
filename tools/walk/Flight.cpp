#include "Flight.h"

#include "Failure.h"

#include <algorithm>
#include <fstream>
#include <numbers>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace walk {
namespace {

constexpr std::size_t kStepsPerKey = 64;
constexpr double kNoWay = 1e-3;  // world units: a path this short only turns

Point pointOf(const nlohmann::json& json) {
  const auto numbers = json.get<std::vector<double>>();
  if (numbers.size() != 3 || !std::isfinite(numbers[0]) || !std::isfinite(numbers[1]) || !std::isfinite(numbers[2]))
    throw Failure(ExitCode::Malformed, "a point is not three numbers");
  return {numbers[0], numbers[1], numbers[2]};
}

std::vector<Pose> turning(const Pose& key) {
  const Point away = key.look - key.eye;
  std::vector<Pose> keys;
  constexpr int kTurnKeys = 12;
  for (int i = 0; i <= kTurnKeys; ++i) {
    const double angle = 2 * std::numbers::pi * i / kTurnKeys;
    const double c = std::cos(angle), s = std::sin(angle);
    keys.push_back({key.eye, key.eye + Point{away.x * c + away.z * s, away.y, away.z * c - away.x * s}});
  }
  return keys;
}

}  // namespace

std::vector<Pose> readPoses(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw Failure(ExitCode::Unreadable, fmt::format("cannot read {}", file.string()));
  try {
    std::vector<Pose> poses;
    for (const nlohmann::json& pose : nlohmann::json::parse(in))
      poses.push_back({pointOf(pose.at("eye")), pointOf(pose.at("look"))});
    if (poses.empty()) throw Failure(ExitCode::Malformed, "no poses");
    return poses;
  } catch (const nlohmann::json::exception& error) {
    throw Failure(ExitCode::Malformed, fmt::format("{}: {}", file.string(), error.what()));
  } catch (const Failure& failure) {
    throw Failure(failure.code, fmt::format("{}: {}", file.string(), failure.what()));
  }
}

Flight::Flight(std::vector<Pose> keys) {
  if (keys.empty()) keys.push_back({{0, 0, 0}, {0, 0, 128}});
  if (keys.size() == 1) keys = turning(keys.front());
  const auto beyond = [](const Pose& from, const Pose& end) { return lerp(from, end, 2); };
  keys_.push_back(beyond(keys[1], keys[0]));
  keys_.insert(keys_.end(), keys.begin(), keys.end());
  keys_.push_back(beyond(keys[keys.size() - 2], keys.back()));

  knots_.push_back(0);
  for (std::size_t i = 1; i < keys_.size(); ++i)
    knots_.push_back(knots_.back() + std::max(1.0, std::sqrt(distance(keys_[i - 1].eye, keys_[i].eye))));

  const std::size_t steps = kStepsPerKey * (keys.size() - 1);
  const double first = knots_[1], last = knots_[knots_.size() - 2];
  lengths_.push_back(0);
  Point before = onSpline(first).eye;
  for (std::size_t i = 1; i <= steps; ++i) {
    const Point eye = onSpline(first + (last - first) * static_cast<double>(i) / static_cast<double>(steps)).eye;
    lengths_.push_back(lengths_.back() + distance(before, eye));
    before = eye;
  }
}

Pose Flight::onSpline(double knot) const {
  // The inner segment that holds the knot.
  const auto above = std::upper_bound(knots_.begin() + 2, knots_.end() - 2, knot);
  const std::size_t i = static_cast<std::size_t>(above - knots_.begin()) - 2;
  const Pose* p = &keys_[i];
  const double* t = &knots_[i];
  const auto between = [&](const Pose& a, const Pose& b, std::size_t from, std::size_t to) {
    return lerp(a, b, (knot - t[from]) / (t[to] - t[from]));
  };
  const Pose a1 = between(p[0], p[1], 0, 1), a2 = between(p[1], p[2], 1, 2), a3 = between(p[2], p[3], 2, 3);
  const Pose b1 = between(a1, a2, 0, 2), b2 = between(a2, a3, 1, 3);
  return between(b1, b2, 1, 2);
}

Pose Flight::at(double t) const {
  double step = t * static_cast<double>(lengths_.size() - 1);
  if (length() > kNoWay) {
    const double way = t * length();
    const auto above = std::upper_bound(lengths_.begin() + 1, lengths_.end() - 1, way);
    const std::size_t i = static_cast<std::size_t>(above - lengths_.begin()) - 1;
    const double piece = lengths_[i + 1] - lengths_[i];
    step = static_cast<double>(i) + (piece > 0 ? (way - lengths_[i]) / piece : 0);
  }
  const double first = knots_[1], last = knots_[knots_.size() - 2];
  return onSpline(first + (last - first) * step / static_cast<double>(lengths_.size() - 1));
}

}  // namespace walk
