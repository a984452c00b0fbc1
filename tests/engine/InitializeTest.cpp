#include "RunningEngine.h"
#include "platform/host/Fault.h"

#include <gmock/gmock.h>

namespace ql::engine {
namespace {

using device::DeviceType;
using test::RunningEngine;
using test::TestMachine;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::StartsWith;

TEST(EngineStart, WritesTheBannerAndSwitchesTheConsoleOn) {
  TestMachine machine;
  std::ofstream(machine.logFile()) << "an older run\n";
  RunningEngine engine(machine);
  EXPECT_TRUE(engine.context.console);
  EXPECT_FALSE(engine.context.displayFps);
  EXPECT_NE(engine.context.direct3D, nullptr);
  std::ifstream log(machine.logFile());
  std::string first;
  std::getline(log, first);
  EXPECT_THAT(first, StartsWith("#########"));
}

// One row per machine and stored settings: what the log says from the depth checks to the end, and what comes of it.
struct StartCase {
  const char* name;
  std::map<DeviceType, device::BackEndFactory> backEnds;
  std::map<std::string, std::string> settings;
  std::intptr_t window;
  std::vector<std::string> middle;  ///< log lines between the depth checks and the setup
  DeviceType type;                  ///< of the device that was made
  bool starts;
};

const std::string kMultitexture =
    "DEVICE INIT : Your device supports Single pass Multitexturing. Pixel Shaders & Lightmapping will use it";
const std::string kDoublePass =
    "DEVICE INIT : Your device doesn't support Single Pass Texturing. Pixel Shaders & LMapping will use Double-Pass.";
const std::string kFallback = "DEVICE INIT ERROR : Try with the Reference Rasterizer (Software)";
const std::string kTransformCard =
    "DEVICE INIT : T&L Card detected. Creating the device with Hardware VertexProcessing";
const std::string kPureCard = "DEVICE INIT : Pure device Card detected. QL supports pure devices.";

class EngineInitialize : public testing::TestWithParam<StartCase> {};

TEST_P(EngineInitialize, LogsEveryStepInOrder) {
  const StartCase& row = GetParam();
  TestMachine machine;
  machine.backEnds = row.backEnds;
  machine.display->hostWindows[77] = std::make_shared<test::MachineWindow>();
  machine.display->hostWindows[77]->size = {320, 200};
  RunningEngine engine(machine);
  for (const auto& [key, value] : row.settings) engine.context.settings.set(key, value);

  EXPECT_EQ(initialize(engine.context, row.window), row.starts);

  std::vector<std::string> expected{"DEVICE INIT : The 16bits Z-Buffer is present",
                                    "DEVICE INIT : The 32bits Z-Buffer is present"};
  expected.insert(expected.end(), row.middle.begin(), row.middle.end());
  if (row.starts) {
    const auto& made = engine.context.presentParameters;
    for (const std::string& line : {std::string("DEVICE INIT : Device initialized without problem."),
                                    std::string("DEVICE INIT : Create Matrices"),
                                    "DEVICE INIT : Viewport size (" + std::to_string(made.backBufferWidth) + " " +
                                        std::to_string(made.backBufferHeight) + ")",
                                    std::string("DEVICE INIT : Set the viewport..."),
                                    std::string("DEVICE INIT : Create Spherical environment mapping matrix."),
                                    std::string("DEVICE INIT : Set RenderStates"),
                                    std::string("TEXTURE REQUIREMENTS CHECKING : D3DFMT_R5G6B5 : Yes"),
                                    std::string("TEXTURE REQUIREMENTS CHECKING : D3DFMT_A1R5G6B5 : Yes"),
                                    std::string("DEVICE INIT : Create the Quasarlens System Font"),
                                    std::string("DEVICE INIT : Initialization finished ...")})
      expected.push_back(line);
    EXPECT_EQ(engine.context.deviceType, row.type);
    EXPECT_EQ(engine.context.device->type(), row.type);
    EXPECT_EQ(engine.context.maxPointSize, engine.context.device->capabilities().maxPointSize);
    EXPECT_TRUE(machine.display->messages.empty());
  } else {
    ASSERT_EQ(machine.display->messages.size(), 1u);
    EXPECT_EQ(machine.display->messages[0].first, "QL8");
    EXPECT_THAT(machine.display->messages[0].second, StartsWith("Can't create the device."));
    EXPECT_THAT(machine.display->messages[0].second,
                HasSubstr("\r\nNB : DirectX8 has a lot of compabitility problems. Check if your 3D card has new "
                          "drivers compatible with DirectX8\r\n"));
    EXPECT_THROW(engine.context.requireDevice(), EngineError);
  }
  EXPECT_EQ(engine.context.deviceReady, row.starts);
  EXPECT_THAT(machine.logLines(), ElementsAreArray(expected));
}

std::string creating(const std::string& size, int format) {
  return "DEVICE INIT : Create the device with " + size + " ane the DX8 format " + std::to_string(format);
}

const device::BackEndFactory kPlain = test::capable(0), kSingleStage = test::capable(0, 1),
                             kPowerful = test::capable(0x110000);

INSTANTIATE_TEST_SUITE_P(
    Machines, EngineInitialize,
    testing::Values(StartCase{"no stored settings, both devices",
                              {{DeviceType::Hardware, kPlain}, {DeviceType::Reference, kPlain}},
                              {},
                              kFullScreen,
                              {creating("640x480", 23), kMultitexture},
                              DeviceType::Hardware,
                              true},
                    StartCase{"no hardware device on this machine",
                              {{DeviceType::Reference, kPlain}},
                              {},
                              kFullScreen,
                              {creating("640x480", 23), kDoublePass, kFallback},
                              DeviceType::Reference,
                              true},
                    StartCase{"reference chosen",
                              {{DeviceType::Hardware, kPowerful}, {DeviceType::Reference, kSingleStage}},
                              {{"Direct3D", "1"}, {"Width", "800"}, {"Height", "600"}, {"Format", "21"}},
                              kFullScreen,
                              {creating("800x600", 21), kDoublePass},
                              DeviceType::Reference,
                              true},
                    StartCase{"a strong card, in the engine's own window",
                              {{DeviceType::Hardware, kPowerful}},
                              {{"T&L", "True"}},
                              kOwnWindow,
                              {creating("640x480", 22), kTransformCard, kPureCard, kMultitexture},
                              DeviceType::Hardware,
                              true},
                    StartCase{"in a window of the host, settings that are no numbers",
                              {{DeviceType::Hardware, kPlain}},
                              {{"Direct3D", "yes"}, {"Adapter", "first"}},
                              77,
                              {creating("320x200", 22), kMultitexture},
                              DeviceType::Hardware,
                              true},
                    StartCase{"both devices fail",
                              {{DeviceType::Hardware, test::broken}, {DeviceType::Reference, test::broken}},
                              {},
                              kFullScreen,
                              {creating("640x480", 23), kDoublePass, kFallback},
                              DeviceType::Hardware,
                              false},
                    StartCase{"the chosen reference device fails: no second try",
                              {{DeviceType::Hardware, kPlain}, {DeviceType::Reference, test::broken}},
                              {{"Direct3D", "2"}},
                              kFullScreen,
                              {creating("640x480", 23), kDoublePass},
                              DeviceType::Reference,
                              false},
                    StartCase{"an impossible size",
                              {{DeviceType::Hardware, kPlain}, {DeviceType::Reference, kPlain}},
                              {{"Width", "-1"}},
                              kFullScreen,
                              {creating("-1x480", 23), kMultitexture, kFallback},
                              DeviceType::Hardware,
                              false},
                    StartCase{"a window that the host does not have",
                              {{DeviceType::Reference, kPlain}},
                              {},
                              12345,
                              {creating("0x0", 22), kDoublePass, kFallback},
                              DeviceType::Hardware,
                              false}),
    [](const auto& row) { return "case" + std::to_string(row.index); });

TEST(EngineInitializeCalls, AsksChecksAndSetsInOrder) {
  RunningEngine engine;
  setEngineMode(engine.context, 800, 600, 32, true, 0);
  ASSERT_TRUE(initialize(engine.context, kFullScreen));
  std::vector<std::string> calls = engine.recorder.lines(
      {"CheckDeviceFormat", "GetDeviceCaps", "CreateDevice", "SetViewport", "SetTextureStageState", "SetRenderState"});
  EXPECT_THAT(calls, ElementsAre("CheckDeviceFormat(0, 1, 21, 2, 1, 80)",  //
                                 "CheckDeviceFormat(0, 1, 21, 2, 1, 71)",  //
                                 "GetDeviceCaps(0, 1)",                    //
                                 "CreateDevice(0, 1, 32, 800, 600, 21, 1, 0, 3, 0, 1, 80)",
                                 "CreateDevice(0, 2, 32, 800, 600, 21, 1, 0, 3, 0, 1, 80)",
                                 "SetViewport(0, 0, 800, 600, 0, 1)",  //
                                 "SetTextureStageState(0, 17, 2)",     //
                                 "SetTextureStageState(0, 16, 2)",     //
                                 "SetTextureStageState(1, 17, 2)",     //
                                 "SetTextureStageState(1, 16, 2)",     //
                                 "SetRenderState(139, 4294967295)",    //
                                 "SetRenderState(8, 3)",               //
                                 "SetRenderState(7, 1)",               //
                                 "SetRenderState(14, 1)",              //
                                 "SetRenderState(27, 0)",              //
                                 "SetRenderState(22, 1)",              //
                                 "SetRenderState(9, 2)",               //
                                 "SetRenderState(137, 0)",             //
                                 "SetTextureStageState(0, 11, 0)"));
  std::vector<std::string> order;
  for (const auto& call : engine.recorder.calls())
    if (call.name == "SetTransform" || call.name == "SetViewport")
      order.push_back(call.name == "SetViewport" ? "viewport" : call.values[0]);
  EXPECT_THAT(order, ElementsAre("viewport", "3", "256", "2"));
  EXPECT_TRUE(engine.machine.display->ownWindows.at(0)->fullScreen);
}

TEST(EngineInitializeCalls, AFormatThatNoAdapterHasGivesNoDepthBuffer) {
  RunningEngine engine;
  engine.context.settings.set("Format", "99");
  EXPECT_FALSE(initialize(engine.context, kFullScreen));
  const std::vector<std::string> lines = engine.machine.logLines();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "DEVICE INIT : The Z-Buffer format seems not be compatible with QL8 at the moment");
  EXPECT_EQ(lines[1], "DEVICE INIT : No 32 bits ZBuffer");
  EXPECT_EQ(engine.context.presentParameters.autoDepthStencilFormat, device::Format::Unknown);
}

TEST(EngineInitializeCalls, VertexProcessingNeedsTheSettingAndTheCard) {
  struct Case {
    const char* setting;
    std::uint32_t cardFlags;
    const char* behaviour;
  };
  for (const Case& row :
       {Case{"True", 0x10000, "64"}, Case{"True", 0, "32"}, Case{"False", 0x10000, "32"}, Case{"1x", 0x10000, "32"}}) {
    TestMachine machine;
    machine.backEnds[DeviceType::Hardware] = test::capable(row.cardFlags);
    RunningEngine engine(machine);
    engine.context.settings.set("T&L", row.setting);
    ASSERT_TRUE(initialize(engine.context, kFullScreen));
    for (const auto& call : engine.recorder.calls())
      if (call.name == "CreateDevice") {
        EXPECT_EQ(call.values.at(2), row.behaviour) << row.setting << row.cardFlags;
      }
  }
}

TEST(EngineInitializeValues, DefaultsAndWhatTheHostSetBefore) {
  RunningEngine engine;
  EngineContext& context = engine.context;
  ASSERT_TRUE(initialize(context, kFullScreen));
  EXPECT_EQ(context.farPlane, 4096);
  EXPECT_FLOAT_EQ(context.fieldOfView, 1.57075f);
  EXPECT_EQ(context.aspectRatio, 0.75f);
  EXPECT_NEAR(context.projectionMatrix.m11, context.projectionMatrix.m22 * 0.75f, 1e-6f);
  EXPECT_EQ(context.sphereMapMatrix.m22, -0.5f);
  EXPECT_EQ(context.sphereMapMatrix.m42, 0.5f);
  EXPECT_EQ(context.textureFormat, device::Format::R5G6B5);
  EXPECT_EQ(context.alphaTextureFormat, device::Format::A4R4G4B4);

  context.farPlane = 900;
  context.fieldOfView = 1;
  int registries = 0;
  context.deviceSteps.add(DeviceStage::Created, [&] { ++registries; });
  ASSERT_TRUE(initialize(context, kOwnWindow));
  EXPECT_EQ(context.farPlane, 900);
  EXPECT_EQ(context.fieldOfView, 1);
  EXPECT_EQ(registries, 1);
  // Back from full screen the own window is an ordinary one again.
  EXPECT_FALSE(engine.machine.display->ownWindows.at(0)->fullScreen);
  EXPECT_EQ(engine.machine.display->ownWindows.size(), 1u);
}

TEST(EngineSettings, ModeIsStoredAsText) {
  RunningEngine engine;
  const host::Settings& settings = engine.context.settings;
  setEngineMode(engine.context, 1280, 1024, 32, false, 3);
  EXPECT_EQ(settings.get("Width", "") + settings.get("Height", "") + settings.get("Format", ""), "1280102421");
  EXPECT_EQ(settings.get("Direct3D", "") + settings.get("Adapter", ""), "13");
  for (const int bits : {16, 24, 0}) {
    setEngineMode(engine.context, 1, 1, bits, true, 0);
    EXPECT_EQ(settings.get("Format", ""), "23") << bits;
    EXPECT_EQ(settings.get("Direct3D", ""), "0");
  }
  enableHardwareTransform(engine.context, true);
  EXPECT_EQ(settings.get("T&L", ""), "True");
  enableHardwareTransform(engine.context, false);
  EXPECT_EQ(settings.get("T&L", ""), "False");
}

TEST(EngineRelease, RunsItsStepsInOrderWhateverFails) {
  RunningEngine engine;
  ASSERT_TRUE(initialize(engine.context, kFullScreen));
  std::vector<std::string> done;
  const auto note = [&](ReleaseStage stage, const char* name) {
    engine.context.releaseSteps.add(stage, [&done, name] { done.emplace_back(name); });
  };
  note(ReleaseStage::Landscape, "landscape");
  note(ReleaseStage::Scene, "scene");
  note(ReleaseStage::Materials, "materials");
  engine.context.releaseSteps.add(ReleaseStage::Textures, []() -> void { throw EngineError(kNotSet, "lost"); });
  note(ReleaseStage::Level, "level");
  note(ReleaseStage::Screen, "screen");
  releaseEngine(engine.context);
  EXPECT_THAT(done, ElementsAre("materials", "screen", "scene", "level", "landscape"));
  EXPECT_EQ(engine.context.device, nullptr);
  EXPECT_EQ(engine.context.systemFont, nullptr);
  EXPECT_EQ(engine.context.direct3D, nullptr);
  EXPECT_FALSE(engine.context.deviceReady);
  releaseEngine(engine.context);  // a second time does no harm
}

TEST(EngineErrors, EveryFaultHasItsNumber) {
  struct Case {
    std::function<void()> fail;
    std::int32_t number;
  };
  const Case cases[] = {
      {[] { throw EngineError(kBadFileName, ""); }, 52},
      {[] { throw host::FileFault(host::Fault::Missing, "file"); }, 53},
      {[] { throw device::DeviceError(device::kErrorNotFound, ""); }, static_cast<std::int32_t>(0x88760866)},
      {[] { throw std::bad_alloc(); }, 7},
      {[] { throw std::out_of_range(""); }, 9},
      {[] { throw std::domain_error(""); }, 11},
      {[] { throw std::overflow_error(""); }, 6},
      {[] { throw std::logic_error(""); }, 5},
      {[] { throw 1; }, 5},
  };
  for (const Case& row : cases) {
    try {
      row.fail();
    } catch (...) {
      EXPECT_EQ(currentError().number, row.number);
    }
  }
}

}  // namespace
}  // namespace ql::engine
