#include "mesh/DxeText.h"

#include "mesh/Build.h"
#include "platform/host/Files.h"
#include "platform/host/Lines.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace ql::mesh {
namespace {

constexpr std::int32_t kWhite = -1;
constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 26;  // the most vertices take less, digits to spare

[[noreturn]] void overflow() { throw engine::EngineError(engine::kOverflow, "Overflow"); }

}  // namespace

std::vector<math::NormalVertex> parseDxe(std::string_view text) {
  host::Lines lines(text);
  const auto next = [&](const char* what) {
    if (const auto line = lines.next()) return *line;
    throw host::FileFault(host::Fault::Truncated, what, text.size(), text.size(), text.size());
  };
  next("DXE title");
  const double triangles = std::nearbyint(host::numberFromText(next("DXE number of triangles")));
  if (triangles * 3 > kMaxVertices) overflow();
  std::vector<math::NormalVertex> vertices;
  for (double i = 0; i < triangles * 3; ++i) {
    math::NormalVertex v;
    for (float* value : {&v.x, &v.y, &v.z, &v.nx, &v.ny, &v.nz, &v.tu, &v.tv}) {
      *value = static_cast<float>(host::numberFromText(next("DXE vertex")));
      if (!std::isfinite(*value)) overflow();
    }
    v.tu1 = v.tu;
    v.tv1 = v.tv;
    vertices.push_back(v);
  }
  return vertices;
}

void loadDxe(engine::EngineContext& context, MeshHandle& mesh, const std::string& fileName) {
  const std::vector<std::byte> bytes = host::readFile(fileName, kLargestFile);
  const std::vector<math::NormalVertex> vertices =
      parseDxe({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  if (meshRecord(context, mesh.slot).vertexCount + static_cast<std::int32_t>(vertices.size()) > kMaxVertices)
    overflow();
  setGroupPointer(context, mesh, 1);
  for (const math::NormalVertex& vertex : vertices) addVertex(context, mesh, vertex, kWhite);
}

}  // namespace ql::mesh
