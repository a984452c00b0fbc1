#include "mesh/ThreeDs.h"

#include "SeedFolder.h"
#include "support/ThreeDsFiles.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  ql::test::Tiny3ds late;
  late.coordinatesFirst = false;
  ql::test::writeSeeds(*argc, *argv, {ql::test::Tiny3ds().bytes(), late.bytes()});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ql;
  const mesh::ThreeDsFile file = mesh::parseThreeDs(std::as_bytes(std::span(data, size)));
  if (file.chunks.size() > mesh::kMostThreeDsChunks || file.chunks.size() * 6 > size) std::abort();
  const mesh::ThreeDsSummary summary = mesh::summarize(file);
  for (const mesh::ThreeDsObject& object : summary.objects) {
    if (object.positions.size() * 12 > size || object.faces * 8 > size) std::abort();
    for (const math::Vec3& p : object.positions)
      if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) std::abort();
  }
  return 0;
}
