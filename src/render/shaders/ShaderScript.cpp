#include "render/shaders/ShaderScript.h"

#include "platform/device/Constants.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

namespace ql::render::shaders {
namespace {

constexpr std::string_view kBlanks = " \t\v\f\r\n";
constexpr std::size_t kMostTokens = 11;  // of a texture coordinate modifier

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string upperCase(std::string_view text) {
  std::string upper(text);
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return upper;
}

/// Cuts a text at its first blank; both parts are trimmed.
std::pair<std::string_view, std::string_view> cutWord(std::string_view text) {
  text = trimmed(text);
  const std::size_t blank = text.find_first_of(kBlanks);
  if (blank == std::string_view::npos) return {text, {}};
  return {text.substr(0, blank), trimmed(text.substr(blank))};
}

/// The number at the start of a text; what no surface could mean is 0.
float number(std::string_view text) {
  constexpr double kLargest = 1e6;
  const double value = host::numberFromText(text);
  return std::fabs(value) <= kLargest ? static_cast<float>(value) : 0.0f;
}

/// The lines of a script, trimmed, without comments and without empty ones.
class Lines {
 public:
  Lines(std::string_view script, std::size_t at) : script_(script), at_(std::min(at, script.size())) {}

  /// The next line that says something; nothing at the end.
  std::optional<std::string_view> next() {
    while (at_ < script_.size()) {
      const std::size_t end = std::min(script_.find_first_of("\r\n", at_), script_.size());
      std::string_view line = script_.substr(at_, end - at_);
      at_ = std::min(end + 1, script_.size());
      if (end < script_.size() && script_[end] == '\r' && at_ < script_.size() && script_[at_] == '\n') ++at_;
      line = trimmed(line);
      // A comment may follow what a line says; slashes inside a name are none.
      for (std::size_t slashes = line.find("//"); slashes != std::string_view::npos;
           slashes = line.find("//", slashes + 1))
        if (slashes == 0 || kBlanks.find(line[slashes - 1]) != std::string_view::npos) {
          line = trimmed(line.substr(0, slashes));
          break;
        }
      if (!line.empty()) return line;
    }
    return std::nullopt;
  }
  std::size_t position() const { return at_; }

