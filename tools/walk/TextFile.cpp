#include "TextFile.h"

#include "Failure.h"

#include <fstream>

#include <fmt/format.h>

namespace walk {

void writeText(const std::string& file, const std::string& text) {
  if (file == "-") {
    fmt::print("{}", text);
    return;
  }
  std::ofstream out(file, std::ios::binary);
  out << text;
  if (!out.flush()) throw Failure(ExitCode::Unreadable, fmt::format("cannot write {}", file));
}

}  // namespace walk
