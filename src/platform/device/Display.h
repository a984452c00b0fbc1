/// @file
/// What the device layer needs of the window system: display adapters, their modes, and windows to present in.
#pragma once

#include "platform/device/Form.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ql::device {

/// A mode of an adapter.
struct DisplayMode {
  std::uint32_t width = 0, height = 0;  ///< pixels
  std::uint32_t refreshRate = 0;        ///< hertz; 0 when unknown
  std::uint32_t format = 0;             ///< a Format number: 22 or 23
};

/// A finished picture: rows from the top, each pixel 0xXXRRGGBB.
struct Picture {
  std::uint32_t width = 0, height = 0;
  std::uint32_t pitch = 0;  ///< pixels from one row to the next
  const std::uint32_t* pixels = nullptr;
};

struct GammaRamp;

/// A window as its X server knows it, for those who draw in it themselves.
struct XWindow {
  std::uint32_t number = 0;  ///< 0: none
  std::uint32_t visual = 0;  ///< the number of its visual
};

/// A window that a device presents in.
class Window {
 public:
  virtual ~Window() = default;
  struct Size {
    std::uint32_t width = 0, height = 0;
  };
  virtual Size clientSize() const = 0;
  /// Whether anybody can see what is shown; show does nothing when not.
  virtual bool visible() const = 0;
  /// Shows a picture, scaled to the client area.
  virtual void show(const Picture& picture) = 0;
  /// Where pictures can be drawn directly; none when only show reaches the window.
  virtual XWindow onServer() const { return {}; }
  /// Makes the window seen, in its mode, before a picture is drawn in it directly; show does so by itself.
  virtual void appear() {}
  /// What the colours of a picture that is drawn directly must pass; null: nothing. show applies it by itself.
  virtual const GammaRamp* ramp() const { return nullptr; }
  /// Handles the messages that wait.
  virtual void pump() = 0;
  virtual void setTitle(const std::string& title) = 0;
  /// The user asked to close the window since the window was made.
  virtual bool closeRequested() const = 0;
  /// Full screen (borderless, over the whole desktop) or an ordinary window with a client area of this size.
  virtual void setMode(bool fullScreen, Size size) = 0;
};

/// The display system.
class Display {
 public:
  virtual ~Display() = default;
  virtual std::uint32_t adapterCount() const = 0;
  virtual std::string adapterName(std::uint32_t adapter) const = 0;
  virtual std::vector<DisplayMode> modes(std::uint32_t adapter) const = 0;
  virtual DisplayMode desktopMode(std::uint32_t adapter) const = 0;
  /// The engine's own window, hidden until a device presents in it.
  virtual std::shared_ptr<Window> createWindow() = 0;
  /// A window of the host by its native handle; nothing when there is no such window.
  virtual std::shared_ptr<Window> adoptWindow(std::intptr_t handle) = 0;
  /// Handles the messages that wait for any window.
  virtual void pump() = 0;
  /// A modal message with the critical icon; standard error when nothing can be shown.
  virtual void messageBox(const std::string& title, const std::string& text) = 0;
  /// Shows a form until it hides itself. @return false when nothing can be shown; what the form throws passes through
  virtual bool showForm(Form&) { return false; }
};

}  // namespace ql::device
