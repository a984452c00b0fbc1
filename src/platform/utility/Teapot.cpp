#include "platform/utility/Shapes.h"

#include <array>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace ql::utility {
namespace {

using math::Vec3;

constexpr std::size_t kCuts = 8;       // of a patch, each way
constexpr float kQuarterTurn = 0.56f;  // how far the inner control points of a quarter circle are along its tangents
constexpr float kSize = 0.5f;          // of the control points' units
constexpr float kMiddle = 1.575f;      // half the height
constexpr float kPole = 1.0f / 1024;   // a normal before it gets its length, where a curve has shrunk to a point

/// Control points of a curve of degree three; of a patch, curve by curve.
using Curve = std::array<Vec3, 4>;
using Patch = std::array<Curve, 4>;

/// A point of an outline that is turned about the y axis.
struct Turned {
  float radius, height;
};
using Outline = std::array<Turned, 4>;

// From the rim down to the bottom's middle, and from the lid's knob down to its edge.
constexpr std::array<Outline, 6> kOutlines{{
    {{{1.4f, 2.4f}, {1.3375f, 2.53125f}, {1.4375f, 2.53125f}, {1.5f, 2.4f}}},
    {{{1.5f, 2.4f}, {1.75f, 1.875f}, {2.0f, 1.35f}, {2.0f, 0.9f}}},
    {{{2.0f, 0.9f}, {2.0f, 0.45f}, {1.5f, 0.225f}, {1.5f, 0.15f}}},
    {{{1.5f, 0.15f}, {1.5f, 0.075f}, {1.425f, 0.0f}, {0.0f, 0.0f}}},
    {{{0.0f, 3.15f}, {0.8f, 3.15f}, {0.0f, 2.85f}, {0.2f, 2.7f}}},
    {{{0.2f, 2.7f}, {0.4f, 2.55f}, {1.3f, 2.55f}, {1.3f, 2.4f}}},
}};

// Halves of tubes: four cross-sections, each from the outer edge in the plane z = 0 around the near side to the inner
// one. Each tube is closed by its mirror image.
constexpr std::array<Patch, 4> kTubes{{
    // the handle
    {{{{{-1.6f, 2.025f, 0}, {-1.6f, 2.025f, -0.3f}, {-1.5f, 2.25f, -0.3f}, {-1.5f, 2.25f, 0}}},
      {{{-2.3f, 2.025f, 0}, {-2.3f, 2.025f, -0.3f}, {-2.5f, 2.25f, -0.3f}, {-2.5f, 2.25f, 0}}},
      {{{-2.7f, 2.025f, 0}, {-2.7f, 2.025f, -0.3f}, {-3.0f, 2.25f, -0.3f}, {-3.0f, 2.25f, 0}}},
      {{{-2.7f, 1.8f, 0}, {-2.7f, 1.8f, -0.3f}, {-3.0f, 1.8f, -0.3f}, {-3.0f, 1.8f, 0}}}}},
    {{{{{-2.7f, 1.8f, 0}, {-2.7f, 1.8f, -0.3f}, {-3.0f, 1.8f, -0.3f}, {-3.0f, 1.8f, 0}}},
      {{{-2.7f, 1.575f, 0}, {-2.7f, 1.575f, -0.3f}, {-3.0f, 1.35f, -0.3f}, {-3.0f, 1.35f, 0}}},
      {{{-2.5f, 1.125f, 0}, {-2.5f, 1.125f, -0.3f}, {-2.65f, 0.9375f, -0.3f}, {-2.65f, 0.9375f, 0}}},
      {{{-2.0f, 0.9f, 0}, {-2.0f, 0.9f, -0.3f}, {-1.9f, 0.6f, -0.3f}, {-1.9f, 0.6f, 0}}}}},
    // the spout
    {{{{{1.7f, 1.425f, 0}, {1.7f, 1.425f, -0.66f}, {1.7f, 0.6f, -0.66f}, {1.7f, 0.6f, 0}}},
      {{{2.6f, 1.425f, 0}, {2.6f, 1.425f, -0.66f}, {3.1f, 0.825f, -0.66f}, {3.1f, 0.825f, 0}}},
      {{{2.3f, 2.1f, 0}, {2.3f, 2.1f, -0.25f}, {2.4f, 2.025f, -0.25f}, {2.4f, 2.025f, 0}}},
      {{{2.7f, 2.4f, 0}, {2.7f, 2.4f, -0.25f}, {3.3f, 2.4f, -0.25f}, {3.3f, 2.4f, 0}}}}},
    {{{{{2.7f, 2.4f, 0}, {2.7f, 2.4f, -0.25f}, {3.3f, 2.4f, -0.25f}, {3.3f, 2.4f, 0}}},
      {{{2.8f, 2.475f, 0}, {2.8f, 2.475f, -0.25f}, {3.525f, 2.49375f, -0.25f}, {3.525f, 2.49375f, 0}}},
      {{{2.9f, 2.475f, 0}, {2.9f, 2.475f, -0.15f}, {3.45f, 2.5125f, -0.15f}, {3.45f, 2.5125f, 0}}},
      {{{2.8f, 2.4f, 0}, {2.8f, 2.4f, -0.15f}, {3.2f, 2.4f, -0.15f}, {3.2f, 2.4f, 0}}}}},
}};

using Weights = std::array<float, 4>;

/// Of the four control points at t, and of their change with t.
Weights weights(float t) {
  const float u = 1 - t;
  return {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
}
Weights slopes(float t) {
  const float u = 1 - t;
  return {-3 * u * u, 3 * u * u - 6 * u * t, 6 * u * t - 3 * t * t, 3 * t * t};
}

Vec3 weighted(const Patch& patch, const Weights& rows, const Weights& columns) {
  Vec3 sum;
  for (std::size_t row = 0; row < 4; ++row)
    for (std::size_t column = 0; column < 4; ++column)
      sum = math::add(sum, math::scale(patch[row][column], rows[row] * columns[column]));
  return sum;
}

Vec3 crossOfSlopes(const Patch& patch, float row, float column) {
  return math::cross(weighted(patch, weights(row), slopes(column)), weighted(patch, slopes(row), weights(column)));
}

/// A quarter of an outline's turn. Its curves are the outline's four points, each turned.
Patch turned(const Outline& outline, std::size_t quarter) {
  Patch patch;
  constexpr std::array<Vec3, 5> kAxes{{{1, 0, 0}, {0, 0, -1}, {-1, 0, 0}, {0, 0, 1}, {1, 0, 0}}};
  const Vec3 from = kAxes[quarter], to = kAxes[quarter + 1];
  constexpr std::array<std::array<float, 2>, 4> kArc{{{1, 0}, {1, kQuarterTurn}, {kQuarterTurn, 1}, {0, 1}}};
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t j = 0; j < 4; ++j) {
      const Vec3 way = math::add(math::scale(from, kArc[j][0]), math::scale(to, kArc[j][1]));
      patch[i][j] = {way.x * outline[i].radius, outline[i].height, way.z * outline[i].radius};
    }
  return patch;
}

class Teapot {
 public:
  /// @param outwards whether the slopes' cross product points out @param u,v the texture's part, from and to
  void add(const Patch& patch, bool outwards, const std::array<float, 2>& u) {
    const auto first = static_cast<std::uint32_t>(vertices_.size());
    for (std::size_t i = 0; i <= kCuts; ++i)
      for (std::size_t j = 0; j <= kCuts; ++j) {
        const float row = static_cast<float>(i) / kCuts, column = static_cast<float>(j) / kCuts;
        Vec3 place = weighted(patch, weights(row), weights(column));
        Vec3 normal = crossOfSlopes(patch, row, column);
        if (!outwards) normal = math::negate(normal);
        if (math::length(normal) < kPole) {  // all of the curve is one point of the axis
          place = patch[i == 0 ? 0 : 3][0];
          normal = {0, i == 0 ? 1.0f : -1.0f, 0};
        }
        place = math::scale({place.x, place.y - kMiddle, place.z}, kSize);
        vertices_.push_back({place, math::normalize(normal), u[0] + (u[1] - u[0]) * column, row});
      }
    constexpr auto kRow = static_cast<std::uint32_t>(kCuts + 1);
    for (std::uint32_t i = 0; i < kCuts; ++i)
      for (std::uint32_t j = 0; j < kCuts; ++j) {
        const std::uint32_t a = first + i * kRow + j, b = a + 1, c = a + kRow, d = c + 1;
        triangle(a, outwards ? b : c, outwards ? c : b);
        triangle(b, outwards ? d : c, outwards ? c : d);
      }
  }
  std::shared_ptr<SubsetMesh> finish() && {
    return std::make_shared<SubsetMesh>(std::move(vertices_), std::move(indices_));
  }

 private:
  /// Leaves out those that have shrunk to a line.
  void triangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    const auto same = [&](std::uint32_t i, std::uint32_t j) { return vertices_[i].position == vertices_[j].position; };
    if (same(a, b) || same(b, c) || same(c, a)) return;
    indices_.insert(indices_.end(), {a, b, c});
  }

  std::vector<SubsetVertex> vertices_;
  std::vector<std::uint32_t> indices_;
};

}  // namespace

std::shared_ptr<SubsetMesh> createTeapot() {
  Teapot teapot;
  for (const Outline& outline : kOutlines)
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
      const auto q = static_cast<float>(quarter);
      teapot.add(turned(outline, quarter), false, {q / 4, (q + 1) / 4});
    }
  for (const Patch& tube : kTubes) {
    teapot.add(tube, false, {0, 0.5f});
    Patch mirrored = tube;
    for (Curve& curve : mirrored)
      for (Vec3& point : curve) point.z = -point.z;
    teapot.add(mirrored, true, {1, 0.5f});
  }
  return std::move(teapot).finish();
}

}  // namespace ql::utility
