#include "level/LoadingPanel.h"

#include "render/Progress.h"

namespace ql::level {
namespace {

using render::ProgressPicture;
using render::Screen;

constexpr const char* kFont = "BSP";
constexpr render::Corners kPanel{10, 5, 200, 130};
constexpr std::int32_t kTextX = 20;

constexpr std::int32_t argb(std::uint32_t color) { return static_cast<std::int32_t>(color); }
constexpr render::CornerColors kPanelColors{argb(0xFF777700), argb(0xFF007700), argb(0xFF007777), argb(0xFF770000)};
constexpr std::int32_t kFrameColor = argb(0xFF00FF00), kTitleColor = argb(0xFFFF0000), kStepColor = argb(0xFF00FFFF);

}  // namespace

void showLoadingPanel(engine::EngineContext& context, const std::string& fileName) {
  render::showProgress(context, ProgressPicture::First, [&](Screen& screen) {
    if (!screen.userFonts().find(kFont)) screen.userFonts().create(kFont, {.face = "Tahoma", .points = 8});
    screen.drawFilledColorBox(kPanel, kPanelColors, true);
    screen.drawBox(kPanel, kFrameColor);
    screen.drawText("BSP Loader for Quasarlens 8 ", kTextX, 10, kTitleColor, kFont);
    screen.drawText("----------------------------", kTextX, 20, kTitleColor, kFont);
    screen.drawText("Load file " + fileName + "...", kTextX, 30, kStepColor, kFont);
  });
}

void showLoadingStep(engine::EngineContext& context, const std::string& step, std::int32_t y) {
  render::showProgress(context, ProgressPicture::Next,
                       [&](Screen& screen) { screen.drawText(step, kTextX, y, kStepColor, kFont); });
}

}  // namespace ql::level
