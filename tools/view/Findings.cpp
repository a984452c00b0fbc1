#include "Findings.h"

#include <algorithm>
#include <string_view>

namespace view {
namespace {

constexpr std::string_view kTexture = "TEXTURE FACTORY : ERROR ", kNotFound = " texture NOT FOUND ! ";
constexpr std::string_view kErrors[] = {
    "Error in 3Ds loader : ", "BSP TREE : Error during loading : ", "This file isn't a good Quasarlens Format file."};

void addOnce(std::vector<std::string>& list, std::string text) {
  if (std::find(list.begin(), list.end(), text) == list.end()) list.push_back(std::move(text));
}

}  // namespace

Findings findingsOf(const std::vector<std::string>& logLines) {
  Findings found;
  for (const std::string& line : logLines) {
    if (const std::size_t at = line.find(kTexture); at != std::string::npos) {
      std::string text = line.substr(at + kTexture.size());
      if (text.ends_with(kNotFound)) text.resize(text.size() - kNotFound.size());
      addOnce(found.missing, std::move(text));
    }
    for (const std::string_view error : kErrors) {
      const std::size_t at = line.find(error);
      if (at == std::string::npos) continue;
      const std::string text = line.substr(at);
      addOnce(found.errors, text);
      // Number 6: the file holds more than a mesh can.
      found.code = text.find(" : 6 ") != std::string::npos ? walk::ExitCode::Limit : walk::ExitCode::Malformed;
    }
  }
  return found;
}

}  // namespace view
