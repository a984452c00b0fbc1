#include "render/scene/ShaderList.h"

#include "SeedFolder.h"

#include <cstdlib>
#include <span>
#include <string_view>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  constexpr std::string_view kText =
      "// a list\r\nTEXTURES 2\r\nwall.jpg > wall\r\nfloor.jpg>floor\r\nSHADER shiny\r\n{\r\n{\r\nMAP "
      "wall\r\n}\r\n}\r\n"
      "TEXTURETABLE 1\r\na > b\r\n";
  const auto bytes = std::as_bytes(std::span(kText));
  ql::test::writeSeeds(*argc, *argv, {{bytes.begin(), bytes.end()}});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ql::render::scene;
  const ShaderList list = parseShaderList({reinterpret_cast<const char*>(data), size});
  std::size_t characters = 0, stages = 0;
  for (const ListEntry& entry : list.entries) {
    characters += entry.texture.fileName.size() + entry.texture.name.size() + entry.shader.name.size();
    stages += entry.shader.shader.stages.size();
  }
  if (characters + stages > size || (list.fault == ListFault::None) != (list.line == 0)) std::abort();
  return 0;
}
