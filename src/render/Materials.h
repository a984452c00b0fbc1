/// @file
/// The engine-wide table of materials.
#pragma once

#include "engine/EngineContext.h"
#include "engine/SlotTable.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ql::render {

struct MaterialEntry {
  std::string name;         ///< compared without regard to case
  device::Material record;  ///< as the device takes it
  bool used = false;
};

/// Entry 0 is the built-in "Blank", all white, once a device exists. Entries are never freed.
struct MaterialTable {
  engine::SlotTable<MaterialEntry> entries;
};

enum class MaterialColor : std::uint8_t { Diffuse, Ambient, Specular, Emissive };

/// Empties the table down to "Blank".
void resetMaterials(engine::EngineContext& context);
/// Empties the table (logged).
void releaseMaterials(engine::EngineContext& context);

/// A white material of power 1; without a name it is called "Material" and its index. @return its index
/// @throws engine::EngineError 6 beyond 32767 materials
std::int16_t createMaterial(engine::EngineContext& context, const std::string& name);
/// One colour for ambient, diffuse and emissive; specular stays white.
std::int16_t createMaterialQuick(engine::EngineContext& context, const math::Color4& color, const std::string& name);
/// @throws engine::EngineError 9 for an index outside the table (all operations with an index)
void setMaterialColor(engine::EngineContext& context, std::int32_t index, MaterialColor which,
                      const math::Color4& color);
void setMaterialPower(engine::EngineContext& context, std::int32_t index, float power);
/// Checks the index only: whatever uses the material keeps it.
void deleteMaterial(engine::EngineContext& context, std::int32_t index);
/// The 68 bytes that the device takes.
const device::Material& materialRecord(engine::EngineContext& context, std::int32_t index);
/// Index of the first created material of that name (any letter case), 0 when none.
std::int16_t findMaterialIndex(engine::EngineContext& context, std::string_view name);

}  // namespace ql::render
