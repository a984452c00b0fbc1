#include "platform/opengl/ShaderText.h"

#include <string_view>

namespace ql::opengl {
namespace {

using device::TextureOp;

// Colours in steps of 1/255, rounded after each operation as the reference device does, or plain numbers 0 to 1 where
// rounding at the end alone gives the same within one step.
bool roundsEachStep(const ShaderKey& key) {
  const auto gentle = [](std::uint8_t op) {
    return op <= static_cast<std::uint8_t>(TextureOp::Modulate);  // select and modulate
  };
  for (std::size_t i = 0; i < key.stageCount; ++i)
    if (!gentle(key.stages[i].colorOp) || !gentle(key.stages[i].alphaOp)) return true;
  return key.redBits != 8;
}

constexpr const char* kFunctions = R"(
vec3 limited(vec3 x) { return clamp(x, 0.0, ONE); }
float limited(float x) { return clamp(x, 0.0, ONE); }
vec3 product(vec3 a, vec3 b) { return rounded(a * b / ONE); }
float product(float a, float b) { return rounded(a * b / ONE); }
vec3 scaled(vec3 a, vec3 b, float s) { return rounded(min(a * b * s / ONE, vec3(ONE))); }
float scaled(float a, float b, float s) { return rounded(min(a * b * s / ONE, ONE)); }
vec3 mixed(vec3 a, vec3 b, vec3 f) { return rounded((a * f + b * (ONE - f)) / ONE); }
vec3 mixed(vec3 a, vec3 b, float f) { return rounded((a * f + b * (ONE - f)) / ONE); }
float mixed(float a, float b, float f) { return rounded((a * f + b * (ONE - f)) / ONE); }
)";

constexpr const char* kQuantize = R"(
float expanded(float value, float bits) {
  return value * exp2(8.0 - bits) + floor(value / exp2(2.0 * bits - 8.0));
}
float nearest(float value, float bits) {
  return expanded(floor((value * (exp2(bits) - 1.0) + 127.0) / 255.0), bits);
}
// Takes the stored value below or the one above, by comparing the place between them with a pattern of ranks whose
// neighbours are far apart. A value that can be stored stays as it is.
const float kPattern[16] = float[16](0., 8., 2., 10., 12., 4., 14., 6., 3., 11., 1., 9., 15., 7., 13., 5.);
float dithered(float value, float bits) {
  ivec2 place = ivec2(gl_FragCoord.xy) & 3;
  float low = floor(value / exp2(8.0 - bits));
  if (expanded(low, bits) > value) low -= 1.0;
  float below = expanded(low, bits), above = expanded(low + 1.0, bits);
  return (value - below) * 32.0 > (kPattern[place.y * 4 + place.x] * 2.0 + 1.0) * (above - below) ? above : below;
}
)";

class FragmentWriter {
 public:
  explicit FragmentWriter(const ShaderKey& key) : key_(key), varyings_(varyingsOf(key)), rounds_(roundsEachStep(key)) {}

  std::string text() {
    text_ = preamble();
    for (const Varying& v : varyings_)
      text_ += std::string(v.flat ? "flat " : "") + "in " + v.type + " f_" + v.name + ";\n";
    if (key_.pointSprite) text_ += "in vec2 f_sprite;\n";
    text_ += "uniform sampler2D texture0;\nuniform sampler2D texture1;\nout vec4 o_color;\n";
    text_ += rounds_ ? "const float ONE = 255.0;\nvec3 rounded(vec3 x) { return floor(x + 0.5); }\n"
                       "float rounded(float x) { return floor(x + 0.5); }\nvec4 rounded(vec4 x) { return floor(x + "
                       "0.5); }\n"
                     : "const float ONE = 1.0;\nvec3 rounded(vec3 x) { return x; }\nfloat rounded(float x) { return "
                       "x; }\nvec4 rounded(vec4 x) { return x; }\n";
    text_ += kFunctions;
    if (key_.redBits != 8) text_ += kQuantize;
    text_ += "void main() {\n";
    inputs();
    for (std::size_t i = 0; i < key_.stageCount; ++i) stage(i);
    if (key_.specularAdd) text_ += "  current.rgb = min(current.rgb + specular.rgb, vec3(ONE));\n";
    fog();
    alphaTest();
    store();
    text_ += "}\n";
    return std::move(text_);
  }

