/// @file
/// The text in which a level describes its things: blocks in braces of lines `"key" "value"`.
#pragma once

#include "math/Vector.h"

#include <optional>
#include <string_view>

namespace ql::level {

/// A block with its braces, and the text that follows it.
struct EntityBlock {
  std::string_view block, rest;
};

/// The first block of a text: from the first "{" to the next "}". Nothing when there is none.
std::optional<EntityBlock> firstEntity(std::string_view text);
/// The first block that holds exactly `"key" "value"`. Both parts are empty when there is none.
EntityBlock findEntity(std::string_view value, std::string_view key, std::string_view text);
/// The value of a key in a block; empty when the block has no such key.
std::string_view entityValue(std::string_view block, std::string_view key);
/// Three numbers separated by single blanks; missing or unusable parts are 0.
math::Vec3 parseVector(std::string_view text);

}  // namespace ql::level
