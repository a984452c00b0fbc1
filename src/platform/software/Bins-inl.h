/// @file
/// From vertex records to lists of triangles per tile. @see Bins.h
#if defined(QL_BINS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QL_BINS_INL_H
#undef QL_BINS_INL_H
#else
#define QL_BINS_INL_H
#endif

#include "platform/software/Bins.h"
#include "platform/software/Clip.h"
#include "platform/software/Meter.h"
#include "platform/software/Numeric.h"
#include "platform/software/Triangle.h"
#include "platform/software/Vertices-inl.h"

#include <algorithm>
#include <cmath>

HWY_BEFORE_NAMESPACE();
namespace ql::software::HWY_NAMESPACE {

class Binner {
 public:
  Binner(std::int32_t tilesX, Job& job) : tilesX_(tilesX), job_(job) {}

  /// A part of a list of solid triangles: transforms its vertices, too.
  void triangles(const Draw& draw, std::uint32_t first, std::uint32_t count) {
    constexpr std::uint32_t kChunk = kPlaces / 3;
    draw_ = &draw;
    pipeline_ = draw.pipeline;
    for (std::uint32_t done = 0; done < count; done += kChunk) {
      const std::uint32_t vertex = (first - draw.first + done) * 3, some = std::min(kChunk, count - done);
      const std::int64_t start = Meter::now();
      transformVertices(*pipeline_, draw.vertex(vertex), draw.stride, std::size_t{some} * 3, draw.writable(vertex),
                        &places_);
      job_.vertexNanoseconds += Meter::now() - start;
      if (pipeline_->fill != device::FillMode::Solid) {
        for (std::uint32_t i = 0; i < some; ++i) primitive(draw, first + done + i);
        continue;
      }
      for (std::uint32_t i = 0; i < some; i += kLanes)
        sixteen(first + done + i, i, std::min<std::uint32_t>(kLanes, some - i));
    }
  }

  void primitive(const Draw& draw, std::uint32_t number) {
    draw_ = &draw;
    pipeline_ = draw.pipeline;
    number_ = number;
    const std::uint32_t i = number - draw.first;
    switch (draw.type) {
      case device::PrimitiveType::PointList:
        point(i);
        break;
      case device::PrimitiveType::LineList:
        line(i * 2, i * 2 + 1, pipeline_->lastPixel);
        break;
      case device::PrimitiveType::LineStrip:
        line(i, i + 1, pipeline_->lastPixel && i + 1 == draw.count);
        break;
      default:
        listed_ = false;
        triangle(draw.triangle(i));
        job_.drawn += listed_;
    }
  }

 private:
  bool culled(std::int64_t area) const {
    using device::CullMode;
    return area == 0 || (pipeline_->cull == CullMode::Clockwise && area > 0) ||
           (pipeline_->cull == CullMode::CounterClockwise && area < 0);
  }

