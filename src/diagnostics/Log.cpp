#include "diagnostics/Log.h"

#include "diagnostics/LogLines.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <utility>

namespace ql::diagnostics {
namespace {

constexpr std::string_view kRule = "###################################################";
constexpr std::string_view kTitle = "#           Quasarlens 8 Log file                 #";
constexpr std::string_view kLineEnd = "\r\n";

/// Month-day-year and hour:minute:second, local time.
std::string now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%m-%d-%Y %H:%M:%S", &local)};
}

/// Writes text to the file and closes it, so that an abrupt end of the process loses nothing.
void put(const std::filesystem::path& path, std::ios::openmode mode, const std::string& text) {
  std::ofstream file(path, std::ios::binary | mode);
  if (!file) {
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    file.open(path, std::ios::binary | mode);
  }
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace

Log::Log(std::filesystem::path file) : file_(std::move(file)) {}

void Log::start() {
  std::string banner;
  for (const std::string& line : {std::string(kRule), std::string(kTitle), std::string(kRule), std::string(),
                                  "    Engine started at " + now(), std::string()})
    banner.append(line).append(kLineEnd);
  put(file_, std::ios::trunc, banner);
}

void Log::write(std::string_view message) {
  put(file_, std::ios::app, now().append(" | ").append(message).append(kLineEnd));
}

void writeLines(const Log& log, std::span<const std::string> messages) {
  if (messages.empty()) return;
  const std::string time = now() + " | ";
  std::string text;
  for (const std::string& message : messages) text.append(time).append(message).append(kLineEnd);
  put(log.path(), std::ios::app, text);
}

void Log::writeError(std::string_view message, std::string_view description, long number) {
  write(message);
  write(std::string("Error description :").append(description).append(" # Number ").append(std::to_string(number)));
}

std::filesystem::path Log::defaultPath() {
  const char* state = std::getenv("XDG_STATE_HOME");
  const char* home = std::getenv("HOME");
  std::filesystem::path folder;
  if (state != nullptr && state[0] == '/') {
    folder = state;
  } else if (home != nullptr && home[0] != '\0') {
    folder = std::filesystem::path(home) / ".local" / "state";
  } else {
    folder = std::filesystem::temp_directory_path();
  }
  return folder / "Quasarlens8" / "debug8.txt";
}

}  // namespace ql::diagnostics
