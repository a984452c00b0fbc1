#include "platform/host/Files.h"
#include "render/TextureTable.h"

#include <initializer_list>
#include <optional>

namespace ql::render {
namespace {

std::optional<std::string> firstExisting(std::initializer_list<std::string> candidates) {
  for (const std::string& candidate : candidates)
    if (host::fileExists(candidate)) return candidate;
  return std::nullopt;
}

/// The existing file for a path as written or with JPG in place of TGA.
std::optional<std::string> withEnding(const std::string& path, const std::string& base) {
  if (auto found = firstExisting({path, base + path, base + "\\" + path})) return found;
  if (path.size() < 3 || !host::equalIgnoringCase(path.substr(path.size() - 3), "TGA")) return std::nullopt;
  const std::string jpg = path.substr(0, path.size() - 3) + "JPG";
  return firstExisting({jpg, base + jpg});
}

}  // namespace

std::string resolveTextureFile(const std::string& path, const std::string& base) {
  if (auto found = withEnding(path, base)) return *found;
  const std::size_t separator = path.find_last_of("/\\");
  if (separator == std::string::npos) return path;
  const std::string bare = path.substr(separator + 1);
  return withEnding(bare, base).value_or(bare);
}

}  // namespace ql::render