 private:
  bool has(std::string_view name) const {
    for (const Varying& varying : varyings_)
      if (varying.name == name) return true;
    return false;
  }
  void inputs() {
    text_ += has("diffuse") ? "  vec4 diffuse = rounded(f_diffuse * ONE);\n" : "  vec4 diffuse = vec4(ONE);\n";
    text_ += has("specular") ? "  vec4 specular = rounded(f_specular * ONE);\n" : "  vec4 specular = vec4(0.0);\n";
    text_ += "  vec4 constant = rounded(factor * ONE);\n  vec4 current = diffuse;\n  vec4 texel = vec4(ONE);\n";
  }

  static std::string argument(std::uint8_t code, bool alpha) {
    constexpr const char* kSources[] = {"diffuse", "current", "texel", "constant", "specular"};
    const unsigned source = code & device::kArgSelectMask;
    std::string out = source < 5 ? kSources[source] : "current";
    if (alpha)
      out += ".a";
    else
      out += code & device::kArgAlphaReplicate ? ".aaa" : ".rgb";
    return code & device::kArgComplement ? "(ONE - " + out + ")" : out;
  }
  static const char* blendAlpha(TextureOp op) {
    switch (op) {
      case TextureOp::BlendDiffuseAlpha:
        return "diffuse.a";
      case TextureOp::BlendFactorAlpha:
        return "constant.a";
      case TextureOp::BlendCurrentAlpha:
        return "current.a";
      default:
        return "texel.a";
    }
  }
  static std::string operation(std::uint8_t code, const std::array<std::uint8_t, 3>& args, bool alpha) {
    const auto op = static_cast<TextureOp>(code);
    const std::string zero = argument(args[0], alpha), one = argument(args[1], alpha), two = argument(args[2], alpha);
    const std::string oneAlpha = argument(args[1], true), both = one + ", " + two;
    switch (op) {
      case TextureOp::SelectArg2:
        return two;
      case TextureOp::Modulate:
        return "product(" + both + ")";
      case TextureOp::Modulate2x:
        return "scaled(" + both + ", 2.0)";
      case TextureOp::Modulate4x:
        return "scaled(" + both + ", 4.0)";
      case TextureOp::Add:
        return "limited(" + one + " + " + two + ")";
      case TextureOp::AddSigned:
        return "limited(" + one + " + " + two + " - 128.0)";
      case TextureOp::AddSigned2x:
        return "limited((" + one + " + " + two + " - 128.0) * 2.0)";
      case TextureOp::Subtract:
        return "limited(" + one + " - " + two + ")";
      case TextureOp::AddSmooth:
        return "limited(" + one + " + product(ONE - " + both + "))";
      case TextureOp::BlendDiffuseAlpha:
      case TextureOp::BlendTextureAlpha:
      case TextureOp::BlendFactorAlpha:
      case TextureOp::BlendCurrentAlpha:
        return "mixed(" + both + ", " + blendAlpha(op) + ")";
      case TextureOp::BlendTextureAlphaPremultiplied:
        return "limited(" + one + " + product(" + two + ", " + (alpha ? "" : "vec3") + "(ONE - texel.a)))";
      case TextureOp::ModulateAlphaAddColor:
        return "limited(" + one + " + product(" + (alpha ? "" : "vec3") + "(" + oneAlpha + "), " + two + "))";
      case TextureOp::ModulateColorAddAlpha:
        return "limited(product(" + both + ") + " + oneAlpha + ")";
      case TextureOp::ModulateInvAlphaAddColor:
        return "limited(product(" + std::string(alpha ? "" : "vec3") + "(ONE - " + oneAlpha + "), " + two + ") + " +
               one + ")";
      case TextureOp::ModulateInvColorAddAlpha:
        return "limited(product(ONE - " + both + ") + " + oneAlpha + ")";
      case TextureOp::MultiplyAdd:
        return "limited(" + zero + " + product(" + both + "))";
      case TextureOp::Lerp:
        return "mixed(" + both + ", " + zero + ")";
      default:
        return one;
    }
  }

