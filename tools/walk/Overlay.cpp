#include "Overlay.h"

#include <fmt/format.h>

namespace walk {
namespace {

constexpr const char* kFont = "overlay";
constexpr std::int32_t kPoints = 9, kLineHeight = 16, kMargin = 8;  // kLineHeight, kMargin: pixels
constexpr std::int32_t kGround = static_cast<std::int32_t>(0xA0000000), kEdge = static_cast<std::int32_t>(0xFF80C0FF);
constexpr std::int32_t kWhite = -1;
constexpr float kWidth = 400;

std::vector<std::string> linesFor(const Report& report) {
  std::vector<std::string> lines = {
      fmt::format("{}  {}x{} {}", report.level, report.width, report.height, report.device),
      fmt::format("frame {}, loaded in {:.0f} ms", report.frames.size(), report.loadMs)};
  if (report.frames.empty()) return lines;
  const FrameReport& last = report.frames.back();
  lines.push_back(
      fmt::format("frame {}: {:.3f} ms, {} faces", report.frames.size() - 1, last.ms, last.statistics.faces));
  lines.push_back(fmt::format("{} triangles, {} draw calls", last.statistics.triangles, last.statistics.drawCalls));
  return lines;
}

}  // namespace

Overlay::Overlay() {
  using Quasarlens3D::False;
  screen_.CreateUserFont(kFont, "DejaVu Sans Mono", kPoints, False, False, False);
}

std::vector<std::string> Overlay::draw(const Report& report) {
  std::vector<std::string> lines = linesFor(report);
  const std::int32_t top = report.height - kMargin - static_cast<std::int32_t>(lines.size()) * kLineHeight;
  const auto left = static_cast<float>(kMargin - 4), bottom = static_cast<float>(report.height - kMargin + 2);
  screen_.DrawFilledBox(left, static_cast<float>(top - 4), left + kWidth, bottom, kGround, Quasarlens3D::True);
  screen_.DrawBox(left, static_cast<float>(top - 4), left + kWidth, bottom, kEdge);
  for (std::size_t i = 0; i < lines.size(); ++i)
    screen_.DrawText(lines[i], kMargin, top + static_cast<std::int32_t>(i) * kLineHeight, kWhite, kFont);
  return lines;
}

}  // namespace walk
