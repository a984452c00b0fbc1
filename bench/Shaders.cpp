// Indexing a folder of shader scripts, and reading the shaders that a level asks for.
#include "render/shaders/Shaders.h"

#include "support/TemporaryFolder.h"

#include <string>

#include <benchmark/benchmark.h>

namespace {

using namespace ql;
using render::shaders::ScriptFiles;

constexpr int kFiles = 300, kShadersPerFile = 40;

/// Three megabytes in 300 files.
void putScripts() {
  for (int file = 0; file < kFiles; ++file) {
    std::string text;
    for (int i = 0; i < kShadersPerFile; ++i) {
      text += "textures/set" + std::to_string(file) + "/wall" + std::to_string(i) +
              "\r\n{\r\n\tsurfaceparm nomarks\r\n\t// light first\r\n\t{\r\n\t\tmap $lightmap\r\n\t\trgbGen "
              "identity\r\n\t}\r\n"
              "\t{\r\n\t\tmap textures/set/wall.tga\r\n\t\tblendFunc GL_DST_COLOR GL_ZERO\r\n\t\ttcMod scroll 0.1 "
              "1\r\n\t}\r\n}\r\n";
    }
    test::put("scripts/set" + std::to_string(file) + ".shader", text);
  }
}

void indexFolder(benchmark::State& state) {
  const test::TemporaryFolder folder;
  putScripts();
  for (auto _ : state) {
    ScriptFiles files;
    files.addFolder("scripts");
    if (files.shaderCount() != std::size_t{kFiles} * kShadersPerFile) state.SkipWithError("shaders are missing");
  }
}
BENCHMARK(indexFolder)->Unit(benchmark::kMillisecond);

}  // namespace