 private:
  std::string_view script_;
  std::size_t at_;
};

struct BlendWord {
  std::string_view word;
  device::Blend factor;
};
constexpr BlendWord kSourceWords[] = {{"ONE", device::Blend::One},
                                      {"GL_ONE", device::Blend::One},
                                      {"ZERO", device::Blend::Zero},
                                      {"GL_ZERO", device::Blend::Zero},
                                      {"COLOR", device::Blend::SrcColor},
                                      {"GL_SRC_COLOR", device::Blend::SrcColor},
                                      {"DESTCOLOR", device::Blend::DestColor},
                                      {"GL_DST_COLOR", device::Blend::DestColor},
                                      {"ALPHA", device::Blend::SrcAlpha},
                                      {"GL_SRC_ALPHA", device::Blend::SrcAlpha},
                                      {"INVALPHA", device::Blend::InvSrcAlpha},
                                      {"GL_ONE_MINUS_SRC_ALPHA", device::Blend::InvSrcAlpha}};
constexpr BlendWord kDestinationWords[] = {{"ONE", device::Blend::One},
                                           {"GL_ONE", device::Blend::One},
                                           {"ZERO", device::Blend::Zero},
                                           {"GL_ZERO", device::Blend::Zero},
                                           {"COLOR", device::Blend::DestColor},
                                           {"GL_DST_COLOR", device::Blend::DestColor},
                                           {"SRCCOLOR", device::Blend::SrcColor},
                                           {"ALPHA", device::Blend::SrcAlpha},
                                           {"GL_DST_ALPHA", device::Blend::SrcAlpha},
                                           {"INVALPHA", device::Blend::InvSrcAlpha},
                                           {"GL_ONE_MINUS_SRC_ALPHA", device::Blend::InvSrcAlpha}};

void assignFactor(std::int32_t& factor, std::string_view word, std::span<const BlendWord> words) {
  const auto found = std::ranges::find(words, word, &BlendWord::word);
  if (found != words.end()) factor = static_cast<std::int32_t>(found->factor);
}

void setBlend(ScriptStage& stage, device::Blend source, device::Blend destination) {
  stage.sourceBlend = static_cast<std::int32_t>(source);
  stage.destinationBlend = static_cast<std::int32_t>(destination);
}

void readMap(ScriptStage& stage, std::string_view argument) {
  const std::string upper = upperCase(argument);
  if (upper == "$LIGHTMAP") {
    stage.kind = StageKind::Lightmap;
    stage.flags |= kLightmapStage;
    stage.maps = {std::string(kLightmapName)};
  } else if (upper == "$TEXTURE") {
    stage.maps = {std::string(kTextureName)};
  } else {
    stage.maps = {std::string(argument)};
  }
}

void readAnimation(ScriptStage& stage, std::string_view argument, bool fallBackToJpg) {
  stage.kind = StageKind::Animation;
  stage.flags |= kAnimated;
  stage.fallBackToJpg = fallBackToJpg;
  stage.maps.clear();
  auto [word, rest] = cutWord(argument);
  stage.frequency = number(word);
  while (!rest.empty() && stage.maps.size() < kMostFrames) {
    std::tie(word, rest) = cutWord(rest);
    stage.maps.emplace_back(word);
  }
  stage.frameCount = static_cast<std::int16_t>(stage.maps.size());
}

void readBlend(ScriptStage& stage, std::string_view argument) {
  using enum device::Blend;
  stage.flags |= kBlending;
  const std::string upper = upperCase(argument);
  if (upper == "ADD") setBlend(stage, One, One);
  if (upper == "ALPHA") setBlend(stage, SrcAlpha, InvSrcAlpha);
  if (upper == "LIGHTMAP") setBlend(stage, DestColor, Zero);
  if (upper == "COLOR") setBlend(stage, SrcColor, One);
}

void readBlendFunction(ScriptStage& stage, std::string_view argument) {
  using enum device::Blend;
  stage.flags |= kBlending;
  const std::string upper = upperCase(argument);
  const auto [source, rest] = cutWord(upper);
  if (source == "BLEND") setBlend(stage, One, One);
  if (source == "FILTER") setBlend(stage, DestColor, Zero);
  assignFactor(stage.sourceBlend, source, kSourceWords);
  assignFactor(stage.destinationBlend, cutWord(rest).first, kDestinationWords);
}

void readModifier(ScriptStage& stage, std::string_view argument) {
  stage.flags |= kTexCoordModifier;
  const std::string upper = upperCase(argument);
  std::array<std::string_view, kMostTokens + 2> tokens;  // a number that is missing is 0
  std::size_t count = 0;
  for (auto [word, rest] = cutWord(upper); !word.empty() && count < kMostTokens; std::tie(word, rest) = cutWord(rest))
    tokens[count++] = word;
  for (std::size_t i = 0; i < count; ++i) {
    const float s = number(tokens[i + 1]);
    const float t = number(tokens[i + 2]);
    if (tokens[i] == "SCALE") {
      stage.flags |= kScaleGiven;
      stage.scaleS = s;
      stage.scaleT = t;
    } else if (tokens[i] == "SCROLL") {
      stage.flags |= kScrollGiven;
      stage.scrollS = s;
      stage.scrollT = t;
    }
  }
}

void readStageLine(ScriptStage& stage, std::string_view line) {
  const auto [word, argument] = cutWord(line);
  const std::string keyword = upperCase(word);
  if (keyword == "MAP") readMap(stage, argument);
  if (keyword == "ANIM" || keyword == "ANIMMAP") readAnimation(stage, argument, keyword == "ANIMMAP");
  if (keyword == "DEPTHWRITE") stage.flags |= kDepthWrite;
  if (keyword == "BLEND") readBlend(stage, argument);
  if (keyword == "BLENDFUNC") readBlendFunction(stage, argument);
  if (keyword == "TCMOD") readModifier(stage, argument);
}

}  // namespace

std::vector<ScriptEntry> indexScript(std::string_view script) {
  std::vector<ScriptEntry> entries;
  Lines lines(script, 0);
  int depth = 0;
  while (const auto line = lines.next()) {
    if (line->find('{') != std::string_view::npos)
      ++depth;
    else if (line->find('}') != std::string_view::npos)
      --depth;
    else if (depth == 0)
      entries.push_back({std::string(*line), lines.position()});
  }
  return entries;
}

ScriptShader parseShaderBody(std::string_view script, std::size_t body, std::size_t* end) {
  ScriptShader shader;
  Lines lines(script, body);
  int depth = 0;
  ScriptStage passedOver;
  ScriptStage* stage = &passedOver;
  while (const auto line = lines.next()) {
    if (*line == "{") {
      if (++depth != 2) continue;
      stage = shader.stages.size() < kMostStages ? &shader.stages.emplace_back() : &passedOver;
    } else if (*line == "}") {
      if (--depth <= 0) break;
    } else if (depth == 1) {
      const auto [word, argument] = cutWord(*line);
      if (upperCase(word) == "SURFACEPARM" && upperCase(argument) == "SKY") shader.surfaceFlags = kSky;
    } else if (depth == 2) {
      readStageLine(*stage, *line);
    }
  }
  if (end != nullptr) *end = lines.position();
  return shader;
}

}  // namespace ql::render::shaders
