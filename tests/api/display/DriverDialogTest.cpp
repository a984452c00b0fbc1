// The driver dialog on an X server: a user clicks and types, the settings follow.
#include "OnDisplay.h"
#include "platform/dialog/FormLayout.h"

namespace ql::test {
namespace {

constexpr const char* kTitle = "Quasarlens8 3D - 0.1 : Driver Dialog";
enum List : std::size_t { kAdapters, kKinds, kModes };
enum Button : std::size_t { kOk, kCancel };

class DriverDialog : public OnDisplay {
 protected:
  DriverDialog() {
    device::FormContent content;
    content.lists.resize(3);
    content.buttons.resize(2);
    layout = dialog::layOut(content, 1);
  }
  static void click(const Hands& hands, const dialog::Box& box) {
    hands.click(box.x + box.width / 2, box.y + box.height / 2);
  }
  /// A row of an open list that all fits or is scrolled to its top.
  dialog::Box row(List list, int index, std::size_t count) const {
    const dialog::Box all = layout.entries(list, count);
    return {all.x, all.y + 1 + index * layout.rowHeight, all.width / 2, layout.rowHeight};
  }
  static std::string stored() {
    return contents(std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "Quasarlens8" / "Driver.ini");
  }
  dialog::FormLayout layout;
};

TEST_F(DriverDialog, OkStoresAndTheNextDeviceFollows) {
  engine.SetEngineMode(640, 480, 32, True);
  const User user(kTitle, [this](const Hands& hands) {
    click(hands, layout.lists[kKinds]);
    click(hands, row(kKinds, 1, 2));   // REF (Software)
    hands.keys("Tab Home Down Down");  // the third mode
    click(hands, layout.checkBox);
    click(hands, layout.buttons[kOk]);
  });
  EXPECT_TRUE(engine.ShowDriverDialog());
  EXPECT_NE(log().find("DEVICE INIT : Show Driver Dialog"), std::string::npos);
  EXPECT_NE(stored().find("VideoMode=2\n"), std::string::npos) << stored();
  EXPECT_NE(stored().find("Direct3D=1\n"), std::string::npos);
  ASSERT_TRUE(engine.InitCurrentVideoMode());
  EXPECT_EQ(internals.GetDeviceKind(), QL_DEVICE_REFERENCE);
  EXPECT_EQ(size(engine), "1024x768 22") << "the third of the sizes that fit this screen";
}

TEST_F(DriverDialog, ByKeysAlone) {
  const User user(kTitle, [](const Hands& hands) {
    hands.keys("Tab Home Down Tab Home Tab F4 End Return");  // kinds, modes; the box keeps the keys for itself
    hands.keys("space Return");
  });
  EXPECT_TRUE(engine.ShowDriverDialog());
  EXPECT_NE(stored().find("VideoMode=0\n"), std::string::npos) << stored();
  EXPECT_NE(stored().find("Width=640\n"), std::string::npos);
  EXPECT_NE(stored().find("Format=22\n"), std::string::npos);
}

TEST_F(DriverDialog, CancelLeavesEverythingEvenOverARunningEngine) {
  engine.SetEngineMode(800, 600, 16, False);
  ASSERT_TRUE(engine.InitCurrentVideoMode());  // covers the screen
  engine.Clear();
  engine.RenderToScreen();
  const std::string before = stored();
  {
    const User user(kTitle, [this](const Hands& hands) {
      click(hands, layout.lists[kKinds]);
      click(hands, row(kKinds, 0, 2));
      click(hands, layout.checkBox);
      click(hands, layout.buttons[kCancel]);
    });
    EXPECT_FALSE(engine.ShowDriverDialog());
  }
  EXPECT_EQ(stored(), before);
  EXPECT_FALSE(engine.CloseRequested());
  engine.Clear();
  engine.RenderToScreen();
}

TEST_F(DriverDialog, WithAnAdapterThatIsGone) {
  engine.SetEngineMode(640, 480, 32, False, 9);
  try {
    engine.ShowDriverDialog();
    ADD_FAILURE() << "no error";
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 5);
  }
  engine.SetEngineMode(640, 480, 32, False);
}

}  // namespace
}  // namespace ql::test
