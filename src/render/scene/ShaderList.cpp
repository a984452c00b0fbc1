#include "render/scene/ShaderList.h"

#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ql::render::scene {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";
constexpr std::array<std::string_view, 3> kTextures{"textures", "texturetable", "texturestable"};

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The lines of a text, one by one.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text), rest_(text) {}
  std::optional<std::string_view> next() {
    if (rest_.empty()) return std::nullopt;
    const std::size_t end = std::min(rest_.find_first_of("\r\n"), rest_.size());
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end);
    if (rest_.starts_with("\r\n"))
      rest_.remove_prefix(2);
    else if (!rest_.empty())
      rest_.remove_prefix(1);
    ++number_;
    return line;
  }
  std::size_t number() const { return number_; }
  std::size_t position() const { return text_.size() - rest_.size(); }
  /// Goes on at a later position.
  void skipTo(std::size_t position) {
    while (this->position() < position && next()) {
    }
  }

 private:
  std::string_view text_, rest_;
  std::size_t number_ = 0;
};

/// Reads so many texture lines. @return the fault that ended it
ListFault readTextures(Lines& lines, double count, std::vector<ListEntry>& entries) {
  for (double i = 0; i < count; ++i) {
    const std::optional<std::string_view> line = lines.next();
    if (!line) return ListFault::PastEnd;
    const std::size_t separator = line->find('>');
    if (separator == std::string_view::npos) return ListFault::NoSeparator;
    ListEntry& entry = entries.emplace_back();
    entry.texture = {std::string(trimmed(line->substr(0, separator))),
                     std::string(trimmed(line->substr(separator + 1)))};
  }
  return ListFault::None;
}

}  // namespace

ShaderList parseShaderList(std::string_view text) {
  ShaderList list;
  Lines lines(text);
  while (const std::optional<std::string_view> whole = lines.next()) {
    const std::string_view line = trimmed(*whole);
    if (line.empty() || line.starts_with("//")) continue;
    const std::size_t blank = std::min(line.find_first_of(kBlanks), line.size());
    const std::string keyword = host::foldCase(line.substr(0, blank));
    const std::string_view argument = trimmed(line.substr(blank));
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
