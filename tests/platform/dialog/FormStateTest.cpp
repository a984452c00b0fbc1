// What keys and clicks do to a form, and where its controls stand.
#include "FakeForm.h"
#include "platform/dialog/FormLayout.h"
#include "platform/dialog/FormState.h"
#include "platform/dialog/FormText.h"

#include <gmock/gmock.h>

namespace ql::dialog {
namespace {

using test::FakeForm;
using testing::ElementsAreArray;

// One row per way through the form: the keys, and what the form notes.
struct KeyCase {
  const char* name;
  std::vector<Key> keys;
  std::vector<std::string> done;
};
class FormKeys : public testing::TestWithParam<KeyCase> {};

TEST_P(FormKeys, ActOnTheFocusedControl) {
  FakeForm form;
  FormState state(form);
  for (const Key key : GetParam().keys) state.press(key);
  EXPECT_THAT(form.done, ElementsAreArray(GetParam().done));
}

using enum Key;
INSTANTIATE_TEST_SUITE_P(
    Ways, FormKeys,
    testing::Values(KeyCase{"EnterAccepts", {Enter}, {"button 0"}}, KeyCase{"EscapeCancels", {Escape}, {"button 1"}},
                    KeyCase{"ArrowsChangeAClosedList",
                            {Down, Down, Down, Up},
                            {"list 0 entry 1", "list 0 entry 2", "list 0 entry 1"}},
                    KeyCase{"EndsStayInside", {Up, PageUp, End, PageDown, Home}, {"list 0 entry 2", "list 0 entry 0"}},
                    KeyCase{"FirstEntryFromNone", {Next, Next, Down}, {"list 2 entry 0"}},
                    KeyCase{"AnEmptyListHasNothing", {Next, Down, End, Space, Enter}, {"button 0"}},
                    KeyCase{"AnOpenListChangesWhenTaken", {Open, Down, Down, Enter}, {"list 0 entry 2"}},
                    KeyCase{"EscapeClosesTheListFirst", {Space, Down, Escape, Escape}, {"button 1"}},
                    KeyCase{"TheSameKeyCloses", {Open, Down, Open, Down}, {"list 0 entry 1"}},
                    KeyCase{"TabTakesAndMovesOn",
                            {Open, End, Next, Next, Open, PageDown, PageDown, Space},
                            {"list 0 entry 2", "list 2 entry 9"}},
                    KeyCase{"NothingHighlightedTakesNothing", {Next, Next, Open, Enter, Enter}, {"button 0"}},
                    KeyCase{"SpaceTogglesTheBox", {Next, Next, Next, Space, Space, Down}, {"checked", "unchecked"}},
                    KeyCase{"ArrowsMoveAmongButtons", {Previous, Up, Up, Down, Down, Enter}, {"button 1"}},
                    KeyCase{"TabGoesRound", {Previous, Previous, Space}, {"button 0"}},
                    KeyCase{"AndRoundAgain", {Next, Next, Next, Next, Next, Next, Down}, {"list 0 entry 1"}}),
    [](const auto& row) { return row.param.name; });

TEST(FormClicks, ActAndMoveTheFocus) {
  FakeForm form;
  FormState state(form);
  state.clickList(1);
  EXPECT_FALSE(state.openList()) << "nothing to open";
  state.clickList(0);
  state.clickList(2);
  EXPECT_EQ(state.openList(), 2u);
  state.clickBeside();
  state.clickEntry(4);
  EXPECT_TRUE(form.done.empty()) << "no list is open";
  state.clickList(2);
  state.clickEntry(30);
  state.clickList(2);
  state.clickEntry(29);
  state.clickCheckBox();
  EXPECT_TRUE(state.focused(state.checkBoxControl()));
  state.clickButton(1);
  EXPECT_THAT(form.done, ElementsAreArray({"list 2 entry 29", "checked", "button 1"}));
}

TEST(FormLayouts, KeepControlsApartAndEntriesInsideAtAnyScale) {
  const FakeForm form;
  for (const float scale : {1.0f, 1.25f, 1.37f, 2.0f, 4.0f}) {
    const FormLayout layout = layOut(form.shown, scale);
    std::vector<Box> order;
    for (std::size_t i = 0; i < 3; ++i) {
      order.push_back(layout.labels[i]);
      order.push_back(layout.lists[i]);
    }
    order.push_back(layout.checkBox);
    order.push_back(layout.buttons[0]);
    int y = 0;
    for (const Box& box : order) {
      EXPECT_GE(box.y, y);
      EXPECT_GE(box.x, 0);
      EXPECT_LE(box.x + box.width, layout.width);
      y = box.y + box.height;
    }
    EXPECT_LT(y, layout.height);
    EXPECT_LT(layout.buttons[0].x + layout.buttons[0].width, layout.buttons[1].x);
    for (std::size_t i = 0; i < 3; ++i)
      for (const std::size_t count : {std::size_t{1}, std::size_t{3}, std::size_t{1000000}}) {
        const Box entries = layout.entries(i, count);
        EXPECT_GE(entries.y, 0);
        EXPECT_LE(entries.y + entries.height, layout.height);
        EXPECT_TRUE(entries.y >= layout.lists[i].y + layout.lists[i].height ||
                    entries.y + entries.height <= layout.lists[i].y);
        EXPECT_GE(entries.height, layout.rowHeight * static_cast<int>(std::min<std::size_t>(count, 3)));
      }
  }
}

TEST(FormTexts, ShowWhatReadersSee) {
  EXPECT_EQ(shownCaption("Use T&&L"), "Use T&L");
  EXPECT_EQ(shownCaption("&Open &"), "Open ");
  EXPECT_EQ(shownText("\x80uro"), "\u20ACuro") << "not UTF-8: Windows-1252";
}

}  // namespace
}  // namespace ql::dialog
