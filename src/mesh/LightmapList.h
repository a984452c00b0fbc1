/// @file
/// The engine-wide list of the light maps of meshes.
#pragma once

#include "engine/SlotTable.h"
#include "platform/device/Resources.h"

#include <memory>

namespace ql::mesh {

/// Light maps from slot 1 on; empty slots are used again. A group names its light map by the slot.
struct LightmapList {
  engine::SlotTable<std::shared_ptr<device::Texture>> maps;
};

}  // namespace ql::mesh
