#include "Report.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>
#include <sys/resource.h>

namespace walk {
namespace {

std::int64_t peakBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return std::int64_t{usage.ru_maxrss} * 1024;
}

double rounded(double ms) { return std::round(ms * 1000) / 1000; }

}  // namespace

double Report::quantile(double part) const {
  if (frames.empty()) return 0;
  std::vector<double> times;
  for (const FrameReport& frame : frames) times.push_back(frame.ms);
  std::sort(times.begin(), times.end());
  const double rank = std::ceil(part * static_cast<double>(times.size()));
  return times[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

std::string Report::json() const {
  nlohmann::ordered_json out = {{"level", level},
                                {"device", device},
                                {"size", {width, height}},
                                {"load_ms", rounded(loadMs)},
                                {"median_ms", rounded(quantile(0.5))},
                                {"p95_ms", rounded(quantile(0.95))},
                                {"peak_bytes", peakBytes()},
                                {"frames", nlohmann::ordered_json::array()}};
  for (const auto& [ms, s, fps, overlay] : frames) {
    nlohmann::ordered_json& frame = out["frames"].emplace_back();
    frame = {{"ms", rounded(ms)}, {"faces", s.faces}, {"triangles", s.triangles}, {"draw_calls", s.drawCalls}};
    if (!overlay.empty()) frame.update({{"fps", std::lround(fps)}, {"overlay", overlay}});
    if (!tellsOfWork()) continue;
    frame.update({{"culled", s.trianglesCulled},
                  {"clipped", s.trianglesClipped},
                  {"drawn", s.trianglesDrawn},
                  {"pixels", s.pixelsShaded},
                  {"tiles", s.tilesTouched},
                  {"vertices_ms", rounded(s.verticesMs)},
                  {"binning_ms", rounded(s.binningMs)},
                  {"tiles_ms", rounded(s.tilesMs)}});
  }
  return out.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace walk
