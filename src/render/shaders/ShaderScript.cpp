#include "render/shaders/ShaderScript.h"

#include "platform/device/Constants.h"
#include "platform/host/Files.h"
#include "platform/host/Lines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

namespace ql::render::shaders {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";
constexpr std::size_t kMostTokens = 11;  // of a texture coordinate modifier

/// The number at the start of a text; what no surface could mean is 0.
float number(std::string_view text) {
  constexpr double kLargest = 1e6;
  const double value = host::numberFromText(text);
  return std::fabs(value) <= kLargest ? static_cast<float>(value) : 0.0f;
}

/// What a line says, trimmed and without its comment; a comment may follow what a line says, slashes inside a name are
/// none.
std::string_view saidBy(std::string_view line) {
  line = host::trimmed(line);
  for (std::size_t slashes = line.find("//"); slashes != std::string_view::npos; slashes = line.find("//", slashes + 1))
    if (slashes == 0 || kBlanks.find(line[slashes - 1]) != std::string_view::npos)
      return host::trimmed(line.substr(0, slashes));
  return line;
}

/// The next line that says something; nothing at the end.
std::optional<std::string_view> nextSaying(host::Lines& lines) {
  while (const auto line = lines.next())
    if (const std::string_view said = saidBy(*line); !said.empty()) return said;
  return std::nullopt;
}

struct BlendWord {
  std::string_view word;
  device::Blend factor;
};
constexpr BlendWord kSourceWords[] = {{"one", device::Blend::One},
                                      {"gl_one", device::Blend::One},
                                      {"zero", device::Blend::Zero},
                                      {"gl_zero", device::Blend::Zero},
                                      {"color", device::Blend::SrcColor},
                                      {"gl_src_color", device::Blend::SrcColor},
                                      {"destcolor", device::Blend::DestColor},
                                      {"gl_dst_color", device::Blend::DestColor},
                                      {"alpha", device::Blend::SrcAlpha},
                                      {"gl_src_alpha", device::Blend::SrcAlpha},
                                      {"invalpha", device::Blend::InvSrcAlpha},
                                      {"gl_one_minus_src_alpha", device::Blend::InvSrcAlpha}};
constexpr BlendWord kDestinationWords[] = {{"one", device::Blend::One},
                                           {"gl_one", device::Blend::One},
                                           {"zero", device::Blend::Zero},
                                           {"gl_zero", device::Blend::Zero},
                                           {"color", device::Blend::DestColor},
                                           {"gl_dst_color", device::Blend::DestColor},
                                           {"srccolor", device::Blend::SrcColor},
                                           {"alpha", device::Blend::SrcAlpha},
                                           {"gl_dst_alpha", device::Blend::SrcAlpha},
                                           {"invalpha", device::Blend::InvSrcAlpha},
                                           {"gl_one_minus_src_alpha", device::Blend::InvSrcAlpha}};

void assignFactor(std::int32_t& factor, std::string_view word, std::span<const BlendWord> words) {
  const auto found = std::ranges::find(words, word, &BlendWord::word);
  if (found != words.end()) factor = static_cast<std::int32_t>(found->factor);
}

void setBlend(ScriptStage& stage, device::Blend source, device::Blend destination) {
  stage.sourceBlend = static_cast<std::int32_t>(source);
  stage.destinationBlend = static_cast<std::int32_t>(destination);
}

void readMap(ScriptStage& stage, std::string_view argument) {
  const std::string folded = host::foldCase(argument);
  if (folded == kLightmapName) {
    stage.kind = StageKind::Lightmap;
    stage.flags |= kLightmapStage;
    stage.maps = {std::string(kLightmapName)};
  } else if (folded == kTextureName) {
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
  auto [word, rest] = host::cutWord(argument);
  stage.frequency = number(word);
  while (!rest.empty() && stage.maps.size() < kMostFrames) {
    std::tie(word, rest) = host::cutWord(rest);
    stage.maps.emplace_back(word);
  }
  stage.frameCount = static_cast<std::int16_t>(stage.maps.size());
}

void readBlend(ScriptStage& stage, std::string_view argument) {
  using enum device::Blend;
  stage.flags |= kBlending;
  const std::string folded = host::foldCase(argument);
  if (folded == "add") setBlend(stage, One, One);
  if (folded == "alpha") setBlend(stage, SrcAlpha, InvSrcAlpha);
  if (folded == "lightmap") setBlend(stage, DestColor, Zero);
  if (folded == "color") setBlend(stage, SrcColor, One);
}

void readBlendFunction(ScriptStage& stage, std::string_view argument) {
  using enum device::Blend;
  stage.flags |= kBlending;
  const std::string folded = host::foldCase(argument);
  const auto [source, rest] = host::cutWord(folded);
  if (source == "blend") setBlend(stage, One, One);
  if (source == "filter") setBlend(stage, DestColor, Zero);
  assignFactor(stage.sourceBlend, source, kSourceWords);
  assignFactor(stage.destinationBlend, host::cutWord(rest).first, kDestinationWords);
}

void readModifier(ScriptStage& stage, std::string_view argument) {
  stage.flags |= kTexCoordModifier;
  const std::string folded = host::foldCase(argument);
  std::array<std::string_view, kMostTokens + 2> tokens;  // a number that is missing is 0
  std::size_t count = 0;
  for (auto [word, rest] = host::cutWord(folded); !word.empty() && count < kMostTokens;
       std::tie(word, rest) = host::cutWord(rest))
    tokens[count++] = word;
  for (std::size_t i = 0; i < count; ++i) {
    const float s = number(tokens[i + 1]);
    const float t = number(tokens[i + 2]);
    if (tokens[i] == "scale") {
      stage.flags |= kScaleGiven;
      stage.scaleS = s;
      stage.scaleT = t;
    } else if (tokens[i] == "scroll") {
      stage.flags |= kScrollGiven;
      stage.scrollS = s;
      stage.scrollT = t;
    }
  }
}

void readStageLine(ScriptStage& stage, std::string_view line) {
  const auto [word, argument] = host::cutWord(line);
  const std::string keyword = host::foldCase(word);
  if (keyword == "map") readMap(stage, argument);
  if (keyword == "anim" || keyword == "animmap") readAnimation(stage, argument, keyword == "animmap");
  if (keyword == "depthwrite") stage.flags |= kDepthWrite;
  if (keyword == "blend") readBlend(stage, argument);
  if (keyword == "blendfunc") readBlendFunction(stage, argument);
  if (keyword == "tcmod") readModifier(stage, argument);
}

}  // namespace

std::vector<ScriptEntry> indexScript(std::string_view script) {
  std::vector<ScriptEntry> entries;
  host::Lines lines(script);
  int depth = 0;
  while (const auto line = nextSaying(lines)) {
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
  host::Lines lines(script, body);
  int depth = 0;
  ScriptStage passedOver;
  ScriptStage* stage = &passedOver;
  while (const auto line = nextSaying(lines)) {
    if (*line == "{") {
      if (++depth != 2) continue;
      stage = shader.stages.size() < kMostStages ? &shader.stages.emplace_back() : &passedOver;
    } else if (*line == "}") {
      if (--depth <= 0) break;
    } else if (depth == 1) {
      const auto [word, argument] = host::cutWord(*line);
      if (host::foldCase(word) == "surfaceparm" && host::foldCase(argument) == "sky") shader.surfaceFlags = kSky;
    } else if (depth == 2) {
      readStageLine(*stage, *line);
    }
  }
  if (end != nullptr) *end = lines.position();
  return shader;
}

}  // namespace ql::render::shaders
