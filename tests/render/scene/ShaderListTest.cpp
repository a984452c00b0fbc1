#include "render/RenderTest.h"
#include "render/scene/Scene.h"
#include "render/scene/ShaderList.h"
#include "render/shaders/Shaders.h"

namespace ql::render::scene {
namespace {

using testing::ElementsAre;

/// Entries as texts: "file > name", or of shaders "name:" and the first map of each stage.
std::vector<std::string> listed(std::string_view text) {
  std::vector<std::string> all;
  for (const ListEntry& entry : parseShaderList(text).entries) {
    std::string line = entry.texture.fileName + " > " + entry.texture.name;
    if (entry.isShader) {
      line = entry.shader.name + ":";
      for (const shaders::ScriptStage& stage : entry.shader.shader.stages)
        line += " " + (stage.maps.empty() ? "none" : stage.maps[0]);
    }
    all.push_back(line);
  }
  return all;
}

TEST(ShaderLists, HoldTexturesAndShaders) {
  struct Case {
    const char* name;
    const char* text;
    std::vector<std::string> entries;
    ListFault fault = ListFault::None;
    std::size_t line = 0;
  };
  for (const Case& row : {
           Case{"textures, then a shader",
                "// a list\r\n\r\nTextures 2\r\n wall.jpg > wall \r\nfloor.jpg>floor\r\nSHADER test\r\n{\r\n{\r\nmap "
                "wall\r\n}\r\n}\r\nother 5\r\ntexturetable 1\na>b>c",
                {"wall.jpg > wall", "floor.jpg > floor", "test: wall", "a > b>c"}},
           Case{"lines of the list are taken as they are", "TEXTURESTABLE 2\n// > x\n > y", {"// > x", " > y"}},
           Case{"no separator", "TEXTURES 3\na > b\nnothing\nc > d", {"a > b"}, ListFault::NoSeparator, 3},
           Case{"a blank line in a list", "TEXTURES 2\na > b\n\nc > d", {"a > b"}, ListFault::NoSeparator, 3},
           Case{"too few", "TEXTURES 1e300\na > b", {"a > b"}, ListFault::PastEnd, 2},
           Case{"none", "TEXTURES\nTEXTURES -4\nTEXTURES x\nTEXTURES 0.0", {}},
           Case{"a body without its end", "SHADER open\n{\nMAP x", {"open:"}},
           Case{"two shaders", "SHADER s\n{\n{\nmap } x\n}\n{\n}\n}\nSHADER t\n\nTEXTURES 1", {"s: } x none", "t:"}},
           Case{"a closing brace first", "SHADER s\n}\nTEXTURES 1\na>b", {"s:", "a > b"}},
           Case{"empty", "", {}},
           Case{"carriage returns alone", "TEXTURES 1\ra>b\rSHADER x\r{\r}", {"a > b", "x:"}},
       }) {
    EXPECT_EQ(listed(row.text), row.entries) << row.name;
    EXPECT_EQ(parseShaderList(row.text).fault, row.fault) << row.name;
    EXPECT_EQ(parseShaderList(row.text).line, row.line) << row.name;
  }
}

struct Lists : test::RenderTest {};

TEST_F(Lists, LoadKeyedTexturesUnderTheirNames) {
  picture("wall.bmp", 8, 8, 0);
  test::put("list.txt",
            "TEXTURES 2\nwall.bmp > Wall\nmissing.bmp > Floor\nSHADER x\n{\n{\nMAP wall\nBLEND ADD\n}\n}\n");
  createScene(context)->loadShaders("LIST.txt");
  auto& entries = context.get<TextureTable>().entries;
  ASSERT_EQ(entries.count(), 2);
  EXPECT_EQ(entries.at(1).name, "Wall");
  EXPECT_EQ(entries.at(1).width, 256);
  EXPECT_EQ(entries.at(1).colorKey, 0xFF000000u);
  EXPECT_EQ(entries.at(2).name, "Floor");
  EXPECT_EQ(entries.at(2).texture, nullptr);
  const auto shader = shaders::findShader(context, "X");
  ASSERT_TRUE(shader);
  const auto& stages = context.get<shaders::ShaderTable>().entries.at(shader->index).stages;
  ASSERT_EQ(stages.size(), 1u);
  EXPECT_THAT(stages[0].textures, testing::ElementsAre(1)) << "found by its name";
  EXPECT_EQ(stages[0].sourceBlend, 2);
}

TEST_F(Lists, FaultsKeepWhatCameBefore) {
  const auto scene = createScene(context);
  const auto numberOf = [&](const char* file) {
    try {
      scene->loadShaders(file);
    } catch (...) {
      return engine::currentError().number;
    }
    return 0;
  };
  picture("wall.bmp", 8, 8, 0);
  test::put("broken.txt", "TEXTURES 2\nwall.bmp > Wall\nfloor\n");
  test::put("short.txt", "TEXTURES 2\nwall.bmp > Short\n");
  EXPECT_EQ(numberOf("none.txt"), 53);
  EXPECT_EQ(numberOf("broken.txt"), 9);
  EXPECT_EQ(findTextureIndex(context, "wall"), 1);
  EXPECT_EQ(numberOf("short.txt"), 62);
  EXPECT_EQ(findTextureIndex(context, "short"), 1);
}

}  // namespace
}  // namespace ql::render::scene
