#include "ShowSheet.h"

#include "Sheet.h"
#include "walk/Failure.h"
#include "walk/PrivateHome.h"
#include "walk/TextFile.h"

#include <Quasarlens3D/Quasarlens3D.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace view {
namespace {

namespace fs = std::filesystem;
namespace ql = Quasarlens3D;
using walk::ExitCode;
using walk::Failure;

/// Turns pages by keys that are pressed anew.
class PageKeys {
 public:
  /// @return -1, 0 or 1
  int turn() {
    const auto held = [&](std::int32_t a, std::int32_t b) { return input_.IsKeyPressed(a) || input_.IsKeyPressed(b); };
    const int now =
        held(ql::QL_KEY_PAGEDOWN, ql::QL_KEY_RIGHT) ? 1 : (held(ql::QL_KEY_PAGEUP, ql::QL_KEY_LEFT) ? -1 : 0);
    return std::exchange(before_, now) == now ? 0 : now;
  }
  bool done() const { return input_.IsKeyPressed(ql::QL_KEY_ESCAPE); }

 private:
  ql::InputEngine8 input_;
  int before_ = 0;
};

class SheetWindow {
 public:
  explicit SheetWindow(const Options& options) : options_(options) {
    const bool hardware = options.device != DeviceChoice::Reference;
    engine_.SetEngineMode(options.width, options.height, 32, hardware);
    if (!engine_.Initialize(-1)) throw Failure(ExitCode::NoDevice, "no device could be created");
    if (options.device == DeviceChoice::Hardware && internals_.GetDeviceKind() != ql::QL_DEVICE_HARDWARE)
      throw Failure(ExitCode::NoDevice, "there is no hardware device here");
    engine_.SetWindowTitle(options.file.filename().string() + " - ql-view");
  }

  void show(Sheet& sheet, std::size_t page) {
    PageKeys keys;
    ql::Texture8 texture = textureOf(sheet.page(page));
    for (int i = 0; !engine_.CloseRequested() && !keys.done() && (!options_.frames || i < *options_.frames); ++i) {
      const int turn = keys.turn();
      if ((turn > 0 && page + 1 < sheet.pages()) || (turn < 0 && page > 0)) {
        page = turn > 0 ? page + 1 : page - 1;
        factory_.DeleteTexture(texture);
        texture = textureOf(sheet.page(page));
      }
      engine_.Clear();
      screen_.DrawPartTexture(texture, 0, 0, static_cast<float>(options_.width), static_cast<float>(options_.height), 0,
                              0, 1, 1);
      engine_.RenderToScreen();
    }
  }

 private:
  ql::Texture8 textureOf(const walk::Picture& picture) {
    const fs::path file = fs::path(std::getenv("XDG_STATE_HOME")) / "sheet.png";
    walk::writePng(file, picture);
    std::int32_t width = options_.width, height = options_.height;
    const ql::Texture8 texture = scene_.LoadTexture(file.string(), width, height);
    fs::remove(file);
    return texture;
  }

  const Options& options_;
  ql::Quasarlens8 engine_;
  ql::InternalObjects8 internals_;
  ql::Scene8 scene_;
  ql::Screen8 screen_;
  ql::TextureFactory8 factory_;
};

nlohmann::ordered_json jsonOf(const Options& options, Kind kind, const TextureList& textures, const Sheet& sheet) {
  nlohmann::ordered_json json{
      {"file", options.file.string()}, {"kind", nameOf(kind)},   {"size", {options.width, options.height}},
      {"page", options.page},          {"pages", sheet.pages()}, {"textures", textures.count()}};
  json["shown"] = nlohmann::ordered_json::array();
  for (const Sheet::Shown& shown : sheet.shown()) json["shown"].push_back({shown.name, shown.width, shown.height});
  return json;
}

}  // namespace

void showSheet(Kind kind, const Options& options) {
  const TextureList textures(kind, options.file);
  Sheet sheet(textures, options.file.filename().string(), static_cast<std::uint32_t>(options.width),
              static_cast<std::uint32_t>(options.height));
  const auto page = static_cast<std::size_t>(options.page);
  if (page > sheet.pages()) throw Failure(ExitCode::Usage, fmt::format("--page: there are {}", sheet.pages()));
  if (options.out) {
    walk::writePng(*options.out == "-" ? fs::path("/dev/stdout") : fs::path(*options.out), sheet.page(page - 1));
  } else {
    const walk::PrivateHome home;
    SheetWindow(options).show(sheet, page - 1);
  }
  if (options.json)
    walk::writeText(
        *options.json,
        jsonOf(options, kind, textures, sheet).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
}

}  // namespace view
