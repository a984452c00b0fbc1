#include "mesh/MeshRecord.h"
#include "platform/host/Files.h"

namespace ql::mesh {

namespace {

using Slots = engine::SlotTable<std::unique_ptr<MeshRecord>>;

/// Gives a slot back with the last handle of its mesh. The vertex lists stay until the slot is taken again.
struct FreeSlot {
  std::weak_ptr<Slots> slots;
  void operator()(const MeshHandle* handle) const {
    const std::unique_ptr<const MeshHandle> owned(handle);
    const std::shared_ptr<Slots> table = slots.lock();
    if (!table || handle->slot < 1 || handle->slot > table->count()) return;
    MeshRecord& record = *table->at(handle->slot);
    record.subsets.reset();
    record.name.clear();
    record.inUse = record.enabled = false;
    record.groups.assign(1, MeshGroup{});
    record.groupCount = 0;
    record.cullMode = 1;
  }
};

}  // namespace

std::shared_ptr<MeshHandle> allocateMesh(engine::EngineContext& context, const std::string& name) {
  const std::shared_ptr<Slots>& slots = context.get<MeshRegistry>().slots;
  std::int16_t slot = slots->find([](const std::unique_ptr<MeshRecord>& record) { return !record->inUse; });
  if (slot == 0) slot = slots->grow();
  std::unique_ptr<MeshRecord>& place = slots->at(slot);
  const bool noted = place && place->noted;
  place = std::make_unique<MeshRecord>();
  place->noted = noted;
  std::shared_ptr<MeshHandle> handle(new MeshHandle{slot, 0}, FreeSlot{slots});
  place->name = name.empty() ? "Mesh" + std::to_string(slot) : name;
  place->inUse = place->enabled = place->matrixDirty = true;
  place->handle = handle;
  place->groupCount = 1;
  noteChange(context, slot);
  setGroupPointer(context, *handle, 1);
  return handle;
}

MeshRecord& meshRecord(engine::EngineContext& context, std::int32_t slot) {
  if (slot < 1) throw engine::EngineError(engine::kSubscript, "Subscript out of range");
  return *context.get<MeshRegistry>().slots->at(slot);
}

std::shared_ptr<MeshHandle> findMesh(engine::EngineContext& context, const std::string& name) {
  const Slots& slots = *context.get<MeshRegistry>().slots;
  const std::int16_t slot = slots.find(
      [&](const std::unique_ptr<MeshRecord>& record) { return host::equalIgnoringCase(record->name, name); });
  return slot == 0 ? nullptr : slots.at(slot)->handle.lock();
}

void noteMoved(engine::EngineContext& context, std::int16_t slot) {
  MeshRecord& record = meshRecord(context, slot);
  if (record.noted) return;
  record.noted = true;
  context.get<MeshRegistry>().changes.push_back(slot);
}

void noteChange(engine::EngineContext& context, std::int16_t slot) {
  meshRecord(context, slot).rayIndex.reset();
  noteMoved(context, slot);
}

std::int16_t meshCount(engine::EngineContext& context) { return context.get<MeshRegistry>().slots->count(); }

void setGroupPointer(engine::EngineContext& context, MeshHandle& mesh, std::int16_t group) {
  if (group < 0) throw engine::EngineError(engine::kSubscript, "Subscript out of range");
  MeshRecord& record = meshRecord(context, mesh.slot);
  const bool opens = group >= record.groupCount - 1;
  // The first vertex's number is 16-bit; shapes may have more vertices.
  if (opens && group > 0 && record.vertexCount > kMaxVertices) throw engine::EngineError(engine::kOverflow, "Overflow");
  mesh.currentGroup = group;
  if (!opens) return;
  record.groups.resize(static_cast<std::size_t>(group) + 1);
  record.groupCount = group;
  MeshGroup& opened = record.groups.back();
  opened.count = 0;
  opened.start = group == 0 ? std::int16_t{0} : static_cast<std::int16_t>(record.vertexCount);
  noteChange(context, mesh.slot);
}

}  // namespace ql::mesh
