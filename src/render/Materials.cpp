#include "render/Materials.h"

#include "platform/host/Files.h"

namespace ql::render {
namespace {

constexpr math::Color4 kWhite{1, 1, 1, 1};

engine::SlotTable<MaterialEntry>& table(engine::EngineContext& context) { return context.get<MaterialTable>().entries; }

MaterialEntry whiteEntry(std::string name, float power) {
  return {std::move(name), {kWhite, kWhite, kWhite, kWhite, power}, true};
}

}  // namespace

void resetMaterials(engine::EngineContext& context) {
  table(context).clear();
  table(context).at(0) = whiteEntry("Blank", 0);
}

void releaseMaterials(engine::EngineContext& context) {
  context.log.write("MATERIAL FACTORY : Desallocate Materials Memory");
  table(context).clear();
}

std::int16_t createMaterial(engine::EngineContext& context, const std::string& name) {
  std::int16_t index = table(context).find([](const MaterialEntry& entry) { return !entry.used; });
  if (index == 0) index = table(context).grow();
  table(context).at(index) = whiteEntry(name.empty() ? "Material" + std::to_string(index) : name, 1);
  return index;
}

std::int16_t createMaterialQuick(engine::EngineContext& context, const math::Color4& color, const std::string& name) {
  const std::int16_t index = createMaterial(context, name);
  device::Material& record = table(context).at(index).record;
  record.ambient = record.diffuse = record.emissive = color;
  return index;
}

void setMaterialColor(engine::EngineContext& context, std::int32_t index, MaterialColor which,
                      const math::Color4& color) {
  device::Material& record = table(context).at(index).record;
  switch (which) {
    case MaterialColor::Diffuse:
      record.diffuse = color;
      break;
    case MaterialColor::Ambient:
      record.ambient = color;
      break;
    case MaterialColor::Specular:
      record.specular = color;
      break;
    case MaterialColor::Emissive:
      record.emissive = color;
      break;
  }
}

void setMaterialPower(engine::EngineContext& context, std::int32_t index, float power) {
  table(context).at(index).record.power = power;
}

void deleteMaterial(engine::EngineContext& context, std::int32_t index) { table(context).at(index); }

const device::Material& materialRecord(engine::EngineContext& context, std::int32_t index) {
  return table(context).at(index).record;
}

std::int16_t findMaterialIndex(engine::EngineContext& context, std::string_view name) {
  return table(context).find(
      [&](const MaterialEntry& entry) { return entry.used && host::equalIgnoringCase(entry.name, name); });
}

}  // namespace ql::render
