#pragma once

#include "Vec.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ql::maker {

/// One line of a description: a command, its plain words and its options (`key=value`, or `key` alone for flags that
/// the command knows).
struct Statement {
  int line = 0;
  std::string command;
  std::vector<std::string> words;
  std::map<std::string, std::string> options;
  bool opensBlock = false;
  std::size_t blockEnd = 0;  ///< index of the statement that closes the block

  /// Number in `words`; throws DescriptionFault when missing or not a number.
  double number(std::size_t index) const;
  Vec3 vector(std::size_t index) const { return {number(index), number(index + 1), number(index + 2)}; }
  const std::string& word(std::size_t index) const;
  bool flag(std::string_view name) const;
  double option(const std::string& key, double fallback) const;
  std::string option(const std::string& key, const std::string& fallback) const;
  /// Comma-separated numbers.
  std::vector<double> list(const std::string& key) const;
  Vec3 vectorOption(const std::string& key, Vec3 fallback) const;
};

/// Cuts a text into statements and pairs up the braces.
std::vector<Statement> readStatements(std::string_view text);

/// A finite number of at most a million, or nothing.
std::optional<double> toNumber(std::string_view text);
/// Comma-separated numbers; throws DescriptionFault with the line.
std::vector<double> numberList(std::string_view text, int line);

}  // namespace ql::maker
