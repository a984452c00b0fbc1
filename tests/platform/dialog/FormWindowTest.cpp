// A form on an X server, with a user who clicks and types.
#include "FakeForm.h"
#include "platform/dialog/FormLayout.h"
#include "platform/window/OpenDisplay.h"
#include "support/Hands.h"

#include <cstdlib>
#include <stdexcept>

#include <SDL.h>
#include <gmock/gmock.h>
// Xlib comes with it: last.
#include "support/CloseWindow.h"

namespace ql::dialog {
namespace {

using test::FakeForm;
using test::Hands;
using test::User;
using testing::ElementsAre;

TEST(FormsWithoutADisplay, AreNotShown) {
  FakeForm form;
  const auto display = window::openDisplay();
  if (display->createWindow()->visible()) GTEST_SKIP() << "skipped: there is a display";
  EXPECT_FALSE(display->showForm(form));
  EXPECT_TRUE(form.done.empty());
}

class FormWindows : public testing::Test {
 protected:
  void SetUp() override {
    if (!Hands::present()) {
      ASSERT_EQ(std::getenv("QL_EXPECT_DISPLAY"), nullptr) << "the X server did not start";
      GTEST_SKIP() << "skipped: no X server, or no xdotool";
    }
    display = window::openDisplay();
    layout = layOut(form.shown, scale());
  }
  /// Of the X server that the test runs on.
  static float scale() {
    const char* dpi = std::getenv("QL_TEST_DPI");
    return dpi == nullptr ? 1.0f : static_cast<float>(std::atof(dpi)) / 96;
  }
  void click(const Hands& hands, const Box& box) const { hands.click(box.x + box.width / 2, box.y + box.height / 2); }
  Box entry(std::size_t list, int row) const {
    const Box all = layout.entries(list, form.shown.lists[list].entries.size());
    return {all.x, all.y + 1 + row * layout.rowHeight, all.width / 2, layout.rowHeight};
  }

  std::shared_ptr<device::Display> display;
  FakeForm form;
  FormLayout layout;
};

TEST_F(FormWindows, TakeClicks) {
  const User user("A form for tests", [this](const Hands& hands) {
    click(hands, layout.lists[0]);
    click(hands, entry(0, 2));
    click(hands, layout.lists[1]);  // empty: does not open
    click(hands, layout.lists[2]);
    click(hands, entry(2, 1));
    click(hands, layout.checkBox);
    click(hands, layout.lists[0]);
    click(hands, layout.checkBox);  // closes the list and does no more
    click(hands, layout.buttons[0]);
  });
  EXPECT_TRUE(display->showForm(form));
  EXPECT_THAT(form.done, ElementsAre("load", "list 0 entry 2", "list 2 entry 1", "checked", "button 0"));
}

TEST_F(FormWindows, ScrollLongLists) {
  const User user("A form for tests", [this](const Hands& hands) {
    click(hands, layout.lists[2]);
    const Box first = entry(2, 0);
    hands.move(first.x + 20, first.y + 5);
    for (int i = 0; i < 3; ++i) hands.act("click 5");  // the wheel, downwards
    click(hands, first);
    hands.keys("F4 End Return Escape");  // the list stays focused
  });
  EXPECT_TRUE(display->showForm(form));
  ASSERT_EQ(form.done.size(), 4u);
  EXPECT_NE(form.done[1], "list 2 entry 0");
  EXPECT_EQ(form.done[2], "list 2 entry 29");
  EXPECT_EQ(form.done[3], "button 1");
}

TEST_F(FormWindows, TakeKeys) {
  const User user("A form for tests", [](const Hands& hands) {
    hands.keys("Down alt+Down Down Return Tab Tab Down Page_Down Tab space shift+Tab Up Return");
  });
  EXPECT_TRUE(display->showForm(form));
  EXPECT_THAT(form.done, ElementsAre("load", "list 0 entry 1", "list 0 entry 2", "list 2 entry 0", "list 2 entry 5",
                                     "checked", "list 2 entry 4", "button 0"));
}

TEST_F(FormWindows, CancelWhenClosedAndLeaveAHostsEventsAlone) {
  display.reset();
  ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_VIDEO), 0);  // by the host, before the engine looks for a display
  display = window::openDisplay();
  SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
  SDL_Event own{};
  own.type = SDL_RegisterEvents(1);
  own.user.code = 77;
  SDL_PushEvent(&own);
  {
    const User user("A form for tests", [](const Hands& hands) {
      hands.act("getwindowname %w");  // it is there
      EXPECT_TRUE(test::closeWindow("A form for tests"));
    });
    EXPECT_TRUE(display->showForm(form));
  }
  EXPECT_THAT(form.done, ElementsAre("load", "button 1"));
  bool found = false;
  for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
    found |= event.type == own.type && event.user.code == 77;
    EXPECT_NE(event.type, static_cast<std::uint32_t>(SDL_QUIT)) << "only the form was closed";
  }
  EXPECT_TRUE(found);
  SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

TEST_F(FormWindows, LetErrorsOfTheFormThrough) {
  struct Failing : FakeForm {
    void load() override { throw std::runtime_error("no such adapter"); }
  } failing;
  EXPECT_THROW(display->showForm(failing), std::runtime_error);
  struct Fussy : FakeForm {
    void select(std::size_t, std::int32_t) override { throw std::runtime_error("not this one"); }
  } fussy;
  {
    const User user("A form for tests", [](const Hands& hands) { hands.keys("Down"); });
    EXPECT_THROW(display->showForm(fussy), std::runtime_error);
  }
  const User user("A form for tests", [](const Hands& hands) { hands.keys("Escape"); });
  EXPECT_TRUE(display->showForm(form)) << "the next form is as good as new";
}

}  // namespace
}  // namespace ql::dialog
