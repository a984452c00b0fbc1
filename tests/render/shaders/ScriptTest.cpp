#include "platform/host/Files.h"
#include "render/Materials.h"
#include "render/RenderTest.h"
#include "render/TextureTable.h"
#include "render/shaders/Shaders.h"
#include "support/SharedData.h"

namespace ql::render::shaders {
namespace {

using testing::ElementsAre;

/// A stage as text: "maps | flags source,destination kind frequency scale scroll".
std::string text(const ScriptStage& stage) {
  std::string line;
  for (const std::string& map : stage.maps) line += map + ' ';
  line += "| " + std::to_string(stage.flags) + ' ' + std::to_string(stage.sourceBlend) + ',' +
          std::to_string(stage.destinationBlend) + " kind " + std::to_string(static_cast<int>(stage.kind));
  const auto number = [&](const char* name, float a, float b) {
    if (a != 0 || b != 0) line += ' ' + std::string(name) + ' ' + std::to_string(a) + ' ' + std::to_string(b);
  };
  number("frames", stage.frameCount == 1 ? 0.0f : stage.frameCount, stage.frequency);
  number("scale", stage.scaleS, stage.scaleT);
  number("scroll", stage.scrollS, stage.scrollT);
  return line;
}
std::string onlyStage(const std::string& lines) {
  const ScriptShader shader = parseShaderBody("{\n{\n" + lines + "\n}\n}\n", 0);
  return shader.stages.size() == 1 ? text(shader.stages[0]) : std::to_string(shader.stages.size()) + " stages";
}

TEST(ShaderScripts, StagesSayHowToDraw) {
  struct Case {
    const char* lines;
    const char* stage;
  };
  for (const Case& row : {
           Case{"map a/b.tga", "a/b.tga | 0 -1,0 kind 0"},
           Case{"MAP $LightMap\nblendfunc gl_dst_color gl_zero", "$lightmap | 17 9,1 kind 1"},
           Case{"map $texture\ndepthWrite", "$texture | 4 -1,0 kind 0"},
           Case{"", "| 0 -1,0 kind 0"},
           Case{"\t map\t \tspaced.tga   // and a remark", "spaced.tga | 0 -1,0 kind 0"},
           Case{"map http://x//y", "http://x//y | 0 -1,0 kind 0"},
           Case{"animMap 2 a.tga b.tga  c.tga", "a.tga b.tga c.tga | 8 -1,0 kind 2 frames 3.000000 2.000000"},
           Case{"anim x", "| 8 -1,0 kind 2"},
           Case{"blend add", "| 1 2,2 kind 0"},
           Case{"blend alpha", "| 1 5,6 kind 0"},
           Case{"blend lightmap", "| 1 9,1 kind 0"},
           Case{"blend color", "| 1 3,2 kind 0"},
           Case{"blend sideways", "| 1 -1,0 kind 0"},
           Case{"blendFunc blend", "| 1 2,2 kind 0"},
           Case{"blendFunc filter", "| 1 9,1 kind 0"},
           Case{"blendFunc gl_src_alpha GL_ONE_MINUS_SRC_ALPHA", "| 1 5,6 kind 0"},
           Case{"blendFunc invalpha alpha", "| 1 6,5 kind 0"},
           Case{"blendFunc color color", "| 1 3,9 kind 0"},
           Case{"blendFunc destcolor srccolor", "| 1 9,3 kind 0"},
           Case{"blendFunc gl_one what", "| 1 2,0 kind 0"},
           Case{"tcMod scale 2 -0.5\ntcmod scroll .25 1",
                "| 194 -1,0 kind 0 scale 2.000000 -0.500000 scroll 0.250000 1.000000"},
           Case{"tcMod scroll 1 2 scale 3 4", "| 194 -1,0 kind 0 scale 3.000000 4.000000 scroll 1.000000 2.000000"},
           Case{"tcMod turb 0 1 2 3", "| 2 -1,0 kind 0"},
           Case{"tcMod scale 1e300", "| 66 -1,0 kind 0"},
           Case{"rgbGen identity\nalphafunc GE128", "| 0 -1,0 kind 0"},
           Case{"map {", "{ | 0 -1,0 kind 0"},
       })
    EXPECT_EQ(onlyStage(row.lines), row.stage) << row.lines;
}

TEST(ShaderScripts, AreIndexedAndEndWithTheirLastBrace) {
  const std::string script =
      "// sky\r\ntextures/sky\r\n{\r\n  surfaceparm sky\r\n\t{\r\n\tmap a\r\n\t}\r\n  surfaceparm nolightmap\r\n}\r\n"
      "\r\ntextures/wall // a wall\r{\r{\rmap b\r}\r{\rmap c\r}\r}\rloose\n";
  const std::vector<ScriptEntry> entries = indexScript(script);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0].name, "textures/sky");
  EXPECT_EQ(entries[1].name, "textures/wall");
  EXPECT_EQ(entries[2].name, "loose");
  const ScriptShader sky = parseShaderBody(script, entries[0].body);
  EXPECT_EQ(sky.surfaceFlags, kSky);
  EXPECT_EQ(sky.stages.size(), 1U);
  std::size_t end = 0;
  const ScriptShader wall = parseShaderBody(script, entries[1].body, &end);
  EXPECT_EQ(wall.surfaceFlags, 0);
  ASSERT_EQ(wall.stages.size(), 2U);
  EXPECT_EQ(wall.stages[1].maps, std::vector<std::string>{"c"});
  EXPECT_EQ(script.substr(end), "loose\n");

