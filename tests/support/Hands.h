/// @file
/// A user's hands on an X server, through the program xdotool.
#pragma once

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

namespace ql::test {

class Hands {
 public:
  /// Whether there is an X server to act on and the program to do it with.
  static bool present() {
    const char* display = std::getenv("DISPLAY");
    return display != nullptr && *display != '\0' && run("true", "getmouselocation");
  }
  /// Waits for a visible window. @param title a part of its title, a regular expression
  explicit Hands(const std::string& title)
      : window_("$(timeout 20 xdotool search --sync --onlyvisible --name '" + title + "' | tail -1)") {}

  /// Presses and releases the mouse at a place of the window; long enough to be a user's click.
  void click(int x, int y) const {
    act("mousemove --window %w " + at(x, y) + " sleep 0.1 mousedown 1 sleep 0.2 mouseup 1");
  }
  void move(int x, int y) const { act("mousemove --window %w " + at(x, y)); }
  /// Presses keys one after another. @param names as xdotool has them: "Tab Return shift+Tab"
  void keys(const std::string& names) const { act("key --delay 60 " + names); }
  void resize(int width, int height) const { act("windowsize --sync %w " + at(width, height)); }
  /// Runs a command that names the window as %w. @return whether it succeeded
  bool act(std::string command) const {
    for (std::size_t i; (i = command.find("%w")) != std::string::npos;) command.replace(i, 2, window_);
    const bool done = run("sleep 0.15", command);
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    return done;
  }

 private:
  static std::string at(int x, int y) { return std::to_string(x) + " " + std::to_string(y); }
  static bool run(const std::string& before, const std::string& command) {
    return std::system((before + "; xdotool " + command + " >/dev/null 2>&1").c_str()) == 0;
  }
  std::string window_;  ///< a shell expression for its number
};

/// A user beside the running test: acts once the window is there. The destructor waits until all is done.
class User {
 public:
  User(std::string title, std::function<void(const Hands&)> script)
      : thread_([title = std::move(title), script = std::move(script)] {
          script(Hands(title));
          // A form that is still there is not what the test expects: it must not wait for ever.
          const std::string left = "xdotool search --onlyvisible --name '" + title + "' >/dev/null 2>&1";
          if (std::system(("sleep 0.5; " + left + " && xdotool key Escape Escape").c_str()) != 0) return;
        }) {}

 private:
  std::jthread thread_;
};

}  // namespace ql::test
