#include "platform/host/Lines.h"

namespace ql::host {

namespace {
constexpr std::string_view kBlanks = " \t\v\f\r\n";
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::pair<std::string_view, std::string_view> cutWord(std::string_view text) {
  text = trimmed(text);
  const std::size_t blank = std::min(text.find_first_of(kBlanks), text.size());
  return {text.substr(0, blank), trimmed(text.substr(blank))};
}

std::optional<std::string_view> Lines::next() {
  if (at_ >= text_.size()) return std::nullopt;
  const std::size_t end = std::min(text_.find_first_of("\r\n", at_), text_.size());
  const std::string_view line = text_.substr(at_, end - at_);
  at_ = std::min(end + (text_.substr(end).starts_with("\r\n") ? 2 : 1), text_.size());
  ++number_;
  return line;
}

}  // namespace ql::host
