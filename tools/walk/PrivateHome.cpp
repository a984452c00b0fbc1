#include "PrivateHome.h"

#include "Failure.h"

#include <cstdlib>
#include <fstream>
#include <system_error>

namespace walk {

PrivateHome::PrivateHome() {
  std::error_code error;
  std::string name = (std::filesystem::temp_directory_path(error) / "ql-walk-XXXXXX").string();
  if (error || !mkdtemp(name.data())) throw Failure(ExitCode::Unreadable, "cannot make a temporary folder");
  folder_ = name;
  setenv("XDG_CONFIG_HOME", name.c_str(), 1);
  setenv("XDG_STATE_HOME", name.c_str(), 1);
}

PrivateHome::~PrivateHome() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::vector<std::string> PrivateHome::logLines() const {
  std::vector<std::string> lines;
  std::ifstream in(folder_ / "Quasarlens8" / "debug8.txt");
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

}  // namespace walk