  EXPECT_EQ(parseShaderBody("{\n{\nmap a\n", 0).stages.size(), 1U) << "no last brace";
  EXPECT_EQ(parseShaderBody("}\n{\n{\n}\n}\n", 0).stages.size(), 0U) << "a closing brace first";
  EXPECT_EQ(parseShaderBody("{\n{\n{\nmap deep\n}\nmap a\n}\n}\n", 0).stages[0].maps, std::vector<std::string>{"a"});
  EXPECT_TRUE(parseShaderBody("x", 99).stages.empty());
  std::string many = "{\n";
  for (int i = 0; i < 10'000; ++i) many += "{\nmap a\n}\n";
  EXPECT_EQ(parseShaderBody(many, 0).stages.size(), kMostStages);
  EXPECT_TRUE(parseShaderBody(std::string(10 << 20, 'x'), 0).stages.empty()) << "one long line";
}

struct Scripts : test::RenderTest {
  const ShaderEntry& entry(std::int16_t index) { return context.get<ShaderTable>().entries.at(index); }
  std::string textureName(std::int16_t index) { return context.get<TextureTable>().entries.at(index).name; }
};

TEST_F(Scripts, FillTheTable) {
  picture("scripts/../a.bmp", 8, 8, 0xFF102030);
  picture("b.JPG", 8, 8, 0xFF102030);
  test::put("scripts/one.shader", "shared\n{\n{\nmap a.bmp\n}\n}\nonly\n{\n{\nmap b.tga\n}\n{\nmap $lightmap\n}\n}\n");
  test::put("scripts/TWO.Shader", "shared\n{\n{\nmap missing.tga\n}\n}\nb\n{\n{\nblend add\n}\n}\n");
  test::put("scripts/three.txt", "none\n{\n}\n");
  ScriptFiles files;
  files.addFolder("scripts\\");
  files.addFolder("nowhere");
  EXPECT_EQ(files.shaderCount(), 3U);
  EXPECT_EQ(files.load(context, "Shared"), 0) << "names are exact";
  const std::int16_t shared = files.load(context, "shared");
  ASSERT_EQ(shared, 1);
  EXPECT_EQ(textureName(entry(shared).stages[0].textures[0]), "a.bmp") << "the first file counts";
  EXPECT_EQ(context.get<MaterialTable>().entries.at(entry(shared).stages[0].material).name, "MatShader");
  const std::int16_t only = files.load(context, "only");
  ASSERT_EQ(only, 2);
  EXPECT_EQ(textureName(entry(only).stages[0].textures[0]), "b.JPG");
  EXPECT_EQ(entry(only).stages[1].textures[0], kFaceLightmap);
  EXPECT_EQ(textureName(entry(files.load(context, "b")).stages[0].textures[0]), "b.JPG") << "the shader's own name";

  const std::shared_ptr<ShaderHandle> handle = findShader(context, "SHARED");
  ASSERT_TRUE(handle);
  EXPECT_EQ(handle->index, shared);
  EXPECT_FALSE(findShader(context, "share"));
  // The second definition replaces the first in place; textures are those that are loaded already.
  EXPECT_EQ(addShader(context, "shared", parseShaderBody("{\n{\nmap B.jpg\n}\n{\nmap unknown\n}\n}", 0), false),
            shared);
  EXPECT_EQ(findShader(context, "shared"), handle);
  ASSERT_EQ(entry(shared).stages.size(), 2U);
  EXPECT_EQ(textureName(entry(shared).stages[0].textures[0]), "b.JPG");
  EXPECT_EQ(entry(shared).stages[1].textures[0], 0);
}

TEST(RealScripts, AreReadWhole) {
  QL_NEED_SHARED_DATA();
  std::size_t shaders = 0, stages = 0;
  for (const std::filesystem::path& file : test::sharedFiles("")) {
    if (file.extension() != ".shader" || file.string().find("hostile") != std::string::npos) continue;
    SCOPED_TRACE(file);
    const std::vector<std::byte> bytes = host::readFile(file.string());
    const std::string_view script(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (const ScriptEntry& entry : indexScript(script)) {
      EXPECT_EQ(entry.name.find_first_of("{}"), std::string::npos);
      const ScriptShader shader = parseShaderBody(script, entry.body);
      ++shaders;
      stages += shader.stages.size();
    }
  }
  EXPECT_GT(shaders, 300U);
  EXPECT_GT(stages, shaders / 2);
}

TEST(HostileScripts, EndWhereverTheyAreCut) {
  for (const std::filesystem::path& file : test::sharedFiles("hostile/q3shader")) {
    SCOPED_TRACE(file);
    const std::vector<std::byte> bytes = host::readFile(file.string());
    const std::string_view whole(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::size_t step = 1 + whole.size() / 200;
    for (std::size_t size = 0; size <= whole.size(); size += step) {
      const std::string script(whole.substr(0, size));  // a buffer of exactly that size
      for (const ScriptEntry& entry : indexScript(script)) {
        EXPECT_LE(entry.body, script.size());
        EXPECT_LE(parseShaderBody(script, entry.body).stages.size(), kMostStages);
      }
    }
  }
}

}  // namespace
}  // namespace ql::render::shaders
