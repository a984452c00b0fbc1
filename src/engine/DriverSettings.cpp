#include "engine/DriverSettings.h"

#include "engine/Engine.h"
#include "platform/host/Files.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

namespace ql::engine {
namespace {

constexpr std::string_view kDirect3D = "Direct3D", kWidth = "Width", kHeight = "Height", kFormat = "Format",
                           kAdapter = "Adapter", kHardwareTransform = "T&L", kVideoMode = "VideoMode", kTrue = "True",
                           kFalse = "False";

std::int32_t number(const host::Settings& settings, std::string_view key, std::string_view fallback) {
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min(),
                   kHighest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(host::numberFromText(settings.get(key, fallback)), kLowest, kHighest));
}

}  // namespace

DriverSettings readDriverSettings(const host::Settings& settings) {
  return {.deviceType =
              number(settings, kDirect3D, "0") == 0 ? device::DeviceType::Hardware : device::DeviceType::Reference,
          .width = number(settings, kWidth, "640"),
          .height = number(settings, kHeight, "480"),
          .format = static_cast<device::Format>(number(settings, kFormat, "23")),
          .adapter = static_cast<std::uint32_t>(number(settings, kAdapter, "0")),
          .hardwareTransform = host::equalIgnoringCase(settings.get(kHardwareTransform, kFalse), kTrue)};
}

DriverChoice readDriverChoice(const host::Settings& settings) {
  return {.adapter = number(settings, kAdapter, "0"),
          .modeNumber = number(settings, kVideoMode, "1"),
          .deviceKind = number(settings, kDirect3D, "0"),
          .hardwareTransform = host::equalIgnoringCase(settings.get(kHardwareTransform, kTrue), kTrue),
          .mode = {}};
}

void storeDriverChoice(host::Settings& settings, const DriverChoice& choice) {
  settings.set(kVideoMode, std::to_string(choice.modeNumber));
  settings.set(kDirect3D, std::to_string(choice.deviceKind));
  settings.set(kAdapter, std::to_string(choice.adapter));
  settings.set(kHardwareTransform, choice.hardwareTransform ? kTrue : kFalse);
  settings.set(kWidth, std::to_string(choice.mode.width));
  settings.set(kHeight, std::to_string(choice.mode.height));
  settings.set(kFormat, std::to_string(choice.mode.format));
}

void setEngineMode(EngineContext& context, std::int32_t width, std::int32_t height, std::int32_t bitsPerPixel,
                   bool hardware, std::int16_t adapter) {
  const auto format = bitsPerPixel == 32 ? device::Format::A8R8G8B8 : device::Format::R5G6B5;
  context.settings.set(kWidth, std::to_string(width));
  context.settings.set(kHeight, std::to_string(height));
  context.settings.set(kFormat, std::to_string(static_cast<std::uint32_t>(format)));
  context.settings.set(kDirect3D, hardware ? "0" : "1");
  context.settings.set(kAdapter, std::to_string(adapter));
}

void enableHardwareTransform(EngineContext& context, bool on) {
  context.settings.set(kHardwareTransform, on ? kTrue : kFalse);
}

}  // namespace ql::engine
