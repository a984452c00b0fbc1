#include "Overlay.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>

#include <fmt/format.h>

namespace walk {
namespace {

/// Letters of one width.
struct Type {
  const char* font;
  std::int32_t points;
  std::int32_t advance, lineHeight;  ///< pixels
};
constexpr Type kLarge{"overlay", 9, 7, 16}, kSmall{"overlay small", 7, 6, 12};
constexpr std::int32_t kSmallBelow = 400;  // width of the picture, pixels
constexpr std::int32_t kMargin = 8, kPadding = 4;
constexpr std::int32_t kShare = 3;  // the panel takes at most this part of the height
constexpr std::int32_t kGround = static_cast<std::int32_t>(0xA0000000), kEdge = static_cast<std::int32_t>(0xFF80C0FF);
constexpr std::int32_t kWhite = -1;

/// As many as there is room for: what the walk is about goes first, then the last ones.
std::vector<std::string> linesFor(const Report& report, std::size_t room) {
  const std::string level = std::filesystem::path(report.level).filename().string();
  std::vector<std::string> about = {fmt::format("{}  {}x{} {}", level, report.width, report.height, report.device),
                                    fmt::format("frame {}, loaded in {:.0f} ms", report.frames.size(), report.loadMs)};
  std::vector<std::string> numbers;
  if (!report.frames.empty()) {
    const FrameReport& last = report.frames.back();
    const Quasarlens3D::FrameStatistics& s = last.statistics;
    numbers = {fmt::format("frame {}: {:.3f} ms, {} faces", report.frames.size() - 1, last.ms, s.faces),
               fmt::format("{} triangles, {} draw calls", s.triangles, s.drawCalls)};
    if (report.tellsOfWork()) {
      numbers.push_back(
          fmt::format("{} drawn, {} culled, {} clipped", s.trianglesDrawn, s.trianglesCulled, s.trianglesClipped));
      numbers.push_back(fmt::format("{} pixels, {} tiles", s.pixelsShaded, s.tilesTouched));
      numbers.push_back(
          fmt::format("vertices {:.3f}, binning {:.3f}, tiles {:.3f} ms", s.verticesMs, s.binningMs, s.tilesMs));
    }
  }
  numbers.resize(std::min(numbers.size(), room));
  about.resize(std::min(about.size(), room - numbers.size()));
  about.insert(about.end(), numbers.begin(), numbers.end());
  return about;
}

}  // namespace

Overlay::Overlay() {
  using Quasarlens3D::False;
  for (const Type& type : {kLarge, kSmall})
    screen_.CreateUserFont(type.font, "DejaVu Sans Mono", type.points, False, False, False);
}

std::vector<std::string> Overlay::draw(const Report& report) {
  const Type& type = report.width < kSmallBelow ? kSmall : kLarge;
  const std::int32_t room = std::max(report.height / kShare / type.lineHeight, 1);
  std::vector<std::string> lines = linesFor(report, static_cast<std::size_t>(room));
  std::size_t longest = 0;
  for (const std::string& line : lines) longest = std::max(longest, line.size());

  const auto count = static_cast<std::int32_t>(lines.size());
  const std::int32_t bottom = report.height - kMargin, top = bottom - count * type.lineHeight;
  const Quasarlens3D::Rect panel{kMargin - kPadding, top - kPadding,
                                 kMargin + kPadding + static_cast<std::int32_t>(longest) * type.advance,
                                 bottom + kPadding};
  const auto left = static_cast<float>(panel.left), right = static_cast<float>(panel.right);
  const auto upper = static_cast<float>(panel.top), lower = static_cast<float>(panel.bottom);
  screen_.DrawFilledBox(left, upper, right, lower, kGround, Quasarlens3D::True);
  screen_.DrawBox(left, upper, right, lower, kEdge);
  for (std::int32_t i = 0; i < count; ++i)
    screen_.DrawText(lines[static_cast<std::size_t>(i)], kMargin, top + i * type.lineHeight, kWhite, type.font);
  return lines;
}

}  // namespace walk
