#include "platform/dialog/FormLayout.h"

#include <algorithm>
#include <cmath>

namespace ql::dialog {
namespace {

// Pixels at 96 dots per inch; texts are 10 points high.
constexpr int kWidth = 380, kMargin = 16, kGap = 12;
constexpr int kLabelHeight = 20, kListHeight = 28, kRowHeight = 24;
constexpr int kButtonWidth = 96, kButtonHeight = 30, kButtonGap = 10;

}  // namespace

FormLayout layOut(const device::FormContent& content, float scale) {
  const auto pixels = [scale](int size) { return static_cast<int>(std::lround(static_cast<float>(size) * scale)); };
  FormLayout layout;
  layout.width = pixels(kWidth);
  layout.rowHeight = pixels(kRowHeight);
  const int margin = pixels(kMargin), gap = pixels(kGap), inner = layout.width - 2 * margin;
  int y = margin;
  for (std::size_t i = 0; i < content.lists.size(); ++i) {
    layout.labels.push_back({margin, y, inner, pixels(kLabelHeight)});
    y += pixels(kLabelHeight);
    layout.lists.push_back({margin, y, inner, pixels(kListHeight)});
    y += pixels(kListHeight) + gap;
  }
  layout.checkBox = {margin, y, inner, layout.rowHeight};
  y += layout.rowHeight + gap;
  const auto count = static_cast<int>(content.buttons.size());
  for (int i = 0; i < count; ++i) {
    const int fromRight = (count - i) * pixels(kButtonWidth) + (count - i - 1) * pixels(kButtonGap);
    layout.buttons.push_back({layout.width - margin - fromRight, y, pixels(kButtonWidth), pixels(kButtonHeight)});
  }
  layout.height = y + pixels(kButtonHeight) + margin;
  return layout;
}

Box FormLayout::entries(std::size_t list, std::size_t count) const {
  const Box& box = lists[list];
  const int below = height - (box.y + box.height), above = box.y;
  const auto rows = [&](int room) {
    return std::min(static_cast<int>(std::min<std::size_t>(count, 1000)), std::max((room - 2) / rowHeight, 1));
  };
  const bool goesBelow = rows(below) >= rows(above);
  const int wanted = rows(goesBelow ? below : above) * rowHeight + 2;  // a border of one pixel
  return {box.x, goesBelow ? box.y + box.height : box.y - wanted, box.width, wanted};
}

}  // namespace ql::dialog
