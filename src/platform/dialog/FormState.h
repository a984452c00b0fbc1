/// @file
/// What keys and clicks do to a form, apart from how it is drawn.
#pragma once

#include "platform/device/Form.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ql::dialog {

enum class Key : std::uint8_t {
  Next,      ///< Tab
  Previous,  ///< Shift+Tab
  Up,        ///< in a list: the entry before, also Left; among buttons: the button before
  Down,
  PageUp,
  PageDown,
  Home,
  End,
  Open,   ///< F4, Alt+Down: opens or closes the list
  Space,  ///< opens a list, toggles the check box, presses a button
  Enter,  ///< in an open list: takes the entry; on a button: presses it; else presses the accepting button
  Escape  ///< closes an open list; else presses the cancelling button
};

/// The focus and the open list of a form. The controls in the order of Tab: lists, check box, buttons.
class FormState {
 public:
  explicit FormState(device::Form& form) : form_(form) {}

  void press(Key key);
  /// A click on a list's field: opens it, or closes it when it is open.
  void clickList(std::size_t list);
  /// A click on an entry of the open list: selects and closes.
  void clickEntry(std::int32_t entry);
  /// A click beside the open list: closes it.
  void clickBeside() { open_.reset(); }
  void clickCheckBox();
  void clickButton(std::size_t button);
  /// Closing the window.
  void cancel() { form_.press(form_.content().cancelButton); }
  /// The mouse is over an entry of the open list.
  void highlight(std::int32_t entry) { highlighted_ = entry; }

  bool focused(std::size_t control) const { return control == focus_; }
  std::size_t checkBoxControl() const { return form_.content().lists.size(); }
  std::size_t buttonControl(std::size_t button) const { return checkBoxControl() + 1 + button; }
  std::optional<std::size_t> openList() const { return open_; }
  /// Of the open list; -1: none.
  std::int32_t highlighted() const { return highlighted_; }

 private:
  void open(std::size_t list);
  void moveFocus(bool forwards);
  void pressInOpenList(Key key);
  void pressInList(Key key);

  device::Form& form_;
  std::size_t focus_ = 0;
  std::optional<std::size_t> open_;
  std::int32_t highlighted_ = -1;
};

}  // namespace ql::dialog
