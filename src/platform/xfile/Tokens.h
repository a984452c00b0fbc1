/// @file
/// The tokens of X files, from text and from binary data, read one way.
///
/// Commas and semicolons carry no meaning that the template of an object does not give already: both readers skip them.
#pragma once

#include "platform/host/Fault.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ql::xfile {

/// A template's identifier, as its four numbers are written.
using Guid = std::array<std::uint8_t, 16>;

enum class TokenKind : std::uint8_t { End, Name, Text, Number, Identifier, Open, Close, Template, Other };

struct Token {
  TokenKind kind = TokenKind::End;
  std::string_view text;  ///< of a name or a quoted text, as it stands in the file
  Guid guid{};            ///< of an identifier
};

/// Where numbers that are no numbers end: everything that is read from a file is finite.
float finite(float value);

class TextTokens {
 public:
  explicit TextTokens(std::span<const std::byte> bytes);
  Token next();
  /// Numbers where the template has them. @throws host::FileFault BadEncoding when there is something else
  float real();
  std::uint32_t count();
  /// A quoted text, its doubled backslashes halved. @throws host::FileFault BadEncoding
  std::string quoted();
  std::uint64_t offset() const { return static_cast<std::uint64_t>(at_ - begin_); }
  std::uint64_t remaining() const { return static_cast<std::uint64_t>(end_ - at_); }

 private:
  void skipBlanks();
  void startNumber();
  void skipNumberTail();
  Token quotedToken();
  Token identifier();
  const char *begin_, *at_, *end_;
};

class BinaryTokens {
 public:
  /// @param realSize bytes of a real number: 4 or 8
  BinaryTokens(std::span<const std::byte> bytes, std::size_t realSize) : bytes_(bytes), realSize_(realSize) {}
  /// The next token; numbers of a list that were not asked for are passed over.
  Token next();
  float real();
  std::uint32_t count();
  std::string quoted();
  std::uint64_t offset() const { return at_; }
  std::uint64_t remaining() const { return bytes_.size() - at_; }

 private:
  template <class T>
  T take();
  std::string_view takeText();
  void startNumbers();
  std::span<const std::byte> bytes_;
  std::size_t realSize_, at_ = 0;
  std::uint64_t numbersLeft_ = 0;  ///< of the list that stands at at_
  bool reals_ = false;             ///< the list's kind
};

}  // namespace ql::xfile
