#include "render/shaders/ShaderScript.h"

#include "SeedFolder.h"

#include <cstdlib>
#include <span>
#include <string>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  const std::string text =
      "textures/a\r\n{\r\n surfaceparm sky\r\n {\r\n  map $lightmap\r\n  blendFunc GL_ONE filter // x\r\n"
      "  tcMod scale 2 3 scroll .5 -1\r\n }\r\n {\r\n  animMap 2 a.tga b.tga\r\n  blend add\r\n  depthWrite\r\n "
      "}\r\n}\r\n";
  const auto bytes = std::as_bytes(std::span(text));
  ql::test::writeSeeds(*argc, *argv, {{bytes.begin(), bytes.end()}});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace ql::render::shaders;
  const std::string_view script(reinterpret_cast<const char*>(data), size);
  for (const ScriptEntry& entry : indexScript(script)) {
    std::size_t end = 0;
    const ScriptShader shader = parseShaderBody(script, entry.body, &end);
    if (entry.body > size || end > size || end < entry.body || shader.stages.size() > kMostStages) std::abort();
    for (const ScriptStage& stage : shader.stages)
      if (stage.maps.size() > kMostFrames ||
          (stage.kind != StageKind::Animation && stage.frameCount != 1 && stage.maps.size() > 1))
        std::abort();
  }
  return 0;
}
