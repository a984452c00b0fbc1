/// @file
/// Text files line by line and word by word.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace ql::host {

/// A text without the white space around it.
std::string_view trimmed(std::string_view text);
/// The first word of a text, and what follows it; both are trimmed.
std::pair<std::string_view, std::string_view> cutWord(std::string_view text);

/// The lines of a text, which end with CR, LF or both.
class Lines {
 public:
  /// @param at where reading begins; beyond the end there are no lines
  explicit Lines(std::string_view text, std::size_t at = 0) : text_(text), at_(std::min(at, text.size())) {}
  /// The next line as it is; nothing at the end.
  std::optional<std::string_view> next();
  /// How many lines have been read.
  std::size_t number() const { return number_; }
  /// The offset just after the line that was read last.
  std::size_t position() const { return at_; }
  /// Goes on at the first line from a later position on.
  void skipTo(std::size_t position) {
    while (at_ < position && next()) {
    }
  }

 private:
  std::string_view text_;
  std::size_t at_, number_ = 0;
};

}  // namespace ql::host
