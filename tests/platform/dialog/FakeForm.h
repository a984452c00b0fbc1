/// @file
/// A form that notes what is done to it.
#pragma once

#include "platform/device/Form.h"

#include <string>
#include <vector>

namespace ql::test {

struct FakeForm : device::Form {
  device::FormContent shown;
  std::vector<std::string> done;
  bool open = true;

  FakeForm() {
    shown.caption = "A form for tests";
    shown.font = "Tahoma";
    shown.lists = {{"Colours", {"red", "green", "blue"}, 0}, {"Nothing", {}, -1}, {"Numbers", {}, -1}};
    for (int i = 0; i < 30; ++i) shown.lists[2].entries.push_back(std::to_string(i));
    shown.checkBox = "Salt && pepper";
    shown.buttons = {"OK", "Cancel"};
    shown.cancelButton = 1;
  }
  const device::FormContent& content() const override { return shown; }
  void load() override { done.push_back("load"); }
  void select(std::size_t list, std::int32_t entry) override {
    shown.lists[list].selected = entry;
    done.push_back("list " + std::to_string(list) + " entry " + std::to_string(entry));
  }
  void check(bool on) override {
    shown.checked = on;
    done.push_back(on ? "checked" : "unchecked");
  }
  void press(std::size_t button) override {
    open = false;
    done.push_back("button " + std::to_string(button));
  }
  bool visible() const override { return open; }
};

}  // namespace ql::test
