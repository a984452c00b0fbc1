#include "platform/host/Files.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ql::host {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Bytes of the valid UTF-8 sequence at the start of a text; 0 when there is none (overlong forms, surrogates and
/// values above U+10FFFF included).
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  const unsigned second = byte(1);
  const bool overlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
  const bool surrogate = first == 0xED && second > 0x9F;
  const bool tooLarge = first == 0xF4 && second > 0x8F;
  return overlong || surrogate || tooLarge ? 0 : length;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

/// Windows-1252 0x80 to 0x9F; above, the code page equals Latin-1. Its five unused bytes stay control characters.
constexpr std::array<char16_t, 32> kWindows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void appendUtf8(std::string& out, char16_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | code >> 6);
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | code >> 12);
    out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

}  // namespace

std::string foldCase(std::string_view text) {
  std::string folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), lower);
  return folded;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::string toUtf8(std::string_view text) {
  if (isUtf8(text)) return std::string(text);
  std::string out;
  for (const char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    appendUtf8(out, byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80u] : char16_t{byte});
  }
  return out;
}

double numberFromText(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  // "inf" and "nan" are words, not numbers, in every file that the engine reads.
  if (text.empty() || std::string_view("0123456789.").find(text[0]) == std::string_view::npos) return 0;
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc{}) return 0;
  return negative ? -value : value;
}

}  // namespace ql::host
