#include "level/EntityText.h"

#include "platform/host/Files.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace ql::level {
namespace {

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace

std::optional<EntityBlock> firstEntity(std::string_view text) {
  const std::size_t begin = std::min(text.find('{'), text.size());
  const std::size_t end = text.find('}', begin);
  if (end == std::string_view::npos) return std::nullopt;
  return EntityBlock{text.substr(begin, end + 1 - begin), text.substr(end + 1)};
}

EntityBlock findEntity(std::string_view value, std::string_view key, std::string_view text) {
  const std::string pair = quoted(key) + ' ' + quoted(value);
  while (const auto entity = firstEntity(text)) {
    if (entity->block.find(pair) != std::string_view::npos) return *entity;
    text = entity->rest;
  }
  return {};
}

std::string_view entityValue(std::string_view block, std::string_view key) {
  const std::size_t found = block.find(quoted(key));
  if (found == std::string_view::npos) return {};
  // Past the key's two quotes and the blank that separates it from its value.
  const std::size_t open = block.find('"', found + key.size() + 3);
  if (open == std::string_view::npos) return {};
  const std::size_t close = block.find('"', open + 1);
  if (close == std::string_view::npos) return {};
  return block.substr(open + 1, close - open - 1);
}

math::Vec3 parseVector(std::string_view text) {
  const auto next = [&text] {
    const std::size_t end = std::min(text.find(' '), text.size());
    const double number = host::numberFromText(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    return std::abs(number) <= std::numeric_limits<float>::max() ? static_cast<float>(number) : 0.0f;
  };
  const float x = next(), y = next(), z = next();
  return {x, y, z};
}

}  // namespace ql::level
