/// @file
/// Folders of file names as hosts write them.
#pragma once

#include <string>
#include <string_view>

namespace ql::mesh {

/// The text up to and including the last separator; "" without one.
inline std::string folderOf(std::string_view fileName) {
  const std::size_t last = fileName.find_last_of("\\/");
  return std::string(fileName.substr(0, last == std::string_view::npos ? 0 : last + 1));
}

}  // namespace ql::mesh
