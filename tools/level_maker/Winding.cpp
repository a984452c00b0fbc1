#include "Winding.h"

namespace ql::maker {

Winding windingOfPlane(const Plane& plane, double extent) {
  const Vec3 n = plane.normal;
  const Vec3 up = std::fabs(n.z) > 0.7 ? Vec3{1, 0, 0} : Vec3{0, 0, 1};
  const Vec3 v = normalized(up - n * dot(up, n));
  const Vec3 u = cross(v, n);
  const Vec3 centre = n * plane.distance;
  return {centre - u * extent + v * extent, centre + u * extent + v * extent, centre + u * extent - v * extent,
          centre - u * extent - v * extent};
}

namespace {

/// Twice the area times the normal, summed over the fan.
Vec3 areaVector(const Winding& w) {
  Vec3 sum;
  for (std::size_t i = 2; i < w.size(); ++i) sum += cross(w[i] - w[0], w[i - 1] - w[0]);
  return sum;
}

}  // namespace

Plane planeOfWinding(const Winding& winding) {
  const Vec3 n = normalized(areaVector(winding));
  return {n, dot(n, winding[0])};
}

double areaOf(const Winding& winding) { return winding.size() < 3 ? 0.0 : 0.5 * length(areaVector(winding)); }

Bounds boundsOf(const Winding& winding) {
  Bounds b;
  for (const Vec3& p : winding) b.add(p);
  return b;
}

Vec3 centreOf(const Winding& winding) {
  Vec3 sum;
  for (const Vec3& p : winding) sum += p;
  return sum * (1.0 / static_cast<double>(winding.size()));
}

Split split(const Winding& winding, const Plane& plane, double epsilon) {
  Split result;
  std::vector<double> distance(winding.size());
  bool anyFront = false;
  bool anyBack = false;
  for (std::size_t i = 0; i < winding.size(); ++i) {
    distance[i] = plane.side(winding[i]);
    anyFront |= distance[i] > epsilon;
    anyBack |= distance[i] < -epsilon;
  }
  if (!anyFront && !anyBack) {
    result.onPlane = true;
  } else if (!anyBack) {
    result.front = winding;
  } else if (!anyFront) {
    result.back = winding;
  } else {
    for (std::size_t i = 0; i < winding.size(); ++i) {
      const std::size_t next = (i + 1) % winding.size();
      if (distance[i] >= -epsilon) result.front.push_back(winding[i]);
      if (distance[i] <= epsilon) result.back.push_back(winding[i]);
      const bool crosses =
          (distance[i] > epsilon && distance[next] < -epsilon) || (distance[i] < -epsilon && distance[next] > epsilon);
      if (!crosses) continue;
      const double t = distance[i] / (distance[i] - distance[next]);
      Vec3 cut = mix(winding[i], winding[next], t);
      for (int a = 0; a < 3; ++a)  // stay exactly on planes along the axes
        if (std::fabs(plane.normal[a]) == 1.0) cut[a] = plane.distance * plane.normal[a];
      result.front.push_back(cut);
      result.back.push_back(cut);
    }
  }
  return result;
}

Winding clipFront(const Winding& winding, const Plane& plane, double epsilon) {
  Split parts = split(winding, plane, epsilon);
  if (parts.onPlane) return winding;
  return std::move(parts.front);
}

namespace {

bool near(Vec3 a, Vec3 b) { return length(a - b) < 0.02; }

/// How a corner turns: below 0 convex (for clockwise order), near 0 straight.
double turn(Vec3 before, Vec3 at, Vec3 after, Vec3 normal) {
  return dot(cross(normalized(after - at), normalized(before - at)), normal);
}

}  // namespace

Winding merged(const Winding& a, const Winding& b, Vec3 normal) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    const Vec3 p1 = a[i];
    const Vec3 p2 = a[(i + 1) % a.size()];
    for (std::size_t j = 0; j < b.size(); ++j) {
      if (!near(b[j], p2) || !near(b[(j + 1) % b.size()], p1)) continue;
      Winding joined;  // a from p2 around to p1, then b from after p1 around to before p2
      for (std::size_t k = 0; k < a.size(); ++k) joined.push_back(a[(i + 1 + k) % a.size()]);
      for (std::size_t k = 2; k < b.size(); ++k) joined.push_back(b[(j + k) % b.size()]);
      Winding clean;
      for (std::size_t k = 0; k < joined.size(); ++k) {
        const Vec3 before = joined[(k + joined.size() - 1) % joined.size()];
        const Vec3 after = joined[(k + 1) % joined.size()];
        const double t = turn(before, joined[k], after, normal);
        if (t > 0.0005) return {};  // a dent
        const bool seam = near(joined[k], p1) || near(joined[k], p2);
        if (!seam || t < -0.0005) clean.push_back(joined[k]);
      }
      return clean;
    }
  }
  return {};
}

void mergeAll(std::vector<Winding>& windings, Vec3 normal) {
  for (bool again = true; again;) {
    again = false;
    for (std::size_t i = 0; i < windings.size() && !again; ++i) {
      for (std::size_t j = i + 1; j < windings.size() && !again; ++j) {
        Winding joined = merged(windings[i], windings[j], normal);
        if (joined.empty()) continue;
        windings[i] = std::move(joined);
        windings.erase(windings.begin() + static_cast<std::ptrdiff_t>(j));
        again = true;
      }
    }
  }
}

std::vector<int> triangulated(const Winding& winding) {
  std::vector<int> rest;
  for (std::size_t i = 0; i < winding.size(); ++i) rest.push_back(static_cast<int>(i));
  const auto at = [&](std::size_t i) { return winding[static_cast<std::size_t>(rest[i % rest.size()])]; };
  std::vector<int> triangles;
  while (rest.size() >= 3) {
    // Take the corner whose triangle is the fattest, but never leave only points in line.
    std::size_t best = 0;
    double bestShape = -1.0;
    for (std::size_t i = 0; i < rest.size(); ++i) {
      const Vec3 a = at(i + rest.size() - 1);
      const Vec3 b = at(i);
      const Vec3 c = at(i + 1);
      const double area = length(cross(c - a, b - a));
      const double longest = std::max({dot(b - a, b - a), dot(c - b, c - b), dot(a - c, a - c)});
      double shape = area / longest;
      if (rest.size() == 4) {
        const Vec3 d = at(i + 2);
        shape = std::min(
            shape, length(cross(d - a, c - a)) / std::max({dot(c - a, c - a), dot(d - c, d - c), dot(a - d, a - d)}));
      } else if (rest.size() > 4 && shape < 1e-4) {
        continue;
      }
      if (shape > bestShape) {
        bestShape = shape;
        best = i;
      }
    }
    const std::size_t n = rest.size();
    const int a = rest[(best + n - 1) % n];
    const int b = rest[best];
    const int c = rest[(best + 1) % n];
    if (bestShape > 1e-7) triangles.insert(triangles.end(), {a, b, c});
    rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(best));
  }
  return triangles;
}

}  // namespace ql::maker
