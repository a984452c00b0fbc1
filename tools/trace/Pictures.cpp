#include "Pictures.h"

#include "Failure.h"
#include "platform/opengl/OpenGLBackEnd.h"
#include "platform/software/SoftwareBackEnd.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <utility>

#include <fmt/format.h>

namespace ql::trace {

namespace fs = std::filesystem;

std::unique_ptr<recording::Replayer> replayerOn(DeviceKind kind, const recording::Trace& trace) {
  if (kind == DeviceKind::Hardware)
    return std::make_unique<recording::Replayer>(trace, device::DeviceType::Hardware, opengl::createBackEnd);
  return std::make_unique<recording::Replayer>(
      trace, device::DeviceType::Reference,
      [](const device::PresentParameters&) { return std::shared_ptr<device::BackEnd>(software::createBackEnd()); });
}

void makeFolder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw Failure(ExitCode::Unreadable, fmt::format("cannot make {}: {}", folder.string(), error.message()));
}

void writePicture(const fs::path& file, images::Image picture) {
  picture.hasAlpha = false;
  const std::vector<std::byte> bytes = images::encodePng(picture);
  std::ofstream out(file, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  if (!out.flush()) throw Failure(ExitCode::Unreadable, fmt::format("cannot write {}", file.string()));
}

images::Image imageOf(const recording::FramePicture& picture) {
  return {picture.width, picture.height, picture.pixels, false};
}

Difference differenceOf(const images::Image& a, const images::Image& b) {
  Difference out;
  out.picture = a;
  if (a.width != b.width || a.height != b.height) {
    out.mean = out.largest = 255;
    std::ranges::fill(out.picture.pixels, 0xFFFFFFFF);
    return out;
  }
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < a.pixels.size(); ++i) {
    int most = 0;
    for (int shift = 0; shift < 24; shift += 8) {
      const int apart =
          std::abs(static_cast<int>(a.pixels[i] >> shift & 255) - static_cast<int>(b.pixels[i] >> shift & 255));
      sum += static_cast<std::uint64_t>(apart);
      most = std::max(most, apart);
    }
    out.largest = std::max(out.largest, most);
    out.picture.pixels[i] = 0x010101u * static_cast<std::uint32_t>(std::min(most * 8, 255));
  }
  if (!a.pixels.empty()) out.mean = static_cast<double>(sum) / (3.0 * static_cast<double>(a.pixels.size()));
  return out;
}

}  // namespace ql::trace
