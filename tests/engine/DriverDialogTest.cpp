// The driver dialog's rules, with a user that is a list of actions.
#include "RunningEngine.h"
#include "engine/DriverDialog.h"

#include <functional>

#include <gmock/gmock.h>

namespace ql::engine {
namespace {

using device::DisplayMode;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Pair;

/// Two adapters; a small mode lies between those of the first that are listed, and the second cannot be read in full.
struct TwoAdapters : test::MachineDisplay {
  std::function<void(device::Form&)> user;  ///< none: no display

  std::uint32_t adapterCount() const override { return 2; }
  std::string adapterName(std::uint32_t adapter) const override {
    return adapter == 0 ? std::string("First card\0rubbish", 18) : "Second card";
  }
  std::vector<DisplayMode> modes(std::uint32_t adapter) const override {
    if (adapter == 1) return {{1600, 1200, 75, 22}, {640, 399, 75, 22}};
    return {{320, 200, 60, 22}, {640, 480, 60, 22}, {639, 480, 60, 22}, {640, 400, 60, 23},
            {800, 600, 60, 20}, {800, 600, 60, 21}, {800, 600, 60, 25}};
  }
  bool showForm(device::Form& form) override {
    if (!user) return false;
    form.load();
    user(form);
    return true;
  }
};

enum List { kAdapters, kKinds, kModes };
enum Button { kOk, kCancel };

using Settings = std::map<std::string, std::string>;
constexpr const char* kKeys[] = {"Adapter", "Direct3D", "Format", "Height", "T&L", "VideoMode", "Width"};

class DriverDialogs : public testing::Test {
 protected:
  DriverDialogs() : display(std::make_shared<TwoAdapters>()), engine(on(display)) {}
  static test::TestMachine on(const std::shared_ptr<TwoAdapters>& display) {
    test::TestMachine machine;
    machine.display = display;
    return machine;
  }
  bool show(const Settings& stored, std::function<void(device::Form&)> user) {
    for (const auto& [key, value] : stored) engine.context.settings.set(key, value);
    display->user = std::move(user);
    engine.machine.clearLog();
    return showDriverDialog(engine.context);
  }
  /// What is stored now.
  Settings settings() const {
    Settings all;
    for (const char* key : kKeys)
      if (const std::string value = engine.context.settings.get(key, "-"); value != "-") all[key] = value;
    return all;
  }

