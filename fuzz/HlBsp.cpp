#include "level/HlBsp.h"

#include "level/Collision.h"
#include "level/HlFaces.h"
#include "level/LightmapPages.h"
#include "platform/host/Fault.h"
#include "support/TinyHlLevel.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

namespace {

using namespace ql;

void require(bool condition) {
  if (!condition) std::abort();
}

/// What the parts that run per frame rely on.
void checkPromises(const level::HlBsp& file, const level::HlFaces& built) {
  for (const level::HlNode& node : file.nodes) {
    require(static_cast<std::size_t>(node.plane) < file.planes.size());
    for (const std::int16_t child : node.children)
      require(child == level::kNoHlChild || (child >= 0 ? static_cast<std::size_t>(child) < file.nodes.size()
                                                        : static_cast<std::size_t>(~child) < file.leaves.size()));
  }
  for (const level::HlLeaf& leaf : file.leaves)
    require(std::size_t{leaf.firstMarkSurface} + leaf.markSurfaceCount <= file.markSurfaces.size() ||
            leaf.markSurfaceCount == 0);
  for (const level::FaceRecord& face : built.records) {
    require(face.triangleCount == 0 || face.firstVertex + face.triangleCount + 2 <= built.vertices.size());
    require(face.texture < static_cast<std::int64_t>(file.textures.size()));
    require(face.lightmap < static_cast<std::int64_t>(built.lightmaps.size()));
  }
  for (const level::HlLightmap& light : built.lightmaps)
    require(light.offset + std::uint64_t{light.width} * light.height * 3 <= file.lighting.size());
  for (const level::HlVertex& vertex : built.vertices) require(std::isfinite(vertex.tu + vertex.tv + vertex.tu1));
}

void checkPages(const level::HlBsp& file, level::HlFaces& built) {
  std::uint64_t luxels = 0;
  for (const level::HlLightmap& light : built.lightmaps) luxels += std::uint64_t{light.width} * light.height;
  const level::LightmapPages made = level::makeLightmapPages(file.lighting, built.lightmaps, 256);
  level::usePages(built, made);
  std::uint64_t texels = 0;
  for (const level::LightmapPage& page : made.pages) {
    require(page.pixels.size() == std::size_t{page.width} * page.height);
    texels += page.pixels.size();
  }
  // Small ones take 8 by 8 and their edges, single ones grow along one axis, and pages are never quite full.
  require(texels <= 8 * luxels + built.lightmaps.size() * 400 + 256 * 256);
  for (const level::LightmapPlace& place : made.places) {
    const level::LightmapPage& page = made.pages.at(place.page);
    const std::uint32_t edge = page.single ? 0 : 1;
    require(place.x >= edge && place.y >= edge && place.x + place.width + edge <= page.width &&
            place.y + place.height + edge <= page.height);
  }
}

void decodeTextures(std::span<const std::byte> bytes, const level::HlBsp& file) {
  for (std::size_t i = 0; i < std::min<std::size_t>(file.textures.size(), 8); ++i) {
    if (file.textures[i].offset == 0) continue;
    try {
      level::decodeMipTexture(level::textureBytes(bytes, file, file.textures[i]));
    } catch (const host::FileFault&) {
    }
  }
}

}  // namespace

/// Writes the seed when the corpus folder given as an argument is empty.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  for (int i = 1; i < *argc; ++i) {
    const std::filesystem::path folder = (*argv)[i];
    if (!std::filesystem::is_directory(folder) || !std::filesystem::is_empty(folder)) continue;
    const std::vector<std::byte> seed = test::TinyHlLevel().bytes();
    std::ofstream(folder / "tiny.bsp", std::ios::binary)
        .write(reinterpret_cast<const char*>(seed.data()), static_cast<std::streamsize>(seed.size()));
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
  try {
    const level::HlBsp file = level::parseHlBsp(bytes);
    level::HlFaces built = level::buildHlFaces(file);
    checkPromises(file, built);
    checkPages(file, built);
    decodeTextures(bytes, file);
  } catch (const host::FileFault&) {
  }
  return 0;
}
