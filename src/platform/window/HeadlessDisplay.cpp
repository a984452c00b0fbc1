#include "platform/window/HeadlessDisplay.h"

#include "platform/host/MessageBox.h"
#include "platform/window/ModeList.h"

namespace ql::window {
namespace {

constexpr std::uint32_t kRefreshRate = 60;
constexpr device::DisplayMode kDesktop{1024, 768, kRefreshRate, kFormatX8R8G8B8};

class HeadlessWindow final : public device::Window {
 public:
  Size clientSize() const override { return size_; }
  bool visible() const override { return false; }
  void show(const device::Picture&) override {}
  void pump() override {}
  void setTitle(const std::string&) override {}
  bool closeRequested() const override { return false; }
  void setMode(bool fullScreen, Size size) override {
    size_ = fullScreen ? Size{kDesktop.width, kDesktop.height} : size;
  }

 private:
  Size size_{640, 480};
};

}  // namespace

std::vector<device::DisplayMode> HeadlessDisplay::modes(std::uint32_t) const {
  return modesOf(standardSizes(), kRefreshRate);
}
device::DisplayMode HeadlessDisplay::desktopMode(std::uint32_t) const { return kDesktop; }
std::shared_ptr<device::Window> HeadlessDisplay::createWindow() { return std::make_shared<HeadlessWindow>(); }
std::shared_ptr<device::Window> HeadlessDisplay::adoptWindow(std::intptr_t) { return nullptr; }
void HeadlessDisplay::messageBox(const std::string& title, const std::string& text) {
  host::messageToStandardError(title, text);
}

}  // namespace ql::window
