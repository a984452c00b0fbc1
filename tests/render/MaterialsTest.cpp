#include "RenderTest.h"
#include "render/Materials.h"

#include <cstring>

namespace ql::render {
namespace {

struct Materials : test::RenderTest {};

std::vector<float> numbers(const device::Material& record) {
  std::vector<float> out(sizeof record / sizeof(float));
  std::memcpy(out.data(), &record, sizeof record);
  return out;
}

TEST_F(Materials, BlankStandsBeforeThoseThatAreCreated) {
  const engine::SlotTable<MaterialEntry>& entries = context.get<MaterialTable>().entries;
  EXPECT_EQ(entries.count(), 0);
  EXPECT_EQ(entries.at(0).name, "Blank");
  std::vector<float> blank(17, 1.0f);
  blank.back() = 0;
  EXPECT_EQ(numbers(materialRecord(context, 0)), blank);

  EXPECT_EQ(createMaterial(context, ""), 1);
  EXPECT_EQ(createMaterial(context, "Gold"), 2);
  EXPECT_EQ(numbers(materialRecord(context, 1)), std::vector<float>(17, 1.0f));
  EXPECT_EQ(findMaterialIndex(context, "MATERIAL1"), 1);
  EXPECT_EQ(findMaterialIndex(context, "gold"), 2);
  EXPECT_EQ(findMaterialIndex(context, "blank"), 0);
  deleteMaterial(context, 1);
  EXPECT_EQ(createMaterial(context, ""), 3) << "deleting frees nothing";

  ASSERT_TRUE(engine::initialize(context, engine::kFullScreen));
  EXPECT_EQ(entries.count(), 0) << "a new device starts afresh";
}

TEST_F(Materials, ColoursStandWhereTheDeviceReadsThem) {
  const std::int16_t index = createMaterialQuick(context, {1, 0, 0, 1}, "Red");
  EXPECT_EQ(numbers(materialRecord(context, index)),
            (std::vector<float>{1, 0, 0, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 1, 1}));
  setMaterialColor(context, index, MaterialColor::Diffuse, {.1f, .1f, .1f, .1f});
  setMaterialColor(context, index, MaterialColor::Ambient, {.2f, .2f, .2f, .2f});
  setMaterialColor(context, index, MaterialColor::Specular, {.3f, .3f, .3f, .3f});
  setMaterialColor(context, index, MaterialColor::Emissive, {.4f, .4f, .4f, .4f});
  setMaterialPower(context, index, 9);
  EXPECT_EQ(numbers(materialRecord(context, index)),
            (std::vector<float>{.1f, .1f, .1f, .1f, .2f, .2f, .2f, .2f, .3f, .3f, .3f, .3f, .4f, .4f, .4f, .4f, 9}));
}

TEST_F(Materials, IndicesOutsideTheTableFail) {
  for (const std::int32_t index : {-1, 1, 32767}) {
    EXPECT_THROW(setMaterialPower(context, index, 1), engine::EngineError) << index;
    EXPECT_THROW(setMaterialColor(context, index, MaterialColor::Ambient, {}), engine::EngineError) << index;
    EXPECT_THROW(deleteMaterial(context, index), engine::EngineError) << index;
  }
}

}  // namespace
}  // namespace ql::render
