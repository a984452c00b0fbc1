/// @file
/// A modal form, as its owner describes it and as the window system shows it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ql::device {

/// What a form shows: drop-down lists, each below its label, then a check box, then a row of buttons.
struct FormContent {
  struct List {
    std::string label;
    std::vector<std::string> entries;
    std::int32_t selected = -1;  ///< -1: none
  };
  std::string caption, font;  ///< of the window; the face of every text
  std::vector<List> lists;
  std::string checkBox;  ///< its caption; a doubled ampersand shows one
  bool checked = false;
  std::vector<std::string> buttons;
  std::size_t acceptButton = 0, cancelButton = 0;  ///< what Enter and Escape press; closing the window cancels
};

/// A form that acts on what its user does. The view calls these operations and reads the content again after each.
class Form {
 public:
  virtual ~Form() = default;
  virtual const FormContent& content() const = 0;
  /// Called once, when the form is about to appear.
  virtual void load() = 0;
  /// @param list,entry exist
  virtual void select(std::size_t list, std::int32_t entry) = 0;
  virtual void check(bool on) = 0;
  virtual void press(std::size_t button) = 0;
  /// False once a button has hidden the form: the modal display ends.
  virtual bool visible() const = 0;
};

}  // namespace ql::device