  void stage(std::size_t index) {
    const StageKey& s = key_.stages[index];
    const std::string number = std::to_string(index);
    if (s.samples) {
      std::string at = "vec2(0.0)";
      if (key_.pointSprite)
        at = "f_sprite";
      else if (s.coordinates != Coordinates::None)
        at = s.projected ? "f_uv" + number + ".xy / f_uv" + number + ".z" : "f_uv" + number;
      text_ += "  texel = rounded(texture(texture" + number + ", " + at + ") * ONE);\n";
    } else {
      text_ += "  texel = vec4(ONE);\n";
    }
    if (s.colorOp == static_cast<std::uint8_t>(TextureOp::DotProduct3)) {
      text_ += "  current = vec4(clamp(floor((max(dot(" + argument(s.colorArgs[1], false) + " - 128.0, " +
               argument(s.colorArgs[2], false) + " - 128.0), 0.0) * 4.0 + 127.0) / 255.0), 0.0, 255.0));\n";
      return;
    }
    const bool keepsAlpha = s.alphaOp == static_cast<std::uint8_t>(TextureOp::Disable);
    text_ += "  current = vec4(" + operation(s.colorOp, s.colorArgs, false) + ", " +
             (keepsAlpha ? "current.a" : operation(s.alphaOp, s.alphaArgs, true)) + ");\n";
  }

  void fog() {
    if (key_.fogSource == FogSource::None) return;
    std::string factor = "f_fog";
    if (key_.fogSource == FogSource::Table) {
      text_ += "  float distance = 1.0 / gl_FragCoord.w;\n";
      switch (static_cast<device::FogMode>(key_.fogMode)) {
        case device::FogMode::Exp:
          factor = "exp(-max(distance * fog.w, 0.0))";
          break;
        case device::FogMode::Exp2:
          factor = "exp(-distance * fog.w * distance * fog.w)";
          break;
        default:
          factor = "clamp((fog.z - distance) * fog.y, 0.0, 1.0)";
      }
    }
    text_ += "  float clear = rounded(clamp(" + factor + ", 0.0, 1.0) * ONE);\n";
    text_ += "  current.rgb = mixed(current.rgb, rounded(fogColor.rgb * ONE), clear);\n";
  }
  void alphaTest() {
    constexpr const char* kCompare[] = {"", "", "<", "==", "<=", ">", "!=", ">="};
    if (key_.alphaFunction >= 8) return;
    if (key_.alphaFunction <= 1) {
      text_ += "  discard;\n";
      return;
    }
    text_ += std::string("  if (!(floor(current.a * (255.0 / ONE) + 0.5) ") + kCompare[key_.alphaFunction] +
             " pointScale.w)) discard;\n";
  }
  void store() {
    if (key_.redBits != 8) {
      const std::string rounding = key_.dither ? "dithered" : "nearest";
      const auto channel = [&](const char* name, std::uint8_t bits) {
        text_ += std::string("  current.") + name + " = " + rounding + "(current." + name + ", " +
                 std::to_string(bits) + ".0);\n";
      };
      channel("r", key_.redBits);
      channel("g", key_.greenBits);
      channel("b", key_.blueBits);
      if (key_.alphaBits == 1) text_ += "  current.a = current.a >= 128.0 ? 255.0 : 0.0;\n";
    }
    text_ += "  o_color = current / ONE;\n";
  }

  const ShaderKey& key_;
  std::vector<Varying> varyings_;
  bool rounds_;
  std::string text_;
};

}  // namespace

std::string fragmentText(const ShaderKey& key) { return FragmentWriter(key).text(); }

}  // namespace ql::opengl
