#include "platform/xfile/XFile.h"

#include "SeedFolder.h"
#include "platform/host/Fault.h"
#include "support/XFiles.h"

#include <cmath>
#include <cstdlib>

namespace {

using namespace ql;

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  test::writeSeeds(
      *argc, *argv,
      {test::tinyX(test::XKind::Text), test::tinyX(test::XKind::Binary), test::tinyX(test::XKind::Binary, 8),
       test::tinyX(test::XKind::CompressedText), test::tinyX(test::XKind::CompressedBinary, 4, 100)});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const xfile::FlatMesh mesh = xfile::flatten(xfile::parseXFile(std::as_bytes(std::span(data, size))));
    require(mesh.indices.size() == mesh.attributes.size() * 3);
    for (const std::uint32_t index : mesh.indices) require(index < mesh.vertices.size());
    for (const std::uint32_t attribute : mesh.attributes) require(attribute < mesh.materials.size());
    for (const xfile::Vertex& v : mesh.vertices) {
      require(std::isfinite(v.position.x) && std::isfinite(v.position.y) && std::isfinite(v.position.z));
      require(std::isfinite(v.normal.x + v.normal.y + v.normal.z) && std::isfinite(v.tu) && std::isfinite(v.tv));
    }
  } catch (const host::FileFault&) {
  }
  return 0;
}