  /// Most triangles are dropped or lie in one tile: those are found sixteen at a time.
  void sixteen(std::uint32_t number, std::uint32_t at, std::uint32_t count) {
    enum : std::int32_t { kDropped = -1, kOther = -2 };
    Lanes<std::int32_t> tile;
    const Box scissor = pipeline_->scissor;
    const bool dropsPositive = pipeline_->cull == device::CullMode::Clockwise;
    const bool dropsNegative = pipeline_->cull == device::CullMode::CounterClockwise;
    for (int i = 0; i < kLanes; ++i) {
      const std::size_t v = (at + static_cast<std::size_t>(i)) * 3;
      const std::uint32_t c0 = places_.outcode[v], c1 = places_.outcode[v + 1], c2 = places_.outcode[v + 2];
      const std::int32_t x0 = places_.x[v], x1 = places_.x[v + 1], x2 = places_.x[v + 2];
      const std::int32_t y0 = places_.y[v], y1 = places_.y[v + 1], y2 = places_.y[v + 2];
      const std::uint32_t any = c0 | c1 | c2;
      const std::int32_t left = least(least(x0, x1), x2), right = most(most(x0, x1), x2);
      const std::int32_t top = least(least(y0, y1), y2), bottom = most(most(y0, y1), y2);
      // Of large ones the area may need more than 32 bits; with a clipped corner nothing holds.
      const bool plain = ((right - left) | (bottom - top)) < 1 << 14 && !(any & outcode::kClip);
      const std::int32_t area = plain ? (x1 - x0) * (y2 - y0) - (y1 - y0) * (x2 - x0) : 1;
      const std::int32_t boxLeft = most((left + 255) >> 8, scissor.left),
                         boxRight = least((right + 255) >> 8, scissor.right);
      const std::int32_t boxTop = most((top + 255) >> 8, scissor.top),
                         boxBottom = least((bottom + 255) >> 8, scissor.bottom);
      const std::int32_t column = boxLeft / kTileSide, row = boxTop / kTileSide;
      const bool nowhere = plain && (area == 0 || (dropsPositive && area > 0) || (dropsNegative && area < 0) ||
                                     boxLeft >= boxRight || boxTop >= boxBottom);
      const bool one = column == (boxRight - 1) / kTileSide && row == (boxBottom - 1) / kTileSide;
      const bool dropped = (c0 & c1 & c2) != 0 || (any & outcode::kNotFinite) != 0 || nowhere;
      tile[i] = dropped ? kDropped : plain && one ? row * tilesX_ + column : kOther;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::int32_t where = tile[static_cast<int>(i)];
      number_ = number + i;
      if (where >= 0) {
        job_.lists[static_cast<std::size_t>(where)].push_back(number_);
        ++job_.drawn;
      } else if (where == kOther) {
        listed_ = false;
        triangle(draw_->triangle(number_ - draw_->first));
        job_.drawn += listed_;
      }
    }
  }
  static std::int32_t least(std::int32_t a, std::int32_t b) { return a < b ? a : b; }
  static std::int32_t most(std::int32_t a, std::int32_t b) { return a > b ? a : b; }

  void triangle(const Corners& corners) {
    const float *v0 = draw_->record(corners.v[0]), *v1 = draw_->record(corners.v[1]), *v2 = draw_->record(corners.v[2]);
    const std::uint32_t c0 = recordOutcode(v0), c1 = recordOutcode(v1), c2 = recordOutcode(v2);
    const std::uint32_t any = c0 | c1 | c2;
    if ((c0 & c1 & c2) || (any & outcode::kNotFinite)) return;
    const bool solid = pipeline_->fill == device::FillMode::Solid;
    if (solid && !(any & outcode::kClip)) {
      const std::int64_t area = signedArea(v0, v1, v2);
      if (!culled(area)) cover(v0, v1, v2, area, number_);
      return;
    }
    ClipPolygon polygon;
    polygon.count = 3;
    for (std::size_t i = 0; i < 3; ++i) polygon.corners[i] = readVertex(*pipeline_, draw_->vertex(corners.v[i]));
    if (pipeline_->flat) shareColors(polygon);
    const ClipPolygon whole = polygon;
    job_.clipped += (any & outcode::kClip) != 0;
    clip(*pipeline_, polygon, any);
    if (polygon.count == 0) return;
    std::array<std::size_t, 12> made{};
    for (std::size_t i = 0; i < polygon.count; ++i) made[i] = add(polygon.corners[i]);
    std::int64_t area = 0;
    for (std::size_t i = 1; i + 1 < polygon.count; ++i) area += signedArea(at(made[0]), at(made[i]), at(made[i + 1]));
    if (culled(area)) return;
    if (solid) {
      for (std::size_t i = 1; i + 1 < polygon.count; ++i) extra(made[0], made[i], made[i + 1]);
      return;
    }
    const std::uint32_t codes[3] = {c0, c1, c2};
    for (std::size_t i = 0; i < 3; ++i) {
      const std::size_t next = i == 2 ? 0 : i + 1;
      if (pipeline_->fill == device::FillMode::Wireframe)
        line(whole.corners[i], whole.corners[next], codes[i] | codes[next], true);
      else if (!(codes[i] & outcode::kClip))
        point(whole.corners[i]);
    }
  }

