#include "platform/window/ModeList.h"

#include <algorithm>
#include <tuple>

namespace ql::window {

using Size = device::Window::Size;

const std::vector<Size>& standardSizes() {
  static const std::vector<Size> kSizes = {{640, 480},  {800, 600},   {1024, 768},  {1152, 864}, {1280, 720},
                                           {1280, 960}, {1280, 1024}, {1600, 1200}, {1920, 1080}};
  return kSizes;
}

std::vector<device::DisplayMode> modesOf(std::vector<Size> sizes, std::uint32_t refreshRate) {
  const auto key = [](const Size& size) { return std::tuple(size.width, size.height); };
  std::sort(sizes.begin(), sizes.end(), [key](const Size& a, const Size& b) { return key(a) < key(b); });
  const auto same = [key](const Size& a, const Size& b) { return key(a) == key(b); };
  sizes.erase(std::unique(sizes.begin(), sizes.end(), same), sizes.end());
  std::vector<device::DisplayMode> modes;
  for (const std::uint32_t format : {kFormatX8R8G8B8, kFormatR5G6B5})
    for (const Size& size : sizes) modes.push_back({size.width, size.height, refreshRate, format});
  return modes;
}

}  // namespace ql::window
