#include "Session.h"

#include "Failure.h"
#include "PrivateHome.h"

#include <Quasarlens3D/Quasarlens8.h>

#include <filesystem>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

namespace walk {
namespace {

std::string noteOf(const Options& options) {
  nlohmann::ordered_json note = {
      {"level", options.level}, {"curves", options.curves}, {"no_pvs", options.noPvs}, {"play", options.play}};
  for (const fs::path& package : options.packages) note["packages"].push_back(package.string());
  if (options.base) note["base"] = options.base->string();
  if (options.fieldOfView) note["fov"] = *options.fieldOfView;
  if (options.farPlane) note["far"] = *options.farPlane;
  return note.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void replay(Quasarlens3D::InternalObjects8& internals, const fs::path& file) {
  if (!fs::is_regular_file(file)) throw Failure(ExitCode::Unreadable, fmt::format("cannot read {}", file.string()));
  if (!internals.StartReplay(file.string()))
    throw Failure(ExitCode::Malformed, fmt::format("{} is no session, or a damaged one", file.string()));
}

}  // namespace

void applySession(Options& options) {
  if (!options.replay) return;
  const PrivateHome home;
  Quasarlens3D::Quasarlens8 engine;
  Quasarlens3D::InternalObjects8 internals;
  replay(internals, *options.replay);
  try {
    const auto note = nlohmann::json::parse(internals.SessionNote());
    if (options.level.empty()) {
      options.level = note.at("level").get<std::string>();
      if (note.contains("base") && !options.base) options.base = note["base"].get<std::string>();
    }
    options.curves = note.at("curves").get<std::int32_t>();
    options.noPvs = note.at("no_pvs").get<bool>();
    options.play = note.at("play").get<bool>();
    if (note.contains("packages") && options.packages.empty())
      for (const auto& package : note["packages"]) options.packages.emplace_back(package.get<std::string>());
    if (note.contains("fov")) options.fieldOfView = note["fov"].get<float>();
    if (note.contains("far")) options.farPlane = note["far"].get<float>();
  } catch (const nlohmann::json::exception&) {
    throw Failure(ExitCode::Malformed, fmt::format("{} is no session of this program", options.replay->string()));
  }
}

void startSession(Quasarlens3D::InternalObjects8& internals, const Options& options) {
  if (options.replay) replay(internals, *options.replay);
  if (options.record && !internals.StartRecording(options.record->string(), noteOf(options)))
    throw Failure(ExitCode::Unreadable, fmt::format("cannot write {}", options.record->string()));
}

void finishSession(Quasarlens3D::InternalObjects8& internals, const Options& options) {
  if (options.record && !internals.StopSession())
    throw Failure(ExitCode::Unreadable, fmt::format("{} could not be written completely", options.record->string()));
}

std::uint64_t hashOf(const Picture& picture) {
  // FNV-1a, 64 bits, over size and pixels.
  constexpr std::uint64_t kStart = 0xCBF29CE484222325, kPrime = 0x100000001B3;
  std::uint64_t hash = kStart;
  const auto add = [&](std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) hash = (hash ^ ((value >> shift) & 0xFF)) * kPrime;
  };
  add(picture.width);
  add(picture.height);
  for (const std::uint32_t pixel : picture.pixels) add(pixel);
  return hash;
}

}  // namespace walk
