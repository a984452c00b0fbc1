#include "RenderTest.h"
#include "render/TextureTable.h"
#include "support/PakFile.h"

namespace ql::render {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;

constexpr std::int32_t kBlackKey = static_cast<std::int32_t>(0xFF000000);
const std::string kAgain = "TEXTURE FACTORY : Texture already loaded... Reload however.";

struct Textures : test::RenderTest {
  std::int32_t width = -1, height = -1, key = 0;
  std::shared_ptr<TextureHandle> load(std::string file, const std::string& name = "") {
    width = height = -1;
    key = 0;
    return loadTexture(context, file, name, width, height, key);
  }
  const TextureEntry& entry(int index) { return context.get<TextureTable>().entries.at(index); }
  int count() { return context.get<TextureTable>().entries.count(); }
};

// Loads one after the other into one table; each says where it must land and whether it is a reload.
TEST_F(Textures, SlotIsTheFirstThatIsFreeOrEqual) {
  for (const char* file : {"a.bmp", "b.bmp", "c.bmp", "d.bmp", "A.BMP"}) picture(file, 4, 4, 0x808080);
  struct Step {
    const char* what;
    const char* file;
    const char* name;
    int slot, count;
    bool again;
    const char* named;
    int deleteBefore = 0;
  };
  const Step steps[] = {
      {"first", "a.bmp", "", 1, 1, false, "Texture1"},
      {"second", "b.bmp", "Wall", 2, 2, false, "Wall"},
      {"third", "c.bmp", "", 3, 3, false, "Texture3"},
      {"the same file", "a.bmp", "Other", 1, 3, true, "Other"},
      {"another file under a known name", "d.bmp", "Wall", 2, 3, true, "Wall"},
      {"names and files are told apart by case", "A.BMP", "wall", 4, 4, false, "wall"},
      {"a freed slot before the equal one", "c.bmp", "", 2, 4, false, "Texture2", 2},
      {"file of the freed texture is forgotten", "d.bmp", "", 5, 5, false, "Texture5"},
      {"an equal one before a freed slot", "c.bmp", "Again", 2, 5, true, "Again", 4},
  };
  for (const Step& step : steps) {
    if (step.deleteBefore != 0) deleteTexture(context, {static_cast<std::int16_t>(step.deleteBefore)});
    machine.clearLog();
    EXPECT_EQ(load(step.file, step.name)->index, step.slot) << step.what;
    EXPECT_EQ(count(), step.count) << step.what;
    std::vector<std::string> lines{std::string("TEXTURE FACTORY : Load texture ") + step.file +
                                   " / Name : " + step.name};
    if (step.again) lines.push_back(kAgain);
    EXPECT_EQ(machine.logLines(), lines) << step.what;
    EXPECT_EQ(entry(step.slot).name, step.named) << step.what;
    EXPECT_EQ(entry(step.slot).fileName, step.file) << step.what;
    EXPECT_NE(entry(step.slot).texture, nullptr) << step.what;
  }
}

TEST_F(Textures, ReloadingReplacesTheHandle) {
  picture("a.bmp", 4, 4, 0x808080);
  const auto before = load("a.bmp"), after = load("a.bmp");
  EXPECT_NE(before, after);
  EXPECT_EQ(entry(1).handle, after);
}

TEST_F(Textures, SizeIsTheFilesOwnOrTheOneAskedFor) {
  picture("wide.bmp", 64, 32, 0x808080);
  struct Case {
    std::int32_t width, height, gotWidth, gotHeight;
  };
  for (const Case& row : {Case{-1, -1, 64, 32}, {16, 8, 16, 8}, {-1, 128, 64, 128}, {128, -1, 128, 32}}) {
    std::string file = "wide.bmp";
    std::int32_t w = row.width, h = row.height, noKey = 0;
    const auto handle = loadTexture(context, file, "", w, h, noKey);
    EXPECT_EQ(w, row.gotWidth) << row.width;
    EXPECT_EQ(h, row.gotHeight) << row.height;
    const TextureEntry& made = entry(handle->index);
    EXPECT_EQ(made.width, w);
    EXPECT_EQ(made.height, h);
    EXPECT_EQ(made.texture->description().width, static_cast<std::uint32_t>(w));
    EXPECT_GT(made.texture->levelCount(), 3u) << "a full chain";
  }
}

TEST_F(Textures, AKeySwitchesTheAlphaTestOnAndMakesItsColourVanish) {
  picture("black.bmp", 4, 4, 0x000000);
  std::string file = "black.bmp";
  key = kBlackKey;
  loadTexture(context, file, "", width, height, key);
  EXPECT_EQ(key, 0);
  EXPECT_THAT(recorder.lines({"SetRenderState"}),
              ElementsAre("SetRenderState(25, 5)", "SetRenderState(15, 1)", "SetRenderState(24, 8)"));
  EXPECT_EQ(entry(1).colorKey, 0xFF000000u);
  EXPECT_EQ(entry(1).texture->description().format, device::Format::A4R4G4B4);
  EXPECT_EQ(entry(1).texture->readLevel(0).at(1), std::byte{0}) << "alpha of the first pixel";

  // The slot's next texture has no key.
  deleteTexture(context, {1});
  forget();
  load("black.bmp");
  EXPECT_TRUE(recorder.lines({"SetRenderState"}).empty());
  EXPECT_EQ(entry(1).colorKey, 0u);
  EXPECT_EQ(entry(1).texture->description().format, device::Format::R5G6B5);
}

TEST_F(Textures, WhatCannotBeLoadedStaysRegisteredWithoutATexture) {
  test::put("damaged.bmp", "BM this is no picture");
  struct Case {
    const char* file;
    const char* line;
  };
  for (const Case& row : {Case{"missing.bmp", "TEXTURE FACTORY : ERROR missing.bmp texture NOT FOUND ! "},
                          Case{"", "TEXTURE FACTORY : ERROR  texture NOT FOUND ! "}}) {
    const auto handle = load(row.file, std::string("name of ") + row.file);
    EXPECT_EQ(machine.logLines().back(), row.line);
    const TextureEntry& made = entry(handle->index);
    EXPECT_TRUE(made.used);
    EXPECT_EQ(made.texture, nullptr);
    EXPECT_EQ(made.handle, handle);
    EXPECT_EQ(findTextureByName(context, std::string("NAME OF ") + row.file), handle);
  }
  load("damaged.bmp");
  const std::string number = std::to_string(static_cast<std::int32_t>(device::kErrorInvalidData));
  EXPECT_THAT(machine.logLines().back(), testing::StartsWith("TEXTURE FACTORY : ERROR damaged.bmp "));
  EXPECT_THAT(machine.logLines().back(), EndsWith(" " + number));

  // A picture that was there and is gone when it is loaded again.
  picture("gone.bmp", 4, 4, 0);
  const auto gone = load("gone.bmp");
  std::filesystem::remove("gone.bmp");
  EXPECT_EQ(load("gone.bmp")->index, gone->index);
  EXPECT_EQ(entry(gone->index).texture, nullptr);
}

TEST_F(Textures, ComeOutOfAnOpenArchiveAndLeaveNoCopy) {
  picture("stone.bmp", 8, 8, 0xFF0000);
  const test::PakFile pak{{"textures/stone.bmp", test::contents("stone.bmp")}};
  std::filesystem::remove("stone.bmp");
  test::put("data.pak", pak.bytes);
  context.pak.open("data.pak");
  const auto handle = load("textures/stone.bmp");
  ASSERT_NE(entry(handle->index).texture, nullptr);
  EXPECT_EQ(entry(handle->index).fileName, "textures/stone.bmp");
  EXPECT_FALSE(std::filesystem::exists("stone.bmp"));
}

TEST_F(Textures, ReservedSlotsAreNobodysFile) {
  picture("a.bmp", 4, 4, 0);
  load("a.bmp");
  load("missing.bmp");
  deleteTexture(context, {1});
  const std::int16_t slot = allocateTextureSlot(context);
  EXPECT_EQ(slot, 1);
  EXPECT_EQ(entry(1).name, "No need");
  EXPECT_EQ(entry(1).handle->index, 1);
  EXPECT_EQ(load("a.bmp")->index, 3) << "the reserved slot is not the texture that was there before";
  EXPECT_EQ(allocateTextureSlot(context), 4);
}

TEST_F(Textures, NamesAreFoundInAnyCaseFirstOneFirst) {
  picture("a.bmp", 4, 4, 0);
  load("a.bmp", "Stone");
  load("x.bmp", "STONE");
  EXPECT_EQ(findTextureIndex(context, "stone"), 1);
  EXPECT_EQ(findTextureIndex(context, "stones"), 0);
  deleteTexture(context, {1});
  EXPECT_EQ(findTextureIndex(context, "stone"), 2);
  EXPECT_EQ(findTextureIndex(context, ""), 0) << "a freed entry has no name";
  EXPECT_EQ(findTextureByName(context, "nothing"), nullptr);
  EXPECT_THROW(deleteTexture(context, {3}), engine::EngineError);
}

TEST_F(Textures, GoWithTheEngine) {
  picture("a.bmp", 4, 4, 0);
  load("a.bmp");
  const std::weak_ptr<device::Texture> texture = entry(1).texture;
  forget();
  engine::releaseEngine(context);
  EXPECT_THAT(machine.logLines(), ElementsAre("MATERIAL FACTORY : Desallocate Materials Memory",
                                              "TEXTURE FACTORY : Desallocate Textures Memory"));
  EXPECT_TRUE(texture.expired());
  EXPECT_EQ(count(), 0);
}

TEST_F(Textures, LoadingWithoutADeviceIsLogged) {
  engine::EngineContext idle(machine.platform());
  std::string file = "a.bmp";
  const auto handle = loadTexture(idle, file, "early", width, height, key);
  EXPECT_EQ(handle->index, 1);
  EXPECT_THAT(machine.logLines(), Contains(EndsWith(" 91")));
  key = kBlackKey;
  EXPECT_THROW(loadTexture(idle, file, "keyed", width, height, key), engine::EngineError);
}

TEST_F(Textures, ModelTexturesAreSearchedInOrder) {
  struct Case {
    const char* name;
    std::vector<const char*> files;
    const char* path;
    const char* base;
    const char* found;
  };
  const Case cases[] = {
      {"as named", {"skin.tga", "textures/skin.tga"}, "skin.tga", "textures\\", "skin.tga"},
      {"below the base", {"textures/skin.tga"}, "skin.tga", "textures\\", "textures\\skin.tga"},
      {"base without a separator", {"textures/skin.tga"}, "skin.tga", "textures", "textures\\skin.tga"},
      {"JPG for TGA", {"skin.jpg"}, "skin.tga", "textures\\", "skin.JPG"},
      {"JPG for TGA below the base", {"textures/skin.jpg"}, "skin.Tga", "textures\\", "textures\\skin.JPG"},
      {"no JPG for others", {"skin.jpg"}, "skin.bmp", "", "skin.bmp"},
      {"bare name beside the model", {"model/skin.tga"}, "players/x\\skin.tga", "model/", "model/skin.tga"},
      {"bare name, JPG", {"skin.jpg"}, "players/skin.tga", "model/", "skin.JPG"},
      {"nowhere", {}, "skin.tga", "textures\\", "skin.tga"},
      {"nowhere with folders: the bare name", {}, "players/skin.tga", "textures\\", "skin.tga"},
      {"ends in a separator", {}, "players/", "", ""},
  };
  for (const Case& row : cases) {
    test::TemporaryFolder here;
    for (const char* file : row.files) test::put(file, "x");
    EXPECT_EQ(resolveTextureFile(row.path, row.base), row.found) << row.name;
  }
}

}  // namespace
}  // namespace ql::render