  void line(std::uint32_t from, std::uint32_t to, bool last) {
    const std::uint32_t codes = recordOutcode(draw_->record(from)) | recordOutcode(draw_->record(to));
    if (codes & outcode::kNotFinite) return;
    ClipVertex a = readVertex(*pipeline_, draw_->vertex(from)), b = readVertex(*pipeline_, draw_->vertex(to));
    if (pipeline_->flat) copyColors(a, b);
    line(a, b, codes, last);
  }

  // A line is a parallelogram one pixel wide across its steeper direction: each column (or row) between the ends gets
  // one pixel. The first end's pixel belongs to the line, the other's only when last is set.
  void line(ClipVertex a, ClipVertex b, std::uint32_t codes, bool last) {
    if (!clip(*pipeline_, a, b, codes)) return;
    const std::size_t a0 = add(a), a1 = add(a), b0 = add(b), b1 = add(b);
    const std::int32_t dx = recordX(at(b0)) - recordX(at(a0)), dy = recordY(at(b0)) - recordY(at(a0));
    const bool steep = std::abs(dy) > std::abs(dx);
    const int major = steep ? kRecordY : kRecordX, minor = steep ? kRecordX : kRecordY;
    const bool backwards = (steep ? dy : dx) < 0;
    // Running backwards, the box's included side is the line's far end: half-open the other way.
    if (backwards)
      for (const std::size_t v : {a0, a1, b0, b1}) move(v, major, 1);
    if (last)
      for (const std::size_t v : {b0, b1}) move(v, major, backwards ? -128 : 128);
    move(a0, minor, -128);
    move(b0, minor, -128);
    move(a1, minor, 128);
    move(b1, minor, 128);
    extra(a0, b0, b1);
    extra(a0, b1, a1);
  }

  void point(std::uint32_t vertex) {
    const float* record = draw_->record(vertex);
    if (!(recordOutcode(record) & (outcode::kClip | outcode::kNotFinite))) point(record, pipeline_->sprites);
  }
  void point(const ClipVertex& v) {
    float record[kRecordHead + kMaxAttributes];
    writeRecord(*pipeline_, v, record);
    point(record, false);
  }
  // A square around a record's place. The record must not lie among those that are made.
  void point(const float* record, bool sprite) {
    const std::int32_t half = roundToInt(record[kRecordPointSize] * 128.0f);
    const auto floats = static_cast<std::size_t>(pipeline_->attributes.recordFloats());
    std::size_t corner[4];
    for (int i = 0; i < 4; ++i) {
      const bool right = i == 1 || i == 2, lower = i >= 2;
      corner[i] = job_.records.size();
      job_.records.insert(job_.records.end(), record, record + floats);
      move(corner[i], kRecordX, right ? half : -half);
      move(corner[i], kRecordY, lower ? half : -half);
      if (sprite) placeCorner(job_.records.data() + corner[i] + kRecordHead, right, lower);
    }
    extra(corner[0], corner[1], corner[2]);
    extra(corner[0], corner[2], corner[3]);
  }

  // Gives a corner of a sprite its place in every texture.
  void placeCorner(float* attributes, bool right, bool lower) const {
    const Attributes& a = pipeline_->attributes;
    const float one = attributes[kAttributeQ];  // 1, divided by w as all attributes are
    for (std::size_t i = 0; i < device::kStages; ++i) {
      if (a.uv[i] < 0) continue;
      attributes[a.uv[i]] = right ? one : 0.0f;
      attributes[a.uv[i] + 1] = lower ? one : 0.0f;
      attributes[a.divisor[i]] = one;
    }
  }

  void copyColors(const ClipVertex& from, ClipVertex& to) const {
    const Attributes& a = pipeline_->attributes;
    for (const std::int32_t first : {a.diffuse, a.specular})
      for (std::int32_t i = first; first >= 0 && i < first + 4; ++i)
        to.attributes[static_cast<std::size_t>(i - 2)] = from.attributes[static_cast<std::size_t>(i - 2)];
  }
  void shareColors(ClipPolygon& polygon) const {
    for (std::size_t i = 1; i < 3; ++i) copyColors(polygon.corners[0], polygon.corners[i]);
  }

