#include "level/Wad3.h"

#include "platform/host/Fault.h"
#include "support/TinyHlLevel.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

/// Writes the seed when the corpus folder given as an argument is empty.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  using ql::test::mipTexture;
  for (int i = 1; i < *argc; ++i) {
    const std::filesystem::path folder = (*argv)[i];
    if (!std::filesystem::is_directory(folder) || !std::filesystem::is_empty(folder)) continue;
    const std::vector<std::byte> seed =
        ql::test::wadFile({{"wall", mipTexture("wall", 8, 3)}, {"{hole", mipTexture("{hole", 16, 255)}});
    std::ofstream(folder / "tiny.wad", std::ios::binary)
        .write(reinterpret_cast<const char*>(seed.data()), static_cast<std::streamsize>(seed.size()));
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ql;
  const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
  try {
    for (const level::WadEntry& entry : level::parseWad3(bytes)) {
      try {
        const images::Image image = level::decodeMipTexture(bytes.subspan(entry.offset, entry.size));
        if (image.pixels.size() != std::size_t{image.width} * image.height) std::abort();
      } catch (const host::FileFault&) {
      }
    }
  } catch (const host::FileFault&) {
  }
  return 0;
}
