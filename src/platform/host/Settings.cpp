#include "platform/host/Settings.h"

#include "platform/host/Files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace ql::host {
namespace {

/// The user's folder for settings; empty when the environment names none.
std::filesystem::path settingsFolder() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && config[0] == '/') return config;
  const char* home = std::getenv("HOME");
  if (home != nullptr && home[0] != '\0') return std::filesystem::path(home) / ".config";
  return {};
}

/// Line ends, the equals sign of keys and what would open a section or a comment are escaped, so that any text
/// survives.
std::string escaped(std::string_view text, bool key) {
  std::string out;
  for (const char c : text) {
    if (c == '\n' || c == '\r') {
      out += c == '\n' ? "\\n" : "\\r";
    } else {
      if (c == '\\' || (key && (c == '=' || (out.empty() && (c == '[' || c == ';'))))) out += '\\';
      out += c;
    }
  }
  return out;
}

/// The text up to an unescaped stop character; moves the line past that character.
std::string unescapeUpTo(std::string_view& line, char stop) {
  std::string out;
  while (!line.empty() && line.front() != stop) {
    char c = line.front();
    line.remove_prefix(1);
    if (c == '\\' && !line.empty()) {
      c = line.front() == 'n' ? '\n' : line.front() == 'r' ? '\r' : line.front();
      line.remove_prefix(1);
    }
    out += c;
  }
  if (!line.empty()) line.remove_prefix(1);
  return out;
}

}  // namespace

Settings::Settings(std::string_view application, std::string_view section) : section_(section) {
  const std::filesystem::path folder = settingsFolder();
  if (folder.empty()) return;
  path_ = folder / application / (section_ + ".ini");
  std::ifstream file(path_);
  std::string text;
  while (std::getline(file, text)) {
    std::string_view line = text;
    if (line.empty() || line.front() == '[' || line.front() == ';') continue;
    if (line.ends_with('\r')) line.remove_suffix(1);
    std::string key = unescapeUpTo(line, '=');
    values_[std::move(key)] = unescapeUpTo(line, '\n');
  }
}

std::string Settings::get(std::string_view key, std::string_view fallback) const {
  const auto found = values_.find(key);
  return std::string(found == values_.end() ? fallback : std::string_view(found->second));
}

void Settings::set(std::string_view key, std::string_view value) {
  values_.insert_or_assign(std::string(key), std::string(value));
  if (path_.empty()) return;
  std::string text = "[" + section_ + "]\n";
  for (const auto& [name, stored] : values_) text += escaped(name, true) + "=" + escaped(stored, false) + "\n";
  try {
    std::error_code error;
    std::filesystem::create_directories(path_.parent_path(), error);
    replaceFile(path_, std::as_bytes(std::span(text)));
  } catch (const FileFault&) {
    // A home that cannot be written: the value lives until the process ends.
  }
}

}  // namespace ql::host
