#include "platform/opengl/ShaderText.h"

#include <string_view>

namespace ql::opengl {
namespace {

// Sums over the lights in camera space, as the classic fixed function does.
constexpr const char* kLighting = R"(
struct Light {
  vec4 diffuse, specular, ambient;
  vec4 position;     // w: 1 point, 2 spot, 3 directional
  vec4 direction;    // w: falloff
  vec4 attenuation;  // factors 0, 1, 2; w: range
  vec4 cone;         // cosines of half the inner and the outer angle
};
layout(std140) uniform Lights { Light lights[LIGHTS]; };

struct Lit { vec3 ambient, diffuse, specular; };

float spotFactor(Light light, vec3 toLight) {
  float rho = dot(-toLight, light.direction.xyz);
  if (rho > light.cone.x) return 1.0;
  if (rho <= light.cone.y) return 0.0;
  return pow((rho - light.cone.y) / (light.cone.x - light.cone.y), light.direction.w);
}

Lit lit(vec3 position, vec3 normal) {
  Lit sum = Lit(globalAmbient.rgb, vec3(0.0), vec3(0.0));
  for (int i = 0; i < counts.x; ++i) {
    Light light = lights[i];
    vec3 toLight = -light.direction.xyz;
    float strength = 1.0;
    if (light.position.w != 3.0) {
      vec3 way = light.position.xyz - position;
      float distance = length(way);
      if (distance > light.attenuation.w) continue;
      toLight = distance > 0.0 ? way / distance : vec3(0.0);
      float divisor = light.attenuation.x + distance * (light.attenuation.y + distance * light.attenuation.z);
      strength = divisor > 0.0 ? 1.0 / divisor : 1.0;
      if (light.position.w == 2.0) strength *= spotFactor(light, toLight);
    }
    sum.ambient += light.ambient.rgb * strength;
    float facing = dot(normal, toLight);
    if (facing <= 0.0) continue;
    sum.diffuse += light.diffuse.rgb * (facing * strength);
    if (SPECULAR) {
      vec3 toEye = LOCAL_VIEWER ? -normalize(position) : vec3(0.0, 0.0, -1.0);
      vec3 between = toLight + toEye;
      float size = length(between);
      float shine = size > 0.0 ? dot(normal, between) / size : 0.0;
      if (shine > 0.0) {
        float power = globalAmbient.w;
        sum.specular += light.specular.rgb * (strength * (power > 0.0 ? pow(shine, power) : 1.0));
      }
    }
  }
  return sum;
}
)";

class VertexWriter {
 public:
  explicit VertexWriter(const ShaderKey& key) : key_(key), varyings_(varyingsOf(key)) {}

  std::string text() {
    text_ = preamble();
    attributes();
    outputs();
    if (key_.lighting) lightingFunctions();
    text_ += "void main() {\n";
    position();
    if (needsView()) text_ += "  vec3 seen = transformedPoint(a_position.xyz, view).xyz;\n";
    if (needsNormal()) normal();
    colors();
    if (has("fog")) fog();
    for (std::size_t i = 0; i < key_.stageCount; ++i) coordinates(i);
    if (pointsHaveSize()) pointSize();
    text_ += "}\n";
    return std::move(text_);
  }

 private:
  bool has(std::string_view name) const {
    for (const Varying& varying : varyings_)
      if (varying.name == name) return true;
    return false;
  }
  bool uses(Coordinates coordinates) const {
    for (const StageKey& stage : key_.stages)
      if (stage.coordinates == coordinates) return true;
    return false;
  }
  bool pointsHaveSize() const {
    return key_.topology == Topology::Points || key_.topology == Topology::TriangleCorners;
  }
  bool needsNormal() const { return key_.lighting || uses(Coordinates::Normal) || uses(Coordinates::Reflection); }
  bool needsView() const {
    return key_.lighting || uses(Coordinates::Position) || uses(Coordinates::Reflection) ||
           (pointsHaveSize() && key_.pointScale) || (has("fog") && key_.fogMode != 0);
  }
  const char* prefix() const { return expands(key_.topology) ? "v_" : "f_"; }

  void attribute(unsigned place, const char* type, const std::string& name) {
    text_ += "layout(location = " + std::to_string(place) + ") in " + type + " a_" + name + ";\n";
  }
  void attributes() {
    attribute(kPosition, "vec4", "position");
    if (key_.normal) attribute(kNormal, "vec3", "normal");
    if (key_.pointSize) attribute(kPointSize, "float", "size");
    if (key_.diffuse) attribute(kDiffuse, "vec4", "diffuse");
    if (key_.specular) attribute(kSpecular, "vec4", "specular");
    for (unsigned i = 0; i < key_.coordinateSets; ++i) attribute(kFirstSet + i, "vec2", "set" + std::to_string(i));
  }
  void outputs() {
    // One formula in every program: passes over the same triangles meet at the same depth.
    text_ += "invariant gl_Position;\n";
    for (const Varying& v : varyings_)
      text_ += std::string(v.flat ? "flat " : "") + "out " + v.type + " " + prefix() + v.name + ";\n";
    if (pointsHaveSize()) text_ += "out float v_size;\n";
  }
  void lightingFunctions() {
    text_ += "const bool SPECULAR = " + std::string(key_.lightSpecular ? "true" : "false") + ";\n";
    text_ += "const bool LOCAL_VIEWER = " + std::string(key_.localViewer ? "true" : "false") + ";\n";
    text_ += "const int LIGHTS = " + std::to_string(kMostLights) + ";\n";
    text_ += kLighting;
  }

