#include "platform/opengl/ShaderText.h"

namespace ql::opengl {
namespace {

// A line is a parallelogram one pixel wide across its steeper direction: each column (or row) between the ends gets one
// pixel. The first end's pixel belongs to the line, the other's only when last is set.
constexpr const char* kLine = R"(
void corner(vec4 at, vec2 pixels, int a, int b, float t) {
  gl_Position = at + vec4(pixels / area.xy * at.w, 0.0, 0.0);
  vary(a, b, t);
  EmitVertex();
}
void line(int a, int b, bool last) {
  vec4 pa = gl_in[a].gl_Position, pb = gl_in[b].gl_Position;
  float from = 0.0, to = 1.0;
  vec3 da = vec3(pa.w + pa.z, pa.w - pa.z, pa.w - 1e-8), db = vec3(pb.w + pb.z, pb.w - pb.z, pb.w - 1e-8);
  for (int i = 0; i < 3; ++i) {
    if (da[i] < 0.0 && db[i] < 0.0) return;
    if (da[i] < 0.0) from = max(from, da[i] / (da[i] - db[i]));
    else if (db[i] < 0.0) to = min(to, da[i] / (da[i] - db[i]));
  }
  if (from > to) return;
  vec4 p = mix(pa, pb, from), q = mix(pa, pb, to);
  vec2 way = (q.xy / q.w - p.xy / p.w) * area.xy;
  bool steep = abs(way.y) > abs(way.x);
  bool backwards = (steep ? way.y : way.x) < 0.0;
  vec2 along = steep ? vec2(0.0, 1.0) : vec2(1.0, 0.0), across = along.yx * 0.5;
  // Running backwards, the far end is the side that the fill rule includes: half-open the other way.
  vec2 start = backwards ? along / 256.0 : vec2(0.0);
  vec2 end = start + (last ? (backwards ? -0.5 : 0.5) * along : vec2(0.0));
  corner(p, start - across, a, b, from);
  corner(p, start + across, a, b, from);
  corner(q, end - across, a, b, to);
  corner(q, end + across, a, b, to);
  EndPrimitive();
}
)";

constexpr const char* kPoint = R"(
void point(int i) {
  vec4 at = gl_in[i].gl_Position;
  if (at.w <= 1e-8 || at.z < -at.w || at.z > at.w) return;
  float size = floor(v_size[i] * 128.0 + 0.5) / 128.0;
  for (int k = 0; k < 4; ++k) {
    vec2 side = vec2(k & 1, k >> 1);
    gl_Position = at + vec4((side - 0.5) * size / area.xy * at.w, 0.0, 0.0);
    vary(i, i, 0.0);
    SPRITE
    EmitVertex();
  }
  EndPrimitive();
}
)";

// The sign of the area is that of the determinant also where corners lie behind the eye. Positive is clockwise on the
// screen.
constexpr const char* kCulled = R"(
bool culled() {
  float facing = determinant(mat3(gl_in[0].gl_Position.xyw, gl_in[1].gl_Position.xyw, gl_in[2].gl_Position.xyw));
  return facing == 0.0 || (CULL == 2 && facing > 0.0) || (CULL == 3 && facing < 0.0);
}
)";

std::string varyFunction(const ShaderKey& key) {
  std::string text = "void vary(int a, int b, float t) {\n";
  for (const Varying& v : varyingsOf(key)) {
    const std::string name = v.name;
    text += v.flat ? "  f_" + name + " = v_" + name + "[0];\n"
                   : "  f_" + name + " = mix(v_" + name + "[a], v_" + name + "[b], t);\n";
  }
  return text + "}\n";
}

std::string mainFunction(const ShaderKey& key) {
  switch (key.topology) {
    case Topology::Lines:
      return key.lastPixel ? "void main() { line(0, 1, counts.y < 0 || gl_PrimitiveIDIn == counts.y); }\n"
                           : "void main() { line(0, 1, false); }\n";
    case Topology::Points:
      return "void main() { point(0); }\n";
    case Topology::TriangleEdges:
      return "void main() {\n  if (culled()) return;\n  line(0, 1, true);\n  line(1, 2, true);\n  line(2, 0, "
             "true);\n}\n";
    default:
      return "void main() {\n  if (culled()) return;\n  for (int i = 0; i < 3; ++i) point(i);\n}\n";
  }
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  if (const std::size_t at = text.find(from); at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

}  // namespace

std::string geometryText(const ShaderKey& key) {
  const bool triangles = key.topology >= Topology::TriangleEdges;
  const bool lines = key.topology == Topology::Lines || key.topology == Topology::TriangleEdges;
  std::string text = preamble();
  text += std::string("layout(") + (triangles ? "triangles" : lines ? "lines" : "points") + ") in;\n";
  text += std::string("layout(triangle_strip, max_vertices = ") + (triangles ? "12" : "4") + ") out;\n";
  for (const Varying& v : varyingsOf(key)) {
    const std::string flat = v.flat ? "flat " : "", type = v.type, name = v.name;
    text += flat + "in " + type + " v_" + name + "[];\n" + flat + "out " + type + " f_" + name + ";\n";
  }
  if (!lines) text += "in float v_size[];\n";
  if (key.pointSprite) text += "out vec2 f_sprite;\n";
  text += varyFunction(key);
  text += lines ? kLine : replaced(kPoint, "SPRITE", key.pointSprite ? "f_sprite = side;" : "");
  if (triangles)
    text += replaced(replaced(kCulled, "CULL", std::to_string(key.cull)), "CULL", std::to_string(key.cull));
  return text + mainFunction(key);
}

}  // namespace ql::opengl
