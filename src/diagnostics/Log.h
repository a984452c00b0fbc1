/// @file
/// The diagnostics log: one text file, each line on disk when the call returns.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace ql::diagnostics {

/// Appends lines `month-day-year hour:minute:second | message` ending in CR LF. It never fails its caller: what cannot
/// be written is lost silently.
class Log {
 public:
  /// @param file where to write; its folder is made on the first write. Default: defaultPath().
  explicit Log(std::filesystem::path file = defaultPath());

  /// Replaces the file by the banner of six lines.
  void start();
  /// Appends one line. Messages are written unchanged.
  void write(std::string_view message);
  /// Appends the two lines of a caught error: message, then "Error description :" + description + " # Number " +
  /// number.
  void writeError(std::string_view message, std::string_view description, long number);

  const std::filesystem::path& path() const { return file_; }
  /// `$XDG_STATE_HOME/Quasarlens8/debug8.txt`, else below `~/.local/state`.
  static std::filesystem::path defaultPath();

 private:
  std::filesystem::path file_;
};

}  // namespace ql::diagnostics
