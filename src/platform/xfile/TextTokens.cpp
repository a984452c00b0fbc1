#include "platform/xfile/Tokens.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace ql::xfile {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == ';' || c == ','; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
/// What a name goes on with: exporters put all but the format's own characters into names.
bool inName(char c) { return !isBlank(c) && c != '{' && c != '}' && c != '"' && c != '<' && c != '\0'; }

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

float finite(float value) { return std::isfinite(value) ? value : 0.0F; }

TextTokens::TextTokens(std::span<const std::byte> bytes)
    : begin_(reinterpret_cast<const char*>(bytes.data())), at_(begin_), end_(begin_ + bytes.size()) {}

void TextTokens::skipBlanks() {
  for (; at_ != end_; ++at_) {
    const bool comment = *at_ == '#' || (*at_ == '/' && end_ - at_ > 1 && at_[1] == '/');
    if (comment) {
      while (at_ != end_ && *at_ != '\n' && *at_ != '\r') ++at_;
      if (at_ == end_) return;
    } else if (!isBlank(*at_)) {
      return;
    }
  }
}

/// Exporters print what is no number as "1.#IND00" or "-1.#QNAN0".
void TextTokens::skipNumberTail() {
  if (at_ == end_ || *at_ != '#') return;
  while (at_ != end_ && (isLetter(*at_) || isDigit(*at_) || *at_ == '#')) ++at_;
}

void TextTokens::startNumber() {
  skipBlanks();
  if (at_ != end_ && *at_ == '<') {  // an object's own identifier stands before its numbers
    identifier();
    skipBlanks();
  }
  if (at_ != end_ && *at_ == '+') ++at_;
}

float TextTokens::real() {
  startNumber();
  float value = 0;
  const auto [next, error] = std::from_chars(at_, end_, value);
  if (next == at_) throw host::FileFault(host::Fault::BadEncoding, "number", offset());
  at_ = next;
  if (at_ != end_ && *at_ == '#') {
    skipNumberTail();
    return 0;
  }
  return error == std::errc() ? finite(value) : 0.0F;
}

std::uint32_t TextTokens::count() {
  startNumber();
  std::uint32_t value = 0;
  const auto [next, error] = std::from_chars(at_, end_, value);
  if (next == at_) throw host::FileFault(host::Fault::BadEncoding, "whole number", offset());
  at_ = next;
  return error == std::errc() ? value : std::numeric_limits<std::uint32_t>::max();
}

Token TextTokens::quotedToken() {
  const char* start = ++at_;
  while (at_ != end_ && *at_ != '"') ++at_;
  if (at_ == end_) throw host::FileFault(host::Fault::Truncated, "quoted text", offset(), 1, offset());
  return {TokenKind::Text, {start, at_++}, {}};
}

std::string TextTokens::quoted() {
  skipBlanks();
  if (at_ == end_ || *at_ != '"') throw host::FileFault(host::Fault::BadEncoding, "quoted text", offset());
  const std::string_view written = quotedToken().text;
  std::string out;
  for (std::size_t i = 0; i < written.size(); ++i) {
    out += written[i];
    if (written[i] == '\\' && i + 1 < written.size() && written[i + 1] == '\\') ++i;
  }
  return out;
}

/// <3D82AB44-62DA-11cf-AB39-0020AF71E433>, which holds a 32-bit number, two 16-bit numbers and eight bytes.
Token TextTokens::identifier() {
  Token token{TokenKind::Identifier, {}, {}};
  std::array<std::uint8_t, 16> bytes{};
  std::size_t digits = 0;
  for (++at_; at_ != end_ && *at_ != '>'; ++at_) {
    const int value = hexValue(*at_);
    if (value < 0 || digits == 32) continue;
    bytes[digits / 2] = static_cast<std::uint8_t>(bytes[digits / 2] << 4 | value);
    ++digits;
  }
  if (at_ == end_) throw host::FileFault(host::Fault::Truncated, "identifier", offset(), 1, offset());
  ++at_;
  constexpr std::array<std::uint8_t, 16> kOrder{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  for (std::size_t i = 0; i < kOrder.size(); ++i) token.guid[i] = bytes[kOrder[i]];
  return token;
}

Token TextTokens::next() {
  skipBlanks();
  if (at_ == end_ || *at_ == '\0') return {};
  const char first = *at_;
  if (first == '{' || first == '}') {
    ++at_;
    return {first == '{' ? TokenKind::Open : TokenKind::Close, {}, {}};
  }
  if (first == '"') return quotedToken();
  if (first == '<') return identifier();
  const char* start = at_;
  while (at_ != end_ && inName(*at_)) ++at_;
  if (at_ == start) ++at_;
  const std::string_view word(start, at_);
  if (isDigit(first) || first == '-' || first == '+' || first == '.') return {TokenKind::Number, word, {}};
  if (word == "template") return {TokenKind::Template, {}, {}};
  return {TokenKind::Name, word, {}};
}

}  // namespace ql::xfile
