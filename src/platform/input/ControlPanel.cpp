#include "platform/input/ControlPanel.h"

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ql::input {
namespace {

struct Panel {
  std::string_view desktop, program, argument;
};
constexpr Panel kPanels[] = {
    {"GNOME", "gnome-control-center", "mouse"}, {"KDE", "systemsettings", "kcm_mouse"},
    {"XFCE", "xfce4-mouse-settings", ""},       {"Cinnamon", "cinnamon-settings", "mouse"},
    {"MATE", "mate-mouse-properties", ""},      {"LXDE", "lxinput", ""},
};

std::string findProgram(std::string_view name) {
  const char* path = std::getenv("PATH");
  std::string_view rest = path == nullptr ? "" : path;
  while (!rest.empty()) {
    const std::size_t end = rest.find(':');
    std::string file(rest.substr(0, end));
    file.append("/").append(name);
    if (access(file.c_str(), X_OK) == 0) return file;
    rest = end == std::string_view::npos ? "" : rest.substr(end + 1);
  }
  return {};
}

/// The shell leaves it to itself, so that nobody has to wait for it.
bool start(const std::string& program, std::string_view argument) {
  std::string script = "\"$0\" $1 >/dev/null 2>&1 &", own = program, option(argument), shell = "sh", command = "-c";
  std::array<char*, 6> arguments{shell.data(), command.data(), script.data(), own.data(), option.data(), nullptr};
  pid_t child = 0;
  if (posix_spawn(&child, "/bin/sh", nullptr, nullptr, arguments.data(), environ) != 0) return false;
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

bool openControlPanel() {
  const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
  const std::string_view current = desktop == nullptr ? "" : desktop;
  for (const bool anyDesktop : {false, true})
    for (const Panel& panel : kPanels) {
      if (!anyDesktop && current.find(panel.desktop) == std::string_view::npos) continue;
      if (const std::string program = findProgram(panel.program); !program.empty())
        return start(program, panel.argument);
    }
  return false;
}

}  // namespace ql::input
