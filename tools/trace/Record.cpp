#include "Commands.h"

#include <cstring>

#include <fmt/format.h>
#include <unistd.h>

namespace ql::trace {

void record(const Options& options) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path walk = fs::read_symlink("/proc/self/exe", error).parent_path() / "ql-walk";
  std::vector<std::string> words{walk.string(), "--trace", options.traces.front().string(), "--no-pictures"};
  words.insert(words.end(), options.walk.begin(), options.walk.end());
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  execv(walk.c_str(), arguments.data());
  throw Failure(ExitCode::Unreadable, fmt::format("cannot run {}: {}", walk.string(), std::strerror(errno)));
}

}  // namespace ql::trace
