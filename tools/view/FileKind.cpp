#include "FileKind.h"

#include "walk/Failure.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <string>

#include <fmt/format.h>

namespace view {
namespace {

using walk::ExitCode;
using walk::Failure;

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

}  // namespace

Kind kindOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in || !std::filesystem::is_regular_file(file))
    throw Failure(ExitCode::Unreadable, fmt::format("no file {}", file.string()));
  std::array<char, 8> bytes{};
  in.read(bytes.data(), bytes.size());
  const std::string_view start(bytes.data(), static_cast<std::size_t>(in.gcount()));
  const std::string ending = lowerCase(file.extension().string());
  if (start.starts_with("QLMESH"))
    throw Failure(ExitCode::Malformed,
                  fmt::format("{}: a QLMESH file gives back the mesh's name only; save as QLOF", file.string()));
  if (start.starts_with("QLOF")) return Kind::Chunks;
  if (start.starts_with("WAD3")) return Kind::Package;
  if (start.starts_with("PACK")) return Kind::Archive;
  if (start.starts_with("xof ")) return Kind::X;
  if (start.starts_with("IBSP") || ending == ".bsp") return Kind::Level;
  if (start.starts_with("MM")) return Kind::ThreeDs;
  if (ending == ".dxe") return Kind::Dxe;
  return Kind::Picture;
}

std::string_view nameOf(Kind kind) {
  constexpr std::array<std::string_view, 8> kNames{"level", "qlof", "x", "3ds", "dxe", "picture", "package", "archive"};
  return kNames.at(static_cast<std::size_t>(kind));
}

}  // namespace view
