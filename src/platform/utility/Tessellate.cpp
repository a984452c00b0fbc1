#include "platform/utility/Tessellate.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <utility>

#include <GL/glu.h>

namespace ql::utility {
namespace {

struct Corner {
  std::array<GLdouble, 3> at;
  std::uint32_t number;  ///< in the order that corners came
};

/// What the tessellator reports. Its callbacks must not throw, since C code calls them.
struct Collector {
  std::deque<Corner> corners;  ///< at stable addresses: the tessellator keeps pointers to them
  std::vector<fonts::Contour> loops;
  std::vector<std::uint32_t> triangles;  ///< numbers of corners
  bool failed = false;

  Corner& add(GLdouble x, GLdouble y) {
    return corners.emplace_back(Corner{{x, y, 0}, static_cast<std::uint32_t>(corners.size())});
  }

  template <class F>
  void attempt(F&& f) noexcept {
    try {
      f();
    } catch (const std::exception&) {
      failed = true;
    }
  }
};

Collector& collector(void* data) { return *static_cast<Collector*>(data); }

fonts::OutlinePoint pointOf(const Corner& corner) {
  return {static_cast<float>(corner.at[0]), static_cast<float>(corner.at[1])};
}

void beginLoop(GLenum /*kind*/, void* data) {
  collector(data).attempt([&] { collector(data).loops.emplace_back(); });
}
void loopCorner(void* corner, void* data) {
  const Corner& at = *static_cast<const Corner*>(corner);
  collector(data).attempt([&] { collector(data).loops.back().push_back(pointOf(at)); });
}
void triangleCorner(void* corner, void* data) {
  collector(data).attempt([&] { collector(data).triangles.push_back(static_cast<const Corner*>(corner)->number); });
}
/// Asked for, this makes the tessellator report triangles only, no strips and fans.
void edgeFlag(GLboolean /*flag*/, void* /*data*/) {}
void combine(GLdouble at[3], void* /*near*/[4], GLfloat /*weights*/[4], void** made, void* data) {
  *made = nullptr;
  collector(data).attempt([&] { *made = &collector(data).add(at[0], at[1]); });
}
void fail(GLenum /*error*/, void* data) { collector(data).failed = true; }

struct DeleteTessellator {
  void operator()(GLUtesselator* tessellator) const { gluDeleteTess(tessellator); }
};

template <class F>
_GLUfuncptr callback(F* function) {
  return reinterpret_cast<_GLUfuncptr>(function);
}

/// Runs the tessellator over lines, for their borders or for triangles.
Collector run(std::span<const fonts::Contour> lines, bool borders) {
  Collector result;
  const std::unique_ptr<GLUtesselator, DeleteTessellator> tessellator(gluNewTess());
  if (!tessellator) return result;
  GLUtesselator* t = tessellator.get();
  gluTessCallback(t, GLU_TESS_COMBINE_DATA, callback(combine));
  gluTessCallback(t, GLU_TESS_ERROR_DATA, callback(fail));
  if (borders) {
    gluTessCallback(t, GLU_TESS_BEGIN_DATA, callback(beginLoop));
    gluTessCallback(t, GLU_TESS_VERTEX_DATA, callback(loopCorner));
  } else {
    gluTessCallback(t, GLU_TESS_EDGE_FLAG_DATA, callback(edgeFlag));
    gluTessCallback(t, GLU_TESS_VERTEX_DATA, callback(triangleCorner));
  }
  gluTessProperty(t, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_NONZERO);
  gluTessProperty(t, GLU_TESS_BOUNDARY_ONLY, borders ? GL_TRUE : GL_FALSE);
  gluTessNormal(t, 0, 0, 1);
  gluTessBeginPolygon(t, &result);
  for (const fonts::Contour& line : lines) {
    gluTessBeginContour(t);
    for (const fonts::OutlinePoint& point : line) {
      Corner& corner = result.add(double{point.x}, double{point.y});
      gluTessVertex(t, corner.at.data(), &corner);
    }
    gluTessEndContour(t);
  }
  gluTessEndPolygon(t);
  if (result.failed) return {};
  return result;
}

/// Drops points that coincide with the one before them, around the loop.
void dropRepeated(fonts::Contour& loop) {
  const auto same = [](const fonts::OutlinePoint& a, const fonts::OutlinePoint& b) { return a.x == b.x && a.y == b.y; };
  loop.erase(std::unique(loop.begin(), loop.end(), same), loop.end());
  while (loop.size() > 1 && same(loop.front(), loop.back())) loop.pop_back();
}

}  // namespace

Area areaInside(std::span<const fonts::Contour> lines) {
  Area area;
  area.borders = run(lines, true).loops;
  for (fonts::Contour& border : area.borders) dropRepeated(border);
  std::erase_if(area.borders, [](const fonts::Contour& border) { return border.size() < 3; });
  Collector inside = run(area.borders, false);
  area.points.reserve(inside.corners.size());
  for (const Corner& corner : inside.corners) area.points.push_back(pointOf(corner));
  area.triangles = std::move(inside.triangles);
  return area;
}

}  // namespace ql::utility
