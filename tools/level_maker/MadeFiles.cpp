#include "MadeFiles.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

namespace ql::maker {

namespace fs = std::filesystem;

std::optional<std::string> readFile(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file) return std::nullopt;
  return text;
}

bool writeFile(const fs::path& path, std::span<const std::uint8_t> bytes) {
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  fs::path temporary = path;
  temporary += ".part";
  {
    std::ofstream file(temporary, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) return false;
  }
  fs::rename(temporary, path, error);
  return !error;
}

bool isSame(const fs::path& path, std::span<const std::uint8_t> bytes, const std::string& shownAs) {
  const auto old = readFile(path);
  const bool same = old && old->size() == bytes.size() &&
                    std::equal(bytes.begin(), bytes.end(), old->begin(),
                               [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); });
  if (!same) std::cerr << shownAs << (old ? " differs\n" : " is missing\n");
  return same;
}

}  // namespace ql::maker
