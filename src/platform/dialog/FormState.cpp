#include "platform/dialog/FormState.h"

#include <algorithm>

namespace ql::dialog {
namespace {

constexpr std::int32_t kPage = 5;  // entries

/// Where a key leads to in a list; from no entry the first one is next. -1: nowhere
std::int32_t target(const device::FormContent::List& list, std::int32_t from, Key key) {
  const auto last = static_cast<std::int32_t>(list.entries.size()) - 1;
  if (last < 0) return -1;
  std::int32_t to = from;
  switch (key) {
    case Key::Up:
      to = from - 1;
      break;
    case Key::Down:
      to = from + 1;
      break;
    case Key::PageUp:
      to = from - kPage;
      break;
    case Key::PageDown:
      to = from + kPage;
      break;
    case Key::Home:
      to = 0;
      break;
    case Key::End:
      to = last;
      break;
    default:
      return -1;
  }
  return std::clamp(to, 0, last);
}

}  // namespace

void FormState::open(std::size_t list) {
  const device::FormContent::List& content = form_.content().lists[list];
  if (content.entries.empty()) return;
  open_ = list;
  highlighted_ = content.selected;
}

void FormState::moveFocus(bool forwards) {
  const std::size_t count = buttonControl(form_.content().buttons.size());
  focus_ = (focus_ + (forwards ? 1 : count - 1)) % count;
}

void FormState::press(Key key) {
  if (open_) return pressInOpenList(key);
  if (key == Key::Next || key == Key::Previous) return moveFocus(key == Key::Next);
  if (key == Key::Escape) return cancel();
  const bool onButton = focus_ > checkBoxControl();
  if (key == Key::Enter) return form_.press(onButton ? focus_ - buttonControl(0) : form_.content().acceptButton);
  if (focus_ < checkBoxControl()) return pressInList(key);
  if (!onButton) {
    if (key == Key::Space) form_.check(!form_.content().checked);
    return;
  }
  if (key == Key::Space) return form_.press(focus_ - buttonControl(0));
  const std::size_t first = buttonControl(0), last = buttonControl(form_.content().buttons.size()) - 1;
  if (key == Key::Up && focus_ > first) --focus_;
  if (key == Key::Down && focus_ < last) ++focus_;
}

void FormState::pressInList(Key key) {
  if (key == Key::Open || key == Key::Space) return open(focus_);
  const device::FormContent::List& list = form_.content().lists[focus_];
  const std::int32_t to = target(list, list.selected, key);
  if (to >= 0 && to != list.selected) form_.select(focus_, to);
}

void FormState::pressInOpenList(Key key) {
  switch (key) {
    case Key::Escape:
    case Key::Open:
      open_.reset();
      return;
    case Key::Enter:
    case Key::Space:
      return clickEntry(highlighted_);
    case Key::Next:
    case Key::Previous:
      clickEntry(highlighted_);
      return moveFocus(key == Key::Next);
    default:
      if (const std::int32_t to = target(form_.content().lists[*open_], highlighted_, key); to >= 0) highlighted_ = to;
  }
}

void FormState::clickList(std::size_t list) {
  const bool closes = open_ == list;
  open_.reset();
  focus_ = list;
  if (!closes) open(list);
}

void FormState::clickEntry(std::int32_t entry) {
  if (!open_) return;
  const std::size_t list = *open_;
  open_.reset();
  if (entry >= 0 && entry < static_cast<std::int32_t>(form_.content().lists[list].entries.size()))
    form_.select(list, entry);
}

void FormState::clickCheckBox() {
  focus_ = checkBoxControl();
  form_.check(!form_.content().checked);
}

void FormState::clickButton(std::size_t button) {
  focus_ = buttonControl(button);
  form_.press(button);
}

}  // namespace ql::dialog