  const float* at(std::size_t record) const { return job_.records.data() + record; }
  std::size_t add(const ClipVertex& v) {
    const std::size_t place = job_.records.size();
    job_.records.resize(place + static_cast<std::size_t>(pipeline_->attributes.recordFloats()));
    writeRecord(*pipeline_, v, job_.records.data() + place);
    return place;
  }
  void move(std::size_t record, int word, std::int32_t by) {
    float& coordinate = job_.records[record + static_cast<std::size_t>(word)];
    coordinate = std::bit_cast<float>(std::bit_cast<std::int32_t>(coordinate) + by);
  }
  void extra(std::size_t a, std::size_t b, std::size_t c) {
    const std::int64_t area = signedArea(at(a), at(b), at(c));
    if (area == 0) return;
    const auto id = static_cast<std::uint32_t>(job_.extras.size()) | Job::kExtra;
    job_.extras.push_back({number_, {a, b, c}});
    cover(at(a), at(b), at(c), area, id);
  }

  // Appends a triangle to the lists of the tiles that it may touch.
  void cover(const float* v0, const float* v1, const float* v2, std::int64_t area, std::uint32_t id) {
    const Box box = intersect(pixelBox(v0, v1, v2), pipeline_->scissor);
    if (box.empty()) return;
    listed_ = true;
    const std::int32_t left = box.left / kTileSide, right = (box.right - 1) / kTileSide;
    const std::int32_t top = box.top / kTileSide, bottom = (box.bottom - 1) / kTileSide;
    if (left == right && top == bottom) {
      list(left, top).push_back(id);
      return;
    }
    if (area < 0) std::swap(v1, v2);
    const float* v[3] = {v0, v1, v2};
    for (std::int32_t y = top; y <= bottom; ++y)
      for (std::int32_t x = left; x <= right; ++x)
        if (touches(v, x, y)) list(x, y).push_back(id);
  }

  // Whether no edge has the whole tile on its outer side.
  static bool touches(const float* const v[3], std::int32_t tileX, std::int32_t tileY) {
    constexpr std::int64_t kLast = (kTileSide - 1) * 256;
    for (int k = 0; k < 3; ++k) {
      const float *from = v[k], *to = v[k == 2 ? 0 : k + 1];
      const std::int64_t a = recordY(from) - recordY(to), b = recordX(to) - recordX(from);
      const std::int64_t x = std::int64_t{tileX} * kTileSide * 256 + (a > 0 ? kLast : 0);
      const std::int64_t y = std::int64_t{tileY} * kTileSide * 256 + (b > 0 ? kLast : 0);
      if (a * (x - recordX(from)) + b * (y - recordY(from)) < 0) return false;
    }
    return true;
  }
  std::vector<std::uint32_t>& list(std::int32_t x, std::int32_t y) {
    return job_.lists[static_cast<std::size_t>(y * tilesX_ + x)];
  }

  std::int32_t tilesX_;
  Job& job_;
  const Draw* draw_ = nullptr;
  const Pipeline* pipeline_ = nullptr;
  std::uint32_t number_ = 0;
  Places places_{};      ///< lanes without a triangle read what was there before
  bool listed_ = false;  ///< whether some tile has the triangle
};

inline void bin(std::span<const Draw> draws, std::int32_t tilesX, std::int32_t tilesY, Job& job) {
  job.lists.resize(static_cast<std::size_t>(tilesX * tilesY));
  for (std::vector<std::uint32_t>& list : job.lists) list.clear();
  job.extras.clear();
  job.records.clear();
  job.drawn = job.clipped = 0;
  job.vertexNanoseconds = 0;
  Binner binner(tilesX, job);
  std::uint32_t number = job.firstPrimitive;
  const std::uint32_t end = number + job.primitiveCount;
  for (std::size_t i = job.firstDraw; number != end; ++i) {
    const Draw& draw = draws[i];
    const std::uint32_t count = std::min(end, draw.first + draw.count) - number;
    if (draw.transformsLater())
      binner.triangles(draw, number, count);
    else
      for (std::uint32_t k = 0; k < count; ++k) binner.primitive(draw, number + k);
    number += count;
  }
}

}  // namespace ql::software::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
