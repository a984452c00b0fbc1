#pragma once

#include "Level.h"

#include <stdexcept>
#include <string_view>

namespace ql::maker {

/// What is wrong in a description file, and in which line.
class DescriptionFault : public std::runtime_error {
 public:
  DescriptionFault(int line, const std::string& what)
      : std::runtime_error("line " + std::to_string(line) + ": " + what), line_(line) {}
  int line() const { return line_; }

 private:
  int line_;
};

/// Reads a level's description. The language is explained at the top of assets/source/court.level.
/// @throws DescriptionFault
Level parseDescription(std::string_view text);

}  // namespace ql::maker