  // The device's pixels have their centres at whole numbers, OpenGL's half a pixel further. The first row of a picture
  // is the one at y = 0, so y grows downwards as on the screen. Depth 0 to w becomes -w to w.
  void position() {
    if (key_.transformed)
      text_ += R"(
  float w = a_position.w > 0.0 && !isinf(a_position.w) ? 1.0 / a_position.w : 1.0;
  vec2 place = (a_position.xy + 0.5) / area.xy - 1.0;
  gl_Position = vec4(place, clamp(a_position.z, 0.0, 1.0) * 2.0 - 1.0, 1.0) * w;
)";
    else
      text_ += R"(
  vec4 c = transformedPoint(a_position.xyz, clip);
  gl_Position = vec4(c.x + c.w * (0.5 / area.x), c.w * (0.5 / area.y) - c.y, 2.0 * c.z - c.w, c.w);
)";
  }
  void normal() {
    text_ += key_.normal ? "  vec3 normal = transformed(vec4(a_normal, 0.0), normalToCamera).xyz;\n"
                         : "  vec3 normal = vec3(0.0);\n";
    if (key_.normalize) text_ += "  if (dot(normal, normal) > 0.0) normal = normalize(normal);\n";
  }
  static std::string sourceOf(std::uint8_t source, const char* material) {
    return source == 1 ? "a_diffuse" : source == 2 ? "a_specular" : material;
  }
  void colors() {
    const std::string p = prefix();
    if (!key_.lighting) {
      if (has("diffuse")) text_ += "  " + p + "diffuse = a_diffuse;\n";
      if (has("specular")) text_ += "  " + p + "specular = a_specular;\n";
      return;
    }
    if (!has("diffuse") && !has("specular")) return;
    const std::string diffuse = sourceOf(key_.diffuseSource, "materialDiffuse");
    text_ += "  Lit sum = lit(seen, normal);\n";
    if (has("diffuse"))
      text_ += "  " + p + "diffuse = vec4(clamp(" + sourceOf(key_.emissiveSource, "materialEmissive") + ".rgb + " +
               sourceOf(key_.ambientSource, "materialAmbient") + ".rgb * sum.ambient + " + diffuse +
               ".rgb * sum.diffuse, 0.0, 1.0), clamp(" + diffuse + ".a, 0.0, 1.0));\n";
    if (has("specular")) {
      const std::string specular = sourceOf(key_.specularSource, "materialSpecular");
      text_ += "  " + p + "specular = vec4(clamp(" + specular + ".rgb * sum.specular, 0.0, 1.0), clamp(" + specular +
               ".a, 0.0, 1.0));\n";
    }
  }
  void fog() {
    const std::string out = std::string("  ") + prefix() + "fog = ";
    const std::string distance = key_.fogRange ? "length(seen)" : "abs(seen.z)";
    switch (static_cast<device::FogMode>(key_.fogMode)) {
      case device::FogMode::None:
        text_ += out + (key_.specular ? "a_specular.a;\n" : "0.0;\n");
        break;
      case device::FogMode::Exp:
        text_ += out + "exp(-max(" + distance + " * fog.w, 0.0));\n";
        break;
      case device::FogMode::Exp2:
        text_ += "  float thick = " + distance + " * fog.w;\n" + out + "exp(-thick * thick);\n";
        break;
      case device::FogMode::Linear:
        text_ += out + "clamp((fog.z - " + distance + ") * fog.y, 0.0, 1.0);\n";
        break;
    }
  }
  void coordinates(std::size_t index) {
    const StageKey& stage = key_.stages[index];
    const std::string number = std::to_string(index), name = "uv" + number;
    if (!has(name)) return;
    const std::string c = "c" + number;
    text_ += "  vec4 " + c + " = ";
    switch (stage.coordinates) {
      case Coordinates::Normal:
        text_ += "vec4(normal, 1.0);\n";
        break;
      case Coordinates::Position:
        text_ += "vec4(seen, 1.0);\n";
        break;
      case Coordinates::Reflection: {
        const std::string eye = key_.localViewer ? "-normalize(seen)" : "vec3(0.0, 0.0, -1.0)";
        text_ += "vec4(2.0 * dot(" + eye + ", normal) * normal - (" + eye + "), 1.0);\n";
        break;
      }
      default:
        text_ += "vec4(a_set" + std::to_string(stage.set) + ", 1.0, 0.0);\n";
    }
    if (stage.transformCount) text_ += "  " + c + " = transformed(" + c + ", textureTransform[" + number + "]);\n";
    const std::string out = std::string("  ") + prefix() + name + " = ";
    if (stage.transformCount == 1)
      text_ += out + "vec2(" + c + ".x, 0.0);\n";
    else if (stage.projected)
      text_ += out + "vec3(" + c + ".xy, " + c + "[" + std::to_string(stage.transformCount - 1) + "]);\n";
    else
      text_ += out + c + ".xy + nudge." + (index == 0 ? "xy" : "zw") + ";\n";
  }
  void pointSize() {
    text_ += key_.pointSize ? "  v_size = a_size;\n" : "  v_size = pointValues.x;\n";
    if (key_.pointScale)
      text_ += R"(
  float eyeDistance = length(seen);
  float shrink = pointScale.x + eyeDistance * (pointScale.y + eyeDistance * pointScale.z);
  v_size *= pointValues.w * (shrink > 0.0 ? inversesqrt(shrink) : 1.0);
)";
    text_ += "  v_size = clamp(v_size, pointValues.y, pointValues.z);\n";
  }

  const ShaderKey& key_;
  std::vector<Varying> varyings_;
  std::string text_;
};

}  // namespace

std::string vertexText(const ShaderKey& key) { return VertexWriter(key).text(); }

}  // namespace ql::opengl