  std::shared_ptr<TwoAdapters> display;
  test::RunningEngine engine;
};

TEST_F(DriverDialogs, ShowWhatTheAdaptersReport) {
  EXPECT_FALSE(show({}, [](device::Form& form) {
    const device::FormContent& content = form.content();
    EXPECT_EQ(content.caption, "Quasarlens8 3D - 0.1 : Driver Dialog");
    EXPECT_EQ(content.font, "Tahoma");
    ASSERT_EQ(content.lists.size(), 3u);
    EXPECT_EQ(content.lists[kAdapters].label, "Adapter (3d card)");
    EXPECT_EQ(content.lists[kKinds].label, "Direct3D Device mode");
    EXPECT_EQ(content.lists[kModes].label, "Video Modes");
    EXPECT_EQ(content.checkBox, "Use T&&L");
    EXPECT_THAT(content.buttons, ElementsAre("OK", "Cancel"));
    EXPECT_THAT(content.lists[kAdapters].entries, ElementsAre("First card", "Second card"));
    EXPECT_THAT(content.lists[kKinds].entries, ElementsAre("HAL (Hardware)", "REF (Software)"));
    EXPECT_THAT(content.lists[kModes].entries,
                ElementsAre("640x480x32", "640x400x16", "800x600x32", "800x600x32", "800x600x16"));
    // Nothing is stored: the first adapter, hardware, mode number 1, which is the first that is listed.
    EXPECT_EQ(content.lists[kAdapters].selected, 0);
    EXPECT_EQ(content.lists[kKinds].selected, 0);
    EXPECT_EQ(content.lists[kModes].selected, 0);
    EXPECT_TRUE(content.checked);
    form.select(kAdapters, 1);
    EXPECT_THAT(content.lists[kModes].entries, ElementsAre("1600x1200x32"));
    EXPECT_EQ(content.lists[kModes].selected, -1) << "no mode 1 here that is listed";
    form.press(kCancel);
    EXPECT_FALSE(form.visible());
  }));
  EXPECT_THAT(engine.machine.logLines(), ElementsAre("DEVICE INIT : Show Driver Dialog"));
}

// One row per visit: what was stored, what the user did, what is stored then.
struct Visit {
  const char* name;
  Settings stored;
  std::vector<std::pair<int, int>> selections;  ///< list, entry
  bool toggles;
  Button button;
  Settings changes;  ///< to what was stored
};
class DriverDialogVisits : public DriverDialogs, public testing::WithParamInterface<Visit> {};

TEST_P(DriverDialogVisits, StoreWhatWasChosenByOkOnly) {
  const Visit& row = GetParam();
  const bool result = show(row.stored, [&](device::Form& form) {
    for (const auto& [list, entry] : row.selections) form.select(static_cast<std::size_t>(list), entry);
    if (row.toggles) form.check(!form.content().checked);
    form.press(row.button);
  });
  EXPECT_EQ(result, row.button == kOk);
  Settings expected = row.changes;
  expected.insert(row.stored.begin(), row.stored.end());
  EXPECT_THAT(settings(), ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(Visits, DriverDialogVisits,
                         testing::Values(Visit{"OkAtOnce",
                                               {},
                                               {},
                                               false,
                                               kOk,
                                               {{"VideoMode", "1"},
                                                {"Direct3D", "0"},
                                                {"Adapter", "0"},
                                                {"T&L", "True"},
                                                {"Width", "640"},
                                                {"Height", "480"},
                                                {"Format", "22"}}},
                                         Visit{"CancelAfterChangingAll",
                                               {{"Width", "1024"}, {"VideoMode", "4"}},
                                               {{kAdapters, 1}, {kKinds, 1}, {kModes, 0}},
                                               true,
                                               kCancel,
                                               {}},
                                         Visit{"EverythingElse",
                                               {{"T&L", "False"}, {"Direct3D", "1"}},
                                               {{kAdapters, 1}, {kModes, 0}, {kAdapters, 0}, {kKinds, 0}, {kModes, 4}},
                                               true,
                                               kOk,
                                               {{"VideoMode", "6"},
                                                {"Direct3D", "0"},
                                                {"Adapter", "0"},
                                                {"T&L", "True"},
                                                {"Width", "800"},
                                                {"Height", "600"},
                                                {"Format", "25"}}},
                                         Visit{"TheStoredModeIsFoundByItsNumber",
                                               {{"VideoMode", "4"}, {"T&L", "no"}},
                                               {},
                                               false,
                                               kOk,
                                               {{"VideoMode", "4"},
                                                {"Direct3D", "0"},
                                                {"Adapter", "0"},
                                                {"T&L", "False"},
                                                {"Width", "800"},
                                                {"Height", "600"},
                                                {"Format", "20"}}},
                                         Visit{"AStoredModeThatIsNotListed",
                                               {{"VideoMode", "2"}},
                                               {},
                                               false,
                                               kOk,
                                               {{"VideoMode", "2"},
                                                {"Direct3D", "0"},
                                                {"Adapter", "0"},
                                                {"T&L", "True"},
                                                {"Width", "0"},
                                                {"Height", "0"},
                                                {"Format", "0"}}},
                                         Visit{"TheOtherAdapterLacksTheMode",
                                               {},
                                               {{kAdapters, 1}},
                                               false,
                                               kOk,
                                               {{"VideoMode", "1"},
                                                {"Direct3D", "0"},
                                                {"Adapter", "1"},
                                                {"T&L", "True"},
                                                {"Width", "640"},
                                                {"Height", "480"},
                                                {"Format", "22"}}}),
                         [](const auto& row) { return row.param.name; });

TEST_F(DriverDialogs, FailOnAStoredChoiceThatIsNotThere) {
  for (const Settings& stored :
       {Settings{{"Adapter", "2"}}, Settings{{"Adapter", "-1"}}, Settings{{"Adapter", "0"}, {"Direct3D", "2"}}}) {
    try {
      show(stored, [](device::Form&) { ADD_FAILURE() << "shown"; });
      ADD_FAILURE() << "no error";
    } catch (const EngineError& error) {
      EXPECT_EQ(error.number, kInvalidArgument);
    }
  }
}

TEST_F(DriverDialogs, SayWhyTheyDoNotAppearWithoutADisplay) {
  EXPECT_FALSE(show({{"Adapter", "7"}}, nullptr));
  EXPECT_THAT(engine.machine.logLines(),
              ElementsAre("DEVICE INIT : Show Driver Dialog",
                          "DEVICE INIT ERROR : There is no display that the driver dialog could be shown on"));
  EXPECT_THAT(settings(), ElementsAre(Pair("Adapter", "7")));
}

TEST_F(DriverDialogs, ChooseWhatTheNextInitializeTakes) {
  ASSERT_TRUE(show({}, [](device::Form& form) {
    form.select(kKinds, 1);
    form.select(kModes, 1);
    form.press(kOk);
  }));
  ASSERT_TRUE(initialize(engine.context, kFullScreen));
  EXPECT_EQ(engine.context.deviceType, device::DeviceType::Reference);
  EXPECT_EQ(engine.context.presentParameters.backBufferHeight, 400u);
  EXPECT_EQ(engine.context.presentParameters.backBufferFormat, device::Format::R5G6B5);
}

}  // namespace
}  // namespace ql::engine
