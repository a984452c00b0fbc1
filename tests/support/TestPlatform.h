/// @file
/// A machine for tests: a display that shows nothing, a clock that is set by hand, a log and settings in a folder of
/// its own that goes away with it. Programs that include this link the modules engine and platform_recording.
#pragma once

#include "engine/EngineContext.h"
#include "platform/recording/Recorder.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace ql::test {

/// A folder that is removed with everything in it.
class TempFolder {
 public:
  TempFolder() {
    static std::atomic<int> count{0};
    path_ = std::filesystem::temp_directory_path() /
            ("ql-test-" + std::to_string(::getpid()) + "-" + std::to_string(count++));
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

struct MachineWindow : device::Window {
  Size size{640, 480};
  std::string title;
  bool fullScreen = false, closing = false;
  int shown = 0;

  Size clientSize() const override { return size; }
  bool visible() const override { return false; }
  void show(const device::Picture&) override { ++shown; }
  void pump() override {}
  void setTitle(const std::string& text) override { title = text; }
  bool closeRequested() const override { return closing; }
  void setMode(bool full, Size wanted) override {
    fullScreen = full;
    size = wanted;
  }
};

/// One adapter, a desktop of 1024 x 768 in format 22. Windows of the host are those in hostWindows.
struct MachineDisplay : device::Display {
  std::map<std::intptr_t, std::shared_ptr<MachineWindow>> hostWindows;
  std::vector<std::shared_ptr<MachineWindow>> ownWindows;
  std::vector<std::pair<std::string, std::string>> messages;  ///< title and text of each message box
  int pumped = 0;

  std::uint32_t adapterCount() const override { return 1; }
  std::string adapterName(std::uint32_t) const override { return "Test adapter"; }
  std::vector<device::DisplayMode> modes(std::uint32_t) const override {
    return {{640, 480, 60, 22}, {640, 480, 60, 23}, {1024, 768, 60, 22}, {1024, 768, 60, 23}};
  }
  device::DisplayMode desktopMode(std::uint32_t) const override { return {1024, 768, 60, 22}; }
  std::shared_ptr<device::Window> createWindow() override {
    return ownWindows.emplace_back(std::make_shared<MachineWindow>());
  }
  std::shared_ptr<device::Window> adoptWindow(std::intptr_t handle) override {
    const auto found = hostWindows.find(handle);
    return found == hostWindows.end() ? nullptr : found->second;
  }
  void pump() override { ++pumped; }
  void messageBox(const std::string& title, const std::string& text) override { messages.emplace_back(title, text); }
};

/// Ticks that only a test moves; like the system's they start at 10,000.
struct TestClock {
  std::uint32_t now = 10000;
  std::uint32_t stepPerRead = 0;  ///< added after each reading
  std::uint32_t read() { return std::exchange(now, now + stepPerRead); }
};

/// The machine and everything on it that a test looks at.
struct TestMachine {
  std::shared_ptr<MachineDisplay> display = std::make_shared<MachineDisplay>();
  std::shared_ptr<TestClock> clock = std::make_shared<TestClock>();
  std::shared_ptr<TempFolder> folder = std::make_shared<TempFolder>();
  /// Back ends by device type; no hardware device, and a reference device that draws nothing.
  std::map<device::DeviceType, device::BackEndFactory> backEnds{
      {device::DeviceType::Reference, [](const device::PresentParameters&) { return recording::createNullBackEnd(); }}};

  std::filesystem::path logFile() const { return folder->path() / "debug8.txt"; }

  /// What an engine context takes. The settings of contexts made afterwards live in the machine's folder.
  engine::Platform platform() const {
    ::setenv("XDG_CONFIG_HOME", folder->path().c_str(), 1);
    return {display, backEnds, [kept = clock, alive = folder] { return kept->read(); }, logFile()};
  }

  /// The messages of the log, in order, without date and time; the banner is left out.
  std::vector<std::string> logLines() const {
    std::vector<std::string> lines;
    std::ifstream file(logFile(), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (const std::size_t bar = line.find(" | "); bar == 19) lines.push_back(line.substr(bar + 3));
    }
    return lines;
  }
  void clearLog() const { std::ofstream(logFile(), std::ios::trunc); }
};

/// A machine's platform for tests that look at nothing of it. @param reference the reference device; none: draws
/// nothing
inline engine::Platform makeTestPlatform(device::BackEndFactory reference = nullptr) {
  TestMachine machine;
  if (reference) machine.backEnds[device::DeviceType::Reference] = std::move(reference);
  return machine.platform();
}

}  // namespace ql::test
