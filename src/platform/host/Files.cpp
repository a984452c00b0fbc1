#include "platform/host/Files.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <fstream>
#include <system_error>

#include <unistd.h>

namespace ql::host {
namespace {

namespace fs = std::filesystem;

enum class Kind { File, Folder };

bool isKind(const fs::path& path, Kind kind) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  return kind == Kind::File ? fs::is_regular_file(status) : fs::is_directory(status);
}

/// A name with this system's separators and without its drive; empty when it cannot be a name here.
std::string nativeName(std::string_view name) {
  // A NUL would end the name early for the system, which then opens another file than the one that was checked.
  if (name.find('\0') != std::string_view::npos) return {};
  if (name.size() >= 2 && name[1] == ':' && std::isalpha(static_cast<unsigned char>(name[0]))) name.remove_prefix(2);
  std::string native(name);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

/// Entries of a folder whose names equal the component but for letter case, in name order.
std::vector<std::string> namesLike(const fs::path& folder, const std::string& component) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::string found = entry->path().filename().string();
    if (found != component && equalIgnoringCase(found, component)) names.push_back(std::move(found));
  }
  std::sort(names.begin(), names.end());
  return names;
}

using Components = std::span<const std::string>;

/// Follows the components from a folder, each as written first, then in any other letter case. Where two folders differ
/// only in case, both are searched.
std::optional<fs::path> follow(const fs::path& folder, Components components, Kind kind) {
  if (components.empty()) return isKind(folder, kind) ? std::optional(folder) : std::nullopt;
  const auto step = [&](const std::string& component) -> std::optional<fs::path> {
    const fs::path next = folder / component;
    if (!isKind(next, components.size() == 1 ? kind : Kind::Folder)) return std::nullopt;
    return follow(next, components.subspan(1), kind);
  };
  if (auto found = step(components[0])) return found;
  for (const std::string& name : namesLike(folder, components[0]))
    if (auto found = step(name)) return found;
  return std::nullopt;
}

std::vector<std::string> componentsOf(std::string_view native) {
  std::vector<std::string> components;
  while (!native.empty()) {
    const std::size_t end = std::min(native.find('/'), native.size());
    if (end > 0) components.emplace_back(native.substr(0, end));
    native.remove_prefix(std::min(end + 1, native.size()));
  }
  return components;
}

std::optional<fs::path> find(std::string_view name, Kind kind) {
  const std::string native = nativeName(name);
  if (native.empty()) return std::nullopt;
  if (isKind(native, kind)) return fs::path(native);
  if (kind == Kind::File && native.back() == '/') return std::nullopt;
  // Names with accents stand in data files in their old code page and on disk in UTF-8.
  const std::vector<std::string> components = componentsOf(toUtf8(native));
  return follow(native.front() == '/' ? fs::path("/") : fs::path(), components, kind);
}

/// A name for a temporary beside a file, which no other thread or process uses at the same time.
fs::path temporaryBeside(const fs::path& path) {
  static std::atomic<unsigned> counter{0};
  fs::path temporary = path;
  std::string name(".");
  name.append(path.filename().string()).append(".").append(std::to_string(::getpid()));
  name.append(".").append(std::to_string(counter++)).append(".tmp");
  temporary.replace_filename(name);
  return temporary;
}

}  // namespace

std::optional<fs::path> findFile(std::string_view name) { return find(name, Kind::File); }
std::optional<fs::path> findFolder(std::string_view name) { return find(name, Kind::Folder); }

bool fileExists(std::string_view name) {
  const std::optional<fs::path> path = findFile(name);
  return path && ::access(path->c_str(), R_OK) == 0;
}

std::vector<std::byte> readFile(std::string_view name, std::uint64_t limit) {
  const std::optional<fs::path> path = findFile(name);
  if (!path) throw FileFault(Fault::Missing, std::string(name));
  std::error_code error;
  const std::uint64_t size = fs::file_size(*path, error);
  std::ifstream file(*path, std::ios::binary);
  if (error || !file) throw FileFault(Fault::Unreadable, std::string(name));
  if (size > limit) throw FileFault(Fault::TooLarge, std::string(name), 0, size, limit);
  std::vector<std::byte> bytes(size);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  if (file.bad()) throw FileFault(Fault::Unreadable, std::string(name));
  bytes.resize(static_cast<std::size_t>(file.gcount()));  // shorter when another process cut the file meanwhile
  return bytes;
}

fs::path pathForWriting(std::string_view name) {
  if (auto existing = findFile(name)) return *existing;
  if (auto existing = findFolder(name)) return *existing;  // a name is taken by a folder in any letter case, too
  const std::string native = nativeName(name);
  const std::size_t slash = native.rfind('/');
  if (slash == std::string::npos) return native;
  const std::string_view folder = std::string_view(native).substr(0, slash + 1);
  if (auto existing = findFolder(folder)) return *existing / native.substr(slash + 1);
  return native;
}

void writeFile(std::string_view name, std::span<const std::byte> bytes) {
  const fs::path path = pathForWriting(name);
  if (!path.has_filename()) throw FileFault(Fault::Unreadable, std::string(name));
  replaceFile(path, bytes);
}

void replaceFile(const fs::path& given, std::span<const std::byte> bytes) {
  std::error_code error;
  // A link stays a link: the file that it names is replaced.
  fs::path path = fs::is_symlink(given, error) ? fs::canonical(given, error) : given;
  if (error) path = given;
  if (path.has_parent_path() && !fs::is_directory(path.parent_path(), error))
    throw FileFault(Fault::FolderMissing, given.string());
  const bool exists = fs::exists(path, error);
  if (exists && (!fs::is_regular_file(path, error) || ::access(path.c_str(), W_OK) != 0))
    throw FileFault(Fault::Unreadable, given.string());

  const fs::path temporary = temporaryBeside(path);
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  bool done = !file.fail();
  if (done && exists) fs::permissions(temporary, fs::status(path, error).permissions(), error);
  if (done) {
    fs::rename(temporary, path, error);
    done = !error;
  }
  if (!done) {
    fs::remove(temporary, error);
    throw FileFault(Fault::Unreadable, given.string());
  }
}

}  // namespace ql::host
