/// @file
/// The controls of a form on the drawing library's lists, and what the mouse does to them.
#pragma once

#include "platform/dialog/FormLayout.h"
#include "platform/dialog/FormState.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace ql::dialog {

/// Draws one frame after another into the drawing library's current context, whose display has the layout's size.
class FormView {
 public:
  FormView(const device::Form& form, FormState& state, float scale);
  const FormLayout& layout() const { return layout_; }
  /// Lists a frame to draw; clicks act once it is complete.
  void frame();

 private:
  void window();
  void drawList(std::size_t index);
  void drawEntries(std::size_t index);
  void drawEntry(std::int32_t index, bool follow);
  void drawCheckBox();
  void drawButton(std::size_t index);
  bool clicked() const;
  int edge(bool focused) const;

  const device::Form& form_;
  FormState& state_;
  float scale_;
  FormLayout layout_;
  std::int32_t scrolledTo_ = -1;  ///< the highlighted entry that was last brought into view
  bool onlyCloses_ = false;       ///< the press that goes on closed a list: no control takes it
  std::function<void()> action_;
};

}  // namespace ql::dialog
