#include "render/scene/ShaderList.h"

#include "platform/host/Files.h"
#include "platform/host/Lines.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ql::render::scene {
namespace {

constexpr std::array<std::string_view, 3> kTextures{"textures", "texturetable", "texturestable"};

/// Reads so many texture lines. @return the fault that ended it
ListFault readTextures(host::Lines& lines, double count, std::vector<ListEntry>& entries) {
  for (double i = 0; i < count; ++i) {
    const std::optional<std::string_view> line = lines.next();
    if (!line) return ListFault::PastEnd;
    const std::size_t separator = line->find('>');
    if (separator == std::string_view::npos) return ListFault::NoSeparator;
    ListEntry& entry = entries.emplace_back();
    entry.texture = {std::string(host::trimmed(line->substr(0, separator))),
                     std::string(host::trimmed(line->substr(separator + 1)))};
  }
  return ListFault::None;
}

}  // namespace

ShaderList parseShaderList(std::string_view text) {
  ShaderList list;
  host::Lines lines(text);
  while (const std::optional<std::string_view> whole = lines.next()) {
    const std::string_view line = host::trimmed(*whole);
    if (line.empty() || line.starts_with("//")) continue;
    const auto [word, argument] = host::cutWord(line);
    const std::string keyword = host::foldCase(word);
    if (std::ranges::find(kTextures, keyword) != kTextures.end()) {
      list.fault = readTextures(lines, host::numberFromText(argument), list.entries);
      if (list.fault != ListFault::None) {
        list.line = lines.number();
        return list;
      }
    } else if (keyword == "shader") {
      ListEntry& entry = list.entries.emplace_back();
      entry.isShader = true;
      std::size_t end = 0;
      entry.shader = {std::string(argument), shaders::parseShaderBody(text, lines.position(), &end)};
      lines.skipTo(end);
    }
  }
  return list;
}

}  // namespace ql::render::scene
