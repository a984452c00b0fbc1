/// @file
/// A folder of a test's own, current while the test runs.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>

#include <unistd.h>

namespace ql::test {

/// Makes an empty folder and makes it current; afterwards the old folder is current again and this one is gone.
class TemporaryFolder {
 public:
  TemporaryFolder() : before_(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "ql-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
    std::filesystem::current_path(path_);
  }
  ~TemporaryFolder() {
    std::error_code error;
    std::filesystem::current_path(before_, error);
    std::filesystem::remove_all(path_, error);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path before_, path_;
};

/// Writes a file, with the folders above it.
inline void put(const std::filesystem::path& path, const std::string& text) {
  if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}
/// The whole of a file.
inline std::string contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}
inline std::span<const std::byte> bytesOf(const std::string& text) { return std::as_bytes(std::span(text)); }

}  // namespace ql::test
