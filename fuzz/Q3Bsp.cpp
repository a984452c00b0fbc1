#include "level/Q3Bsp.h"

#include "level/FaceBuilder.h"
#include "level/Visibility.h"
#include "platform/host/Fault.h"
#include "support/TinyQ3Level.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>

namespace {

using namespace ql;

void require(bool condition) {
  if (!condition) std::abort();
}

/// What the parts that run per frame rely on.
void checkPromises(const level::Q3Bsp& file) {
  for (const level::Q3Leaf& leaf : file.leaves) {
    require(leaf.leafFaceCount >= 0);
    for (std::int32_t k = 0; k < leaf.leafFaceCount; ++k)
      require(static_cast<std::size_t>(file.leafFaces.at(static_cast<std::size_t>(leaf.firstLeafFace + k))) <
              file.faces.size());
  }
  for (const level::Q3Node& node : file.nodes)
    for (const std::int32_t child : node.children)
      require(child == level::kNoChild || (child >= 0 ? static_cast<std::size_t>(child) < file.nodes.size()
                                                      : static_cast<std::size_t>(~child) < file.leaves.size()));
}

/// Draws one frame's list from a point, as the level object does.
void look(const level::Q3Bsp& file, level::BuiltFaces built) {
  level::LevelData data;
  data.faces = std::move(built.records);
  data.leafFaces = file.leafFaces;
  data.visibility = file.visibility;
  for (const level::Q3Leaf& leaf : file.leaves) {
    data.leaves.push_back({leaf.cluster, leaf.mins, leaf.maxs, leaf.firstLeafFace, leaf.leafFaceCount});
    data.leafSpheres.push_back(level::leafSphere(data.leaves.back()));
  }
  const std::array<math::Plane, 6> open{};
  level::VisibleFaces visible;
  for (const math::Vec3& at : {math::Vec3{0, 0, 0}, math::Vec3{-64, 50, 0}, math::Vec3{64, 50, 0}}) {
    visible.update(data, {at, {1, 2, 3}, math::identity(), math::identity(), open, 10000, true});
    for (const level::VisibleFace& face : visible.list()) {
      const level::FaceRecord& record = data.faces.at(static_cast<std::size_t>(face.face));
      require(record.firstVertex + std::uint64_t{record.triangleCount} * 3 <= built.vertices.size());
      require(record.texture < static_cast<std::int64_t>(file.textures.size()) &&
              record.lightmap < file.lightmapCount());
    }
  }
}

}  // namespace

/// Writes the seed when the corpus folder given as an argument is empty.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  for (int i = 1; i < *argc; ++i) {
    const std::filesystem::path folder = (*argv)[i];
    if (!std::filesystem::is_directory(folder) || !std::filesystem::is_empty(folder)) continue;
    test::TinyQ3Level tiny;
    tiny.lightmaps.clear();
    const std::vector<std::byte> seed = tiny.bytes();
    std::ofstream(folder / "tiny.bsp", std::ios::binary)
        .write(reinterpret_cast<const char*>(seed.data()), static_cast<std::streamsize>(seed.size()));
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const level::Q3Bsp file = level::parseQ3Bsp(std::as_bytes(std::span(data, size)));
    checkPromises(file);
    level::BuiltFaces built = level::buildFaces(file, size % 3);
    for (const level::LevelVertex& vertex : built.vertices) require(std::isfinite(vertex.x + vertex.tu + vertex.tv1));
    look(file, std::move(built));
  } catch (const host::FileFault&) {
  }
  return 0;
}
