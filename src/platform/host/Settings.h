/// @file
/// The per-user settings store: text values by application, section and key.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace ql::host {

/// One INI file, `$XDG_CONFIG_HOME/<application>/<section>.ini`. The copy in memory rules; writing is best effort, so a
/// read-only home only means that nothing outlives the process.
class Settings {
 public:
  Settings(std::string_view application, std::string_view section);
  std::string get(std::string_view key, std::string_view fallback) const;
  void set(std::string_view key, std::string_view value);

 private:
  std::string section_;
  std::filesystem::path path_;  ///< empty when the environment names no home
  std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace ql::host
