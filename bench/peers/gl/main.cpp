// Draws what the engine draws with plain OpenGL on Mesa's software driver, and times it.
#include "Fill.h"
#include "LevelScene.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
  try {
    const peers::Options options = peers::parseOptions("ql-peer-gl", {"fill", "triangles", "level"}, argc, argv);
    const peers::gl::Context context(options.size);
    std::fprintf(stderr, "%s\n", context.renderer().c_str());
    for (const std::string& name : options.cases) {
      if (name == "fill") timeFill(context, options);
      if (name == "triangles") timeTriangles(context, options);
      if (name == "level") timeLevel(context, options);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ql-peer-gl: %s\n", error.what());
    return 5;
  }
}
